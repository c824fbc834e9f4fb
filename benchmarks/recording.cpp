#include <fmt/format.h>
#include <zip.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/scratch_directory.h"
#include "benchmarks/suite.h"
#include "workbench/change/marking.h"
#include "workbench/import/import_model.h"
#include "workbench/session/session.h"

// A recording beside the bare loop, both in processes of their own (recording_run.cpp). In processor time, the unit's
// process included: what a recording costs on one processor, whatever else runs.
namespace ks_bench {

namespace {

constexpr int kSteps = 1'000'000;
constexpr double kStep = 1e-3;
constexpr int kRuns = 15;  // What a run takes depends on which processors its two processes meet on.
constexpr std::size_t kObserved = 10;
constexpr unsigned kFirstReference = 100;
constexpr std::array<std::size_t, 2> kOutputs{10, 10'000};

std::string description(std::size_t outputs) {
    std::string xml =
        R"(<fmiModelDescription fmiVersion="2.0" modelName="wide" guid="probe"><CoSimulation modelIdentifier="probe2"/>)"
        "<ModelVariables>";
    for (std::size_t i = 0; i < outputs; ++i)
        xml +=
            fmt::format(R"(<ScalarVariable name="y{}" valueReference="{}" causality="output"><Real/></ScalarVariable>)",
                        i, i + kFirstReference);
    return xml + "</ModelVariables></fmiModelDescription>";
}

// Units with few outputs and many, and models of them in which the last ones are marked.
class Models {
public:
    Models() {
        for (const std::size_t outputs : kOutputs) make(outputs);
    }

    std::string path(const std::string& name) const { return m_directory.file(name); }
    std::string modelPath(std::size_t outputs) const { return path(fmt::format("{}.json", outputs)); }

private:
    void make(std::size_t outputs) const {
        const std::string unit = path(fmt::format("{}.fmu", outputs));
        pack(unit, description(outputs));
        const workbench::ImportedModel model = workbench::importFile(unit, modelPath(outputs), {});
        workbench::ModelExtras extras;
        extras.origin = model.origin;
        workbench::writeModelFile(modelPath(outputs), model.model, nullptr, nullptr, extras);
        workbench::Session session(modelPath(outputs));
        const kestrel::Block& block = session.model().blocks().front();
        for (std::size_t i = outputs - kObserved; i < outputs; ++i)
            workbench::addSignal(session, {&block, static_cast<int>(i) + 1, std::nullopt}, u"", {});
        session.save();
    }

    static void pack(const std::string& path, const std::string& xml) {
        zip_t* const archive = ::zip_open(path.c_str(), ZIP_CREATE, nullptr);
        ::zip_file_add(archive, "modelDescription.xml", ::zip_source_buffer(archive, xml.data(), xml.size(), 0), 0);
        ::zip_file_add(archive, "binaries/linux64/probe2.so", ::zip_source_file(archive, KS_HMI_PROBE, 0, -1), 0);
        if (::zip_close(archive) != 0) throw std::runtime_error(path + ": cannot be made");
    }

    ScratchDirectory m_directory;
};

const Models& models() {
    static const Models models;
    return models;
}

// What a run took, in seconds.
struct Seconds {
    double processor = 0.0;
    double real = 0.0;
};
using Time = double Seconds::*;

Seconds run(const std::string& arguments) {
    const std::string path = models().path("run.csv");
    const std::string line = fmt::format("'{}' '{}' {} {} {}", KS_HMI_RECORDING_RUN, path, kSteps, kStep, arguments);
    std::FILE* const answer = ::popen(line.c_str(), "re");
    Seconds seconds;
    const int count = answer ? std::fscanf(answer, "%lf %lf", &seconds.processor, &seconds.real) : 0;
    if (answer == nullptr || ::pclose(answer) != 0 || count != 2) throw std::runtime_error(line + ": failed");
    std::filesystem::remove(path);
    return seconds;
}

void measure(benchmark::State& state, const std::string& arguments, Time time) {
    for ([[maybe_unused]] auto _ : state) state.SetIterationTime(run(arguments).*time);
}

void addRun(const std::string& name, const std::function<std::string()>& arguments, Time time) {
    Suite::time(name, [=](benchmark::State& state) { measure(state, arguments(), time); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(kRuns)
        ->Unit(benchmark::kMillisecond);
}

void addPair(Suite& suite, std::size_t outputs, const char* kind, Time time, Limit limit) {
    const std::string bare = fmt::format("record: bare loop of {}, {}", outputs, kind);
    const std::string own = fmt::format("record: {} of {}, {}", kObserved, outputs, kind);
    const auto loop = [=] { return fmt::format("'{}' {}", KS_HMI_PROBE, outputs - kObserved + kFirstReference); };
    const auto model = [=] { return "'" + models().modelPath(outputs) + "'"; };
    addRun(bare, loop, time);
    addRun(own, model, time);
    suite.compare(9, fmt::format("recording {} of {} outputs, 1e6 steps, {}", kObserved, outputs, kind), own, bare,
                  limit);
}

}  // namespace

void addRecording(Suite& suite) {
    constexpr double kMost = 1.15;
    for (const std::size_t outputs : kOutputs) {
        addPair(suite, outputs, "processor time", &Seconds::processor, Limit::atMost(kMost));
        addPair(suite, outputs, "real time", &Seconds::real, Limit{});
    }
}

}  // namespace ks_bench
