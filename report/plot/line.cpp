#include "report/plot/line.h"

#include <fmt/format.h>

#include <cmath>

namespace report {

namespace {

struct Place {
    int x = 0;
    int y = 0;

    friend bool operator==(const Place&, const Place&) = default;
};

// Writes steps from place to place in as few characters as they take.
class PathWriter {
public:
    void moveTo(Place place) {
        endPiece();
        m_start = m_at = place;
        m_piece.clear();
        m_isOpen = true;
        m_isLine = false;
    }

    void lineTo(Place place) {
        if (place == m_at) return;
        const int right = place.x - m_at.x;
        const int down = place.y - m_at.y;
        m_piece += !m_isLine ? "l" : right >= 0 ? " " : "";
        m_piece += fmt::format("{}{}{}", right, down >= 0 ? " " : "", down);
        m_at = place;
        m_isLine = true;
    }

    void stepTo(Place place) {
        if (place.x != m_at.x) m_piece += fmt::format("h{}", place.x - m_at.x);
        if (place.y != m_at.y) m_piece += fmt::format("v{}", place.y - m_at.y);
        m_at = place;
    }

    DrawnLine take() {
        endPiece();
        return std::move(m_drawn);
    }

private:
    void endPiece() {
        if (!m_isOpen) return;
        std::string& path = m_piece.empty() ? m_drawn.dots : m_drawn.line;
        path += fmt::format("M{} {}{}", m_start.x, m_start.y, m_piece.empty() ? "h0" : m_piece);
    }

    DrawnLine m_drawn;
    std::string m_piece;
    Place m_start;
    Place m_at;
    bool m_isOpen = false;
    bool m_isLine = false;
};

int unitsOf(double share, std::size_t units) {
    return static_cast<int>(std::lround(share * static_cast<double>(units)));
}

}  // namespace

DrawnLine drawn(std::span<const Point> points, const TimeAxis& time, const ValueAxis& values, Grid grid,
                bool isStepped) {
    PathWriter path;
    bool isDrawing = false;
    for (const Point& point : points) {
        const bool isBreak = std::isnan(point.value);
        const Place place{unitsOf(shareOf(point.time, time.from, time.to), grid.width),
                          isBreak ? 0 : unitsOf(1.0 - shareOf(point.value, values.from, values.to), grid.height)};
        if (!isBreak && !isDrawing) path.moveTo(place);
        if (!isBreak && isDrawing) isStepped ? path.stepTo(place) : path.lineTo(place);
        isDrawing = !isBreak;
    }
    return path.take();
}

}  // namespace report
