#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/loaded_models.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"
#include "workbench/model_file/model_file.h"
#include "workbench/session/loading/signal_checks.h"
#include "workbench/session/marked_names.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// A model file that is open: its model loaded in the host, its signals and clients in sets made as a script
/// makes them. The model is unloaded with the session. The host must have been entered.
class Session {
public:
    enum class Opening {
        strict,   ///< a signal that does not fit the model is refused
        lenient,  ///< signals whose block, port or chart item is gone are let in
        anyhow,   ///< whatever is wrong with signals and clients, for mending it
    };

    /// Throws `Error` for a file that cannot be opened.
    explicit Session(std::string path, Opening opening = Opening::strict);
    /// The same for contents that are in memory; `path` is where they will be saved.
    Session(std::string path, ModelFile file, Opening opening = Opening::strict);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    const std::string& path() const noexcept { return m_path; }
    /// The same for messages: "standard input" when the model came from there.
    std::string fileName() const { return calledInMessages(m_path); }
    kestrel::Model& model() noexcept { return m_loaded->model(); }
    const kestrel::Model& model() const noexcept { return m_loaded->model(); }
    /// Where the model was imported from; nothing when it was not.
    const std::optional<Origin>& origin() const noexcept { return m_extras.origin; }
    const std::vector<ParkedMark>& parked() const noexcept { return m_extras.parked; }
    /// Drops all parked marks.
    void dropParked() noexcept { m_extras.parked.clear(); }
    /// What the marks were called when they were made.
    MarkedNames& names() noexcept { return *m_names; }
    const MarkedNames& names() const noexcept { return *m_names; }
    /// Throws `Error` while a mark does not stand where its name does; so does every save, so that nothing is built on
    /// a mark that has slid.
    void requireSettledNames() const;
    /// Lets saves keep such marks as they are, unsettled: for what settles them one by one.
    void keepUnsettledNames() noexcept { m_keepsUnsettled = true; }
    /// The host object of the set of signals, for scripts.
    hvArray* signalSet() noexcept { return m_loaded->signals(); }
    const hvArray* signalSet() const noexcept { return m_loaded->signals(); }
    /// The set itself, for editors and engines.
    ks_hmi::InstrumentedSignals& signals() noexcept { return *m_signals; }
    const ks_hmi::InstrumentedSignals& signals() const noexcept { return *m_signals; }
    /// Signals that were let in although what they are on is gone, in order.
    const std::vector<SignalFault>& dangling() const noexcept { return m_dangling; }
    /// The host object of the set of clients, for scripts. Clients may watch what no open model has.
    hvArray* clientSet() noexcept { return m_loaded->clients(); }
    const hvArray* clientSet() const noexcept { return m_loaded->clients(); }
    /// That set itself.
    ks_hmi::StreamingClients& clients() noexcept { return *m_clients; }
    const ks_hmi::StreamingClients& clients() const noexcept { return *m_clients; }

    /// Whether the block's output port is observed. Records nothing in the set.
    bool isObserved(const kestrel::Block& block, int port) const;
    /// Whether the activity of the chart item is.
    bool isObserved(const kestrel::Block& block, const ChartItem& item, const std::u16string& activity) const;
    /// Whether any activity of the chart item is.
    bool isAnyObserved(const kestrel::Block& block, const ChartItem& item) const;

    struct SaveResult {
        std::size_t leftOut = 0;            ///< how many signals are excluded from saving
        std::vector<std::string> warnings;  ///< what else has changed, as `AtomicFile::warnings` says
    };
    /// Writes the model with its clients and the signals that are to be saved. Throws `Error`, also for a file that
    /// has changed since; it is then as it was. A model from standard input goes to the sink of `saveTo`.
    SaveResult save();
    /// From now on `save` hands what it writes to the sink, and to no file.
    void saveTo(TextSink sink) { m_sink = std::move(sink); }
    /// Whether the model came from standard input.
    bool isStream() const noexcept { return m_path == kStandardStream; }
    /// What came from there, byte for byte; empty when the model did not.
    const std::string& input() const noexcept { return m_input; }
    /// The same into another file, which is the session's from then on. A file that is there already is replaced only
    /// when that is asked for. When it throws, the session keeps its file.
    enum class Existing { refuse, replace };
    SaveResult saveAs(const std::string& path, Existing existing = Existing::refuse);
    /// What `save` would write, as a text.
    std::string text();

    /// Sees records when they are saved: a slice of them as the file will have it, in order, all signals in front of
    /// the clients.
    using SaveWatch = std::function<void(RecordKind kind, const hvArray* records, const MarkedNameList& markedNames)>;
    /// From now on `watch` sees what is written, as a file or as a text; null: nobody does.
    void watchSaves(SaveWatch watch) { m_watch = std::move(watch); }

private:
    class Loader;
    template <class Load>
    void openOrUnload(Opening opening, Load load);
    RestOfModelFile read(ModelSink& sink);
    void makeSets();
    void check(const RecordLines& lines, Opening opening);
    void checkClients(const RecordLines& lines) const;
    [[noreturn]] void refuse(const SignalFault& fault, const ErrorPlace& place) const;
    void bindRenumbered();

    /// What `save` writes. Throws `Error` when that must not be. The session must outlive it.
    ModelContents contents();
    SliceSink watched(RecordKind kind, const SliceSink& sink) const;
    void saveSignals(const SliceSink& sink) const;
    void saveClients(const SliceSink& sink) const;
    SaveResult noteWritten(WrittenFile file);
    std::size_t leftOut() const;
    void keepLostPath(hvArray* saved, std::size_t element, const ks_hmi::SignalSpecification& signal) const;
    void requirePath(const hvArray* saved, std::size_t element, std::size_t position) const;

    std::string m_path;
    std::string m_input;
    kestrel::LoadedModel* m_loaded = nullptr;
    ks_hmi::InstrumentedSignals* m_signals = nullptr;
    ks_hmi::StreamingClients* m_clients = nullptr;
    ModelExtras m_extras;
    std::vector<SignalFault> m_dangling;
    TextSink m_sink;
    SaveWatch m_watch;
    std::optional<MarkedNames> m_names;
    bool m_keepsUnsettled = false;
    std::optional<FileVersion> m_version;  ///< of the file that was read or saved last
};

}  // namespace workbench
