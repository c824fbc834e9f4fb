#include "host/text.h"
#include "memory_host/orvex/calls/errors.h"

#include <string_view>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/values/utf.h"

namespace fl::i18n {

using orvex::faults::Operation;

std::u16string to_ustring(const char* text) {
    orvex::faults::point(Operation::convertText);
    return text ? orvex::utf16Of(text) : std::u16string();
}

std::string to_string(const std::u16string& text) {
    orvex::faults::point(Operation::convertText);
    return orvex::utf8Of(text);
}

std::string to_string(const std::u16string& text, const codecvt_ustring_to_string& converter) {
    const char* encoding = converter.encoding();
    if (!encoding || std::string_view(encoding) != "UTF-8") {
        const std::string name = encoding ? encoding : "(none)";
        orvex::raise("UnknownEncoding", "The text encoding \"" + name + "\" is not known; \"UTF-8\" is.");
    }
    return to_string(text);
}

}  // namespace fl::i18n
