#include "workbench/run_file/value_kind.h"

#include <array>
#include <utility>

namespace workbench {

namespace {

constexpr std::array<std::pair<ValueKind, const char*>, 6> kKinds{{{ValueKind::real, "real"},
                                                                   {ValueKind::integer, "integer"},
                                                                   {ValueKind::boolean, "boolean"},
                                                                   {ValueKind::enumeration, "enumeration"},
                                                                   {ValueKind::text, "text"},
                                                                   {ValueKind::binary, "binary"}}};

}  // namespace

const std::string* findName(const ValueNames& names, std::int64_t value) noexcept {
    for (const ValueName& one : names)
        if (one.value == value) return &one.name;
    return nullptr;
}

const char* nameOf(ValueKind kind) noexcept {
    for (const auto& [known, name] : kKinds)
        if (known == kind) return name;
    return "";
}

std::optional<ValueKind> valueKindOf(std::string_view name) noexcept {
    for (const auto& [kind, known] : kKinds)
        if (name == known) return kind;
    return std::nullopt;
}

}  // namespace workbench
