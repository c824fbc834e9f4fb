#include "workbench/import/import_notes.h"

#include <utility>

namespace workbench {

void ImportNotes::add(std::string_view text, std::string name, std::size_t line) {
    const auto [place, isNew] = m_byText.try_emplace(std::string(text), m_notes.size());
    if (isNew) m_notes.push_back({place->first, {}, line});
    m_notes[place->second].names.push_back(std::move(name));
}

}  // namespace workbench
