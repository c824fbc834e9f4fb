#include "workbench/text/csv_row.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

constexpr int kEnd = -1;
constexpr std::size_t kPiece = std::size_t{1} << 16U;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

TextSource piecesOfFile(const std::string& path) {
    const auto file = std::make_shared<std::ifstream>(path, std::ios::binary);
    if (!*file)
        throw Error({path}, fmt::format("cannot be opened: {}; check the path", std::strerror(errno)), ErrorCode::file);
    if (std::error_code ignored; std::filesystem::is_directory(path, ignored))
        throw Error({path}, "is a directory; name a file", ErrorCode::file);
    return [file, path](std::string& buffer) {
        const std::size_t old = buffer.size();
        buffer.resize(old + kPiece);
        file->read(buffer.data() + old, static_cast<std::streamsize>(kPiece));
        const auto count = static_cast<std::size_t>(file->gcount());
        buffer.resize(old + count);
        if (file->bad()) throw Error({path}, "cannot be read; check the disk", ErrorCode::file);
        return count > 0;
    };
}

TextSource pieceOf(std::string_view text) {
    return [text](std::string& buffer) mutable {
        buffer += text;
        return !std::exchange(text, {}).empty();
    };
}

void CsvRows::fail(const std::string& text) const { throw Error({m_file, m_rowLine}, text, ErrorCode::format); }

int CsvRows::peek() {
    if (m_at == m_buffer.size()) {
        m_buffer.clear();
        m_at = 0;
        if (!m_source || !m_source(m_buffer)) {
            m_source = nullptr;
            return kEnd;
        }
    }
    return static_cast<unsigned char>(m_buffer[m_at]);
}

int CsvRows::take() {
    const int character = peek();
    if (character != kEnd) ++m_at;
    if (character == '\n') ++m_line;
    return character;
}

void CsvRows::readQuoted(CsvCell& cell) {
    cell.isQuoted = true;
    take();
    while (true) {
        const int character = take();
        if (character == kEnd) fail("a double quote is not closed; close it");
        if (character == '"') {
            if (peek() != '"') return;
            take();
        }
        cell.text += static_cast<char>(character);
    }
}

void CsvRows::readCell(CsvCell& cell) {
    if (peek() == '"') return readQuoted(cell);
    for (int character = peek(); character != kEnd && character != ',' && character != '\n'; character = peek()) {
        if (character == '"') fail("there is a double quote inside a cell; quote the cell and double it");
        cell.text += static_cast<char>(take());
    }
    if (peek() != ',' && cell.text.ends_with('\r')) cell.text.pop_back();
}

bool CsvRows::readRow(std::vector<CsvCell>& row) {
    row.clear();
    m_rowLine = m_line;
    while (true) {
        readCell(row.emplace_back());
        if (row.back().isQuoted && peek() == '\r') take();
        const int character = take();
        if (character == '\n' || character == kEnd) break;
        if (character != ',') fail("something follows a closing double quote; double the quotes inside it");
    }
    return row.size() > 1 || row.front().isQuoted || !row.front().text.empty();
}

void CsvRows::skipByteOrderMark() {
    if (peek() != kEnd && std::string_view(m_buffer).starts_with(kByteOrderMark)) m_at = kByteOrderMark.size();
}

bool CsvRows::skipComment() {
    if (m_comments == CsvComments::none || peek() != '#') return false;
    for (int character = take(); character != '\n' && character != kEnd;) character = take();
    return true;
}

bool CsvRows::next(std::vector<CsvCell>& row) {
    if (m_rowLine == 0) skipByteOrderMark();
    while (peek() != kEnd)
        if (!skipComment() && readRow(row)) return true;
    return false;
}

std::string csvCell(std::string_view text) {
    if (!text.starts_with('#') && text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string cell;
    appendQuotedCell(cell, text);
    return cell;
}

void appendQuotedCell(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

}  // namespace workbench
