// A program that has the library and the in-memory host in one process, as a test bench or a tool would: it opens a
// model, marks a port, asks about it, lets the block move, and saves.

#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include "bindings/entry_points.h"
#include "host/text.h"
#include "host/values.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/warnings.h"
#include "memory_host/orvex/objects/object_system.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"

namespace {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

constexpr const char16_t* kModel = u"cruise";

// Host and library, from the first value to the last. Nothing of theirs may live longer.
class Host {
public:
    Host() {
        orvex::setWarningSink([](const orvex::Warning& warning) { std::cerr << "warning: " << warning.text << '\n'; });
        kestrel::installHostSide();
        OXInitialize_ks_hmi_foundation();
    }
    ~Host() {
        OXTerminate_ks_hmi_foundation();
        kestrel::releaseHostSide();
        orvex::releaseObjectSystem();
        orvex::setWarningSink({});
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
};

// Opens a model of one block and gives it an empty set of signals, which the host keeps until the model is unloaded.
kestrel::LoadedModel& openModel() {
    kestrel::Model model(kModel);
    model.add({u"Sensors/Wheel Speed", "12", 0.0, {u"speed", u"valid"}});
    kestrel::LoadedModel& opened = kestrel::loadedModels().load(std::move(model));
    const HvArrayPtr name = ks_host::makeText(std::u16string_view(kModel));
    const hvArray* const arguments[] = {name.get()};
    opened.setSignals(std::move(orvex::callByName(InstrumentedSignals::kHostClass, arguments, 1)[0]));
    return opened;
}

void mark(InstrumentedSignals& signals, const std::u16string& block, const std::string& eid, int port) {
    auto record = SignalSpecification::createSigSpecFromPort(block, eid, port, 0, 0.0, kModel, false);
    record->setCachedInfo(0.0, 0);  // no handle is known yet: the first answer by path records it
    signals.add(std::move(record));
}

void tell(const char* question, bool answer) { std::cout << question << ": " << (answer ? "yes" : "no") << '\n'; }

void run() {
    kestrel::LoadedModel& opened = openModel();
    InstrumentedSignals& signals = *InstrumentedSignals::getFromHvArray(opened.signals());
    mark(signals, u"cruise/Sensors/Wheel Speed", "cruise:12", 1);

    const double handle = opened.model().findByEid("12")->handle;
    tell("by handle, before anybody asked by path", signals.isPortObserved(handle, 1));
    tell("by path", signals.isPortObserved(handle, u"Sensors/Wheel Speed", u"", 1, 1, 0));
    tell("by handle", signals.isPortObserved(handle, 1));
    tell("the other port", signals.isPortObserved(handle, 2));

    opened.model().move(u"Sensors/Wheel Speed", u"Chassis/Wheel Speed");
    const HvArrayPtr saved = signals.getPersistenceData();
    std::cout << "saved: " << hvGetNumberOfElements(saved.get()) << " signal on "
              << ks_host::utf8TextOf(hvGetField(saved.get(), 0, "BlockPath_")) << '\n';
}

}  // namespace

int main() {
    try {
        const Host host;
        run();
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
