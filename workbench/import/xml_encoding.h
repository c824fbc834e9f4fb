#pragma once

#include <string>

#include "workbench/import/import_notes.h"

namespace workbench {

/// The bytes of an XML document as UTF-8 without byte order mark. The encoding is that of the byte order mark, else the
/// declared one, else UTF-8; bytes that are no UTF-8 after all are read as windows-1252, which is noted. Throws `Error`
/// for encodings other than UTF-8, UTF-16, US-ASCII, ISO-8859-1, ISO-8859-15 and windows-1252.
std::string xmlAsUtf8(const std::string& file, std::string bytes, ImportNotes& warnings);

}  // namespace workbench
