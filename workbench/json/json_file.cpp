#include "workbench/json/json_file.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <boost/json/basic_parser_impl.hpp>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "workbench/json/json_mistake.h"
#include "workbench/text/error.h"

namespace workbench {

namespace json = boost::json;

namespace {

constexpr std::size_t kMaxDepth = 256;
constexpr std::size_t kChunkSize = std::size_t{1} << 18U;

// Puts tokens together that arrive in parts.
class Handler {
public:
    static constexpr std::size_t max_object_size = std::size_t(-1);
    static constexpr std::size_t max_array_size = std::size_t(-1);
    static constexpr std::size_t max_key_size = std::size_t(-1);
    static constexpr std::size_t max_string_size = std::size_t(-1);
    using Code = json::error_code;

    explicit Handler(JsonSink& sink) : m_sink(sink) {}

    bool on_document_begin(Code&) { return true; }
    bool on_document_end(Code&) { return true; }
    bool on_object_begin(Code&) { return m_sink.beginObject(), open(false); }
    bool on_object_end(std::size_t, Code&) { return m_sink.endObject(), close(); }
    bool on_array_begin(Code&) { return m_sink.beginArray(), open(true); }
    bool on_array_end(std::size_t, Code&) { return m_sink.endArray(), close(); }
    bool on_key_part(json::string_view part, std::size_t, Code&) { return keep(part); }
    bool on_key(json::string_view part, std::size_t, Code&) {
        m_isAfterKey = true;
        return m_sink.key(whole(part)), done();
    }
    bool on_string_part(json::string_view part, std::size_t, Code&) { return keep(part); }
    bool on_string(json::string_view part, std::size_t, Code&) {
        m_isAfterKey = false;
        return m_sink.string(whole(part)), done();
    }
    bool on_number_part(json::string_view part, Code&) { return keep(part); }
    bool on_int64(std::int64_t, json::string_view part, Code&) { return m_sink.number(whole(part)), done(); }
    bool on_uint64(std::uint64_t, json::string_view part, Code&) { return m_sink.number(whole(part)), done(); }
    bool on_double(double, json::string_view part, Code&) { return m_sink.number(whole(part)), done(); }
    bool on_bool(bool value, Code&) { return m_sink.boolean(value), true; }
    bool on_null(Code&) { return m_sink.null(), true; }
    bool on_comment_part(json::string_view, Code&) { return true; }
    bool on_comment(json::string_view, Code&) { return true; }

    // Whether the last text was a key.
    bool isAfterKey() const noexcept { return m_isAfterKey; }
    // Whether an array is open, and is not deep down.
    bool isInArray() const noexcept { return !m_open.empty() && m_open.size() <= kMostTried && m_open.back(); }

private:
    static constexpr std::size_t kMostTried = 4;

    bool open(bool isArray) {
        m_open.push_back(isArray);
        return true;
    }
    bool close() noexcept {
        m_open.pop_back();
        return true;
    }
    bool keep(json::string_view part) {
        m_parts.append(part.data(), part.size());
        return true;
    }
    std::string_view whole(json::string_view last) {
        if (m_parts.empty()) return {last.data(), last.size()};
        keep(last);
        return m_parts;
    }
    bool done() noexcept {
        m_parts.clear();
        return true;
    }

    JsonSink& m_sink;
    std::string m_parts;
    std::vector<bool> m_open;  // objects and arrays from the outside in: whether it is an array
    bool m_isAfterKey = false;
};

std::string describe(const json::error_code& code, const JsonStop& stop) {
    if (code == json::error::too_deep) return fmt::format("more than {} levels of nesting", kMaxDepth);
    return describeMistake(code, stop);
}

bool isDirectory(std::FILE* file) {
    struct stat status {};
    return ::fstat(::fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

JsonFile::JsonFile(std::string path) : m_path(std::move(path)), m_file(std::fopen(m_path.c_str(), "rbe")) {
    if (!m_file) fail(fmt::format("cannot be opened: {}; check the path and its permissions", std::strerror(errno)));
    if (isDirectory(m_file.get())) fail("is a directory; name a model file");
}

std::optional<FileVersion> JsonFile::version() const noexcept {
    struct stat status {};
    if (!m_file || ::fstat(::fileno(m_file.get()), &status) != 0) return std::nullopt;
    return FileVersion::of(status);
}

void JsonFile::read(JsonSink& sink) {
    json::parse_options options;
    options.max_depth = kMaxDepth;
    json::basic_parser<Handler> parser(options, sink);
    PlainElement element;
    readChunk(parser, sink, element, m_text);
    // The parser tells "more is needed" by a pointer to itself, which must not be the end of a chunk that happens to
    // lie in front of it: one byte is never filled.
    std::string chunk(m_file ? kChunkSize + 1 : 0, '\0');
    while (const std::size_t size = m_file ? std::fread(chunk.data(), 1, kChunkSize, m_file.get()) : 0)
        readChunk(parser, sink, element, {chunk.data(), size});
    if (m_file && std::ferror(m_file.get())) fail(fmt::format("cannot be read: {}", std::strerror(errno)));
    feed(parser, {}, false);
}

// Piece by piece, so that the line is known while the sink works on what is in it.
template <class Parser>
void JsonFile::readChunk(Parser& parser, JsonSink& sink, PlainElement& element, std::string_view chunk) {
    while (!chunk.empty()) {
        // After the comma the parser waits for another element, and does so again after one that it has not seen.
        const bool isAtElement = m_column == 0 && m_before == ',' && parser.handler().isInArray();
        if (const std::size_t taken = isAtElement ? sink.takeElement(chunk, m_line) : 0) {
            chunk.remove_prefix(taken);
            continue;
        }
        if (isAtElement && element.scan(chunk)) {
            element.tell(sink, m_line);
            chunk.remove_prefix(element.size());
            continue;
        }
        const std::size_t end = chunk.find('\n');
        const std::string_view piece = chunk.substr(0, end == std::string_view::npos ? chunk.size() : end + 1);
        feed(parser, piece, true);
        chunk.remove_prefix(piece.size());
    }
}

template <class Parser>
void JsonFile::feed(Parser& parser, std::string_view piece, bool more) {
    json::error_code code;
    const std::size_t used = parser.write_some(more, piece.data(), piece.size(), code);
    if (code)
        failSyntax(describe(code, {piece, used, m_before, m_isInText, parser.handler().isAfterKey()}),
                   m_column + used + 1);
    if (used < piece.size()) failSyntax("something follows the document", m_column + used + 1);
    m_column += piece.size();
    m_before = lastCharacter(piece, m_before);
    if (piece.ends_with('\n')) {
        ++m_line;
        m_column = 0;
        m_isInText = false;
    } else {
        m_isInText = endsInText(piece, m_isInText);
    }
}

void JsonFile::fail(const std::string& pointer, const std::string& text) const {
    throw Error({m_path, m_line, pointer}, text, ErrorCode::format);
}

void JsonFile::fail(const std::string& text) const { throw Error({m_path, 0, {}}, text, ErrorCode::file); }

void JsonFile::failSyntax(const std::string& what, std::size_t column) const {
    throw Error({m_path, m_line, {}, column}, fmt::format("not JSON: {}; correct it", what), ErrorCode::format);
}

}  // namespace workbench
