#include <fmt/format.h>

#include <array>

#include "workbench/unit/fmi3_api.h"
#include "workbench/unit/fmi3_types.h"
#include "workbench/unit/unit.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

using namespace fmi3;

// More rounds than any unit needs to settle an event.
constexpr int kMostRounds = 10000;

struct Api {
    explicit Api(const UnitLibrary& library)
        : instantiate(library.get<Instantiate>("fmi3InstantiateCoSimulation")),
          freeInstance(library.get<FreeInstance>("fmi3FreeInstance")),
          enterInitialization(library.get<EnterInitialization>("fmi3EnterInitializationMode")),
          exitInitialization(library.get<Simple>("fmi3ExitInitializationMode")),
          terminate(library.get<Simple>("fmi3Terminate")),
          doStep(library.get<DoStep>("fmi3DoStep")),
          getFloat64(library.get<Get<double>>("fmi3GetFloat64")) {}

    Instantiate instantiate;
    FreeInstance freeInstance;
    EnterInitialization enterInitialization;
    Simple exitInitialization, terminate;
    DoStep doStep;
    Get<double> getFloat64;
};

void takeMessage(void* environment, Status status, const char* category, const char* message) {
    if (environment == nullptr || message == nullptr) return;
    const UnitLogLevel level = status >= error     ? UnitLogLevel::error
                               : status >= warning ? UnitLogLevel::warning
                                                   : UnitLogLevel::information;
    (*static_cast<const UnitLog*>(environment))(level, category != nullptr ? category : "", message);
}

class Fmi3Unit final : public Unit {
public:
    Fmi3Unit(const UnitStart& start, const UnitLog& log)
        : m_library(start.library), m_api(m_library), m_usesEvents(start.usesEvents) {
        const std::string resources = start.resources + "/";
        m_unit =
            m_api.instantiate(start.name.c_str(), start.token.c_str(), resources.c_str(), false, start.logs,
                              start.usesEvents, true, nullptr, 0, const_cast<UnitLog*>(&log), takeMessage, nullptr);
        if (m_unit == nullptr) throw UnitFailure("fmi3InstantiateCoSimulation made no instance");
    }
    ~Fmi3Unit() override {
        if (m_unit == nullptr || m_isFatal) return;
        if (m_state != nullptr) m_library.get<TakeState>("fmi3FreeFMUState")(m_unit, &m_state);
        m_api.freeInstance(m_unit);
    }

    void configure(const std::vector<UnitValue>& sizes) override {
        if (sizes.empty()) return;
        callSimple("fmi3EnterConfigurationMode");
        for (const UnitValue& size : sizes) set(size);
        callSimple("fmi3ExitConfigurationMode");
    }

    void set(const UnitValue& value) override {
        const char* const function = functionsOf(value.type).set;
        if (value.type == UnitType::string) return setStrings(value, function);
        if (value.type == UnitType::binary) return setBinaries(value, function);
        withNumberType(value.type, [&]<class T>(T) {
            const auto values = std::make_unique<T[]>(value.slots.size());
            for (std::size_t i = 0; i < value.slots.size(); ++i) values[i] = valueOf<T>(value.slots[i]);
            check(m_library.get<Set<T>>(function)(m_unit, &value.reference, 1, values.get(), value.slots.size()),
                  function);
        });
    }

    void enterInitialization(const UnitExperiment& experiment) override {
        check(m_api.enterInitialization(m_unit, experiment.tolerance.has_value(), experiment.tolerance.value_or(0),
                                        experiment.start, experiment.stop.has_value(), experiment.stop.value_or(0)),
              "fmi3EnterInitializationMode");
    }
    void exitInitialization() override {
        check(m_api.exitInitialization(m_unit), "fmi3ExitInitializationMode");
        m_isInEventMode = m_usesEvents;
    }

    void beginEvent() override {
        if (!m_isInEventMode) callSimple("fmi3EnterEventMode");
        m_isInEventMode = true;
    }
    std::optional<double> handleEvents(bool& hasEnded) override {
        if (!m_usesEvents) return std::nullopt;
        beginEvent();
        const std::optional<double> next = settleEvent(hasEnded);
        if (hasEnded) return std::nullopt;
        callSimple("fmi3EnterStepMode");
        m_isInEventMode = false;
        return next;
    }

    void keepState() override {
        check(m_library.get<TakeState>("fmi3GetFMUState")(m_unit, &m_state), "fmi3GetFMUState");
    }
    void restoreState() override {
        check(m_library.get<GiveState>("fmi3SetFMUState")(m_unit, m_state), "fmi3SetFMUState");
    }

    UnitStep step(double time, double size, bool isFinal) override {
        UnitStep result{time + size};
        bool hasReturnedEarly = false;
        double reached = time + size;
        const Status status = m_api.doStep(m_unit, time, size, isFinal, &result.needsEvent, &result.hasEnded,
                                           &hasReturnedEarly, &reached);
        if (status == discard) return {reached < time + size ? reached : time, true, false, result.hasEnded};
        check(status, "fmi3DoStep");
        if (hasReturnedEarly || result.hasEnded) result.time = reached;
        return result;
    }

    void read(const UnitReading& reading, std::uint64_t* slots, std::string& texts) override {
        const std::vector<Reference>& references = reading.references;
        if (reading.type == UnitType::float64)
            return check(m_api.getFloat64(m_unit, references.data(), references.size(),
                                          reinterpret_cast<double*>(slots), reading.count),
                         "fmi3GetFloat64");
        if (reading.type == UnitType::string) return readStrings(reading, slots, texts);
        if (reading.type == UnitType::binary) return readBinaries(reading, slots, texts);
        const char* const function = functionsOf(reading.type).get;
        withNumberType(reading.type, [&]<class T>(T) {
            m_scratch.resize(reading.count * sizeof(T));
            T* const values = reinterpret_cast<T*>(m_scratch.data());
            check(m_library.get<Get<T>>(function)(m_unit, references.data(), references.size(), values, reading.count),
                  function);
            for (std::size_t i = 0; i < reading.count; ++i) slots[i] = slotOf(values[i]);
        });
    }

    void terminate() override { check(m_api.terminate(m_unit), "fmi3Terminate"); }

private:
    std::optional<double> settleEvent(bool& hasEnded) {
        const auto update = m_library.get<UpdateDiscreteStates>("fmi3UpdateDiscreteStates");
        for (int round = 0; round < kMostRounds; ++round) {
            bool needsUpdate = false;
            bool isOther = false;
            bool hasNext = false;
            double next = 0.0;
            check(update(m_unit, &needsUpdate, &hasEnded, &isOther, &isOther, &hasNext, &next),
                  "fmi3UpdateDiscreteStates");
            if (!needsUpdate || hasEnded) return hasNext ? std::optional(next) : std::nullopt;
        }
        throw UnitFailure("fmi3UpdateDiscreteStates asks to be called again without end");
    }

    void setStrings(const UnitValue& value, const char* function) {
        std::vector<const char*> texts;
        for (const std::string& text : value.texts) texts.push_back(text.c_str());
        check(m_library.get<Set<const char*>>(function)(m_unit, &value.reference, 1, texts.data(), texts.size()),
              function);
    }

    void setBinaries(const UnitValue& value, const char* function) {
        std::vector<std::size_t> sizes;
        std::vector<Binary> values;
        for (const std::string& text : value.texts) {
            sizes.push_back(text.size());
            values.push_back(reinterpret_cast<Binary>(text.data()));
        }
        check(
            m_library.get<SetBinary>(function)(m_unit, &value.reference, 1, sizes.data(), values.data(), values.size()),
            function);
    }

    void readStrings(const UnitReading& reading, std::uint64_t* slots, std::string& texts) {
        std::vector<const char*> values(reading.count, nullptr);
        const char* const function = functionsOf(reading.type).get;
        check(m_library.get<Get<const char*>>(function)(m_unit, reading.references.data(), reading.references.size(),
                                                        values.data(), values.size()),
              function);
        for (std::size_t i = 0; i < values.size(); ++i)
            slots[i] = addText(texts, values[i] != nullptr ? values[i] : "");
    }

    void readBinaries(const UnitReading& reading, std::uint64_t* slots, std::string& texts) {
        std::vector<std::size_t> sizes(reading.count, 0);
        std::vector<Binary> values(reading.count, nullptr);
        const char* const function = functionsOf(reading.type).get;
        check(m_library.get<GetBinary>(function)(m_unit, reading.references.data(), reading.references.size(),
                                                 sizes.data(), values.data(), values.size()),
              function);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto* const bytes = reinterpret_cast<const char*>(values[i]);
            slots[i] = addText(texts, bytes != nullptr ? std::string_view(bytes, sizes[i]) : std::string_view());
        }
    }

    void callSimple(const char* function) { check(m_library.get<Simple>(function)(m_unit), function); }

    void check(Status status, const char* function) {
        if (status <= warning) return;
        m_isFatal = status == fatal;
        static constexpr std::array<const char*, 3> kWords{"discarded the call", "reported an error",
                                                           "reported a fatal error"};
        const auto word = static_cast<std::size_t>(status - discard);
        throw UnitFailure(fmt::format("{} {}", function, word < kWords.size() ? kWords[word] : "gave no known answer"));
    }

    UnitLibrary m_library;
    Api m_api;
    Instance m_unit = nullptr;
    State m_state = nullptr;
    bool m_usesEvents;
    bool m_isInEventMode = false;
    bool m_isFatal = false;
    std::vector<char> m_scratch;
};

}  // namespace

std::unique_ptr<Unit> instantiateFmi3Unit(const UnitStart& start, const UnitLog& log) {
    return std::make_unique<Fmi3Unit>(start, log);
}

}  // namespace workbench
