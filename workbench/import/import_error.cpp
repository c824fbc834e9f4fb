#include "workbench/import/import_error.h"

#include <fmt/format.h>

#include "workbench/text/error.h"

namespace workbench {

void failImport(const std::string& file, std::size_t line, const std::string& text, const std::string& remedy) {
    throw Error({file, line}, fmt::format("{}; {}", text, remedy), ErrorCode::format);
}

}  // namespace workbench
