#pragma once

#include <string>

#include "foundation/export.h"

/// Joining model-relative references with their model's name, and splitting them.
///
/// Block paths are UTF-16, "model/path"; element identifiers (EIDs) are UTF-8, "model:identifier".
/// Nothing is escaped: every character is taken as it stands, and the model's name is compared
/// literally and case-sensitively. Only one leading name is ever added or removed. May be called
/// from any thread; throws nothing but allocation errors.
namespace ks_hmi_foundation {

/// "model/path"; empty for an empty path, `path` itself for an empty model name.
KS_HMI_EXPORT std::u16string AddModelToPath(const std::u16string& path, const std::u16string& modelName);

/// What follows "model/", or `path` itself when it does not start with that or holds nothing more.
/// With an empty model name a leading "/" is removed.
KS_HMI_EXPORT std::u16string RemoveModelFromPath(const std::u16string& path, const std::u16string& modelName);

/// "model:eid"; empty for an empty identifier, `eid` itself for an empty model name.
KS_HMI_EXPORT std::string AddModelToEID(const std::string& eid, const std::u16string& modelName);

/// What follows "model:", or `eid` itself when it does not start with that or holds nothing more.
/// With an empty model name a leading ":" is removed.
KS_HMI_EXPORT std::string RemoveModelFromEID(const std::string& eid, const std::u16string& modelName);

}  // namespace ks_hmi_foundation
