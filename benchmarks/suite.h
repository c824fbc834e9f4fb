#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// What is measured, and the table that it ends up in.
namespace ks_bench {

/// What a row's figure is held against.
struct Limit {
    enum class Kind { none, atMost, atLeast };
    Kind kind = Kind::none;
    double value = 0.0;

    static Limit atMost(double value) { return {Kind::atMost, value}; }
    static Limit atLeast(double value) { return {Kind::atLeast, value}; }
    bool holds(double figure) const noexcept;
};

/// Medians of real time in nanoseconds per iteration, by the names of the benchmarks.
using Medians = std::map<std::string, double>;

/// The benchmarks and the rows of the table. Goals are numbered as docs/performance.md lists them.
class Suite {
public:
    using Body = std::function<void(benchmark::State&)>;

    /// Registers a benchmark. The result is for its settings.
    static benchmark::internal::Benchmark* time(const std::string& name, Body body);

    /// The measured time over the baseline's.
    void compare(int goal, std::string what, std::string measured, std::string baseline, Limit limit);
    /// The baseline's time over the measured one.
    void speedUp(int goal, std::string what, std::string measured, std::string baseline, Limit limit);
    /// How the total time grows with the number of elements: the exponent between the smallest and the greatest
    /// size (1 is linear, 2 quadratic). `names` are benchmarks of one pass over that many elements.
    void growth(int goal, std::string what, const std::map<std::size_t, std::string>& names, Limit limit);
    /// One benchmark's time per iteration in milliseconds.
    void milliseconds(int goal, std::string what, std::string measured, Limit limit);
    /// How many milliseconds more the measured one takes than the baseline.
    void excess(int goal, std::string what, std::string measured, std::string baseline, Limit limit);
    /// A figure that is no time; computed when the table is printed, unless a filter chose some benchmarks only.
    void figure(int goal, std::string what, const char* unit, std::function<double()> compute, Limit limit);

    /// What is in a row beside its name and limit.
    struct Line {
        std::string detail;  ///< the times behind the figure
        double figure;
        const char* unit;
    };
    /// A figure with what is behind it, computed as `figure` does.
    void row(int goal, std::string what, Limit limit, std::function<Line()> compute);

    /// Computes the rows, in the order of the goals. Those whose benchmarks did not run are left out.
    void compute(const Medians& medians);
    /// Prints what was computed as a table, and how many goals are missed.
    void print(std::ostream& out) const;
    /// The same as a page in Markdown, which names the machine.
    void writePage(std::ostream& out) const;

private:
    struct Row {
        int goal;
        std::string what;
        Limit limit;
        std::function<std::optional<Line>(const Medians&)> compute;
    };
    struct Computed {
        const Row* row;
        Line line;
    };
    void add(int goal, std::string what, Limit limit, std::function<std::optional<Line>(const Medians&)> compute);

    std::vector<Row> m_rows;
    std::vector<Computed> m_computed;
};

/// "12.3 ns", "4.56 ms".
std::string durationText(double nanoseconds);

// Each adds the benchmarks and rows of one subject.
void addHandleQueries(Suite& suite);
void addPathQueries(Suite& suite);
void addEnginePortQueries(Suite& suite);
void addChartQueries(Suite& suite);
void addKeyHashes(Suite& suite);
void addPersistence(Suite& suite);
void addModelFiles(Suite& suite);
void addGrowth(Suite& suite);
void addRemovals(Suite& suite);
void addMemory(Suite& suite);
void addStart(Suite& suite);
void addRecording(Suite& suite);
void addPythonMarking(Suite& suite);
void addToolRuns(Suite& suite);

}  // namespace ks_bench
