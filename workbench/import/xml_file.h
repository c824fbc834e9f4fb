#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/import/import_notes.h"
#include "workbench/text/error.h"

namespace workbench {

/// The name without its namespace prefix, which need not be declared.
std::string_view localName(const char* name) noexcept;

/// A foreign XML document in memory. Everything is found by local names. Not to be trusted: what could take time or
/// memory out of proportion is refused.
class XmlFile {
public:
    static constexpr std::size_t kMostLevels = 200;
    static constexpr std::size_t kMostNameBytes = 4096;

    /// Throws `Error`, with the line, for what is not XML, for document type declarations, for more than `kMostLevels`
    /// elements inside each other and for encodings that are not read. `name` stands for the file in messages.
    XmlFile(std::string name, std::string bytes, ImportNotes& warnings);
    XmlFile(const XmlFile&) = delete;
    XmlFile& operator=(const XmlFile&) = delete;

    const std::string& name() const noexcept { return m_name; }
    pugi::xml_node root() const { return m_document.document_element(); }
    /// 1-based.
    std::size_t lineOf(pugi::xml_node node) const;

    /// The value of an attribute; empty when it is not there. One with a namespace prefix stands in for a missing one.
    /// Throws `Error` for a value of more than `kMostNameBytes`.
    std::string attribute(pugi::xml_node node, std::string_view name) const;
    /// The first element of that name inside `node`; null when there is none.
    static pugi::xml_node child(pugi::xml_node node, std::string_view name);

    [[noreturn]] void fail(pugi::xml_node node, const std::string& text, const std::string& remedy) const;

private:
    void findLines();
    void parse();
    void checkShape() const;
    /// The line and, where an offset (0-based, in bytes) is known, the column.
    ErrorPlace placeAt(std::ptrdiff_t offset) const;

    std::string m_name;
    std::string m_text;                     ///< the parser works in it
    std::vector<std::size_t> m_lineStarts;  ///< of the text as it was
    pugi::xml_document m_document;
};

}  // namespace workbench
