#include "kshmi/tour/tour.h"

#include <filesystem>

#include "host/object_system.h"
#include "kshmi/print/block_tree.h"
#include "memory_host/orvex/objects/objects.h"
#include "workbench/change/marking.h"
#include "workbench/session/host_process.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kPortsToMark = 3;
constexpr std::size_t kItemsToMark = 2;
constexpr std::size_t kMostTreeLines = 200;

const char* presence(const char* nameSpace) {
    return hos::COSNamespace::getNamespace(hos::internal::makeInterned(nameSpace)) ? "there" : "absent";
}

std::string indented(const std::string& text) {
    std::string result = "   ";
    for (const char c : text) {
        result += c;
        if (c == '\n') result += "   ";
    }
    return result.substr(0, result.find_last_not_of(" \n") + 1);
}

}  // namespace

void Tour::run() {
    m_output.out << "A tour of the main job, on a copy: " << printable(m_copy.path()) << '\n';
    loadLibrary();
    openModel();
    mark();
    markAgain();
    saveAndClose();
    loadAgain();
    askPorts();
    askEnginePorts();
    askActivities();
    unmarkAndMark();
    moveBlock();
    addClients();
    askClients();
    renameTwice();
    bundle();
    notice();
    validate();
    showBlocks();
    record();
}

void Tour::loadLibrary() {
    title("The host loads the library");
    const std::string before = presence("Kestrel.HMI");
    kshmi::enterHost(m_output.err);
    say("{} is loaded and initialised", kLibrary);
    say("namespace Kestrel.HMI: {} before, {} now", before, presence("Kestrel.HMI"));
    const HvArrayPtr set = script::newSet(u"any_model");
    say("a script makes a set for a model:");
    m_output.out << indented(orvex::displayObject(set.get())) << '\n';
}

void Tour::openModel() {
    title("The model is opened");
    try {
        m_session = std::make_unique<Session>(m_copy.path());
    } catch (const Error& error) {
        throw error.at(m_copy.aboutOriginal(error.place()));
    }
    std::size_t ports = 0;
    std::size_t charts = 0;
    for (const kestrel::Block& block : m_session->model().blocks()) {
        ports += block.outputs.size();
        charts += block.chart ? 1U : 0U;
    }
    say("{}: {} with {} and {}", printable(m_session->model().name()),
        counted(m_session->model().blocks().size(), "block"), counted(ports, "output port"), counted(charts, "chart"));
    say("its sets hold {} and {}", counted(script::count(m_session->signalSet()), "signal"),
        counted(script::count(m_session->clientSet()), "client"));
    m_handleBefore = firstHandle();
    if (!m_handleBefore.empty()) say("blocks have handles for as long as the model is loaded: {}", m_handleBefore);
}

void Tour::mark() {
    title("Ports and chart items are marked");
    m_ports = unmarkedPorts(kPortsToMark + 1);
    m_items = unmarkedItems(kItemsToMark);
    if (m_ports.empty() && m_items.empty()) say("there is nothing that is not marked yet");
    std::vector<Stop> excluded;
    if (m_ports.size() > kPortsToMark) {
        excluded.push_back(m_ports.back());
        m_ports.pop_back();
    }
    for (const Stop& stop : m_ports) markStop(stop, false);
    for (const Stop& stop : m_items) markStop(stop, false);
    for (const Stop& stop : excluded) markStop(stop, true);
}

void Tour::markStop(const Stop& stop, bool isExcludedFromSave) {
    SignalSettings settings;
    settings.isExcludedFromSave = isExcludedFromSave;
    addSignal(*m_session, find(stop), stop.activity, settings);
    say("signal {} on {}{}", script::count(m_session->signalSet()), nameOf(stop),
        isExcludedFromSave ? ", excluded from saving" : "");
}

void Tour::markAgain() {
    title("What is marked is seen");
    std::vector<Stop> stops = m_ports;
    stops.insert(stops.end(), m_items.begin(), m_items.end());
    if (stops.empty()) say("nothing was marked, so there is nothing to try again");
    for (const Stop& stop : stops)
        say("{}: {}", nameOf(stop),
            isMarked(*m_session, find(stop), stop.activity) ? "marked already, nothing added" : "not marked");
}

void Tour::saveAndClose() {
    title("The model is saved and closed");
    const std::size_t count = script::count(m_session->signalSet());
    const std::size_t leftOut = m_session->save().leftOut;
    say("{} saved, {} bytes", counted(count - leftOut, "signal"), std::filesystem::file_size(m_copy.path()));
    if (leftOut > 0) say("{} excluded from saving, left out", counted(leftOut, "signal"));
    m_session.reset();
    say("models open: {}", kestrel::loadedModels().all().size());
}

void Tour::loadAgain() {
    title("The model is loaded again");
    m_session = std::make_unique<Session>(m_copy.path());
    say("its set holds {}", counted(script::count(m_session->signalSet()), "signal"));
    const std::string now = firstHandle();
    if (!now.empty()) say("handles are {}: {}", now == m_handleBefore ? "the same" : "new", now);
}

void Tour::showBlocks() {
    title("What is observed now ([x], * on blocks with a badge)");
    if (m_session->model().blocks().empty()) say("the model has no blocks");
    if (printBlockTree(blockTree(*m_session, kMostTreeLines), m_output, kMostTreeLines))
        m_output.out << fmt::format("... \"kshmi show\" prints all {} blocks\n", m_session->model().blocks().size());
}

void Tour::title(const std::string& text) { m_output.out << '\n' << ++m_step << ". " << text << '\n'; }

}  // namespace kshmi
