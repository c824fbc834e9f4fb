#include "workbench/record/record_model.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <utility>

#include "workbench/files/same_file.h"
#include "workbench/import/foreign_file.h"
#include "workbench/record/engine_ports.h"
#include "workbench/record/ignored_signals.h"
#include "workbench/record/run_setup.h"
#include "workbench/record/stream_out_blocks.h"
#include "workbench/text/text.h"
#include "workbench/unit/unit_file.h"
#include "workbench/unit/unit_folder.h"

namespace workbench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kBetweenFlushes{1};

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// Hands samples to the writer, and tells it what of each sample there is.
class Recorder final : public UnitListener {
public:
    Recorder(const RecordOptions& options, const UnitTask& task, const std::vector<RunColumn>& columns,
             std::unique_ptr<RunWriter> writer)
        : m_options(options), m_task(task), m_columns(columns), m_writer(std::move(writer)) {
        for (const RunColumn& column : columns) m_isThinned = m_isThinned || column.decimation > 1;
        m_isPresent.resize(m_isThinned ? columns.size() : 0);
    }

    void samples(const std::vector<UnitSample>& samples) override {
        if (m_isThinned) return writeThinned(samples);
        m_rows.clear();
        for (const UnitSample& sample : samples) m_rows.push_back({sample.time, sample.slots, sample.texts, nullptr});
        m_count += samples.size();
        m_writer->write(m_rows);
    }

    void message(double time, UnitLogLevel level, std::string_view category, std::string_view text) override {
        if (m_options.log) m_options.log(time, level, category, text);
    }

    void progress(double time) override {
        if (Clock::now() - m_flushedAt >= kBetweenFlushes) {
            m_writer->flush();
            m_flushedAt = Clock::now();
        }
        if (m_options.progress) m_options.progress({m_task.experiment.start, time, m_task.until, seconds()});
    }

    void finish(const UnitEnd& end) { m_writer->finish(end); }
    std::uint64_t count() const noexcept { return m_count; }
    std::optional<double> keptUntil() const noexcept { return m_writer->keptUntil(); }
    double seconds() const { return secondsSince(m_startedAt); }

private:
    void writeThinned(const std::vector<UnitSample>& samples) {
        m_rows.resize(1);
        for (const UnitSample& sample : samples) {
            ++m_count;
            m_rows.front() = {sample.time, sample.slots, sample.texts, nullptr};
            if (findPresent(sample.number, m_rows.front())) m_writer->write(m_rows);
        }
    }

    bool findPresent(std::uint64_t number, RunRow& row) {
        bool isAny = false;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            m_isPresent[i] = number % m_columns[i].decimation == 0 ? 1 : 0;
            isAny = isAny || m_isPresent[i] != 0;
        }
        row.isPresent = m_isPresent.data();
        return isAny;
    }

    const RecordOptions& m_options;
    const UnitTask& m_task;
    const std::vector<RunColumn>& m_columns;
    std::unique_ptr<RunWriter> m_writer;
    bool m_isThinned = false;
    std::vector<RunRow> m_rows;
    std::vector<std::uint8_t> m_isPresent;
    std::uint64_t m_count = 0;
    const Clock::time_point m_startedAt = Clock::now();
    Clock::time_point m_flushedAt = Clock::now();
};

// The files that a run is made from are not written over.
void requireOther(const std::string& output, std::initializer_list<std::string_view> sources) {
    for (const std::string_view source : sources)
        if (isSameFile(output, source))
            throw Error({output}, "is what the run is made from; record to another file", ErrorCode::request);
}

void requireColumns(const RunPlan& plan, const Session& session) {
    if (plan.columns.empty())
        throw Error({session.path()}, "nothing to record: no output of the unit is observed; mark some first",
                    ErrorCode::noMatch);
}

std::unique_ptr<RunWriter> writerFor(const StreamOutBlocks& blocks, const RecordOptions& options, const RunHead& head,
                                     const RunPlan& plan) {
    const StreamOutBlocks::File file = blocks.file();
    const RunTarget target{file.path, options.target.replaces, options.target.sink};
    std::unique_ptr<RunWriter> writer = file.format == RunFormat::sqlite ? makeSqliteWriter(target, head, plan.columns)
                                                                         : makeCsvWriter(target, plan.columns);
    return keepingLastPoints(std::move(writer), plan.columns, plan.slotCount);
}

UnitEnd runRecorded(const UnitTask& task, const RecordOptions& options, Recorder& recorder) {
    try {
        UnitEnd end = runUnit(task, options.control, recorder);
        recorder.finish(end);
        return end;
    } catch (const Error& error) {
        const std::optional<double> kept = recorder.keptUntil();
        const std::string what = kept ? fmt::format("recorded until t = {}", *kept) : "nothing was recorded";
        throw Error(error.place(), fmt::format("{}; {}", error.text(), what), error.code());
    }
}

// What the run is to be called where it is kept; warns of a unit that is not the one that was imported.
RunHead headOf(const Session& session, const RecordOptions& options, const std::string& unit,
               const FmiDescription& description, const UnitTask& task) {
    const std::string hash = hashOfFile(unit);
    if (options.warning && session.origin() && session.origin()->hash != hash)
        options.warning(
            printable(std::string_view(unit)) +
            " is not the unit that the model was imported from, or has changed since; its outputs are found "
            "by their names");
    return {toUtf8(session.model().name()), unit,       hash,     description.version,
            task.experiment.start,          task.until, task.step};
}

void warnOfLeftOut(const std::vector<std::string>& warnings, const RecordOptions& options) {
    constexpr std::size_t kMostTold = 20;
    if (!options.warning) return;
    for (std::size_t i = 0; i < std::min(kMostTold, warnings.size()); ++i) options.warning(warnings[i]);
    const std::size_t more = warnings.size() - std::min(kMostTold, warnings.size());
    if (more > 0)
        options.warning(fmt::format("{} {} not recorded, for reasons like these", counted(more, "more signal"),
                                    more == 1 ? "is" : "are"));
}

// What the unit is to do, and what is recorded of it.
RunPlan planTask(Session& session, const RecordOptions& options, const FmiDescription& description, UnitTask& task) {
    std::vector<GivenSize> sizes;
    planTimes(description, options, task);
    planValues(description, options, task, sizes);
    if (!options.inputs.empty()) task.inputs = UnitInputs(options.inputs, description, sizes);
    EnginePorts ports(session);
    RunPlan plan = planRun(session, ports, description, sizes);
    warnOfLeftOut(plan.warnings, options);
    requireColumns(plan, session);
    task.readings = std::move(plan.readings);
    task.slotCount = plan.slotCount;
    return plan;
}

}  // namespace

RecordResult recordModel(Session& session, const RecordOptions& options) {
    const IgnoredSignals ignoredSignals;
    RecordResult result;
    result.unit = unitPathOf(session, options);
    requireOther(options.target.path, {session.path(), result.unit, options.inputs});
    const FmiDescription description = readUnitFile(result.unit);
    UnitTask task;
    RunPlan plan = planTask(session, options, description, task);
    const RunHead head = headOf(session, options, result.unit, description, task);
    const StreamOutBlocks blocks(session, plan.columns, options.target.path, head);
    const UnitFolder folder;
    task.start = unpackUnit(result.unit, description, folder.path());
    task.start.logs = options.control.logs;
    Recorder recorder(options, task, plan.columns, writerFor(blocks, options, head, plan));
    result.end = runRecorded(task, options, recorder);
    result.start = task.experiment.start;
    result.until = task.until;
    result.step = task.step;
    result.seconds = recorder.seconds();
    result.samples = recorder.count();
    result.columns = std::move(plan.columns);
    return result;
}

}  // namespace workbench
