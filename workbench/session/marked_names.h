#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "signals/instrumented_signals.h"
#include "workbench/model_file/record_slice.h"
#include "workbench/session/chart_item_finder.h"
#include "workbench/session/signal_source.h"

/// What the sources of marks were called when they were marked or last confirmed, beside what they are called now. A
/// record holds a port's number only; the name tells when the numbers have changed under it.
namespace workbench {

enum class NameState : std::uint8_t {
    confirmed,    ///< the source is called so
    unconfirmed,  ///< no name was kept
    moved,        ///< the name stands at another place of the block, and at that one only
    ambiguous,    ///< at several others
    gone,         ///< nowhere in the block
    unknown,      ///< the block is gone, or the signal cannot be on it
};

struct NameCheck {
    NameState state = NameState::confirmed;
    std::u16string markedName{};
    /// What the source is called now: a port's or datum's name, a state's path, empty for a chart itself; nothing when
    /// it is gone.
    std::optional<std::u16string> nameNow{};
    std::vector<std::uint32_t> places{};  ///< where else the name stands: port numbers, of a chart's items SSIDs
};

/// Compares names, many of one model. It does not outlive the model, which must not change meanwhile.
class NameChecker {
public:
    explicit NameChecker(const kestrel::Model& model) : m_model(model) {}
    /// `markedName` may be null: none was kept.
    NameCheck check(const ks_hmi::SignalSpecification& signal, const std::u16string* markedName);
    /// What the signal's source is called in the model now, as `NameCheck::nameNow`.
    std::optional<std::u16string> nameNow(const ks_hmi::SignalSpecification& signal);
    /// Whether `check` would find the name confirmed.
    bool isConfirmed(const ks_hmi::SignalSpecification& signal, const std::u16string& markedName);

private:
    /// Null when it is gone.
    const std::u16string* nameOn(const kestrel::Block& block, const ks_hmi::SignalSpecification& signal);
    /// Ports of a name, or chart items of a domain and a name.
    using Places = std::unordered_map<std::u16string, std::vector<std::uint32_t>>;
    static Places placesIn(const kestrel::Block& block);
    std::vector<std::uint32_t> placesOf(const kestrel::Block& block, const ks_hmi::SignalSpecification& signal,
                                        const std::u16string& name);

    const kestrel::Model& m_model;
    std::unordered_map<const kestrel::Block*, Places> m_places;  ///< of blocks where a name was looked for
    ChartItemFinder m_items;
};

/// "A:1 was marked as \"y\", which is port 2 now": what is unsettled about a mark, `what` in front.
std::string describe(const std::string& what, const NameCheck& name, bool isItem);

/// A mark that does not stand where its name does.
struct UnsettledMark {
    std::size_t position = 0;  ///< 0-based
    NameCheck name{};
    bool isItem = false;  ///< of a chart
};

/// The names of a set's marks. Marks that are made while this lives are confirmed; so are those that were when it was
/// made: what happens to them in between is this program's doing, and their names follow. The set and the model must
/// outlive it.
class MarkedNames {
public:
    MarkedNames(const ks_hmi::InstrumentedSignals& set, const kestrel::Model& model) : m_set(set), m_model(model) {}
    /// The set has got further signals, from the position `first` (0-based) to its end. `saved` are the names that
    /// their file keeps; the last ones may be left out. `checker` is one of the same model.
    void take(std::size_t first, const MarkedNameList& saved, NameChecker& checker);

    /// Marks whose name the model has elsewhere or no more, in the set's order. Those whose source is gone are none,
    /// unless the name is at another place of the block.
    std::vector<UnsettledMark> unsettled() const;
    /// Positions (0-based) of marks without a name.
    std::vector<std::size_t> unconfirmed() const;
    /// Takes what is there at these positions (0-based) for what was meant, where there is something. Returns the
    /// positions of marks that were unsettled or unconfirmed.
    std::vector<std::size_t> confirm(const std::vector<std::size_t>& positions);
    /// The marks at these positions are about to be removed; the same sources may be marked again.
    void forget(const std::vector<std::size_t>& positions);

    /// Tells the names that are to be saved. The names and the model must not change meanwhile.
    class Saver {
    public:
        explicit Saver(const MarkedNames& names);
        /// Of the signal that was at `position` (0-based) when this was made; nothing for an unconfirmed mark.
        std::optional<std::u16string> nameOf(const ks_hmi::SignalSpecification& signal, std::size_t position);

    private:
        const MarkedNames& m_names;
        std::vector<std::size_t> m_order;  ///< empty when all marks are confirmed
        NameChecker m_checker;
    };

private:
    /// What a file said of a mark that was not confirmed.
    struct Kept {
        ks_hmi::InstrumentedSignals::SignalPtr signal;  ///< as it was; the host may have put another in its place
        std::optional<std::u16string> name;
    };
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    /// For each signal of the set its number among the kept; none for one that is confirmed.
    std::vector<std::size_t> inOrder() const;
    void drop(const std::vector<std::size_t>& positions, const std::vector<std::size_t>& order);

    const ks_hmi::InstrumentedSignals& m_set;
    const kestrel::Model& m_model;
    std::vector<Kept> m_kept;
};

}  // namespace workbench
