#include <chrono>
#include <iostream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kshmi/print/progress.h"
#include "kshmi/print/terminal.h"

namespace kshmi {
namespace {

using namespace std::chrono_literals;

TEST(Terminal, whatIsNoTerminalHasNoEndOfLinesAndNoColour) {
    ::unsetenv("COLUMNS");
    EXPECT_EQ(columnsOfTerminal(-1), 0U);
    EXPECT_FALSE(isColourWelcome(-1));
    ::setenv("COLUMNS", "66", 1);
    EXPECT_EQ(columnsOfTerminal(-1), 66U);
    for (const char* const odd : {"0", "-5", "x", "", "80x"}) {
        ::setenv("COLUMNS", odd, 1);
        EXPECT_EQ(columnsOfTerminal(-1), 0U) << odd;
    }
    ::unsetenv("COLUMNS");
}

TEST(Terminal, colourIsWelcomeUnlessTheEnvironmentSaysNo) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) GTEST_SKIP() << "no terminal to be had";
    const int line = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    struct Case {
        const char* noColor;
        const char* term;
        bool isWelcome;
    };
    for (const Case& one : {Case{"", "xterm", true}, Case{"1", "xterm", false}, Case{"", "dumb", false}}) {
        ::setenv("NO_COLOR", one.noColor, 1);
        ::setenv("TERM", one.term, 1);
        EXPECT_EQ(isColourWelcome(line), one.isWelcome) << one.noColor << ' ' << one.term;
    }
    ::unsetenv("NO_COLOR");
    ::close(line);
    ::close(terminal);
}

TEST(Progress, tellsOnlyOfWhatTakesLongAndCleansUp) {
    std::ostringstream terminal;
    std::ostringstream real;
    {
        Progress progress(terminal, 1h);
        progress.tell("reading a.json");
    }
    EXPECT_EQ(terminal.str(), "");
    {
        Progress progress(terminal, 1ms);
        progress.tell("reading a.json");
        std::this_thread::sleep_for(100ms);
        AfterProgress after(progress, real.rdbuf());
        std::ostream out(&after);
        out << "done\n" << std::flush;
        EXPECT_NE(terminal.str().find("reading a.json ... 0 s"), std::string::npos) << terminal.str();
        EXPECT_TRUE(terminal.str().ends_with(" \r")) << terminal.str();
    }
    EXPECT_EQ(real.str(), "done\n");
}

TEST(Progress, leavesNoLineWhenASignalEndsTheProgram) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        Progress progress(std::cerr, 1ms);
        progress.tell("reading a.json");
        std::this_thread::sleep_for(1min);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string text;
    char next = 0;
    while (text.find("0 s") == std::string::npos && ::read(ends[0], &next, 1) == 1) text += next;
    ::kill(child, SIGINT);
    while (::read(ends[0], &next, 1) == 1) text += next;
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(text.ends_with("reading a.json ... 0 s\r" + std::string(78, ' ') + "\r")) << text;
    ::close(ends[0]);
}

}  // namespace
}  // namespace kshmi
