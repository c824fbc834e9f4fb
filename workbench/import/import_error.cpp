#include "workbench/import/import_error.h"

#include <fmt/format.h>

#include <utility>

namespace workbench {

void failImport(ErrorPlace place, const std::string& text, const std::string& remedy, ErrorCode code) {
    throw Error(std::move(place), fmt::format("{}; {}", text, remedy), code);
}

}  // namespace workbench
