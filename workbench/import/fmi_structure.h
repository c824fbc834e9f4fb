#pragma once

#include "workbench/import/structure.h"
#include "workbench/import/xml_file.h"

namespace workbench {

/// The outputs of a unit's description as ports, with `locals` its local variables as well. "a.b.x" is port x of the
/// block a/b, whose source is "a.b"; variables without hierarchy are ports of a block that is named as the model is and
/// has an empty source. `joinVariableName(source, port)` is the variable's name. Throws `Error` as
/// `readFmiDescription`.
void readFmiStructure(const XmlFile& file, bool locals, Structure& structure);

}  // namespace workbench
