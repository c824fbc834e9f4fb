#pragma once

#include <array>

#include <signal.h>

namespace kshmi {

/// While it lives, Ctrl-C, and what else asks a program to end, is counted instead.
class StopRequests {
public:
    StopRequests();
    StopRequests(const StopRequests&) = delete;
    StopRequests& operator=(const StopRequests&) = delete;
    ~StopRequests();

    static int count() noexcept;

private:
    static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace kshmi
