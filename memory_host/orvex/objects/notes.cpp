#include "memory_host/orvex/objects/notes.h"

#include <functional>
#include <map>
#include <utility>

#include "memory_host/orvex/objects/notes_table.h"

namespace orvex {

namespace {

using Notes = std::map<std::string, Note, std::less<>>;

Notes& notes() {
    static auto& notes = *new Notes;
    return notes;
}

}  // namespace

void note(std::string about, Note text) { notes().insert_or_assign(std::move(about), std::move(text)); }

const Note* findNote(std::string_view about) noexcept {
    const auto found = notes().find(about);
    return found == notes().end() ? nullptr : &found->second;
}

void releaseNotes() noexcept { notes().clear(); }

}  // namespace orvex
