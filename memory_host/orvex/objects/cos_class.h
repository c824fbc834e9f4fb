#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "host/object_system.h"
#include "memory_host/orvex/objects/objects.h"

namespace orvex {

/// A class that a library described. Its objects keep it alive.
class OX_API NativeClass final : public hos::COSClass {
public:
    NativeClass(std::unique_ptr<hos::COSClassInfo> info, std::string fullName);

    void addProperty(std::unique_ptr<hos::COSPropInfo> property) override;
    void addMethod(std::unique_ptr<hos::COSMethodInfo> method) override;

    /// Has the info object define the members, the first time. When that fails nothing is kept, and
    /// the next use tries again.
    void ensureMembers();

    const hos::COSClassInfo& info() const noexcept { return *m_info; }
    const std::string& fullName() const noexcept { return m_fullName; }
    const std::vector<std::unique_ptr<hos::COSPropInfo>>& properties() const noexcept { return m_properties; }
    const std::vector<std::unique_ptr<hos::COSMethodInfo>>& methods() const noexcept { return m_methods; }
    /// Null when there is none.
    const hos::COSPropInfo* findProperty(std::string_view name) const;
    /// The method of that name, the constructor excepted; null when there is none.
    const hos::COSMethodInfo* findMethod(std::string_view name) const;
    const hos::COSMethodInfo* constructor() const;

private:
    std::unique_ptr<hos::COSClassInfo> m_info;  // first, so that it outlives the members it defined
    std::string m_fullName;
    std::string_view m_shortName;
    std::vector<std::unique_ptr<hos::COSPropInfo>> m_properties;
    std::vector<std::unique_ptr<hos::COSMethodInfo>> m_methods;
    bool m_hasMembers = false;
};

/// An object of a native class with the instance that the class made for it.
class NativeObject final : public hos::COSObject {
public:
    /// Creates the instance.
    explicit NativeObject(std::shared_ptr<const NativeClass> nativeClass);
    ~NativeObject() override;

    const NativeClass& nativeClass() const noexcept { return *m_class; }
    const std::string& className() const noexcept override { return m_class->fullName(); }
    bool isA(std::string_view fullClassName) const noexcept override { return fullClassName == className(); }
    HvArrayPtr getProperty(std::string_view name) const override;
    void setProperty(std::string_view name, const hvArray* value) override;
    void* nativeInstance(std::string_view fullClassName) const noexcept override;
    std::vector<std::string> propertyNames() const override;
    std::vector<std::string> displayedProperties() const override;

private:
    const hos::COSPropInfo& requireProperty(std::string_view name) const;

    std::shared_ptr<const NativeClass> m_class;
    void* m_instance;
};

}  // namespace orvex
