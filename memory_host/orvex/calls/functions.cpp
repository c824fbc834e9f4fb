#include "memory_host/orvex/calls/functions.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "memory_host/orvex/calls/function_table.h"

namespace orvex {
namespace {

using Entry = std::shared_ptr<const FunctionEntry>;

struct FunctionNameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept { return std::hash<std::string_view>()(name); }
};

// For each name the definition, if there is one, and the registrations in front of it; the last counts.
using Table = std::unordered_map<std::string, std::vector<Entry>, FunctionNameHash, std::equal_to<>>;

Table& table() {
    static Table& instance = *new Table;
    return instance;
}

void removeEntry(std::string_view name, std::uint64_t number) noexcept {
    const auto found = table().find(name);
    if (found == table().end()) return;
    auto& entries = found->second;
    const auto entry =
        std::find_if(entries.begin(), entries.end(), [number](const Entry& one) { return one->number == number; });
    if (entry == entries.end()) return;
    // Released at the end: what the function holds may come back here.
    const Entry removed = std::move(*entry);
    entries.erase(entry);
    if (entries.empty()) table().erase(found);
}

}  // namespace

FunctionRegistration::FunctionRegistration(std::string name, std::uint64_t number) noexcept
    : m_name(std::move(name)), m_number(number) {}

FunctionRegistration::FunctionRegistration(FunctionRegistration&& other) noexcept
    : m_name(std::move(other.m_name)), m_number(std::exchange(other.m_number, 0)) {}

FunctionRegistration& FunctionRegistration::operator=(FunctionRegistration&& other) noexcept {
    if (this == &other) return *this;
    end();
    m_name = std::move(other.m_name);
    m_number = std::exchange(other.m_number, 0);
    return *this;
}

FunctionRegistration::~FunctionRegistration() { end(); }

void FunctionRegistration::end() noexcept {
    if (m_number != 0) removeEntry(m_name, std::exchange(m_number, 0));
}

FunctionRegistration registerFunction(std::string name, HostFunction function, int outputs) {
    static std::uint64_t lastNumber = 0;
    const std::uint64_t number = ++lastNumber;
    table()[name].push_back(std::make_shared<const FunctionEntry>(FunctionEntry{std::move(function), outputs, number}));
    return {std::move(name), number};
}

void defineFunction(std::string name, HostFunction function, int outputs) {
    auto entry = std::make_shared<const FunctionEntry>(FunctionEntry{std::move(function), outputs, 0});
    auto& entries = table()[std::move(name)];
    if (!entries.empty() && entries.front()->number == 0) {
        entries.front().swap(entry);
    } else {
        entries.insert(entries.begin(), std::move(entry));
    }
}

void undefineFunction(std::string_view name) noexcept { removeEntry(name, 0); }

std::vector<std::string> namesOfFunctions() {
    std::vector<std::string> names;
    for (const auto& entry : table()) names.push_back(entry.first);
    return names;
}

Entry findFunction(std::string_view name) {
    const auto found = table().find(name);
    return found == table().end() || found->second.empty() ? nullptr : found->second.back();
}

}  // namespace orvex
