#include "report/plot/thinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "report/plot/axis.h"

namespace report {

namespace {

constexpr double kBreak = std::numeric_limits<double>::quiet_NaN();

class Thinning {
public:
    Thinning(std::span<const double> times, std::span<const double> values, bool isCoarse)
        : m_times(times), m_values(values), m_isCoarse(isCoarse) {}

    void take(std::size_t sample, std::size_t column) {
        if (m_samples > 0 && column < m_column) return;
        if (m_samples > 0 && column > m_column) endColumn();
        m_column = column;
        const bool isFinite = std::isfinite(m_values[sample]);
        if (m_samples++ == 0) m_startsBroken = !isFinite;
        m_endsBroken = !isFinite;
        m_lastTime = m_times[sample];
        if (isFinite) takeFinite(sample);
    }

    std::vector<Point> finish() {
        m_isCoarse = false;
        if (m_samples > 0) endColumn();
        return std::move(m_points);
    }

private:
    void takeFinite(std::size_t sample) {
        if (!m_kept) m_kept = {sample, sample, sample, sample};
        auto& [first, least, greatest, last] = *m_kept;
        if (m_values[sample] < m_values[least]) least = sample;
        if (m_values[sample] > m_values[greatest]) greatest = sample;
        last = sample;
    }

    void endColumn() {
        if (m_startsBroken) addBreak();
        if (m_kept) {
            if (m_isCoarse && !m_points.empty()) m_kept = {(*m_kept)[1], (*m_kept)[1], (*m_kept)[2], (*m_kept)[2]};
            std::sort(m_kept->begin(), m_kept->end());
            const auto end = std::unique(m_kept->begin(), m_kept->end());
            for (auto sample = m_kept->begin(); sample != end; ++sample)
                m_points.push_back({m_times[*sample], m_values[*sample]});
        }
        if (m_endsBroken) addBreak();
        m_kept.reset();
        m_samples = 0;
    }

    void addBreak() {
        if (!m_points.empty() && !std::isnan(m_points.back().value)) m_points.push_back({m_lastTime, kBreak});
    }

    std::span<const double> m_times;
    std::span<const double> m_values;
    bool m_isCoarse;
    std::vector<Point> m_points;
    // Of the column that is being filled.
    std::size_t m_column = 0;
    std::size_t m_samples = 0;
    bool m_startsBroken = false;
    bool m_endsBroken = false;
    double m_lastTime = 0.0;
    std::optional<std::array<std::size_t, 4>> m_kept;
};

}  // namespace

std::vector<Point> thinned(std::span<const double> times, std::span<const double> values, double from, double to,
                           std::size_t columns, bool isCoarse) {
    Thinning thinning(times, values, isCoarse);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(times[i])) continue;
        const double at = shareOf(times[i], from, to) * static_cast<double>(columns);
        thinning.take(i, std::min(static_cast<std::size_t>(at), columns - 1));
    }
    return thinning.finish();
}

}  // namespace report
