#pragma once

#include <ostream>
#include <string>

#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

/// Prints a JSON array as a document, each element on a line of its own; `appendOne(out, item)` appends an element's
/// JSON.
template <typename Items, typename AppendOne>
void printJsonLines(std::ostream& out, const Items& items, AppendOne appendOne) {
    std::string text;
    workbench::appendJsonArray(
        text, items, [&](const auto& item) { appendOne(text, item); }, workbench::kLines);
    out << workbench::printableJson(text) << '\n';
}

}  // namespace kshmi
