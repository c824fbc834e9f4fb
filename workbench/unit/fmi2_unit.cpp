#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "workbench/unit/fmi2_api.h"
#include "workbench/unit/unit.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

using namespace fmi2;

constexpr std::size_t kLongestMessage = 16384;

struct Api {
    explicit Api(const UnitLibrary& library)
        : instantiate(library.get<Instantiate>("fmi2Instantiate")),
          freeInstance(library.get<FreeInstance>("fmi2FreeInstance")),
          setupExperiment(library.get<SetupExperiment>("fmi2SetupExperiment")),
          enterInitialization(library.get<Simple>("fmi2EnterInitializationMode")),
          exitInitialization(library.get<Simple>("fmi2ExitInitializationMode")),
          terminate(library.get<Simple>("fmi2Terminate")),
          doStep(library.get<DoStep>("fmi2DoStep")),
          getReal(library.get<Get<double>>("fmi2GetReal")) {}

    Instantiate instantiate;
    FreeInstance freeInstance;
    SetupExperiment setupExperiment;
    Simple enterInitialization, exitInitialization, terminate;
    DoStep doStep;
    Get<double> getReal;
};

// Called with the unit's own format and arguments.
__attribute__((format(printf, 5, 6))) void takeMessage(void* environment, const char*, Status status,
                                                       const char* category, const char* message, ...) {
    if (environment == nullptr || message == nullptr) return;
    std::array<char, kLongestMessage> text{};
    std::va_list arguments;
    va_start(arguments, message);
    const int size = std::vsnprintf(text.data(), text.size(), message, arguments);
    va_end(arguments);
    if (size < 0) return;
    const std::string_view whole(text.data(), std::min(static_cast<std::size_t>(size), text.size() - 1));
    const UnitLogLevel level = status >= error     ? UnitLogLevel::error
                               : status >= warning ? UnitLogLevel::warning
                                                   : UnitLogLevel::information;
    (*static_cast<const UnitLog*>(environment))(level, category != nullptr ? category : "", whole);
}

// A path as a reference of that scheme.
std::string fileUri(std::string_view path) {
    std::string uri = "file://";
    for (const char c : path) {
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                             std::string_view("/-._~").find(c) != std::string_view::npos;
        uri += isPlain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return uri;
}

class Fmi2Unit final : public Unit {
public:
    Fmi2Unit(const UnitStart& start, const UnitLog& log)
        : m_library(start.library),
          m_api(m_library),
          m_callbacks{takeMessage, std::calloc, std::free, nullptr, const_cast<UnitLog*>(&log)} {
        const std::string resources = fileUri(start.resources);
        m_unit = m_api.instantiate(start.name.c_str(), coSimulation, start.token.c_str(), resources.c_str(),
                                   &m_callbacks, 0, start.logs ? 1 : 0);
        if (m_unit == nullptr) throw UnitFailure("fmi2Instantiate made no instance");
    }
    ~Fmi2Unit() override {
        if (m_unit == nullptr || m_isFatal) return;
        if (m_state != nullptr) m_library.get<TakeState>("fmi2FreeFMUstate")(m_unit, &m_state);
        m_api.freeInstance(m_unit);
    }

    void configure(const std::vector<UnitValue>&) override {}

    void set(const UnitValue& value) override {
        const Reference* const reference = &value.reference;
        if (value.type == UnitType::float64) {
            const auto number = std::bit_cast<double>(value.slots.at(0));
            call<Set<double>>("fmi2SetReal", reference, std::size_t{1}, &number);
        } else if (value.type == UnitType::string) {
            const char* const text = value.texts.at(0).c_str();
            call<Set<const char*>>("fmi2SetString", reference, std::size_t{1}, &text);
        } else {
            const auto number = static_cast<int>(value.slots.at(0));
            call<Set<int>>(value.type == UnitType::boolean ? "fmi2SetBoolean" : "fmi2SetInteger", reference,
                           std::size_t{1}, &number);
        }
    }

    void enterInitialization(const UnitExperiment& experiment) override {
        check(m_api.setupExperiment(m_unit, experiment.tolerance ? 1 : 0, experiment.tolerance.value_or(0),
                                    experiment.start, experiment.stop ? 1 : 0, experiment.stop.value_or(0)),
              "fmi2SetupExperiment");
        check(m_api.enterInitialization(m_unit), "fmi2EnterInitializationMode");
    }
    void exitInitialization() override { check(m_api.exitInitialization(m_unit), "fmi2ExitInitializationMode"); }

    void beginEvent() override {}
    std::optional<double> handleEvents(bool&) override { return std::nullopt; }

    void keepState() override {
        check(m_library.get<TakeState>("fmi2GetFMUstate")(m_unit, &m_state), "fmi2GetFMUstate");
    }
    void restoreState() override {
        check(m_library.get<GiveState>("fmi2SetFMUstate")(m_unit, m_state), "fmi2SetFMUstate");
    }

    UnitStep step(double time, double size, bool isFinal) override {
        const Status status = m_api.doStep(m_unit, time, size, isFinal ? 1 : 0);
        if (status <= warning) return {time + size};
        if (status != discard) check(status, "fmi2DoStep");
        // Many units do not know how far they came.
        double reached = time;
        if (m_library.get<GetRealStatus>("fmi2GetRealStatus")(m_unit, lastSuccessfulTime, &reached) > warning)
            reached = time;
        Boolean hasEnded = 0;
        if (m_library.get<GetBooleanStatus>("fmi2GetBooleanStatus")(m_unit, terminated, &hasEnded) > warning)
            hasEnded = 0;
        return {reached, true, false, hasEnded != 0};
    }

    void read(const UnitReading& reading, std::uint64_t* slots, std::string& texts) override {
        const Reference* const references = reading.references.data();
        const std::size_t count = reading.count;
        if (reading.type == UnitType::float64)
            return check(m_api.getReal(m_unit, references, count, reinterpret_cast<double*>(slots)), "fmi2GetReal");
        if (reading.type == UnitType::string) return readTexts(reading, slots, texts);
        m_numbers.resize(count);
        const bool isBoolean = reading.type == UnitType::boolean;
        call<Get<int>>(isBoolean ? "fmi2GetBoolean" : "fmi2GetInteger", references, count, m_numbers.data());
        for (std::size_t i = 0; i < count; ++i)
            slots[i] = isBoolean ? static_cast<std::uint64_t>(m_numbers[i] != 0)
                                 : static_cast<std::uint64_t>(std::int64_t{m_numbers[i]});
    }

    void terminate() override { check(m_api.terminate(m_unit), "fmi2Terminate"); }

private:
    void readTexts(const UnitReading& reading, std::uint64_t* slots, std::string& texts) {
        m_texts.assign(reading.count, nullptr);
        call<Get<const char*>>("fmi2GetString", reading.references.data(), reading.count, m_texts.data());
        for (std::size_t i = 0; i < reading.count; ++i)
            slots[i] = addText(texts, m_texts[i] != nullptr ? m_texts[i] : "");
    }

    // A unit may lack what it has no variables for.
    template <class Function, class... Arguments>
    void call(const char* function, Arguments... arguments) {
        check(m_library.get<Function>(function)(m_unit, arguments...), function);
    }

    void check(Status status, const char* function) {
        if (status <= warning) return;
        m_isFatal = status == fatal;
        static constexpr std::array<const char*, 4> kWords{"discarded the call", "reported an error",
                                                           "reported a fatal error", "did not finish"};
        const auto word = static_cast<std::size_t>(status - discard);
        throw UnitFailure(fmt::format("{} {}", function, word < kWords.size() ? kWords[word] : "gave no known answer"));
    }

    UnitLibrary m_library;
    Api m_api;
    Callbacks m_callbacks;
    Component m_unit = nullptr;
    State m_state = nullptr;
    bool m_isFatal = false;
    std::vector<int> m_numbers;
    std::vector<const char*> m_texts;
};

}  // namespace

std::unique_ptr<Unit> instantiateFmi2Unit(const UnitStart& start, const UnitLog& log) {
    return std::make_unique<Fmi2Unit>(start, log);
}

std::unique_ptr<Unit> instantiateUnit(const UnitStart& start, const UnitLog& log) {
    return start.major == 2 ? instantiateFmi2Unit(start, log) : instantiateFmi3Unit(start, log);
}

}  // namespace workbench
