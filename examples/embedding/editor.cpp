#include <iostream>

#include "bindings/entry_points.h"
#include "host/text.h"
#include "host/values.h"
#include "platform/platform.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"

// What an editor does with the library: keep a model's marks, ask about them, save and load them.

namespace {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

constexpr const char16_t* kModel = u"cruise";

// The classes and functions that the library calls by name while it saves. Here every block stays where it was; an
// editor looks the element identifier up, so that the mark of a block that was moved is saved with its new path.
void offerWhatTheLibraryCalls() {
    smallest_platform::defineRecordClass("Kestrel.HMI.SignalSpecification",
                                         {"BindingRule_", "CachedBlockHandle_", "CachedPortIdx_", "ExcludeForSave_"});
    smallest_platform::defineFunction("getAlignedBlockPath", [](std::span<const hvArray* const> inputs) {
        std::vector<HvArrayPtr> path;
        path.emplace_back(hvGetPropertyShared(inputs[0], 0, "BlockPath_"));
        return path;
    });
}

// A set belongs to an object of its class, which the platform makes.
HvArrayPtr makeSet() {
    HvArrayPtr object = std::move(smallest_platform::call(InstrumentedSignals::kHostClass, {})[0]);
    InstrumentedSignals::getFromHvArray(object.get())->setModelName(kModel);
    return object;
}

void mark(InstrumentedSignals& signals, const std::u16string& block, int port) {
    auto record = SignalSpecification::createSigSpecFromPort(block, "block:1", port, 0, 0.0, kModel, false);
    record->setCachedInfo(0.0, 0);  // no handle is known yet: the first answer by path records it
    record->m_signalName = u"speed";
    signals.add(std::move(record));
}

void tell(const char* question, bool answer) { std::cout << question << ": " << (answer ? "yes" : "no") << '\n'; }

void run() {
    const HvArrayPtr object = makeSet();
    InstrumentedSignals& signals = *InstrumentedSignals::getFromHvArray(object.get());
    mark(signals, u"cruise/Sensors/Wheel Speed", 1);
    tell("port 1 of Wheel Speed is observed, asked by path",
         signals.isPortObserved(42.0, u"Sensors/Wheel Speed", u"", 1, 1, 0));
    tell("port 1 of Wheel Speed is observed, asked by handle", signals.isPortObserved(42.0, 1));
    tell("port 2 of Wheel Speed is observed", signals.isPortObserved(42.0, 2));

    const HvArrayPtr saved = signals.getPersistenceData();
    std::cout << "saved: " << hvGetNumberOfElements(saved.get()) << " signal on "
              << ks_host::utf8TextOf(hvGetField(saved.get(), 0, "BlockPath_")) << '\n';

    const HvArrayPtr other = makeSet();
    InstrumentedSignals& loaded = *InstrumentedSignals::getFromHvArray(other.get());
    loaded.setFromPersistenceData(saved.get());
    tell("what was loaded equals what was saved", loaded.isEqual(&signals));
}

}  // namespace

int main() {
    try {
        offerWhatTheLibraryCalls();
        OXInitialize_ks_hmi_foundation();
        run();
        OXTerminate_ks_hmi_foundation();
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
