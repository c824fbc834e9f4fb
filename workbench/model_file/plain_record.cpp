#include "workbench/model_file/plain_record.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <system_error>

#include "workbench/json/json_object.h"
#include "workbench/json/plain_element.h"

namespace workbench {

namespace {

using Plain = FieldKind::Plain;

constexpr std::string_view kBegin = "    {\n      ";
constexpr std::string_view kBetween = ",\n      ";
constexpr std::string_view kRecordEnd = "\n    },\n";

}  // namespace

PlainRecord::PlainRecord() : m_markedNameKey(std::string(kBetween) + JsonObject::memberName(kMarkedName)) {
    for (const char* const field : fieldsOf(RecordKind::signal))
        m_members.push_back(
            {std::string(m_members.empty() ? kBegin : kBetween) + JsonObject::memberName(field), &fieldKindOf(field)});
}

bool PlainRecord::scan(std::string_view text) {
    m_rest = text;
    for (std::size_t field = 0; field < m_members.size(); ++field)
        if (!take(m_members[field].key) || !takeValue(field)) return false;
    m_hasMarkedName = take(m_markedNameKey);
    if (m_hasMarkedName && !takeText(m_texts.size() - 1)) return false;
    if (!take(kRecordEnd)) return false;
    m_size = text.size() - m_rest.size();
    return true;
}

bool PlainRecord::take(std::string_view text) noexcept {
    if (m_rest.size() < text.size() || std::memcmp(m_rest.data(), text.data(), text.size()) != 0) return false;
    m_rest.remove_prefix(text.size());
    return true;
}

bool PlainRecord::takeValue(std::size_t field) {
    switch (m_members[field].kind->plain) {
        case Plain::text:
            return takeText(field);
        case Plain::number:
            return takeNumber(field);
        case Plain::fields:
            return take("{}");
        default:
            return false;
    }
}

bool PlainRecord::takeText(std::size_t field) {
    const std::optional<std::string_view> text = plainText(m_rest);
    if (!text) return false;
    m_texts[field] = *text;
    m_rest.remove_prefix(text->size() + 2);
    return true;
}

bool PlainRecord::takeNumber(std::size_t field) noexcept {
    constexpr std::size_t kFew = std::numeric_limits<std::int32_t>::digits10;
    const FieldKind& kind = *m_members[field].kind;
    if (m_rest.empty() || m_rest.front() == '-') return false;
    std::int32_t& number = m_numbers[field];
    const char* const start = m_rest.data();
    const auto [end, code] = std::from_chars(start, start + std::min(m_rest.size(), kFew + 1), number);
    const auto digits = static_cast<std::size_t>(end - start);
    if (code != std::errc() || digits > kFew || (*start == '0' && digits > 1)) return false;
    m_rest.remove_prefix(digits);
    return number >= kind.least && number <= kind.most;
}

HvArrayPtr PlainRecord::value(std::size_t field) const {
    switch (m_members[field].kind->plain) {
        case Plain::text:
            return HvArrayPtr(matrix::create(m_texts[field].data(), m_texts[field].size()));
        case Plain::number:
            return HvArrayPtr(hvCreateDoubleScalar(m_numbers[field]));
        default:
            const std::array<std::size_t, 2> size{1, 1};
            return HvArrayPtr(hvCreateStructArray(size.size(), size.data(), 0, nullptr));
    }
}

}  // namespace workbench
