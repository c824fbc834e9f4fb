#include <malloc.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/suite.h"
#include "host/messages.h"
#include "workbench/session/host_process.h"

namespace {

// Keeps the medians and tells how far the run is.
class MedianReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override {
        PrintBasicContext(&std::cerr, context);
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
                m_hasFailed = true;
                continue;
            }
            constexpr double kNanosecond = 1e-9;
            const double time =
                run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) / kNanosecond;
            const bool isMedian = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (isMedian || (run.run_type == Run::RT_Iteration && run.repetitions < 2))
                m_medians[run.run_name.function_name] = time;
            if (isMedian) std::cerr << run.run_name.function_name << "  " << ks_bench::durationText(time) << '\n';
        }
    }

    bool hasFailed() const noexcept { return m_hasFailed; }
    const ks_bench::Medians& medians() const noexcept { return m_medians; }

private:
    ks_bench::Medians m_medians;
    bool m_hasFailed = false;
};

void addAll(ks_bench::Suite& suite) {
    using namespace ks_bench;
    for (const auto add :
         {addHandleQueries, addPathQueries, addEnginePortQueries, addChartQueries, addKeyHashes, addPersistence,
          addModelFiles, addGrowth, addRemovals, addMemory, addStart, addRecording, addPythonMarking, addToolRuns})
        add(suite);
}

// The heap keeps what it once had: no figure depends on when the system takes memory back.
void keepHeap() {
    constexpr int kNever = 1 << 30;
    ::mallopt(M_TRIM_THRESHOLD, kNever);
    ::mallopt(M_MMAP_THRESHOLD, kNever);
}

// Takes an option of this program's own out of the arguments.
std::optional<std::string> taken(std::vector<char*>& arguments, std::string_view option) {
    const auto found = std::find_if(arguments.begin() + 1, arguments.end(), [&](std::string_view argument) {
        return argument.substr(0, argument.find('=')) == option;
    });
    if (found == arguments.end()) return std::nullopt;
    const std::string_view argument = *found;
    arguments.erase(found);
    const std::size_t sign = argument.find('=');
    return std::string(sign == std::string_view::npos ? "" : argument.substr(sign + 1));
}

int run(int argc, char** argv) {
    // What follows on the command line wins.
    static char random[] = "--benchmark_enable_random_interleaving=true";
    static char repetitions[] = "--benchmark_repetitions=5";
    static char minTime[] = "--benchmark_min_time=0.1";
    std::vector<char*> arguments{argv[0], random, repetitions, minTime};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    const bool isFilesOnly = taken(arguments, "--files").has_value();
    const std::optional<std::string> markdown = taken(arguments, "--markdown");
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

    ks_bench::Suite suite;
    isFilesOnly ? ks_bench::addToolRuns(suite) : addAll(suite);
    MedianReporter reporter;
    if (!isFilesOnly) benchmark::RunSpecifiedBenchmarks(&reporter);
    suite.compute(reporter.medians());
    suite.print(std::cout);
    if (markdown) {
        std::ofstream file(*markdown);
        suite.writePage(file);
        if (!file.flush()) throw std::runtime_error(*markdown + ": cannot be written");
    }
    return reporter.hasFailed() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        keepHeap();
        workbench::enterHost([](const std::string& text) { std::cerr << "warning: " << text << '\n'; });
        return run(argc, argv);
    } catch (const kssvIException& error) {
        std::cerr << "ks_hmi_benchmarks: " << error.what() << '\n';
    } catch (const std::exception& error) {
        std::cerr << "ks_hmi_benchmarks: " << error.what() << '\n';
    }
    return 1;
}
