#include "kshmi/commands/stop_requests.h"

#include <atomic>

namespace kshmi {

namespace {

std::atomic<int> requests{0};
static_assert(std::atomic<int>::is_always_lock_free);

void noteRequest(int) { requests.fetch_add(1, std::memory_order_relaxed); }

}  // namespace

StopRequests::StopRequests() {
    requests = 0;
    struct sigaction note {};
    note.sa_handler = noteRequest;
    ::sigemptyset(&note.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &m_before[i]);
        // Whoever started this with a signal ignored, as nohup does, wants it to stay so.
        if (m_before[i].sa_handler != SIG_IGN) ::sigaction(kSignals[i], &note, nullptr);
    }
}

StopRequests::~StopRequests() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals[i], &m_before[i], nullptr);
}

int StopRequests::count() noexcept { return requests.load(std::memory_order_relaxed); }

}  // namespace kshmi
