#include "workbench/import/xml_encoding.h"

#include <fmt/format.h>

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "workbench/import/import_error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr std::size_t kTextChunk = 65536;
constexpr std::string_view kUtf8 = "UTF-8";

// What may be declared, and what the converter calls it.
constexpr std::array<std::pair<std::string_view, const char*>, 12> kEncodings{{{"UTF-8", "UTF-8"},
                                                                               {"UTF8", "UTF-8"},
                                                                               {"UTF-16", "UTF-8"},
                                                                               {"UTF-16LE", "UTF-8"},
                                                                               {"UTF-16BE", "UTF-8"},
                                                                               {"US-ASCII", "UTF-8"},
                                                                               {"ASCII", "UTF-8"},
                                                                               {"ISO-8859-1", "ISO-8859-1"},
                                                                               {"LATIN1", "ISO-8859-1"},
                                                                               {"ISO-8859-15", "ISO-8859-15"},
                                                                               {"WINDOWS-1252", "WINDOWS-1252"},
                                                                               {"CP1252", "WINDOWS-1252"}}};

class Converter {
public:
    explicit Converter(const char* from) : m_handle(::iconv_open("UTF-8", from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (isOpen()) ::iconv_close(m_handle);
    }
    // Whether all that was converted was of the encoding.
    bool isClean() const noexcept { return m_isClean; }
    bool isOpen() const noexcept { return reinterpret_cast<std::intptr_t>(m_handle) != -1; }

    // What is no character of the encoding becomes U+FFFD.
    std::string convert(std::string& bytes) {
        std::string result;
        result.reserve(bytes.size());
        std::array<char, kTextChunk> chunk;
        char* in = bytes.data();
        std::size_t left = bytes.size();
        while (left > 0) {
            char* out = chunk.data();
            std::size_t room = chunk.size();
            const bool isStuck = ::iconv(m_handle, &in, &left, &out, &room) == std::size_t(-1) && errno != E2BIG;
            result.append(chunk.data(), chunk.size() - room);
            if (!isStuck) continue;
            result += "\xEF\xBF\xBD";
            m_isClean = false;
            ++in;
            --left;
        }
        return result;
    }

private:
    iconv_t m_handle;
    bool m_isClean = true;
};

std::string converted(const std::string& file, std::string bytes, const char* encoding) {
    Converter converter(encoding);
    if (!converter.isOpen())
        failImport({file}, "this system cannot convert from " + std::string(encoding), "convert the file to UTF-8");
    return converter.convert(bytes);
}

bool isUtf8(std::string& bytes) {
    if (std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; })) return true;
    Converter converter("UTF-8");
    return converter.isOpen() && (static_cast<void>(converter.convert(bytes)), converter.isClean());
}

// The upper-case name that the XML declaration gives; empty when it gives none.
std::string declaredEncoding(std::string_view text) {
    if (!text.starts_with("<?xml")) return {};
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t key = declaration.find("encoding");
    if (key == std::string_view::npos) return {};
    const std::size_t start = declaration.find_first_of("\"'", key);
    if (start == std::string_view::npos) return {};
    const std::string_view rest = declaration.substr(start + 1);
    std::string name(rest.substr(0, rest.find(declaration[start])));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return name;
}

// UTF-16 by its byte order mark or by how a document begins; null when it is something else.
const char* wideEncoding(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("<\0"sv)) return "UTF-16LE";
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\0<"sv)) return "UTF-16BE";
    return nullptr;
}

std::string fromDeclared(const std::string& file, std::string bytes, const std::string& name, ImportNotes& warnings) {
    const auto known = std::find_if(kEncodings.begin(), kEncodings.end(), [&](auto one) { return one.first == name; });
    if (!name.empty() && known == kEncodings.end())
        failImport({file, 1}, fmt::format("the encoding {} cannot be read", inQuotes(name)),
                   "convert the file to UTF-8");
    const std::string_view encoding = name.empty() ? kUtf8 : known->second;
    if (encoding != kUtf8) return converted(file, std::move(bytes), encoding.data());
    if (isUtf8(bytes)) return bytes;
    warnings.add("has bytes that are not UTF-8; read as windows-1252", "");
    return converted(file, std::move(bytes), "WINDOWS-1252");
}

}  // namespace

std::string xmlAsUtf8(const std::string& file, std::string bytes, ImportNotes& warnings) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (const char* const wide = wideEncoding(bytes)) {
        std::string text = converted(file, std::move(bytes), wide);
        if (text.starts_with(kMark)) text.erase(0, kMark.size());
        return text;
    }
    const bool isMarked = bytes.starts_with(kMark);
    if (isMarked) bytes.erase(0, kMark.size());
    const std::string name = isMarked ? std::string(kUtf8) : declaredEncoding(bytes);
    return fromDeclared(file, std::move(bytes), name, warnings);
}

}  // namespace workbench
