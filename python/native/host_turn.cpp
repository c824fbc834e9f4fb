#include "python/native/host_turn.h"

#include <mutex>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

#include "memory_host/orvex/account/running_call.h"
#include "memory_host/orvex/calls/warnings.h"
#include "python/native/raised_errors.h"
#include "workbench/session/host_process.h"
#include "workbench/text/error.h"

namespace ks_hmi_python {

namespace {

struct Process {
    std::thread::id thread{};
    bool isEntered = false;
    bool isLeft = false;
    std::vector<orvex::Warning> warnings;
    std::unordered_set<Held*> held;
    std::mutex mutex;  // of what follows
    std::vector<Held*> orphans;
};

// Never destroyed: Python lets go of things when the process ends, in any order.
Process& process() {
    static auto* const process = new Process;
    return *process;
}

bool isHostThread() { return process().thread == std::this_thread::get_id(); }

void buryOrphans() {
    std::vector<Held*> orphans;
    {
        const std::scoped_lock lock(process().mutex);
        orphans.swap(process().orphans);
    }
    for (Held* const held : orphans) delete held;
}

void enter() {
    process().thread = std::this_thread::get_id();
    workbench::enterHost({});
    orvex::setWarningSink([](const orvex::Warning& warning) { process().warnings.push_back(warning); });
    process().isEntered = true;
}

void show(const orvex::Warning& warning) {
    py::module_::import("ks_hmi._errors")
        .attr("_warn")(warning.catalogue, warning.key, warning.text, pythonOf(warning.arguments));
}

void showAll() {
    const std::vector<orvex::Warning> warnings = std::exchange(process().warnings, {});
    for (const orvex::Warning& warning : warnings) show(warning);
}

std::string leave() {
    Process& all = process();
    if (!all.isEntered || all.isLeft) return {};
    all.isLeft = true;
    forgetRaised();
    buryOrphans();
    const std::vector<Held*> held(all.held.begin(), all.held.end());
    for (Held* const one : held) one->release();
    return workbench::leaveHost();
}

}  // namespace

HostTurn::HostTurn() {
    if (!process().isEntered) enter();
    if (!isHostThread())
        throw workbench::Error("the host is another thread's: the one that used ks_hmi first; call it from there");
    if (process().isLeft) workbench::enterHost({});
    buryOrphans();
}

HostTurn::~HostTurn() {
    if (process().warnings.empty()) return;
    const py::error_scope pending;
    try {
        showAll();
    } catch (py::error_already_set& error) {
        error.discard_as_unraisable("ks_hmi: a warning beside an error");
    }
}

void HostTurn::end() {
    if (orvex::hostCallDepth() == 0) raiseWhatEnds();
    showAll();
}

void warn(const std::string& text) { process().warnings.push_back({"", "", text, {}}); }

Held::Held() { process().held.insert(this); }
Held::~Held() { process().held.erase(this); }

void HeldDeleter::operator()(Held* held) const noexcept {
    if (isHostThread()) {
        delete held;
        return;
    }
    const std::scoped_lock lock(process().mutex);
    process().orphans.push_back(held);
}

void bindHostTurn(py::module_& module) { module.def("leave", leave); }

}  // namespace ks_hmi_python
