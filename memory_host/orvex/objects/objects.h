#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "host/object_system.h"
#include "memory_host/orvex/account/ledger.h"

namespace hos {

/// A host object: one of a native class (with an instance that the class's info object made) or of a
/// script class. Counted in the ledger while it lives.
class OX_API COSObject : public orvex::LedgerEntry {
public:
    virtual ~COSObject();
    COSObject(const COSObject&) = delete;
    COSObject& operator=(const COSObject&) = delete;

    /// Full dotted name.
    virtual const std::string& className() const noexcept = 0;
    /// Of that class or of a subclass.
    virtual bool isA(std::string_view fullClassName) const noexcept = 0;
    /// A new value. Throws the host's exception when there is no such property.
    virtual HvArrayPtr getProperty(std::string_view name) const = 0;
    /// Copies the value in. Throws the host's exception when there is no such property, it is
    /// read-only, or the value does not convert to its type.
    virtual void setProperty(std::string_view name, const hvArray* value) = 0;
    /// The instance paired with the object; null when its class is another or has no native side.
    virtual void* nativeInstance(std::string_view fullClassName) const noexcept = 0;
    /// Names of the properties that hold the object's state, in order.
    virtual std::vector<std::string> propertyNames() const = 0;
    /// Names of the properties that are shown when the object is displayed, in order.
    virtual std::vector<std::string> displayedProperties() const = 0;

protected:
    explicit COSObject(const orvex::Site& site);  ///< Counted under that place.
};

}  // namespace hos

namespace orvex {

/// The object as the environment displays it: its class, then a line for each displayed property with
/// its value in short. Values that are no objects give their class and size. UTF-8.
OX_API std::string displayObject(const hvArray* object);

}  // namespace orvex
