#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "workbench/find/positions.h"
#include "workbench/find/reference.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/error.h"

namespace workbench {

/// A reference from a list, with its place there.
struct ListedReference {
    std::string text;
    ErrorPlace place;
};

enum class SourceKind : std::uint8_t { port, chart, state, datum };
SourceKind kindOf(const SignalSource& source);
/// "port", "chart", "state", "datum".
inline constexpr std::array<std::string_view, 4> kSourceKinds{"port", "chart", "state", "datum"};
/// Nothing for another word.
std::optional<SourceKind> sourceKindOf(std::string_view word) noexcept;

/// What somebody means, the same for whatever is done with it: references and patterns, less what is excepted. A block
/// without a port means the same in both: all its output ports and, for a chart, the chart itself.
struct Selection {
    std::vector<std::string> references;
    std::vector<ListedReference> listed;
    std::vector<std::string> all;     ///< patterns
    std::vector<std::string> except;  ///< patterns
    std::vector<SourceKind> kinds;    ///< only these; all when empty
    ReferenceOptions options;

    bool isAnything() const noexcept { return !references.empty() || !listed.empty() || !all.empty(); }
};

/// What one reference names.
struct NamedSources {
    ListedReference reference;  ///< its place is empty outside lists
    std::vector<SignalSource> sources;
};

/// What tells ports and chart items apart.
using SourceKey = std::tuple<const kestrel::Block*, int, std::int64_t>;
SourceKey keyOf(const SignalSource& source);

struct Selected {
    std::vector<NamedSources> named;
    std::vector<SignalSource> matching;  ///< what the patterns match, in the model's order
    std::vector<std::string> idle;       ///< "except" patterns that leave nothing out

    /// All of it, each port and item once: what is named in its order, then what matches.
    std::vector<SignalSource> sources() const&;
    std::vector<SignalSource> sources() &&;
};

/// Finds what a selection means in the model. With an activity, patterns select only the chart items that can have
/// it. Throws `Error` as `resolveReference`, and for an "all" pattern that matches nothing.
Selected select(const kestrel::Model& model, const Selection& selection);

/// Positions of the signals on what is selected, ascending; with an activity only those that have it. Throws `Error`
/// for a reference that names nothing that is marked.
Positions signalsOn(const Session& session, const Selected& selected, const ReferenceOptions& options);

}  // namespace workbench
