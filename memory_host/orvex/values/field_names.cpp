#include "memory_host/orvex/values/field_names.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "memory_host/orvex/calls/errors.h"

namespace orvex {
namespace {

using SharedNames = std::shared_ptr<const FieldNames>;

// Up to here comparing one after the other is as fast as searching.
constexpr std::size_t kFew = 32;

bool areSame(const FieldNames& known, std::span<const char* const> names) {
    return std::equal(known.begin(), known.end(), names.begin(), names.end(),
                      [](const std::string& one, const char* other) { return other && one == other; });
}

SharedNames checkedFieldNames(std::span<const char* const> names) {
    std::vector<std::string> texts;
    texts.reserve(names.size());
    for (const char* name : names) {
        if (!name || !*name) raise("InvalidFieldName", "A struct's field needs a name.");
        texts.emplace_back(name);
    }
    auto made = std::make_shared<FieldNames>(std::move(texts));
    if (const std::string* name = made->repeated())
        raise("InvalidFieldName", "A struct cannot have two fields with the name \"" + *name + "\".");
    return made;
}

}  // namespace

SharedNames sharedFieldNames(std::span<const char* const> names) {
    static auto& recent = *new std::array<SharedNames, 8>;
    static std::size_t oldest = 0;
    for (const SharedNames& known : recent) {
        if (known && areSame(*known, names)) return known;
    }
    SharedNames made = checkedFieldNames(names);
    recent[oldest] = made;
    oldest = (oldest + 1) % recent.size();
    return made;
}

std::string joinedFieldNames(const FieldNames& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

FieldNames::FieldNames(std::vector<std::string> names) : m_names(std::move(names)), m_byName(m_names.size()) {
    std::iota(m_byName.begin(), m_byName.end(), std::size_t{0});
    std::sort(m_byName.begin(), m_byName.end(),
              [this](std::size_t one, std::size_t other) { return m_names[one] < m_names[other]; });
}

int FieldNames::find(std::string_view name) const noexcept {
    if (m_names.empty()) return -1;
    if (m_next == m_names.size()) m_next = 0;
    if (m_names[m_next] != name) m_next = searched(name);
    return m_next < m_names.size() ? static_cast<int>(m_next++) : -1;
}

std::size_t FieldNames::searched(std::string_view name) const noexcept {
    if (m_names.size() <= kFew)
        return static_cast<std::size_t>(std::find(m_names.begin(), m_names.end(), name) - m_names.begin());
    const auto found =
        std::lower_bound(m_byName.begin(), m_byName.end(), name,
                         [this](std::size_t position, std::string_view text) { return m_names[position] < text; });
    return found == m_byName.end() || m_names[*found] != name ? m_names.size() : *found;
}

const std::string* FieldNames::repeated() const noexcept {
    const auto twice = std::adjacent_find(m_byName.begin(), m_byName.end(), [this](std::size_t one, std::size_t other) {
        return m_names[one] == m_names[other];
    });
    return twice == m_byName.end() ? nullptr : &m_names[*twice];
}

}  // namespace orvex
