#include "workbench/compare/carry_map.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Cuts a text into lines and fields.
class CsvReader {
public:
    CsvReader(const std::string& file, std::string_view text) : m_file(file), m_text(text) {
        if (m_text.starts_with(kByteOrderMark)) m_at = kByteOrderMark.size();
    }

    std::vector<CsvLine> run() {
        std::vector<CsvLine> lines;
        while (m_at < m_text.size()) {
            if (m_text[m_at] == '#') {
                skipLine();
                continue;
            }
            CsvLine line = readLine();
            const bool isBlank = line.fields.size() == 1 && line.fields.front().empty();
            if (!isBlank) lines.push_back(std::move(line));
        }
        return lines;
    }

private:
    bool atEnd() const noexcept { return m_at == m_text.size(); }
    bool atLineEnd() const noexcept {
        return atEnd() || m_text[m_at] == '\n' || m_text.substr(m_at).starts_with("\r\n");
    }
    void skipLine() {
        while (!atLineEnd()) ++m_at;
        endLine();
    }
    void endLine() {
        if (atEnd()) return;
        m_at += m_text[m_at] == '\r' ? 2 : 1;
        ++m_line;
    }
    CsvLine readLine() {
        CsvLine line{m_line, {}};
        for (;;) {
            line.fields.push_back(!atEnd() && m_text[m_at] == '"' ? quotedField() : plainField());
            if (atLineEnd()) break;
            if (m_text[m_at] != ',') fail("something follows a closing double quote; double the quotes inside it");
            ++m_at;
        }
        endLine();
        return line;
    }
    std::string plainField() {
        const std::size_t start = m_at;
        while (!atLineEnd() && m_text[m_at] != ',') {
            if (m_text[m_at] == '"') fail("there is a double quote inside a field; quote the field and double it");
            ++m_at;
        }
        return std::string(m_text.substr(start, m_at - start));
    }
    std::string quotedField() {
        std::string field;
        const std::size_t start = m_line;
        for (++m_at;; ++m_at) {
            if (atEnd()) {
                m_line = start;
                fail("the double quote that opens here is not closed; close it");
            }
            if (m_text[m_at] == '"') {
                ++m_at;
                if (atEnd() || m_text[m_at] != '"') return field;
            }
            if (m_text[m_at] == '\n') ++m_line;
            field += m_text[m_at];
        }
    }
    [[noreturn]] void fail(const char* text) const { throw Error({m_file, m_line, {}}, text, ErrorCode::format); }

    const std::string& m_file;
    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
};

}  // namespace

std::vector<CsvLine> readCsv(const std::string& file, std::string_view text) { return CsvReader(file, text).run(); }

std::string csvField(std::string_view text) {
    if (!text.starts_with('#') && text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string field = "\"";
    for (const char c : text) field += c == '"' ? "\"\"" : std::string(1, c);
    return field + '"';
}

}  // namespace workbench
