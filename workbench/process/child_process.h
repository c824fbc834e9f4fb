#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace workbench {

/// A forked process, in a process group of its own. It and what it has started are gone with this object.
class ChildProcess {
public:
    /// Has the child do the work and exit. It has none of this process's signal handlers and open files, nothing on
    /// standard input, and standard output leads to standard error; it is killed when this process ends. Throws
    /// `Error`.
    explicit ChildProcess(const std::function<void()>& work);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    /// Whether it has ended; does not wait.
    bool hasEnded() noexcept;
    void kill() noexcept;
    /// How it ended, for a message: nothing when it ended as it should.
    std::optional<std::string> mishap() const;

private:
    pid_t m_process;
    bool m_hasEnded = false;
    int m_status = 0;
};

}  // namespace workbench
