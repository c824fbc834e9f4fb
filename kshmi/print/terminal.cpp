#include "kshmi/print/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace kshmi {

namespace {

std::string_view environment(const char* name) noexcept {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

}  // namespace

bool isColourWelcome(int descriptor) {
    const std::string_view terminal = environment("TERM");
    return ::isatty(descriptor) == 1 && environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

std::size_t columnsOfTerminal(int descriptor) {
    constexpr std::size_t kUsual = 80;
    const std::string_view wanted = environment("COLUMNS");
    std::size_t columns = 0;
    const auto [end, code] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), columns);
    if (code == std::errc() && end == wanted.data() + wanted.size() && columns > 0) return columns;
    if (::isatty(descriptor) != 1) return 0;
    winsize size{};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace kshmi
