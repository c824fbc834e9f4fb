#include <array>
#include <iostream>
#include <string>
#include <vector>

#include "bindings/entry_points.h"
#include "platform/platform.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"

// What an engine does with the library: give each of its ports an address, hand over the observed ones before a run
// and after each change, and ask about a port's address in every step.

// The engine's own output port. The library never looks inside.
struct ksPort {
    std::string block;
    double handle = 0.0;
    int number = 0;  // 1-based
    double value = 0.0;
};

namespace {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

constexpr const char16_t* kModel = u"cruise";

class Engine {
public:
    explicit Engine(InstrumentedSignals& signals) : m_signals(signals) {}

    // Any change of the set empties the library's cache: it is filled before the next step.
    void marksChanged() {
        std::vector<ksPort*> observed;
        for (ksPort& port : m_ports)
            if (m_signals.isPortObserved(port.handle, port.number)) observed.push_back(&port);
        m_signals.cacheKSPorts(observed);
    }

    void step(double time) {
        std::cout << "t = " << time << ':';
        for (ksPort& port : m_ports) {
            port.value = time * port.number;
            if (m_signals.isKSPortObserved(&port))
                std::cout << ' ' << port.block << ':' << port.number << " = " << port.value;
        }
        std::cout << '\n';
    }

private:
    InstrumentedSignals& m_signals;
    std::array<ksPort, 3> m_ports{ksPort{"Pump", 1.0, 1}, ksPort{"Pump", 1.0, 2}, ksPort{"Valve", 2.0, 1}};
};

// A mark on a block whose handle is known, as it is when the engine compiles the model: found by it at once.
void mark(InstrumentedSignals& signals, const std::u16string& block, int port, double handle) {
    signals.add(SignalSpecification::createSigSpecFromPort(block, "", port, 0, handle, kModel, false));
}

void run() {
    const HvArrayPtr object = std::move(smallest_platform::call(InstrumentedSignals::kHostClass, {})[0]);
    InstrumentedSignals& signals = *InstrumentedSignals::getFromHvArray(object.get());
    signals.setModelName(kModel);

    Engine engine(signals);
    mark(signals, u"cruise/Pump", 2, 1.0);
    engine.marksChanged();
    engine.step(0.5);
    mark(signals, u"cruise/Valve", 1, 2.0);
    engine.marksChanged();
    engine.step(1.0);
    signals.remove(0);
    engine.marksChanged();
    engine.step(1.5);
}

}  // namespace

int main() {
    try {
        OXInitialize_ks_hmi_foundation();
        run();
        OXTerminate_ks_hmi_foundation();
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
