#pragma once

#include <string_view>

#include "memory_host/orvex/objects/notes.h"

namespace orvex {

/// What was said of it, valid until the next note; null for nothing.
const Note* findNote(std::string_view about) noexcept;
void releaseNotes() noexcept;

}  // namespace orvex
