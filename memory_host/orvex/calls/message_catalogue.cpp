#include "memory_host/orvex/calls/message_catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "memory_host/orvex/values/utf.h"

namespace orvex {
namespace {

struct Message {
    std::string_view catalogue;
    std::string_view key;
    std::string_view text;
};

constexpr std::array kMessages{
#include "memory_host/messages/plv_hmi_foundation_errors.inc"
};

struct ArgumentText {
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const std::u16string& text) const { return utf8Of(text); }
};

using Arguments = std::vector<resource_core::BaseMsgID::Argument>;

// Replaces {0} to {9}; a number that no argument has stays as it is.
std::string filledIn(std::string_view pattern, const Arguments& arguments) {
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isPlaceholder = pattern[i] == '{' && i + 2 < pattern.size() && pattern[i + 2] == '}' &&
                                   pattern[i + 1] >= '0' && pattern[i + 1] <= '9';
        const auto number = isPlaceholder ? static_cast<std::size_t>(pattern[i + 1] - '0') : arguments.size();
        if (number < arguments.size()) {
            text += std::visit(ArgumentText{}, arguments[number]);
            i += 2;
        } else {
            text += pattern[i];
        }
    }
    return text;
}

std::string plainText(const resource_core::BaseMsgID& id) {
    std::string list;
    for (const auto& argument : id.arguments())
        list += (list.empty() ? "" : ", ") + std::visit(ArgumentText{}, argument);
    return id.catalogue() + " " + id.key() + " (" + list + ")";
}

}  // namespace

std::string messageText(const resource_core::BaseMsgID& id) {
    const auto found = std::find_if(kMessages.begin(), kMessages.end(), [&id](const Message& message) {
        return message.catalogue == id.catalogue() && message.key == id.key();
    });
    return found == kMessages.end() ? plainText(id) : filledIn(found->text, id.arguments());
}

}  // namespace orvex
