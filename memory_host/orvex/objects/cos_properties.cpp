#include <cstdint>
#include <string>

#include "host/text.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/cos_class.h"
#include "memory_host/orvex/objects/types.h"

// Properties of native objects: between what getters and setters exchange and host values.
namespace orvex {

namespace {

using Kind = hos::COSType::Kind;

// A value handed out by a getter, given back exactly once.
class HandedOut {
public:
    HandedOut(const hos::COSPropInfo& property, const void* instance) : m_property(property) {
        property.getValue(instance, m_value);
    }
    HandedOut(const HandedOut&) = delete;
    HandedOut& operator=(const HandedOut&) = delete;
    ~HandedOut() { m_property.releaseValue(m_value); }
    const hos::PropValue& value() const noexcept { return m_value; }

private:
    const hos::COSPropInfo& m_property;
    hos::PropValue m_value;
};

template <class Integer>
HvArrayPtr integerScalar(hvClassID classId, double number) {
    HvArrayPtr scalar(hvCreateNumericScalar(classId, hvREAL));
    *static_cast<Integer*>(hvGetDataForWriting(scalar.get())) = static_cast<Integer>(number);
    return scalar;
}

HvArrayPtr toHostValue(const hos::COSType& type, const hos::PropValue& value) {
    switch (type.kind()) {
        case Kind::number:
            return HvArrayPtr(hvCreateDoubleScalar(value.number));
        case Kind::uint32:
            return integerScalar<std::uint32_t>(hvUINT32_CLASS, value.number);
        case Kind::int32:
            return integerScalar<std::int32_t>(hvINT32_CLASS, value.number);
        case Kind::logical:
            return HvArrayPtr(hvCreateLogicalScalar(value.number != 0.0));
        case Kind::unicodeText:
        case Kind::asciiText:
            return HvArrayPtr(matrix::create(value.text.data(), value.text.size()));
        default:
            break;
    }
    if (!value.array) return HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL));
    return HvArrayPtr(hvCreateSharedDataCopy(value.array));
}

struct ToPropValue {
    hos::PropValue& value;
    void operator()(const hvArray* array) const { value.array = const_cast<hvArray*>(array); }
    void operator()(std::u16string text) const { value.text = std::move(text); }
    void operator()(const std::string& ascii) const { value.text.assign(ascii.begin(), ascii.end()); }
    template <class Number>
    void operator()(Number number) const {
        value.number = static_cast<double>(number);
    }
};

std::string described(std::string_view name, const NativeClass& owner) {
    return "property \"" + std::string(name) + "\" of class " + owner.fullName();
}

}  // namespace

const hos::COSPropInfo& NativeObject::requireProperty(std::string_view name) const {
    if (!m_class->info().areClassPropertiesAllowed())
        raise("PropertiesNotAllowed", "Properties of class " + className() + " are not accessible by name.");
    const hos::COSPropInfo* property = m_class->findProperty(name);
    if (!property) raise("UnknownProperty", "There is no " + described(name, *m_class) + ".");
    return *property;
}

HvArrayPtr NativeObject::getProperty(std::string_view name) const {
    const hos::COSPropInfo& property = requireProperty(name);
    const HandedOut handedOut(property, m_instance);
    return toHostValue(*property.getType(), handedOut.value());
}

void NativeObject::setProperty(std::string_view name, const hvArray* value) {
    const hos::COSPropInfo& property = requireProperty(name);
    if (property.getSetAccess() == hos::kReadOnlyAccess)
        raise("ReadOnlyProperty", "The " + described(name, *m_class) + " is read-only.");
    const hos::COSType& type = *property.getType();
    std::optional<hos::Argument> converted = convertByType(type, value);
    if (!converted) refuseValue(type, value, "The value for " + described(name, *m_class));
    hos::PropValue assigned;
    std::visit(ToPropValue{assigned}, std::move(*converted));
    property.setValue(m_instance, assigned);
}

std::vector<std::string> NativeObject::propertyNames() const {
    std::vector<std::string> names;
    for (const auto& property : m_class->properties()) names.push_back(*property->getName().text());
    return names;
}

std::vector<std::string> NativeObject::displayedProperties() const {
    std::vector<std::string> names;
    for (const auto& property : m_class->properties())
        if (property->isDisplayed() && !property->isHidden()) names.push_back(*property->getName().text());
    return names;
}

}  // namespace orvex
