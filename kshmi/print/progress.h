#pragma once

#include <signal.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>
#include <thread>

namespace kshmi {

/// Tells on a terminal what takes long: after `patience`, and then every second, one line that overwrites itself and is
/// gone when the work is done. The signals that end the program still reach the thread that works, and leave no line on
/// the standard error. There is one at a time.
class Progress {
public:
    explicit Progress(std::ostream& terminal, std::chrono::milliseconds patience = std::chrono::seconds(1));
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { stop(); }

    /// What is being done from now on, "reading a.json"; printable.
    void tell(std::string work);
    /// Takes the line away, for good. The terminal is the caller's from now on.
    void stop();

private:
    // What the signals do is as it was before, but for the line.
    class CleanEnd {
    public:
        CleanEnd() noexcept;
        CleanEnd(const CleanEnd&) = delete;
        CleanEnd& operator=(const CleanEnd&) = delete;
        ~CleanEnd();

    private:
        static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
        std::array<struct sigaction, kSignals.size()> m_before{};
    };

    void watch();

    CleanEnd m_cleanEnd;
    std::ostream& m_terminal;
    std::chrono::milliseconds m_patience;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_work;
    bool m_isStopped = false;
    std::thread m_thread;
};

/// Passes a stream's characters on to another's, once there is no line of progress any more.
class AfterProgress : public std::streambuf {
public:
    AfterProgress(Progress& progress, std::streambuf* target) : m_progress(progress), m_target(target) {}

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

private:
    Progress& m_progress;
    std::streambuf* m_target;
};

}  // namespace kshmi
