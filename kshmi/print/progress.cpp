#include "kshmi/print/progress.h"

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

#include "workbench/text/columns.h"

namespace kshmi {

namespace {

constexpr std::size_t kWidest = 78;

// Columns of the line that stands on the terminal.
std::atomic<std::size_t> g_width{0};
static_assert(std::atomic<std::size_t>::is_always_lock_free);

// Takes the line away; then the signal ends the program as if nobody had handled it.
extern "C" void endWithoutLine(int signal) {
    if (g_width > 0) {
        char blanks[kWidest + 2];
        for (char& blank : blanks) blank = ' ';
        blanks[0] = blanks[kWidest + 1] = '\r';
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, blanks, sizeof blanks);
    }
    ::raise(signal);
}

// A signal is for the thread that works: it knows when the program may end.
class SignalsHeldBack {
public:
    SignalsHeldBack() noexcept {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
    ~SignalsHeldBack() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before{};
};

}  // namespace

Progress::CleanEnd::CleanEnd() noexcept {
    struct sigaction clean {};
    clean.sa_handler = endWithoutLine;
    clean.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < m_before.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler == SIG_DFL) ::sigaction(kSignals[i], &clean, nullptr);
    }
}

Progress::CleanEnd::~CleanEnd() {
    for (std::size_t i = 0; i < m_before.size(); ++i) ::sigaction(kSignals[i], &m_before[i], nullptr);
}

Progress::Progress(std::ostream& terminal, std::chrono::milliseconds patience)
    : m_terminal(terminal), m_patience(patience) {
    const SignalsHeldBack heldBack;
    m_thread = std::thread(&Progress::watch, this);
}

void Progress::tell(std::string work) {
    const std::lock_guard lock(m_mutex);
    m_work = std::move(work);
}

void Progress::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void Progress::watch() {
    const auto start = std::chrono::steady_clock::now();
    std::unique_lock lock(m_mutex);
    for (auto wait = m_patience; !m_changed.wait_for(lock, wait, [&] { return m_isStopped; });
         wait = std::chrono::seconds(1)) {
        const auto passed = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
        const std::string line = workbench::shortened(fmt::format("{} ... {} s", m_work, passed.count()), kWidest);
        const std::size_t before = g_width, width = workbench::columnsOf(line);
        // A signal may come as soon as the line stands, so its width is known first.
        g_width = std::max(before, width);
        m_terminal << fmt::format("\r{:{}}\r{}", "", before, line) << std::flush;
        g_width = width;
    }
    if (g_width > 0) m_terminal << fmt::format("\r{:{}}\r", "", g_width.load()) << std::flush;
    g_width = 0;
}

AfterProgress::int_type AfterProgress::overflow(int_type character) {
    m_progress.stop();
    return traits_type::eq_int_type(character, traits_type::eof())
               ? traits_type::not_eof(character)
               : m_target->sputc(traits_type::to_char_type(character));
}

std::streamsize AfterProgress::xsputn(const char* text, std::streamsize size) {
    m_progress.stop();
    return m_target->sputn(text, size);
}

int AfterProgress::sync() {
    m_progress.stop();
    return m_target->pubsync();
}

}  // namespace kshmi
