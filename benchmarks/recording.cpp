#include <fmt/compile.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <zip.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/suite.h"
#include "workbench/change/marking.h"
#include "workbench/import/import_model.h"
#include "workbench/record/record_model.h"
#include "workbench/session/session.h"
#include "workbench/unit/fmi2_api.h"
#include "workbench/unit/unit_library.h"

// A recording beside the bare loop: the same steps of the same unit, the same variables read, the same numbers written.
// In processor time, the unit's process included: what a recording costs on one processor, whatever else runs.
namespace ks_bench {

namespace {

constexpr int kSteps = 1'000'000;
constexpr double kStep = 1e-3;
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

// Units with few outputs and many, and models of them in which the last ones are marked; removed at the end.
class Models {
public:
    Models() {
        if (::mkdtemp(m_path.data()) == nullptr) throw std::runtime_error(m_path + ": cannot be made");
        for (const std::size_t outputs : kOutputs) make(outputs);
    }
    Models(const Models&) = delete;
    Models& operator=(const Models&) = delete;
    ~Models() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(const std::string& name) const { return m_path + "/" + name; }
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

    std::string m_path = "/tmp/ks_hmi_recording-XXXXXX";
};

const Models& models() {
    static const Models models;
    return models;
}

namespace api = workbench::fmi2;

void logNothing(void*, const char*, api::Status, const char*, const char*, ...) {}

void writeRow(std::FILE* file, double time, const std::array<double, kObserved>& values) {
    std::array<char, 32 * (kObserved + 1)> row{};
    char* at = fmt::format_to(row.data(), FMT_COMPILE("{}"), time);
    for (const double value : values) {
        *at++ = ',';
        at = fmt::format_to(at, FMT_COMPILE("{}"), value);
    }
    *at++ = '\r';
    *at++ = '\n';
    std::fwrite(row.data(), 1, static_cast<std::size_t>(at - row.data()), file);
}

void runBare(std::FILE* file, std::size_t outputs) {
    const workbench::UnitLibrary library(KS_HMI_PROBE);
    const auto doStep = library.get<api::DoStep>("fmi2DoStep");
    const auto getReal = library.get<api::Get<double>>("fmi2GetReal");
    const api::Callbacks callbacks{logNothing, ::calloc, ::free, nullptr, nullptr};
    api::Component const unit = library.get<api::Instantiate>("fmi2Instantiate")("wide", api::coSimulation, "probe",
                                                                                 "file:///", &callbacks, 0, 0);
    std::array<unsigned, kObserved> references{};
    for (std::size_t i = 0; i < kObserved; ++i)
        references[i] = static_cast<unsigned>(outputs - kObserved + i) + kFirstReference;
    std::array<double, kObserved> values{};
    for (int i = 0; i <= kSteps; ++i) {
        getReal(unit, references.data(), references.size(), values.data());
        writeRow(file, i * kStep, values);
        if (i < kSteps) doStep(unit, i * kStep, (i + 1) * kStep - i * kStep, 1);
    }
    library.get<api::FreeInstance>("fmi2FreeInstance")(unit);
}

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// That this process and those that it has waited for have used.
double processorSeconds() {
    double seconds = 0.0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        seconds += secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    }
    return seconds;
}

void bare(benchmark::State& state, std::size_t outputs) {
    const std::string path = models().path("bare.csv");
    for ([[maybe_unused]] auto _ : state) {
        const double start = processorSeconds();
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        std::setvbuf(file, nullptr, _IOFBF, std::size_t{1} << 16U);
        runBare(file, outputs);
        std::fclose(file);
        state.SetIterationTime(processorSeconds() - start);
    }
}

void recording(benchmark::State& state, std::size_t outputs) {
    workbench::Session session(models().modelPath(outputs));
    workbench::RecordOptions options;
    options.until = kSteps * kStep;
    options.step = kStep;
    options.target.path = models().path("run.csv");
    options.target.replaces = true;
    for ([[maybe_unused]] auto _ : state) {
        const double start = processorSeconds();
        if (workbench::recordModel(session, options).samples != kSteps + 1)
            return state.SkipWithError("the run is not whole");
        state.SetIterationTime(processorSeconds() - start);
    }
}

}  // namespace

void addRecording(Suite& suite) {
    constexpr double kMost = 1.15;
    for (const std::size_t outputs : kOutputs) {
        const std::string bareName = fmt::format("record: bare loop of {}", outputs);
        const std::string name = fmt::format("record: {} of {}", kObserved, outputs);
        Suite::time(bareName, [outputs](benchmark::State& state) { bare(state, outputs); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        Suite::time(name, [outputs](benchmark::State& state) { recording(state, outputs); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        suite.compare(9, fmt::format("recording {} of {} outputs, 1e6 steps, processor time", kObserved, outputs), name,
                      bareName, Limit::atMost(kMost));
    }
}

}  // namespace ks_bench
