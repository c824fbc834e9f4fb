#include "memory_host/orvex/account/scope_errors.h"
#include "memory_host/orvex/account/scope_of_value.h"

namespace orvex {
namespace {

constexpr std::size_t kMost = 100;

std::vector<std::string>& errors() noexcept {
    static auto& instance = *new std::vector<std::string>;
    return instance;
}

}  // namespace

const std::vector<std::string>& scopeErrors() noexcept { return errors(); }

void clearScopeErrors() noexcept { errors().clear(); }

void reportScopeError(std::string_view text) noexcept {
    try {
        if (errors().size() < kMost) errors().emplace_back(text);
    } catch (...) {
        // The value in question is worth more than the report of it.
    }
}

}  // namespace orvex
