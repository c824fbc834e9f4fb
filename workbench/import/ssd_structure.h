#pragma once

#include <string_view>

#include "workbench/import/structure.h"
#include "workbench/import/xml_file.h"

namespace workbench {

/// The systems and components of a system structure description as blocks, and their output connectors as ports; with
/// `locals` local connectors as well. A block's source leads from the outermost system,
/// whose own is empty, to it like a JSON pointer: "/Plant/Motor", '~' and '/' in names as "~0" and "~1"; the second
/// element of a name has "~#2" behind it. Throws
/// `Error` for what is no such description.
void readSsdStructure(const XmlFile& file, bool locals, Structure& structure);

}  // namespace workbench
