#include "kshmi/print/progress.h"

#include <fmt/format.h>
#include <signal.h>

#include <utility>

#include "workbench/text/columns.h"

namespace kshmi {

namespace {

constexpr std::size_t kWidest = 78;

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
        m_terminal << fmt::format("\r{:{}}\r{}", "", m_width, line) << std::flush;
        m_width = workbench::columnsOf(line);
    }
    if (m_width > 0) m_terminal << fmt::format("\r{:{}}\r", "", m_width) << std::flush;
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
