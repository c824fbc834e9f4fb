#include <fmt/format.h>
#include <fmt/os.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/sample_signals.h"
#include "benchmarks/scratch_directory.h"
#include "benchmarks/suite.h"

// Whole runs of the tool on model files, beside those of the tools at hand: processor time and memory of each process.
namespace ks_bench {

namespace {

using Command = std::vector<std::string>;

constexpr int kGoal = 11;
constexpr int kRounds = 3;
constexpr double kSecond = 1e9;
constexpr double kMebibyte = 1024.0 * 1024.0;

struct Run {
    double nanoseconds = HUGE_VAL;  // of processor time
    double bytes = HUGE_VAL;        // held at once
};

const ScratchDirectory& directory() {
    static const ScratchDirectory s_directory;
    return s_directory;
}

Run runOnce(const Command& command) {
    const std::string line = fmt::format("'{}' '{}'", KS_HMI_MEASURED_RUN, fmt::join(command, "' '"));
    std::FILE* const answer = ::popen(line.c_str(), "re");
    double seconds = 0.0;
    double kibibytes = 0.0;
    const int count = answer ? std::fscanf(answer, "%lf %lf", &seconds, &kibibytes) : 0;
    if (answer == nullptr || ::pclose(answer) != 0 || count != 2) throw std::runtime_error(line + ": failed");
    std::cerr << fmt::format("{}  {:.2f} s, {:.0f} MiB\n", fmt::join(command, " "), seconds, kibibytes / 1024.0);
    return {seconds * kSecond, kibibytes * 1024.0};
}

// The least of some runs, which take turns with those of other commands. The file is fresh for each.
struct Measured {
    Command command;
    std::string file;  // that it changes
    std::string kept;  // what the file holds before

    Run best{};

    void run() {
        if (!file.empty()) std::filesystem::copy_file(kept, file, std::filesystem::copy_options::overwrite_existing);
        const Run one = runOnce(command);
        best = {std::min(best.nanoseconds, one.nanoseconds), std::min(best.bytes, one.bytes)};
    }
};

Command tool(std::initializer_list<std::string> arguments) {
    Command command{KS_HMI_TOOL};
    command.insert(command.end(), arguments);
    return command;
}
Command python(std::initializer_list<std::string> arguments) {
    Command command{"/usr/bin/python3", KS_HMI_BASELINES};
    command.insert(command.end(), arguments);
    return command;
}
Command jq(const char* filter, const std::string& file) { return {"jq", filter, file}; }

std::string narrow(const std::u16string& ascii) { return {ascii.begin(), ascii.end()}; }

// A model that nothing is marked in yet.
std::string unmarkedFile(const std::string& name, const std::vector<std::string>& blocks) {
    std::string path = directory().file(name);
    auto out = fmt::output_file(path);
    out.print("{{\n  \"kestrelModel\": 1,\n  \"name\": \"plant\",\n  \"blocks\": [\n    {}\n  ],\n",
              fmt::join(blocks, ",\n    "));
    out.print("  \"signals\": [],\n  \"clients\": []\n}}\n");
    return path;
}

// As many ports, ten on each block, with names as people give them.
std::string unmarkedDrives(std::size_t signals) {
    constexpr std::size_t kPorts = 10;
    constexpr const char* kOutputs = R"("speed", "torque", "angle", "current", "voltage", )"
                                     R"("temperature", "pressure", "flow", "level", "status")";
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < signals / kPorts; ++i)
        blocks.push_back(fmt::format(R"({{"path": "Line {:02}/Drive {:04}", "eid": "{}", "outputs": [{}]}})", i / 100,
                                     i, i + 1, kOutputs));
    return unmarkedFile("unmarked.json", blocks);
}

// As many blocks with a port each, and longer names.
std::string unmarkedGains(std::size_t signals) {
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < signals; ++i)
        blocks.push_back(
            fmt::format(R"({{"path": "{}", "eid": "{}", "outputs": ["out"]}})", narrow(blockPath(i)), i + 1));
    return unmarkedFile(fmt::format("unmarked-{}.json", signals), blocks);
}

std::string wideFile(std::size_t ports) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < ports; ++i) names.push_back(fmt::format("\"out{}\"", i + 1));
    return unmarkedFile("wide.json",
                        {fmt::format(R"({{"path": "Wide", "eid": "1", "outputs": [{}]}})", fmt::join(names, ", "))});
}

std::string deepFile(std::size_t levels) {
    std::string path;
    for (std::size_t i = 1; i < levels; ++i) path += "level/";
    return unmarkedFile("deep.json", {fmt::format(R"({{"path": "{}Gain", "eid": "1", "outputs": ["out"]}})", path)});
}

std::string ratioText(double own, double other, double unit, const char* unitName) {
    return fmt::format("{:.3g} {} / {:.3g} {}", own / unit, unitName, other / unit, unitName);
}

// A piece of work of the tool: its time beside one baseline's, its memory beside another's of the same work.
class Work {
public:
    Work(Measured own, Measured timed, Measured python)
        : m_own(std::move(own)), m_timed(std::move(timed)), m_python(std::move(python)) {}

    Suite::Line time() {
        measure();
        const Run& base = m_timed.command.empty() ? m_python.best : m_timed.best;
        return {ratioText(m_own.best.nanoseconds, base.nanoseconds, kSecond, "s"),
                m_own.best.nanoseconds / base.nanoseconds, "x"};
    }
    Suite::Line memory() {
        measure();
        return {ratioText(m_own.best.bytes, m_python.best.bytes, kMebibyte, "MiB"),
                m_own.best.bytes / m_python.best.bytes, "x"};
    }

private:
    void measure() {
        if (m_own.best.bytes != HUGE_VAL) return;
        for (int round = 0; round < kRounds; ++round)
            for (Measured* const one : {&m_own, &m_timed, &m_python})
                if (!one->command.empty()) one->run();
    }

    Measured m_own;
    Measured m_timed;  // without a command: the next one
    Measured m_python;
};

// 100,000 signals, made by the tool when they are first asked for.
struct Files {
    std::string unmarked = unmarkedDrives(100'000);
    std::string marked = directory().file("marked.json");
    std::string changed = directory().file("changed.json");
    std::string written = directory().file("written.json");
    std::string reference = "plant/Line 50/Drive 5000:1";

    Files() {
        std::filesystem::copy_file(unmarked, marked);
        runOnce(tool({"mark", marked, "--all", "*"}));
    }
};

const Files& files() {
    static const Files s_files;
    return s_files;
}

void addWork(Suite& suite, const std::string& what, const std::string& baseline, double limit, Work (*make)()) {
    const auto work = std::make_shared<std::optional<Work>>();
    const auto made = [=]() -> Work& {
        if (!*work) work->emplace(make());
        return **work;
    };
    suite.row(kGoal, what + ", " + baseline, Limit::atMost(limit), [=] { return made().time(); });
    suite.row(kGoal, what + ", peak memory, Python's for that", Limit::atMost(0.8), [=] { return made().memory(); });
}

void addWorks(Suite& suite) {
    addWork(suite, "query of one port of 100000", "jq .signals|length", 0.33, [] {
        const Files& f = files();
        return Work({tool({"query", f.marked, f.reference}), "", ""}, {jq(".signals|length", f.marked), "", ""},
                    {python({"count", f.marked}), "", ""});
    });
    addWork(suite, "one signal of 100000 less, saved", "Python's", 0.4, [] {
        const Files& f = files();
        return Work({tool({"unmark", f.changed, f.reference}), f.changed, f.marked}, {},
                    {python({"change", f.marked, f.written}), "", ""});
    });
    addWork(suite, "mark --all of 100000 ports", "Python's", 0.6, [] {
        const Files& f = files();
        return Work({tool({"mark", f.changed, "--all", "*"}), f.changed, f.unmarked}, {},
                    {python({"mark", f.unmarked, f.written}), "", ""});
    });
    addWork(suite, "show --json of 100000", "jq .", 0.33, [] {
        const Files& f = files();
        return Work({tool({"show", "--json", f.marked}), "", ""}, {jq(".", f.marked), "", ""},
                    {python({"show", f.marked}), "", ""});
    });
}

// What a run that marks everything took, and one that asks afterwards.
struct Great {
    Run mark;
    Run query;
};

const Great& great(std::size_t signals) {
    static std::map<std::size_t, Great> s_runs;
    const auto [found, isNew] = s_runs.try_emplace(signals);
    if (!isNew) return found->second;
    const std::string path = unmarkedGains(signals);
    found->second.mark = runOnce(tool({"mark", path, "--all", "*"}));
    found->second.query = runOnce(tool({"query", path, "plant/" + narrow(blockPath(signals / 2)) + ":1"}));
    std::filesystem::remove(path);
    return found->second;
}

void addGreat(Suite& suite, std::size_t signals, const char* name, Run Great::*run) {
    const auto text = [=](const Run& one) {
        return fmt::format("{:.3g} s, {:.4g} MiB", one.nanoseconds / kSecond, one.bytes / kMebibyte);
    };
    const std::string what = fmt::format("{} of {}", name, signals);
    suite.row(kGoal, what + ", peak memory a signal", Limit::atMost(1.5), [=] {
        const Run& one = great(signals).*run;
        return Suite::Line{text(one), one.bytes / static_cast<double>(signals) / 1000.0, "kB"};
    });
}

// The exponent with which a run's time grows with what is in the model, start of the process included.
void addGrowing(Suite& suite, const std::string& what, std::string (*make)(std::size_t size), std::size_t fewer,
                std::size_t more) {
    suite.row(kGoal, fmt::format("mark --all and query of {}: {}, {}", what, fewer, more), Limit::atMost(1.2), [=] {
        const auto time = [&](std::size_t size) {
            const std::string path = make(size);
            const double mark = runOnce(tool({"mark", path, "--all", "*"})).nanoseconds;
            return mark + runOnce(tool({"query", path, "--all", "*"})).nanoseconds;
        };
        const double less = time(fewer);
        const double greater = time(more);
        return Suite::Line{durationText(less) + ", " + durationText(greater),
                           std::log(greater / less) / std::log(static_cast<double>(more) / static_cast<double>(fewer)),
                           "(power)"};
    });
}

}  // namespace

void addToolRuns(Suite& suite) {
    addWorks(suite);
    addGreat(suite, 500'000, "mark --all", &Great::mark);
    addGreat(suite, 500'000, "query of one port", &Great::query);
    addGreat(suite, 1'000'000, "mark --all", &Great::mark);
    addGreat(suite, 1'000'000, "query of one port", &Great::query);
    addGrowing(suite, "one block's ports", wideFile, 10'000, 100'000);
    addGrowing(suite, "one block's levels", deepFile, 10'000, 100'000);
}

}  // namespace ks_bench
