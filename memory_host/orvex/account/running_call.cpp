#include "memory_host/orvex/account/running_call.h"

#include <array>
#include <functional>
#include <unordered_set>
#include <utility>

namespace orvex {

constinit int internal::g_callDepth = 0;
constinit const std::string* internal::g_runningFunction = nullptr;

namespace {

struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept { return std::hash<std::string_view>()(name); }
};

const std::string* internedName(std::string_view name) {
    // Of each length the last one: the same few are called again and again.
    static std::array<const std::string*, 32> recent{};
    const std::string*& last = recent[name.size() % recent.size()];
    if (last && *last == name) return last;
    static auto& names = *new std::unordered_set<std::string, NameHash, std::equal_to<>>;
    const auto known = names.find(name);
    return last = &*(known == names.end() ? names.emplace(name).first : known);
}

}  // namespace

RunningCall::RunningCall(std::string_view functionName)
    : m_outerFunction(std::exchange(internal::g_runningFunction, internedName(functionName))) {
    ++internal::g_callDepth;
}

RunningCall::~RunningCall() {
    --internal::g_callDepth;
    internal::g_runningFunction = m_outerFunction;
}

}  // namespace orvex
