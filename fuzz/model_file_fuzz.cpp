#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "fuzz/fuzz_host.h"
#include "kshmi/commands/command_line.h"
#include "workbench/session/host_process.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// Model files: loaded, shown and asked about with the tool, saved and loaded again.

namespace {

using ks_fuzz::require;

class Directory {
public:
    Directory() {
        // Where there is one, a file system in memory: saving waits until all is on disk.
        const std::filesystem::path memory("/dev/shm");
        const auto place = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
        m_path = (place / "kshmi-fuzz-XXXXXX").string();
        require(::mkdtemp(m_path.data()) != nullptr, "there is no place for files");
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    std::string file() const { return m_path + "/model.json"; }

private:
    std::string m_path;
};

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool hasControlCharacters(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(text.c_str()[i + 1]);
        if ((byte < 0x20 && byte != '\n') || byte == 0x7f || (byte == 0xc2 && next < 0xa0)) return true;
    }
    return false;
}

int run(std::vector<std::string> words) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = kshmi::runCommandLine(std::move(words), {out, err});
    require(code >= 0 && code <= 5, "an exit code that means nothing");
    require((code >= 2) <= !err.str().empty(), "an error without a message");
    require(!hasControlCharacters(out.str() + err.str()), "control characters in the output");
    return code;
}

// Whether the file is a model; the bytes that saving gives are then in it.
bool isSaved(const std::string& path) {
    workbench::enterHost({});
    try {
        workbench::Session session(path, workbench::Session::Opening::lenient);
        session.save();
        return true;
    } catch (const workbench::Error&) {
        return false;
    }
}

// What one question about the file accepts, all others do.
void ask(const std::string& path) {
    if (run({"show", path}) != 0) return;
    require(run({"show", path, "--json"}) == 0, "show --json refuses it");
    require(run({"clients", path}) == 0, "clients refuses it");
    require(run({"ports", path}) == 0, "ports refuses it");
    run({"query", path, "A:2", "Logic/On/Fast"});  // it need not have these
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Directory directory;
    const std::string path = directory.file();
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::ofstream(path, std::ios::binary) << text;
    ask(path);
    require(contents(path) == text, "a query has changed the file");
    if (isSaved(path)) {
        const std::string saved = contents(path);
        require(isSaved(path), "what was saved is refused");
        require(contents(path) == saved, "saving what was loaded gives other bytes");
    }
    ks_fuzz::requireNothingLives();
    return 0;
}
