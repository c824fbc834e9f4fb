#include "memory_host/orvex/values/field_names.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <utility>

#include "memory_host/orvex/calls/errors.h"

namespace orvex {
namespace {

// Up to here a few characters tell names apart well enough.
constexpr std::size_t kFewNames = 32;
constexpr std::size_t kSlotsForEach = 4;

std::size_t quickHash(std::string_view name) noexcept {
    const auto at = [name](std::size_t position) { return static_cast<unsigned char>(name[position]); };
    const std::size_t size = name.size();
    return size == 0 ? 0
                     : size + at(0) * std::size_t{3} + at(size / 2) * std::size_t{7} + at(size - 1) * std::size_t{13};
}

}  // namespace

FieldNames::Ptr FieldNames::of(std::span<const char* const> names) {
    static auto& recent = *new std::array<Ptr, 8>;
    static std::size_t oldest = 0;
    for (const Ptr& known : recent)
        if (known && known->areThose(names)) return known;
    Ptr made(new FieldNames(names));
    recent[oldest] = made;
    oldest = (oldest + 1) % recent.size();
    return made;
}

FieldNames::FieldNames(std::span<const char* const> names)
    : m_slots(std::bit_ceil(kSlotsForEach * std::max<std::size_t>(names.size(), 1))),
      m_after(names.size()),
      m_seldomAfter(names.size()) {
    m_names.reserve(names.size());
    for (const char* const name : names) {
        if (!name || !*name) raise("InvalidFieldName", "A struct's field needs a name.");
        m_names.emplace_back(name);
    }
    for (std::size_t position = 0; position < m_names.size(); ++position) enter(position);
}

void FieldNames::enter(std::size_t position) {
    const std::string& name = m_names[position];
    if (searched(name) >= 0)
        raise("InvalidFieldName", "A struct cannot have two fields with the name \"" + name + "\".");
    std::size_t slot = hashOf(name);
    while (m_slots[slot & (m_slots.size() - 1)] != 0) ++slot;
    m_slots[slot & (m_slots.size() - 1)] = static_cast<std::uint32_t>(position + 1);
}

bool FieldNames::areThose(std::span<const char* const> names) const noexcept {
    return std::equal(
        m_names.begin(), m_names.end(), names.begin(), names.end(),
        [](const std::string& one, const char* other) { return other && std::strcmp(one.c_str(), other) == 0; });
}

std::size_t FieldNames::hashOf(std::string_view name) const noexcept {
    return m_names.size() <= kFewNames ? quickHash(name) : std::hash<std::string_view>()(name);
}

int FieldNames::seldomNext(const char* name) const noexcept {
    const std::uint32_t guess = m_seldomAfter[m_last];
    if (std::strcmp(m_names[guess].c_str(), name) != 0) return searched(name);
    std::swap(m_after[m_last], m_seldomAfter[m_last]);
    m_last = guess;
    return static_cast<int>(guess);
}

int FieldNames::searched(std::string_view name) const noexcept {
    const std::size_t last = m_slots.size() - 1;
    for (std::size_t slot = hashOf(name) & last; m_slots[slot] != 0; slot = (slot + 1) & last) {
        const std::uint32_t position = m_slots[slot] - 1;
        if (m_names[position] != name) continue;
        m_seldomAfter[m_last] = std::exchange(m_after[m_last], position);
        m_last = position;
        return static_cast<int>(position);
    }
    return -1;
}

std::string FieldNames::joined() const {
    std::string text;
    for (const std::string& name : m_names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

}  // namespace orvex
