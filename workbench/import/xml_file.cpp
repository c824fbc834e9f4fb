#include "workbench/import/xml_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "workbench/import/import_error.h"
#include "workbench/import/xml_encoding.h"
#include "workbench/text/text.h"

namespace workbench {

std::string_view localName(const char* name) noexcept {
    const std::string_view whole = name;
    const std::size_t colon = whole.rfind(':');
    return colon == std::string_view::npos ? whole : whole.substr(colon + 1);
}

XmlFile::XmlFile(std::string name, std::string bytes, ImportNotes& warnings)
    : m_name(std::move(name)), m_text(xmlAsUtf8(m_name, std::move(bytes), warnings)) {
    findLines();
    parse();
    checkShape();
}

void XmlFile::findLines() {
    m_lineStarts.push_back(0);
    for (std::size_t end = 0; (end = m_text.find('\n', end)) != std::string::npos;) m_lineStarts.push_back(++end);
    // The parser would take it for the end.
    if (const std::size_t nul = m_text.find('\0'); nul != std::string::npos)
        failImport(placeAt(static_cast<std::ptrdiff_t>(nul)), "a NUL byte is not XML", "remove it");
}

void XmlFile::parse() {
    constexpr unsigned kOptions = pugi::parse_escapes | pugi::parse_wconv_attribute | pugi::parse_doctype;
    const auto result = m_document.load_buffer_inplace(m_text.data(), m_text.size(), kOptions, pugi::encoding_utf8);
    if (result) return;
    std::string what = result.description();
    if (!what.empty()) what.front() = static_cast<char>(what.front() | 0x20);
    failImport(placeAt(result.offset), "not XML: " + what, "have it written again by the program that made it");
}

void XmlFile::checkShape() const {
    std::size_t level = 0;
    for (pugi::xml_node node = m_document.first_child(); node;) {
        if (node.type() == pugi::node_doctype)
            fail(node, "holds a document type declaration, which this format has no use for", "remove it");
        if (level > kMostLevels)
            fail(node, fmt::format("has more than {} elements inside each other", kMostLevels),
                 "flatten it; no model is that deep");
        if (const pugi::xml_node inner = node.first_child()) {
            node = inner;
            ++level;
            continue;
        }
        while (node && !node.next_sibling()) {
            node = node.parent();
            if (level > 0) --level;
        }
        node = node.next_sibling();
    }
}

ErrorPlace XmlFile::placeAt(std::ptrdiff_t offset) const {
    const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
    const auto after = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), at);
    const auto line = static_cast<std::size_t>(after - m_lineStarts.begin());
    return {m_name, line, {}, at - m_lineStarts[line - 1] + 1};
}

std::size_t XmlFile::lineOf(pugi::xml_node node) const { return placeAt(node.offset_debug()).line; }

std::string XmlFile::attribute(pugi::xml_node node, std::string_view name) const {
    pugi::xml_attribute found = node.attribute(std::string(name).c_str());
    if (!found)
        found = node.find_attribute([&](pugi::xml_attribute one) {
            return localName(one.name()) == name && !std::string_view(one.name()).starts_with("xml");
        });
    std::string value = found.value();
    if (value.size() > kMostNameBytes)
        fail(node,
             fmt::format("the attribute {} has {} bytes, more than {}", inQuotes(name), value.size(), kMostNameBytes),
             "shorten it");
    const bool isAscii = std::all_of(value.begin(), value.end(), [](char c) { return (c & 0x80) == 0; });
    // References to what is no character leave what is no UTF-8.
    return isAscii ? value : toUtf8(toUtf16(value));
}

pugi::xml_node XmlFile::child(pugi::xml_node node, std::string_view name) {
    return node.find_child([&](pugi::xml_node one) { return localName(one.name()) == name; });
}

void XmlFile::fail(pugi::xml_node node, const std::string& text, const std::string& remedy) const {
    failImport({m_name, lineOf(node)}, text, remedy);
}

}  // namespace workbench
