#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

/// Prints a JSON array as a document, each element on a line of its own; `appendOne(out, item)` appends an element's
/// JSON.
template <typename Item, typename AppendOne>
void printJsonLines(std::ostream& out, const std::vector<Item>& items, AppendOne appendOne) {
    std::string text = "[";
    workbench::appendJsonLines(text, items.size(), [&](std::size_t i) { appendOne(text, items[i]); });
    out << workbench::printableJson(text) << (items.empty() ? "]\n" : "\n]\n");
}

}  // namespace kshmi
