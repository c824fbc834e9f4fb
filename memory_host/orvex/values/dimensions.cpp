#include "memory_host/orvex/values/dimensions.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "memory_host/orvex/calls/errors.h"

namespace orvex {
namespace {

std::string joined(std::span<const std::size_t> lengths) {
    std::string text;
    for (const std::size_t length : lengths) text += (text.empty() ? "" : "x") + std::to_string(length);
    return text;
}

void requireReasonable(std::span<const std::size_t> lengths) {
    if (std::find(lengths.begin(), lengths.end(), std::size_t{0}) != lengths.end()) return;
    std::size_t elements = 1;
    for (const std::size_t length : lengths) {
        if (length > kMostElements / elements) raise("TooLarge", "An array of " + joined(lengths) + " is too large.");
        elements *= length;
    }
}

}  // namespace

Dimensions::Dimensions(std::span<const std::size_t> lengths) {
    if (lengths.empty()) raise("InvalidDimensions", "An array needs at least one dimension.");
    requireReasonable(lengths);
    m_two = {lengths[0], lengths.size() > 1 ? lengths[1] : 1};
    std::size_t count = lengths.size();
    while (count > 2 && lengths[count - 1] == 1) --count;
    if (count <= 2) return;
    m_more = SharedArray<std::size_t>::make(count);
    std::copy_n(lengths.begin(), count, m_more->data());
}

std::size_t Dimensions::product() const noexcept {
    const auto all = lengths();
    // Zero first: the product of the others need not fit.
    if (std::find(all.begin(), all.end(), std::size_t{0}) != all.end()) return 0;
    return std::accumulate(all.begin(), all.end(), std::size_t{1}, std::multiplies<>());
}

std::string Dimensions::text() const { return joined(lengths()); }

}  // namespace orvex
