#include "workbench/process/unit_driver.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace workbench {

namespace {

// Of a step, relative: what rounding may leave.
constexpr double kSlack = 1e-9;
constexpr int kMostRetries = 40;
constexpr int kMostStandstills = 1000;
constexpr std::size_t kPadding = 8;

// Sends messages. Those of the unit's other threads wait until this one has time.
class Sender {
public:
    Sender(SharedRing& ring, bool sendsLog) : m_ring(ring), m_sendsLog(sendsLog) {}

    void tellTime(double time) noexcept {
        m_time = time;
        m_ring.tellTime(time);
        if (m_hasQueued.load(std::memory_order_relaxed)) sendQueued();
    }

    void sample(double time, const std::vector<std::uint64_t>& slots, const std::string& texts) {
        const std::size_t size = slots.size() * sizeof(std::uint64_t);
        if (texts.empty()) return send(UnitMessage::sample, time, slots.data(), size);
        m_body.assign(reinterpret_cast<const char*>(slots.data()), size);
        m_body += texts;
        sendBody(UnitMessage::sample, time);
    }

    void log(UnitLogLevel level, std::string_view category, std::string_view text) {
        if (!m_sendsLog && level != UnitLogLevel::error) return;
        std::string body(1, static_cast<char>(level));
        body.append(category).append(1, '\0').append(text);
        if (std::this_thread::get_id() != m_thread) {
            const std::lock_guard lock(m_mutex);
            m_queued.push_back(std::move(body));
            m_hasQueued = true;
            return;
        }
        m_body = std::move(body);
        sendBody(UnitMessage::log, m_time);
        m_ring.flush();
    }

    void end(UnitEndKind kind, const std::string& text) {
        if (std::exchange(m_hasEnded, true)) return;
        sendQueued();
        m_body.assign(1, static_cast<char>(kind));
        m_body += text;
        sendBody(UnitMessage::end, m_time);
        m_ring.flush();
    }

private:
    void sendQueued() {
        const std::lock_guard lock(m_mutex);
        for (std::string& body : m_queued) {
            m_body = std::move(body);
            sendBody(UnitMessage::log, m_time);
        }
        m_queued.clear();
        m_hasQueued = false;
    }

    void sendBody(UnitMessage message, double time) {
        if (m_body.size() > kLongestMessage) throw UnitFailure("the unit's texts have more than 1 GiB at one time");
        const std::size_t size = m_body.size();
        m_body.append((kPadding - size % kPadding) % kPadding, '\0');
        const UnitMessageHead head{message, static_cast<std::uint32_t>(size), time};
        m_ring.send(head, m_body.data(), m_body.size());
    }

    void send(UnitMessage message, double time, const void* body, std::size_t size) {
        const UnitMessageHead head{message, static_cast<std::uint32_t>(size), time};
        m_ring.send(head, body, size);
    }

    SharedRing& m_ring;
    bool m_sendsLog;
    bool m_hasEnded = false;
    double m_time = 0.0;
    std::string m_body;
    const std::thread::id m_thread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::atomic<bool> m_hasQueued{false};
    std::vector<std::string> m_queued;
};

class Driver {
public:
    Driver(const UnitTask& task, SharedRing& ring, Sender& sender)
        : m_task(task),
          m_ring(ring),
          m_sender(sender),
          m_inputs(task.inputs),
          m_time(task.experiment.start),
          m_slots(task.slotCount) {}

    // From an instance to its last sample.
    UnitEndKind run(Unit& unit) {
        initialize(unit);
        takeSample(unit);
        if (m_hasEnded) return UnitEndKind::ended;
        const std::uint64_t count = stepCount(m_task.experiment.start, m_task.until, m_task.step);
        for (std::uint64_t number = 1; number <= count;) {
            if (m_ring.isToStop()) return UnitEndKind::interrupted;
            const double target =
                number == count
                    ? m_task.until
                    : m_task.experiment.start + static_cast<double>(static_cast<std::int64_t>(number)) * m_task.step;
            advance(unit, target);
            if (m_time >= target) ++number;
            if (m_time > m_sampledAt) takeSample(unit);
            if (m_hasEnded) return UnitEndKind::ended;
        }
        return UnitEndKind::done;
    }

private:
    void initialize(Unit& unit) {
        m_sender.tellTime(m_time);
        unit.configure(m_task.sizes);
        for (const UnitValue& value : m_task.values) unit.set(value);
        unit.enterInitialization(m_task.experiment);
        m_inputs.at(m_time, [&](const UnitInput& input) { unit.set(input.value); });
        m_sender.tellTime(m_time);
        unit.exitInitialization();
        m_nextEvent = unit.handleEvents(m_hasEnded);
    }

    // One step, towards the target or to it.
    void advance(Unit& unit, double target) {
        feed(unit);
        if (m_hasEnded) return;
        const bool stopsForEvent = m_task.takesAnyStep && m_nextEvent && *m_nextEvent > m_time && *m_nextEvent < target;
        const double end = stopsForEvent ? *m_nextEvent : target;
        const UnitStep step = stepTo(unit, end);
        const bool isThere = !(step.time < end - kSlack * m_task.step);
        requireProgress(step);
        m_time = isThere ? end : step.time;
        m_hasEnded = step.hasEnded;
        m_sender.tellTime(m_time);
        if (step.needsEvent && !m_hasEnded) m_nextEvent = unit.handleEvents(m_hasEnded);
    }

    // What jumps may do so in an event only, where the unit has events.
    void feed(Unit& unit) {
        bool hasEvent = false;
        m_inputs.at(m_time, [&](const UnitInput& input) {
            if (!input.isInterpolated && m_task.start.usesEvents && !std::exchange(hasEvent, true)) unit.beginEvent();
            unit.set(input.value);
        });
        if (hasEvent) m_nextEvent = unit.handleEvents(m_hasEnded);
    }

    UnitStep stepTo(Unit& unit, double end) {
        if (!m_task.keepsState) {
            const UnitStep step = unit.step(m_time, end - m_time, true);
            if (step.wasGivenUp && !step.hasEnded) refuseStep(step, end);
            return step;
        }
        unit.keepState();
        double size = end - m_time;
        for (int attempt = 0; attempt < kMostRetries; ++attempt) {
            const UnitStep step = unit.step(m_time, size, false);
            if (!step.wasGivenUp || step.hasEnded) return step;
            unit.restoreState();
            const double reached = step.time - m_time;
            size = reached > 0 && reached < size ? reached : size / 2;
        }
        throw UnitFailure(
            fmt::format("the unit gave up the step to t = {}, and every shorter one that was tried", end));
    }

    [[noreturn]] static void refuseStep(const UnitStep& step, double end) {
        throw UnitFailure(fmt::format(
            "the unit gave up the step to t = {} at t = {}; it could only go on if it took steps of any length and "
            "kept its state",
            end, step.time));
    }

    void requireProgress(const UnitStep& step) {
        if (std::isnan(step.time)) throw UnitFailure("the unit does not say how far it came");
        m_standstills = step.time > m_time ? 0 : m_standstills + 1;
        if (m_standstills > kMostStandstills)
            throw UnitFailure(fmt::format("the unit returned {} times without getting any further", kMostStandstills));
    }

    void takeSample(Unit& unit) {
        m_texts.clear();
        for (const UnitReadingPlan& plan : m_task.readings)
            if (plan.decimation == 1 || m_number % plan.decimation == 0)
                unit.read(plan.reading, m_slots.data() + plan.firstSlot, m_texts);
        ++m_number;
        m_sender.sample(m_time, m_slots, m_texts);
        m_sampledAt = m_time;
    }

    const UnitTask& m_task;
    SharedRing& m_ring;
    Sender& m_sender;
    UnitInputs m_inputs;
    double m_time;
    double m_sampledAt = 0.0;
    std::vector<std::uint64_t> m_slots;
    std::string m_texts;
    std::uint64_t m_number = 0;
    std::optional<double> m_nextEvent;
    bool m_hasEnded = false;
    int m_standstills = 0;
};

void drive(const UnitTask& task, SharedRing& ring, Sender& sender) {
    sender.tellTime(task.experiment.start);
    const UnitLog log = [&sender](UnitLogLevel level, std::string_view category, std::string_view text) {
        sender.log(level, category, text);
    };
    UnitEndKind kind = UnitEndKind::done;
    {
        const std::unique_ptr<Unit> unit = instantiateUnit(task.start, log);
        try {
            kind = Driver(task, ring, sender).run(*unit);
            unit->terminate();
        } catch (const UnitFailure& failure) {
            // Told before it is freed: that may fail, too.
            sender.end(UnitEndKind::failed, failure.what());
        }
    }
    sender.end(kind, kind == UnitEndKind::ended ? "the unit ended the run itself" : "");
}

}  // namespace

std::uint64_t stepCount(double from, double to, double step) noexcept {
    const double count = std::ceil((to - from) / step - kSlack);
    return count > 0 ? static_cast<std::uint64_t>(count) : 0;
}

bool hasShortStep(double from, double to, double step) noexcept {
    const double count = (to - from) / step;
    return std::abs(count - std::round(count)) > kSlack * std::max(1.0, count);
}

const char* nameOf(UnitEndKind kind) noexcept {
    static constexpr std::array<const char*, 6> kNames{"done", "ended", "interrupted", "failed", "crashed", "hung"};
    return kNames[static_cast<std::size_t>(kind)];
}

void driveUnit(const UnitTask& task, bool sendsLog, SharedRing& ring) noexcept {
    Sender sender(ring, sendsLog);
    try {
        drive(task, ring, sender);
    } catch (const std::exception& exception) {
        sender.end(UnitEndKind::failed, exception.what());
    } catch (...) {
        sender.end(UnitEndKind::failed, "the unit let an exception of its own language out");
    }
}

}  // namespace workbench
