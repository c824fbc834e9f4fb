#include "workbench/values/class_names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <utility>
#include <vector>

namespace workbench {

namespace {

constexpr std::array<std::pair<std::string_view, hvClassID>, 14> kClassNames{{{"double", hvDOUBLE_CLASS},
                                                                              {"struct", hvSTRUCT_CLASS},
                                                                              {"logical", hvLOGICAL_CLASS},
                                                                              {"char", hvCHAR_CLASS},
                                                                              {"cell", hvCELL_CLASS},
                                                                              {"single", hvSINGLE_CLASS},
                                                                              {"int8", hvINT8_CLASS},
                                                                              {"uint8", hvUINT8_CLASS},
                                                                              {"int16", hvINT16_CLASS},
                                                                              {"uint16", hvUINT16_CLASS},
                                                                              {"int32", hvINT32_CLASS},
                                                                              {"uint32", hvUINT32_CLASS},
                                                                              {"int64", hvINT64_CLASS},
                                                                              {"uint64", hvUINT64_CLASS}}};

}  // namespace

hvClassID classOfName(std::string_view name) noexcept {
    for (const auto& [text, classId] : kClassNames)
        if (text == name) return classId;
    return hvUNKNOWN_CLASS;
}

const char* nameOfClass(hvClassID classId) noexcept {
    for (const auto& [text, id] : kClassNames)
        if (id == classId) return text.data();
    return "unknown";
}

std::string classNames() {
    std::vector<std::string_view> names;
    names.reserve(kClassNames.size());
    for (const auto& [text, id] : kClassNames) names.push_back(text);
    return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace workbench
