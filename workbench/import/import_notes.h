#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace workbench {

/// Things that an import has the same to say about. Texts are UTF-8.
struct ImportNote {
    std::string text;                ///< "inputs"; "the kind \"bus\" is unknown; taken for local"
    std::vector<std::string> names;  ///< of the things, in the file's order; empty for one without a name
    std::size_t line = 0;            ///< of the first, 1-based; 0 when it has none
};

/// Notes in the order in which their texts came up.
class ImportNotes {
public:
    void add(std::string_view text, std::string name, std::size_t line = 0);

    const std::vector<ImportNote>& all() const noexcept { return m_notes; }
    bool empty() const noexcept { return m_notes.empty(); }

private:
    std::vector<ImportNote> m_notes;
    std::unordered_map<std::string, std::size_t> m_byText;
};

}  // namespace workbench
