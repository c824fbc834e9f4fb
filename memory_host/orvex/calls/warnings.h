#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/api.h"
#include "host/messages.h"

/// Warnings that the host showed. Thread: the interpreter thread only.
namespace orvex {
/// One warning, as shown.
struct Warning {
    std::string catalogue;                                        ///< of the message identifier
    std::string key;                                              ///< of the message identifier
    std::string text;                                             ///< UTF-8
    std::vector<resource_core::BaseMsgID::Argument> arguments{};  ///< in the order of the text's places
};

/// The warnings since the start or the last `clearWarnings`, oldest first.
OX_API const std::vector<Warning>& warnings() noexcept;
OX_API void clearWarnings() noexcept;  ///< Forgets them.

using WarningSink = std::function<void(const Warning&)>;  ///< Shows a warning.
/// Has each further warning shown by `sink` as it is recorded; an empty one shows nothing (as at the
/// start). What the sink throws is dropped. Returns the sink that was in use.
OX_API WarningSink setWarningSink(WarningSink sink) noexcept;

/// Records a warning and shows it. Lost when there is no memory for it.
OX_API void warn(Warning warning) noexcept;

}  // namespace orvex
