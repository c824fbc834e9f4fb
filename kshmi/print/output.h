#pragma once

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
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
    /// Where a model goes that came from standard input, whatever else is printed where; null for `out`.
    std::ostream* models = nullptr;
};

inline std::ostream& modelStream(const Output& output) { return output.models ? *output.models : output.out; }

/// An output that takes everything and keeps nothing.
class NoOutput {
public:
    /// The same but for what is printed. It does not outlive this.
    Output insteadOf(const Output& other) const {
        return {.out = m_stream,
                .err = other.err,
                .isWatched = other.isWatched,
                .progress = other.progress,
                .models = &modelStream(other)};
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

/// Sends a model to where models go. Throws `workbench::Error` when it does not arrive.
void sendModel(const Output& output, std::string_view text);
/// Where a command prints what it does: where models do not go, should it send one.
inline std::ostream& besideModel(const Output& output) {
    return &output.out == &modelStream(output) ? output.err : output.out;
}

/// Says what is being done, "reading a.json", should it take long.
void tellProgress(const Output& output, std::string work);
/// "working on a.json".
void tellWork(const Output& output, const std::string& file);
/// What a save has changed besides the file's contents, on `err`.
void warnOfSave(const std::string& file, const std::vector<std::string>& warnings, std::ostream& err);

}  // namespace kshmi
