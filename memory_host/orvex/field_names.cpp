#include "memory_host/orvex/field_names.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "memory_host/orvex/functions.h"

namespace orvex {
namespace {

using SharedNames = std::shared_ptr<const FieldNames>;

bool areSame(const FieldNames& known, std::span<const char* const> names) {
    return std::equal(known.begin(), known.end(), names.begin(), names.end(),
                      [](const std::string& one, const char* other) { return other && one == other; });
}

SharedNames checkedFieldNames(std::span<const char* const> names) {
    auto made = std::make_shared<FieldNames>();
    made->reserve(names.size());
    for (const char* name : names) {
        if (!name || !*name) raise("InvalidFieldName", "A struct's field needs a name.");
        if (std::find(made->begin(), made->end(), name) != made->end())
            raise("InvalidFieldName", "A struct cannot have two fields of the name \"" + std::string(name) + "\".");
        made->emplace_back(name);
    }
    return made;
}

}  // namespace

SharedNames sharedFieldNames(std::span<const char* const> names) {
    static auto& recent = *new std::array<SharedNames, 8>;
    static std::size_t oldest = 0;
    for (const SharedNames& known : recent) {
        if (known && areSame(*known, names)) return known;
    }
    SharedNames made = checkedFieldNames(names);
    recent[oldest] = made;
    oldest = (oldest + 1) % recent.size();
    return made;
}

std::string joinedFieldNames(const FieldNames& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

int StructData::fieldNumber(std::string_view name) const noexcept {
    const auto found = std::find_if(names->begin(), names->end(), [name](const std::string& one) {
        return one.size() == name.size() && std::memcmp(one.data(), name.data(), name.size()) == 0;
    });
    return found == names->end() ? -1 : static_cast<int>(found - names->begin());
}

}  // namespace orvex
