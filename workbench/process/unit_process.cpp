#include "workbench/process/unit_process.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <optional>

#include "workbench/process/child_process.h"
#include "workbench/process/unit_driver.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPause = 50;  // milliseconds
constexpr std::chrono::milliseconds kBetweenProgress{200};
// Taken between two looks at the process.
constexpr std::size_t kMostPieces = 32;
constexpr std::size_t kMostSamples = 64;
// What a unit may take for its last step, and for going.
constexpr std::chrono::seconds kGrace{2};

// Of what a unit says, so much is told.
constexpr std::size_t kMostSaid = std::size_t{1} << 14U;

// Bytes that are no UTF-8 are mended.
std::string said(std::string_view text) { return toUtf8(toUtf16(text.substr(0, kMostSaid))); }

// With what fills it up to whole slots.
constexpr std::size_t paddedSize(std::size_t size) noexcept { return (size + 7) / 8 * 8; }

template <class Enumeration>
constexpr bool isUpTo(char byte, Enumeration last) noexcept {
    return static_cast<unsigned char>(byte) <= static_cast<unsigned char>(last);
}

// Takes the stream apart. The unit may have written anything over it.
class Decoder {
public:
    Decoder(const UnitTask& task, const UnitControl& control, UnitListener& listener)
        : m_listener(listener),
          m_slotSize(task.slotCount * sizeof(std::uint64_t)),
          m_logs(control.logs),
          m_time(task.experiment.start) {}

    std::string& pending() noexcept { return m_pending; }

    // False for what was never sent.
    bool decode() {
        std::size_t at = 0;
        UnitMessageHead head;
        while (m_pending.size() - at >= sizeof head) {
            std::memcpy(&head, m_pending.data() + at, sizeof head);
            if (head.size > kLongestMessage) return handOn(false);
            const std::size_t whole = sizeof head + paddedSize(head.size);
            if (m_pending.size() - at < whole) break;
            if (!take(head, std::string_view(m_pending).substr(at + sizeof head, head.size))) return handOn(false);
            at += whole;
        }
        handOn(true);
        m_pending.erase(0, at);
        return true;
    }

    const std::optional<UnitEnd>& end() const noexcept { return m_end; }
    const std::string& lastError() const noexcept { return m_lastError; }
    double time() const noexcept { return m_time; }

private:
    bool take(const UnitMessageHead& head, std::string_view body) {
        if (!std::isfinite(head.time) || head.time < m_time) return false;
        m_time = head.time;
        switch (head.message) {
            case UnitMessage::sample:
                return takeSample(head.time, body);
            case UnitMessage::log:
                return takeLog(head.time, body);
            case UnitMessage::end:
                if (body.empty() || !isUpTo(body.front(), UnitEndKind::hung)) return false;
                m_end = UnitEnd{static_cast<UnitEndKind>(body.front()), head.time, said(body.substr(1))};
                return true;
        }
        return false;
    }

    bool takeSample(double time, std::string_view body) {
        if (body.size() < m_slotSize) return false;
        // Aligned, whatever was sent: all before it is filled up to whole slots.
        const auto* const slots = reinterpret_cast<const std::uint64_t*>(body.data());
        m_samples.push_back({time, m_number++, slots, body.substr(m_slotSize)});
        return m_samples.size() < kMostSamples || handOn(true);
    }

    bool handOn(bool result) {
        if (!m_samples.empty()) m_listener.samples(m_samples);
        m_samples.clear();
        return result;
    }

    bool takeLog(double time, std::string_view body) {
        const std::size_t end = body.find('\0', 1);
        if (end == std::string_view::npos || !isUpTo(body.front(), UnitLogLevel::error)) return false;
        const auto level = static_cast<UnitLogLevel>(body.front());
        const std::string text = said(body.substr(end + 1));
        if (level == UnitLogLevel::error) m_lastError = text;
        handOn(true);
        if (m_logs) m_listener.message(time, level, said(body.substr(1, end - 1)), text);
        return true;
    }

    UnitListener& m_listener;
    std::size_t m_slotSize;
    bool m_logs;
    double m_time;
    std::string m_pending;
    std::uint64_t m_number = 0;
    std::vector<UnitSample> m_samples;  // not yet handed on
    std::optional<UnitEnd> m_end;
    std::string m_lastError;
};

class Watch {
public:
    Watch(const UnitTask& task, const UnitControl& control, UnitListener& listener)
        : m_control(control),
          m_listener(listener),
          m_decoder(task, control, listener),
          m_process([&] { driveUnit(task, control.logs, m_ring); }) {}

    UnitEnd run() {
        while (true) {
            // Whoever has ended sends nothing more.
            const bool hasEnded = m_process.hasEnded();
            const bool hasReceived = receive();
            if (hasEnded && !hasReceived) return end();
            look();
            if (!hasReceived) m_ring.wait(m_decoder.end() ? 1 : kPause);
        }
    }

private:
    bool receive() {
        std::size_t pieces = 0;
        while (pieces < kMostPieces && receivePiece()) ++pieces;
        return pieces > 0;
    }

    bool receivePiece() {
        const std::size_t before = m_decoder.pending().size();
        bool isWhole = m_ring.receive(m_decoder.pending());
        const bool hasReceived = m_decoder.pending().size() > before;
        isWhole = isWhole && m_decoder.decode();
        if (isWhole || m_killed) return hasReceived && isWhole;
        stop(UnitEndKind::crashed, "the unit wrote over memory that is not its own");
        return false;
    }

    void look() {
        const Clock::time_point now = Clock::now();
        if (const std::uint64_t beat = m_ring.beat(); beat != m_beat) {
            m_beat = beat;
            m_beatAt = now;
        }
        const std::chrono::duration<double> silence = now - m_beatAt;
        const int requests = m_control.stopRequests ? m_control.stopRequests() : 0;
        if (requests > 0 && !m_askedAt) {
            m_ring.askToStop();
            m_askedAt = now;
        }
        if (m_askedAt && (requests > 1 || now - *m_askedAt > kGrace))
            stop(UnitEndKind::interrupted, "");
        else if (m_control.timeout > 0 && silence.count() > m_control.timeout)
            stop(UnitEndKind::hung, fmt::format("the unit did not come back within {} s", m_control.timeout));
        else if (m_decoder.end() && silence > kGrace)
            stop(m_decoder.end()->kind, m_decoder.end()->message);
        if (now - m_toldAt < kBetweenProgress) return;
        m_toldAt = now;
        m_listener.progress(time());
    }

    void stop(UnitEndKind kind, const std::string& message) {
        if (m_killed) return;
        m_killed = UnitEnd{kind, time(), message};
        m_process.kill();
    }

    double time() const noexcept {
        const double told = m_ring.time();
        return std::isfinite(told) ? told : m_decoder.time();
    }

    UnitEnd end() const {
        UnitEnd end{UnitEndKind::crashed, time(), ""};
        const std::optional<std::string> mishap = m_process.mishap();
        if (m_decoder.end() && (m_killed || !mishap || m_decoder.end()->kind != UnitEndKind::done))
            end = *m_decoder.end();
        else if (m_killed)
            end = *m_killed;
        else
            end.message = "the unit " + mishap.value_or("ended its process itself");
        const bool isFault = end.kind == UnitEndKind::failed || end.kind == UnitEndKind::crashed;
        if (isFault && !m_decoder.lastError().empty()) end.message += ": " + m_decoder.lastError();
        return end;
    }

    const UnitControl& m_control;
    UnitListener& m_listener;
    SharedRing m_ring;
    Decoder m_decoder;
    ChildProcess m_process;
    std::uint64_t m_beat = 0;
    Clock::time_point m_beatAt = Clock::now();
    Clock::time_point m_toldAt = Clock::now();
    std::optional<Clock::time_point> m_askedAt;
    std::optional<UnitEnd> m_killed;
};

}  // namespace

UnitEnd runUnit(const UnitTask& task, const UnitControl& control, UnitListener& listener) {
    return Watch(task, control, listener).run();
}

}  // namespace workbench
