#include <fmt/format.h>
#include <stdlib.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/suite.h"
#include "workbench/change/mark_target.h"
#include "workbench/find/selecting.h"
#include "workbench/model_file/model_file.h"
#include "workbench/session/session.h"

// Marking many ports in one call, from C++ and from Python, in processor time.
namespace ks_bench {

namespace {

constexpr int kBlocks = 1000;
constexpr int kPorts = 10;
constexpr int kRuns = 5;
constexpr double kNanosecond = 1e-9;

// A model with those ports; removed at the end.
class PortModel {
public:
    PortModel() {
        if (::mkdtemp(m_folder.data()) == nullptr) throw std::runtime_error(m_folder + ": cannot be made");
        std::string text = R"({"kestrelModel": 1, "name": "wide", "blocks": [)";
        for (int block = 0; block < kBlocks; ++block) {
            text += fmt::format(R"({}{{"path": "Plant/Block {}", "eid": "{}", "outputs": [)", block > 0 ? "," : "",
                                block, block);
            for (int port = 0; port < kPorts; ++port) text += fmt::format(R"({}"y{}")", port > 0 ? "," : "", port);
            text += "]}";
        }
        const workbench::ModelFile file = workbench::readModelText(path(), text + "]}");
        workbench::writeModelFile(path(), file);
    }
    PortModel(const PortModel&) = delete;
    PortModel& operator=(const PortModel&) = delete;
    ~PortModel() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    std::string path() const { return m_folder + "/wide.json"; }

private:
    std::string m_folder = "/tmp/ks_hmi_marking-XXXXXX";
};

const PortModel& model() {
    static const PortModel model;
    return model;
}

workbench::Selection everyPort() {
    workbench::Selection selection;
    for (int block = 0; block < kBlocks; ++block)
        for (int port = 1; port <= kPorts; ++port)
            selection.references.push_back(fmt::format("wide/Plant/Block {}:{}", block, port));
    return selection;
}

void markNatively(benchmark::State& state) {
    const workbench::Selection selection = everyPort();
    for ([[maybe_unused]] auto _ : state) {
        workbench::Session session(model().path());
        const std::clock_t before = std::clock();
        std::vector<workbench::SignalSource> sources = workbench::select(session.model(), selection).sources();
        workbench::addSignals(session, workbench::markTargets(session, std::move(sources), {}, false), {});
        state.SetIterationTime(static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC);
    }
}

// Nanoseconds, as the script says itself.
double markInPython() {
    const std::string command = fmt::format("PYTHONPATH='{}' '{}' '{}' '{}'", KS_HMI_PYTHON_PATH, KS_HMI_PYTHON,
                                            KS_HMI_MARK_PORTS, model().path());
    std::FILE* const answer = ::popen(command.c_str(), "re");
    double nanoseconds = 0.0;
    const int count = answer ? std::fscanf(answer, "%lf", &nanoseconds) : 0;
    const bool isFine = answer && ::pclose(answer) == 0 && count == 1;
    return isFine ? nanoseconds : -1.0;
}

void markFromPython(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const double nanoseconds = markInPython();
        if (nanoseconds < 0) return state.SkipWithError("the Python module did not mark the ports");
        state.SetIterationTime(nanoseconds * kNanosecond);
    }
}

}  // namespace

void addPythonMarking(Suite& suite) {
    if (std::string_view(KS_HMI_PYTHON).empty()) return;
    Suite::time("mark: natively", markNatively)->UseManualTime()->Iterations(kRuns);
    Suite::time("mark: Python", markFromPython)->UseManualTime()->Iterations(kRuns);
    suite.excess(10, "10,000 ports marked from Python, more than natively", "mark: Python", "mark: natively",
                 Limit::atMost(100));
}

}  // namespace ks_bench
