#pragma once

#include <string>
#include <vector>

#include "host/hv_array.h"
#include "host/object_system.h"

/// A host value of the smallest platform: one layout for all classes. Copies are always deep.
struct hvArray {
    hvClassID classID = hvDOUBLE_CLASS;
    std::vector<std::size_t> dimensions{0, 0};
    std::vector<std::uint64_t> bytes;     ///< numbers, logicals and UTF-16 units, as wide as the class says
    std::vector<std::string> fieldNames;  ///< of a struct
    std::vector<HvArrayPtr> items;        ///< cells, or the fields of element 0, then those of element 1, ...
    hos::ObjectInterface object;          ///< of an object
};

namespace smallest_platform {

/// A new value of that class and size, all zero or empty.
HvArrayPtr make(hvClassID classID, std::vector<std::size_t> dimensions);

/// An object as the platform has it: of a class written here, with properties, or of a library's class.
struct Object {
    std::string className;
    std::vector<std::pair<std::string, HvArrayPtr>> properties;
    const hos::COSClassInfo* info = nullptr;
    void* instance = nullptr;
    ~Object();
};

}  // namespace smallest_platform

/// The platform decides what an object is; the library only passes it on.
class hos::COSObject : public smallest_platform::Object {};
