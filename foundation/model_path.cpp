#include "foundation/model_path.h"

#include "foundation/model_prefix.h"
#include "host/text.h"

namespace ks_hmi_foundation {

namespace {

constexpr fl::i18n::codecvt_ustring_to_string kToUtf8("UTF-8", true);

std::string utf8(const std::u16string& text) { return fl::i18n::to_string(text, kToUtf8); }

}  // namespace

std::u16string AddModelToPath(const std::u16string& path, const std::u16string& modelName) {
    if (path.empty() || modelName.empty()) return path;
    std::u16string joined;
    joined.reserve(modelName.size() + kPathSeparator.size() + path.size());
    return joined.append(modelName).append(kPathSeparator).append(path);
}

std::u16string RemoveModelFromPath(const std::u16string& path, const std::u16string& modelName) {
    return std::u16string(withoutModelPrefix<char16_t>(path, modelName, kPathSeparator));
}

std::string AddModelToEID(const std::string& eid, const std::u16string& modelName) {
    if (eid.empty() || modelName.empty()) return eid;
    return utf8(modelName).append(kEIDSeparator).append(eid);
}

std::string RemoveModelFromEID(const std::string& eid, const std::u16string& modelName) {
    return std::string(withoutModelPrefix<char>(eid, utf8(modelName), kEIDSeparator));
}

}  // namespace ks_hmi_foundation
