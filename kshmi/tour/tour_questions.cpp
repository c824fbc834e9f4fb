#include <algorithm>

#include "foundation/model_path.h"
#include "kshmi/tour/tour.h"
#include "workbench/change/marking.h"
#include "workbench/find/signal_index.h"
#include "workbench/record/engine_ports.h"
#include "workbench/session/script.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

const char* answer(bool isObserved) { return isObserved ? "observed" : "not observed"; }

std::vector<ksPort> enginePorts(const kestrel::Model& model) {
    std::vector<ksPort> ports;
    for (const kestrel::Block& block : model.blocks())
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port) ports.push_back({&block, port});
    return ports;
}

std::size_t countObserved(const ks_hmi::InstrumentedSignals& set, const std::vector<ksPort>& ports) {
    return static_cast<std::size_t>(
        std::count_if(ports.begin(), ports.end(), [&](const ksPort& port) { return set.isKSPortObserved(&port); }));
}

std::u16string freePath(const kestrel::Model& model, const std::u16string& path) {
    std::u16string free = path + u" (moved)";
    while (model.findByPath(free)) free += u"'";
    return free;
}

std::string savedPath(const hvArray* set, std::size_t position) {
    const HvArrayPtr saved = script::persistence(set);
    return hvArrayToStdString(hvGetField(saved.get(), position, "BlockPath_"));
}

}  // namespace

void Tour::askPorts() {
    title("Is this port observed?");
    ks_hmi::InstrumentedSignals& set = m_session->signals();
    say("any port at all: {}", answer(set.isAnyPortObserved()));
    if (m_ports.empty()) say("no port was marked on the way");
    for (const Stop& stop : m_ports) {
        const kestrel::Block& block = *find(stop).block;
        const std::string before = answer(set.isPortObserved(block.handle, stop.port));
        const std::string byPath = answer(set.isPortObserved(block.handle, block.path, u"", stop.port, stop.port, 0));
        const std::string after = answer(set.isPortObserved(block.handle, stop.port));
        say("{}: by handle {}; by path {}; by handle again {}", nameOf(stop), before, byPath, after);
    }
    for (const Stop& stop : unmarkedPorts(1)) {
        const kestrel::Block& block = *find(stop).block;
        say("{}: by path {}", nameOf(stop),
            answer(set.isPortObserved(block.handle, block.path, u"", stop.port, stop.port, 0)));
    }
}

void Tour::askEnginePorts() {
    title("An engine asks port by port");
    ks_hmi::InstrumentedSignals& set = m_session->signals();
    std::vector<ksPort> ports = enginePorts(m_session->model());
    std::vector<ksPort*> observed;
    for (ksPort& port : ports)
        if (m_session->isObserved(*port.block, port.port)) observed.push_back(&port);
    set.cacheKSPorts(observed);
    say("of {}, {} cached as observed; asked one by one, {} are", counted(ports.size(), "engine port"), observed.size(),
        countObserved(set, ports));
    set.updateObservedPortMap();
    say("after the index was rebuilt the cache holds {} of them and is to be filled anew", countObserved(set, ports));
}

void Tour::askActivities() {
    title("Is this activity observed?");
    if (m_items.empty()) say("no chart item was marked on the way");
    const ks_hmi::InstrumentedSignals& set = m_session->signals();
    for (const Stop& stop : m_items) {
        const SignalSource source = find(stop);
        const std::u16string eid =
            toUtf16(ks_hmi_foundation::AddModelToEID(source.block->eid, m_session->model().name()));
        std::string line = printable(fullName(m_session->model(), source)) + ":";
        for (const char16_t* const activity : kActivities)
            line += fmt::format(" {} {},", toUtf8(activity),
                                answer(set.isCWActivityObserved(eid, source.item->ssid, activity)));
        say("{} any {}", line, answer(m_session->isAnyObserved(*source.block, *source.item)));
    }
}

void Tour::unmarkAndMark() {
    title("A port that is unmarked and marked again keeps its UUID");
    if (m_ports.empty()) return say("no port was marked on the way");
    const Stop& stop = m_ports.front();
    const std::vector<std::size_t> positions = SignalIndex(*m_session).on(find(stop));
    if (positions.empty()) return say("{} has no signal any more", nameOf(stop));
    const std::string before = script::uuidOf(m_session->signalSet(), positions.front() + 1);
    say("{}: UUID {}", nameOf(stop), before);
    removeSignals(*m_session, positions);
    say("removed: {}", answer(isMarked(*m_session, find(stop), {})));
    addSignal(*m_session, find(stop), {}, {});
    const std::string after = script::uuidOf(m_session->signalSet(), script::count(m_session->signalSet()));
    say("marked again: {}, {} UUID {}", answer(isMarked(*m_session, find(stop), {})),
        before == after ? "the same" : "another", after);
}

void Tour::moveBlock() {
    title("A block moves and its saved signals follow");
    const std::size_t count = m_session->signals().getCount();
    if (count == 0) return say("there is no signal");
    const std::size_t last = count - 1;
    const kestrel::Block& block = *sourceOf(m_session->model(), *m_session->signals().get(last)).block;
    const std::u16string path = block.path;
    const std::u16string newPath = freePath(m_session->model(), path);
    say("signal {} would be saved on {}", count, printable(savedPath(m_session->signalSet(), last)));
    const std::size_t moved = m_session->model().move(path, newPath);
    say("{} moved to {}", counted(moved, "block"), printable(newPath));
    say("signal {} would be saved on {}", count, printable(savedPath(m_session->signalSet(), last)));
    m_session->model().move(newPath, path);
    say("moved back: {}", printable(savedPath(m_session->signalSet(), last)));
}

}  // namespace kshmi
