#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/hv_array.h"

/// Typed reading of one record, from an element of a saved struct array or from a host object.
namespace ks_hmi_foundation {

/// Where the values of one record come from.
class FieldSource {
public:
    virtual ~FieldSource() = default;

    /// The value of the named field, valid until the next one is asked for, or null when there is none.
    virtual const hvArray* find(const char* name) = 0;
    /// The same, never null: raises `MissingField`.
    const hvArray* require(const char* name);
    /// 1-based, for errors.
    virtual std::size_t elementNumber() const noexcept = 0;

    // Texts: a value that is no character array reads as empty. Numbers: a value that holds no number raises
    // `InvalidFieldValue`; integers truncate toward zero and saturate, NaN is 0; flags are true for all but 0.0.
    std::u16string text(const char* name);
    std::string narrowText(const char* name);
    std::int32_t integer(const char* name);
    bool flag(const char* name);
    double number(const char* name);
    std::optional<double> numberUnlessEmpty(const char* name);
    // One text per cell, empty for a cell that holds no characters; a value that is no cell array raises
    // `InvalidFieldValue`.
    std::vector<std::u16string> texts(const char* name);
    std::vector<std::string> narrowTexts(const char* name);
    /// An owned copy of the field's value, of whatever class.
    virtual HvArrayPtr copyOf(const char* name) = 0;
    /// The low 32 bits as a signed number, widened with its sign; 0 when the field is missing.
    std::uint64_t widened(const char* name);
    /// A logical's first element, else whether the number is not 0.0; false when missing or empty.
    bool truth(const char* name);

    // A missing field keeps the member's value.
    void readIfPresent(const char* name, std::int32_t& member);
    void readIfPresent(const char* name, bool& member);

private:
    double numberIn(const hvArray* value, const char* name) const;
    template <class Text>
    std::vector<Text> cellsOf(const char* name, Text (*read)(const hvArray*));
};

/// Element `index` (0-based) of a struct array. Borrows it.
class SavedElement final : public FieldSource {
public:
    SavedElement(const hvArray* structArray, std::size_t index) noexcept : m_struct(structArray), m_index(index) {}
    const hvArray* find(const char* name) override { return hvGetField(m_struct, m_index, name); }
    HvArrayPtr copyOf(const char* name) override { return HvArrayPtr(hvCreateDeepCopy(require(name))); }
    std::size_t elementNumber() const noexcept override { return m_index + 1; }

private:
    const hvArray* m_struct;
    std::size_t m_index;
};

/// The properties of element 0 of a host object. Borrows it; a missing property is the host's exception.
class ObjectProperties final : public FieldSource {
public:
    explicit ObjectProperties(const hvArray* object) noexcept : m_object(object) {}
    const hvArray* find(const char* name) override;
    HvArrayPtr copyOf(const char* name) override { return HvArrayPtr(hvGetProperty(m_object, 0, name)); }
    std::size_t elementNumber() const noexcept override { return 1; }

private:
    const hvArray* m_object;
    HvArrayPtr m_value;
};

}  // namespace ks_hmi_foundation
