#pragma once

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "kshmi/print/exit_codes.h"

namespace kshmi {

class Progress;

/// Where a command prints, and how.
struct Output {
    std::ostream& out;
    std::ostream& err;
    bool isColoured = false;
    /// Columns of a line of `out`; 0 when lines have no end, as in a file.
    std::size_t width = 0;
    /// Where `err` is a terminal: it is to be told of what takes long.
    bool isWatched = false;
    Progress* progress = nullptr;
};

/// An output that takes everything and keeps nothing.
class NoOutput {
public:
    /// The same but for what is printed. It does not outlive this.
    Output insteadOf(const Output& other) const {
        return {m_stream, other.err, false, 0, other.isWatched, other.progress};
    }

private:
    struct Buffer final : std::streambuf {
        int overflow(int character) override { return traits_type::not_eof(character); }
        std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    };
    mutable Buffer m_buffer;
    mutable std::ostream m_stream{&m_buffer};
};

/// As `workbench::enterHost`, with the host's warnings on `err` from now on.
void enterHost(std::ostream& err);

/// Says what is being done, "reading a.json", should it take long.
void tellProgress(const Output& output, std::string work);
/// What a save has changed besides the file's contents, on `err`.
void warnOfSave(const std::string& file, const std::vector<std::string>& warnings, std::ostream& err);

}  // namespace kshmi
