#include "report/policy.h"

#include <fmt/format.h>

#include <boost/algorithm/hex.hpp>
#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/transform_width.hpp>
#include <iterator>
#include <string_view>

#include "report/assets.h"

namespace report {

namespace {

std::string asBase64(std::string_view hexadecimal) {
    namespace iterators = boost::archive::iterators;
    using Digits = iterators::base64_from_binary<iterators::transform_width<std::string::const_iterator, 6, 8>>;
    std::string bytes;
    boost::algorithm::unhex(hexadecimal, std::back_inserter(bytes));
    std::string text(Digits(bytes.cbegin()), Digits(bytes.cend()));
    constexpr std::size_t kGroup = 4;
    while (text.size() % kGroup != 0) text += '=';
    return text;
}

}  // namespace

std::string contentPolicy() {
    return fmt::format(
        "default-src 'none'; style-src 'sha256-{}'; script-src 'sha256-{}'; img-src data:; base-uri 'none'; "
        "form-action 'none'",
        asBase64(styleHash()), asBase64(scriptHash()));
}

}  // namespace report
