#include "benchmarks/suite.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <thread>
#include <utility>

namespace ks_bench {

namespace {

constexpr double kMillisecond = 1e6;

std::optional<double> medianOf(const Medians& medians, const std::string& name) {
    const auto found = medians.find(name);
    return found == medians.end() ? std::nullopt : std::optional(found->second);
}

std::string limitText(const Limit& limit) {
    if (limit.kind == Limit::Kind::none) return "";
    return fmt::format("{} {:g}", limit.kind == Limit::Kind::atMost ? "<=" : ">=", limit.value);
}

#ifdef __clang__
constexpr const char* kCompiler = "Clang " __clang_version__;
#else
constexpr const char* kCompiler = "GCC " __VERSION__;
#endif

std::string processorName() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
    return "A processor that does not tell its name";
}

const char* verdict(const Limit& limit, double figure) {
    if (limit.kind == Limit::Kind::none) return "";
    return limit.holds(figure) ? "ok" : "MISSED";
}

}  // namespace

bool Limit::holds(double figure) const noexcept {
    if (kind == Kind::none) return true;
    return kind == Kind::atMost ? figure <= value : figure >= value;
}

benchmark::internal::Benchmark* Suite::time(const std::string& name, Body body) {
    return benchmark::RegisterBenchmark(name.c_str(), std::move(body));
}

void Suite::add(int goal, std::string what, Limit limit, std::function<std::optional<Line>(const Medians&)> compute) {
    m_rows.push_back({goal, std::move(what), limit, std::move(compute)});
}

void Suite::compare(int goal, std::string what, std::string measured, std::string baseline, Limit limit) {
    add(goal, std::move(what), limit, [=](const Medians& medians) -> std::optional<Line> {
        const auto own = medianOf(medians, measured);
        const auto other = medianOf(medians, baseline);
        if (!own || !other) return std::nullopt;
        return Line{durationText(*own) + " / " + durationText(*other), *own / *other, "x"};
    });
}

void Suite::speedUp(int goal, std::string what, std::string measured, std::string baseline, Limit limit) {
    add(goal, std::move(what), limit, [=](const Medians& medians) -> std::optional<Line> {
        const auto own = medianOf(medians, measured);
        const auto other = medianOf(medians, baseline);
        if (!own || !other) return std::nullopt;
        return Line{durationText(*own) + " / " + durationText(*other), *other / *own, "faster"};
    });
}

void Suite::growth(int goal, std::string what, const std::map<std::size_t, std::string>& names, Limit limit) {
    add(goal, std::move(what), limit, [names](const Medians& medians) -> std::optional<Line> {
        std::vector<std::pair<double, double>> totals;
        std::string detail;
        for (const auto& [size, name] : names) {
            const auto total = medianOf(medians, name);
            if (!total) return std::nullopt;
            totals.emplace_back(static_cast<double>(size), *total);
            detail += (detail.empty() ? "" : ", ") + durationText(*total / static_cast<double>(size));
        }
        const auto [fewest, shortest] = totals.front();
        const auto [most, longest] = totals.back();
        return Line{detail, std::log(longest / shortest) / std::log(most / fewest), "(power)"};
    });
}

void Suite::milliseconds(int goal, std::string what, std::string measured, Limit limit) {
    add(goal, std::move(what), limit, [measured = std::move(measured)](const Medians& medians) -> std::optional<Line> {
        const auto own = medianOf(medians, measured);
        if (!own) return std::nullopt;
        return Line{durationText(*own), *own / kMillisecond, "ms"};
    });
}

void Suite::excess(int goal, std::string what, std::string measured, std::string baseline, Limit limit) {
    add(goal, std::move(what), limit, [=](const Medians& medians) -> std::optional<Line> {
        const auto own = medianOf(medians, measured);
        const auto other = medianOf(medians, baseline);
        if (!own || !other) return std::nullopt;
        return Line{durationText(*own) + " / " + durationText(*other), (*own - *other) / kMillisecond, "ms more"};
    });
}

void Suite::figure(int goal, std::string what, const char* unit, std::function<double()> compute, Limit limit) {
    row(goal, std::move(what), limit, [=] { return Line{"", compute(), unit}; });
}

void Suite::row(int goal, std::string what, Limit limit, std::function<Line()> compute) {
    add(goal, std::move(what), limit, [=](const Medians&) -> std::optional<Line> {
        if (!benchmark::GetBenchmarkFilter().empty()) return std::nullopt;
        return compute();
    });
}

void Suite::compute(const Medians& medians) {
    std::stable_sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) { return a.goal < b.goal; });
    for (const Row& row : m_rows)
        if (std::optional<Line> line = row.compute(medians)) m_computed.push_back({&row, std::move(*line)});
}

void Suite::print(std::ostream& out) const {
    std::vector<std::string> missed;
    out << fmt::format("{:<4} {:<62} {:<44} {:>9} {:<8} {:<9} {}\n", "goal", "what", "measured / baseline", "figure",
                       "", "limit", "");
    for (const auto& [row, line] : m_computed) {
        out << fmt::format("{:<4} {:<62} {:<44} {:>9.2f} {:<8} {:<9} {}\n", row->goal, row->what, line.detail,
                           line.figure, line.unit, limitText(row->limit), verdict(row->limit, line.figure));
        if (!row->limit.holds(line.figure)) missed.push_back(fmt::format("goal {}: {}", row->goal, row->what));
    }
    out << fmt::format("\n{} of the goals above fall short\n", missed.empty() ? "none" : std::to_string(missed.size()));
    for (const std::string& what : missed) out << "  " << what << '\n';
}

void Suite::writePage(std::ostream& out) const {
    out << "# Performance: the figures\n\nAs `./dev bench --write` wrote them; [performance.md](performance.md) tells "
           "how "
           "each is measured and what bounds it.\n\n";
    out << fmt::format("{}, {} cores; {}.\n\n", processorName(), std::thread::hardware_concurrency(), kCompiler);
    out << "| goal | what | measured / baseline | figure | limit | |\n|---|---|---|---|---|---|\n";
    for (const auto& [row, line] : m_computed) {
        const bool isMissed = !row->limit.holds(line.figure);
        std::string what = row->what;
        for (std::size_t at = 0; (at = what.find('|', at)) != std::string::npos; at += 2) what.insert(at, 1, '\\');
        out << fmt::format("| {} | {} | {} | {:.2f} {} | {} | {} |\n", row->goal, what, line.detail, line.figure,
                           line.unit, limitText(row->limit),
                           isMissed ? "**missed**" : verdict(row->limit, line.figure));
    }
}

std::string durationText(double nanoseconds) {
    static constexpr std::array<std::pair<double, const char*>, 3> kUnits{{{1e9, "s"}, {1e6, "ms"}, {1e3, "us"}}};
    for (const auto& [scale, unit] : kUnits)
        if (nanoseconds >= scale) return fmt::format("{:.3g} {}", nanoseconds / scale, unit);
    return fmt::format("{:.3g} ns", nanoseconds);
}

}  // namespace ks_bench
