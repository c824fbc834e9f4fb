#pragma once

#include <signal.h>

namespace workbench {

/// While it lives, a full disk quota and a closed pipe are failures of the write, not the end of the program.
class IgnoredSignals {
public:
    IgnoredSignals() noexcept {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        ::sigaction(SIGXFSZ, &ignore, &m_sizeLimit);
        ::sigaction(SIGPIPE, &ignore, &m_pipe);
    }
    IgnoredSignals(const IgnoredSignals&) = delete;
    IgnoredSignals& operator=(const IgnoredSignals&) = delete;
    ~IgnoredSignals() {
        ::sigaction(SIGXFSZ, &m_sizeLimit, nullptr);
        ::sigaction(SIGPIPE, &m_pipe, nullptr);
    }

private:
    struct sigaction m_sizeLimit {};
    struct sigaction m_pipe {};
};

}  // namespace workbench
