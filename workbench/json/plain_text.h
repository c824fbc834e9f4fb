#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// `appendJsonText` for a text that needs no escapes and is ASCII. Answers whether it is one; else nothing is appended.
bool appendPlainJsonText(std::string& out, std::u16string_view text);

}  // namespace workbench
