#include "workbench/files/standard_stream.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "workbench/text/error.h"

namespace workbench {

std::string calledInMessages(const std::string& path) { return path == kStandardStream ? "standard input" : path; }

std::string calledWhenSaved(const std::string& path) { return path == kStandardStream ? "standard output" : path; }

std::string readStandardInput() {
    constexpr std::size_t kChunkSize = std::size_t{1} << 16U;
    std::string text;
    std::array<char, kChunkSize> chunk;
    while (const ssize_t size = ::read(STDIN_FILENO, chunk.data(), chunk.size())) {
        if (size < 0 && errno == EINTR) continue;
        if (size < 0)
            throw Error({calledInMessages(std::string(kStandardStream))},
                        fmt::format("cannot be read: {}", std::strerror(errno)), ErrorCode::file);
        text.append(chunk.data(), static_cast<std::size_t>(size));
    }
    return text;
}

}  // namespace workbench
