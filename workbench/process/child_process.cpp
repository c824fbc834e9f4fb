#include "workbench/process/child_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <stdio_ext.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "workbench/text/error.h"

namespace workbench {

namespace {

void forgetSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGXCPU, SIGSEGV, SIGBUS, SIGFPE,
                             SIGILL, SIGABRT, SIGCHLD, SIGALRM, SIGTSTP})
        ::signal(signal, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void leaveStandardStreams() {
    const int nothing = ::open("/dev/null", O_RDONLY);
    if (nothing >= 0) ::dup2(nothing, STDIN_FILENO);
    if (nothing > STDERR_FILENO) ::close(nothing);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    // What the unit prints shall be seen even if it crashes; what its parent still has to write is the parent's.
    ::__fpurge(stdout);
    static std::array<char, BUFSIZ> buffer;
    std::setvbuf(stdout, buffer.data(), _IOLBF, buffer.size());
}

// What is open here is not the unit's to write to.
void closeOthersFiles() { ::close_range(STDERR_FILENO + 1, ~0U, 0); }

[[noreturn]] void beChild(pid_t parent, const std::function<void()>& work) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(EXIT_FAILURE);
    forgetSignals();
    leaveStandardStreams();
    closeOthersFiles();
    work();
    ::_exit(EXIT_SUCCESS);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& work) {
    const pid_t parent = ::getpid();
    m_process = ::fork();
    if (m_process < 0)
        throw Error(std::string("no process can be started for the unit: ") + std::strerror(errno), ErrorCode::host);
    if (m_process == 0) beChild(parent, work);
    ::setpgid(m_process, m_process);
}

ChildProcess::~ChildProcess() {
    kill();
    while (!m_hasEnded && ::waitpid(m_process, &m_status, 0) < 0 && errno == EINTR) {
    }
}

bool ChildProcess::hasEnded() noexcept {
    if (!m_hasEnded) {
        // While it is not waited for, its number is no other's.
        siginfo_t information{};
        if (::waitid(P_PID, static_cast<id_t>(m_process), &information, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            information.si_pid == 0)
            return false;
        kill();
        m_hasEnded = ::waitpid(m_process, &m_status, 0) == m_process;
    }
    return m_hasEnded;
}

void ChildProcess::kill() noexcept {
    if (!m_hasEnded) ::kill(-m_process, SIGKILL);
}

std::optional<std::string> ChildProcess::mishap() const {
    if (WIFSIGNALED(m_status))
        return fmt::format("was brought down by signal {} ({})", WTERMSIG(m_status), ::strsignal(WTERMSIG(m_status)));
    if (WIFEXITED(m_status) && WEXITSTATUS(m_status) != 0)
        return fmt::format("ended its process itself, with exit code {}", WEXITSTATUS(m_status));
    return std::nullopt;
}

}  // namespace workbench
