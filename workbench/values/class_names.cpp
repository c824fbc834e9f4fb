#include "workbench/values/class_names.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "memory_host/orvex/values/element_type.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// What has elements that a file can hold: all but values that are gone, and objects.
constexpr std::span kNames = std::span(orvex::kClassNames).subspan<hvDOUBLE_CLASS, hvUINT64_CLASS>();

}  // namespace

hvClassID classOfName(std::string_view name) noexcept {
    const auto found = std::find(kNames.begin(), kNames.end(), name);
    return found == kNames.end() ? hvUNKNOWN_CLASS
                                 : static_cast<hvClassID>(hvDOUBLE_CLASS + std::distance(kNames.begin(), found));
}

const char* nameOfClass(hvClassID classId) noexcept {
    const bool isKnown = classId >= hvDOUBLE_CLASS && classId <= hvUINT64_CLASS;
    return isKnown ? orvex::kClassNames.at(classId).data() : "unknown";
}

std::string classNames() { return listed({kNames.begin(), kNames.end()}); }

}  // namespace workbench
