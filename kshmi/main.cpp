#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "kshmi/commands/command_line.h"
#include "kshmi/large_pages.h"
#include "kshmi/print/terminal.h"
#include "workbench/session/host_process.h"

int main(int argc, char** argv) {
    kshmi::useLargePages();
#ifdef NDEBUG  // others look at what still lives
    workbench::leaveSignalsToProcess();
#endif
    std::ios::sync_with_stdio(false);
    const kshmi::Output output{std::cout, std::cerr, kshmi::isColourWelcome(STDOUT_FILENO),
                               kshmi::columnsOfTerminal(STDOUT_FILENO), ::isatty(STDERR_FILENO) == 1};
    int code = kshmi::runCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), output);
    if (const std::string lives = workbench::leaveHost(); !lives.empty()) {
        std::cerr << "kshmi: the host was not left as it was found:\n" << lives;
        code = kshmi::kHostRefused;
    }
    std::cout.flush();
    // A command that changed a file has told that already.
    if (!std::cout && code <= kshmi::kNothing) {
        std::cerr << "kshmi: the output cannot be written\n";
        code = kshmi::kBadFile;
    }
    return code;
}
