#include <fmt/compile.h>
#include <fmt/format.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "host/messages.h"
#include "kshmi/large_pages.h"
#include "workbench/record/record_model.h"
#include "workbench/session/host_process.h"
#include "workbench/session/session.h"
#include "workbench/unit/fmi2_api.h"
#include "workbench/unit/unit_library.h"

// usage: recording_run FILE STEPS STEP MODEL
//        recording_run FILE STEPS STEP UNIT-LIBRARY FIRST-REFERENCE
// Prints the seconds of processor time and of real time that a recording takes, or the bare loop beside it. A process
// of its own, which holds what a recording needs and no more: what a process holds is copied when it starts another.
namespace {

constexpr std::size_t kObserved = 10;

struct Run {
    std::string file;
    int steps;
    double step;
    const char* source;
};

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

// The same steps of the same unit as in a recording, the same variables read with one call, the same numbers written.
void step(const Run& run, unsigned firstReference, std::FILE* file) {
    const workbench::UnitLibrary library(run.source);
    const auto doStep = library.get<api::DoStep>("fmi2DoStep");
    const auto getReal = library.get<api::Get<double>>("fmi2GetReal");
    const api::Callbacks callbacks{logNothing, ::calloc, ::free, nullptr, nullptr};
    api::Component const unit = library.get<api::Instantiate>("fmi2Instantiate")("wide", api::coSimulation, "probe",
                                                                                 "file:///", &callbacks, 0, 0);
    std::array<unsigned, kObserved> references{};
    for (std::size_t i = 0; i < kObserved; ++i) references[i] = firstReference + static_cast<unsigned>(i);
    std::array<double, kObserved> values{};
    for (int i = 0; i <= run.steps; ++i) {
        getReal(unit, references.data(), references.size(), values.data());
        writeRow(file, i * run.step, values);
        if (i < run.steps) doStep(unit, i * run.step, (i + 1) * run.step - i * run.step, 1);
    }
    library.get<api::FreeInstance>("fmi2FreeInstance")(unit);
}

bool runBare(const Run& run, unsigned firstReference) {
    std::FILE* const file = std::fopen(run.file.c_str(), "wb");
    if (file == nullptr) return false;
    static std::array<char, std::size_t{1} << 16U> buffer;  // Without one of its own, the C library takes 4 KiB.
    std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
    step(run, firstReference, file);
    return std::fclose(file) == 0;
}

bool record(workbench::Session& session, const Run& run) {
    workbench::RecordOptions options;
    options.until = run.steps * run.step;
    options.step = run.step;
    options.target.path = run.file;
    return workbench::recordModel(session, options).samples == static_cast<std::uint64_t>(run.steps) + 1;
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

template <class Work>
int measure(Work work) {
    const auto begin = std::chrono::steady_clock::now();
    const double used = processorSeconds();
    if (!work()) return 1;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf("%.6f %.6f\n", processorSeconds() - used, taken.count());
    return 0;
}

int measureRecording(const Run& run) {
    workbench::enterHost([](const std::string& text) { std::fprintf(stderr, "warning: %s\n", text.c_str()); });
    workbench::Session session(run.source);
    return measure([&] { return record(session, run); });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5 && argc != 6) return 2;
    kshmi::useLargePages();  // As the tool does when it starts.
    const Run run{argv[1], std::atoi(argv[2]), std::atof(argv[3]), argv[4]};
    try {
        if (argc == 5) return measureRecording(run);
        const auto firstReference = static_cast<unsigned>(std::atoi(argv[5]));
        return measure([&] { return runBare(run, firstReference); });
    } catch (const kssvIException& error) {
        std::fprintf(stderr, "recording_run: %s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "recording_run: %s\n", error.what());
    }
    return 1;
}
