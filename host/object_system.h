#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "host/api.h"
#include "host/hv_array.h"

/// The object system: namespaces, classes, properties and methods, described by info objects that a
/// library hands over, and the instances behind host objects. Thread: the interpreter thread only.
namespace hos {

// ---- names, types, objects ----------------------------------------------------------------------

/// An interned name: equal texts are the same name. The empty name (default) names nothing.
class InternedName {
public:
    constexpr InternedName() noexcept = default;
    constexpr explicit InternedName(const std::string* entry) noexcept : m_entry(entry) {}
    constexpr bool isEmpty() const noexcept { return m_entry == nullptr; }
    /// The interned text, which lives as long as the process; null for the empty name.
    constexpr const std::string* text() const noexcept { return m_entry; }
    friend constexpr bool operator==(InternedName, InternedName) noexcept = default;

private:
    const std::string* m_entry = nullptr;
};

namespace internal {
OX_API InternedName makeInterned(std::string_view text);
}

class COSObject;
/// A host object as an interface; copies name the same object, which dies with the last of them.
using ObjectInterface = std::shared_ptr<COSObject>;

/// The instance that the named class's info object created for this object, not owned; null for a
/// null object, an object of another class, and an object without a native instance.
OX_API void* getNativeInstance(const ObjectInterface& object, InternedName fullClassName) noexcept;

/// A declared type: "double scalar", "uint32 scalar", "int32 scalar", "logical scalar",
/// "unicodeString", "asciiString", "any", or the full name of a class.
class COSType;

class OX_API COSTypeRepository {
public:
    /// The type of that text; lives as long as the process. Throws the host's exception for a text
    /// that names neither a type nor a class.
    static const COSType* getType(InternedName typeText);
};

// ---- properties ---------------------------------------------------------------------------------

/// Access codes.
inline constexpr int kPublicAccess = 0;
inline constexpr int kSettableAccess = 2;
inline constexpr int kReadOnlyAccess = 5;

/// What a property's getter and setter exchange; the member in use follows from the property's type.
struct PropValue {
    double number = 0.0;
    hvArray* array = nullptr;  ///< from a getter: to be released with `releaseValue`; to a setter: borrowed
    std::u16string text;
};

/// Describes one property of a class. Belongs to the class it is added to.
class OX_API COSPropInfo {
public:
    virtual ~COSPropInfo();

    virtual InternedName getName() const = 0;
    virtual const COSType* getType() const = 0;
    virtual int getGetAccess() const = 0;
    /// With `kReadOnlyAccess` the host refuses an assignment before it reaches `setValue`.
    virtual int getSetAccess() const = 0;

    virtual void getValue(const void* instance, PropValue& value) const = 0;
    virtual void setValue(void* instance, const PropValue& value) const = 0;
    /// Called exactly once for each value handed out by `getValue`, also when copying it failed.
    virtual void releaseValue(PropValue& value) const = 0;

    virtual bool isHidden() const = 0;
    virtual bool isTransient() const = 0;
    virtual bool isDependent() const = 0;
    virtual bool isWarnOnCopyError() const = 0;
    virtual bool isAbortedOnEqualAssignment() const = 0;
    virtual bool isNotifiedOnRead() const = 0;
    virtual bool isCopied() const = 0;
    virtual bool isNotifiedOnWrite() const = 0;
    /// Shown when the object is displayed.
    virtual bool isDisplayed() const = 0;
    virtual bool isNeverAmbiguous() const = 0;
    virtual int getPartialMatchPriority() const;
    virtual bool isCaseInsensitive() const = 0;
    /// Offered when a script author completes a property's name.
    virtual bool isOfferedForCompletion() const = 0;
};

// ---- methods ------------------------------------------------------------------------------------

class OX_API COSMethodSignature {
public:
    static std::unique_ptr<COSMethodSignature> createMethodSignature();
    virtual ~COSMethodSignature();

    /// Types are named, and looked up when a call converts its arguments: a class's own methods name
    /// it before it exists. The empty name stands for an unspecified type.
    virtual void appendInputType(InternedName typeText) = 0;
    virtual void appendOutputType(InternedName typeText) = 0;
    /// How many trailing inputs may be left out.
    virtual void setOptionalArguments(int count) = 0;

    virtual std::span<const InternedName> inputTypes() const = 0;
    virtual std::span<const InternedName> outputTypes() const = 0;
    virtual int optionalArguments() const = 0;
};

/// An argument, already converted by its declared type: "double scalar", "uint32 scalar", "int32 scalar",
/// "logical scalar", "unicodeString", "asciiString", and class-typed, "any" and unspecified ones as values.
using Argument = std::variant<double, std::uint32_t, std::int32_t, bool, std::u16string, std::string, const hvArray*>;
/// A result: nothing, a logical scalar, or a value (null: no object came of it).
using Result = std::variant<std::monostate, bool, HvArrayPtr>;

/// One call of a method.
struct Invocation {
    int resultsWanted = 0;
    /// At least one slot. A constructor finds the object that the host made for it in the first.
    std::span<Result> results;
    /// Set by the method: how many slots it filled.
    int resultCount = 0;
    std::span<const Argument> arguments;
};

/// Describes one method of a class. Belongs to the class it is added to.
class OX_API COSMethodInfo {
public:
    virtual ~COSMethodInfo();

    virtual InternedName getName() const = 0;
    virtual const COSMethodSignature& getSignature() const = 0;
    virtual void invoke(Invocation& call) const = 0;

    virtual bool isStatic() const;
    virtual bool isVisible() const;
    virtual bool isSealed() const;
    virtual bool isAbstract() const;
    virtual int getMemberAccess() const;
};

// ---- classes ------------------------------------------------------------------------------------

class OX_API COSClass {
public:
    virtual ~COSClass();
    virtual void addProperty(std::unique_ptr<COSPropInfo> property) = 0;
    /// A method with the class's own name is its constructor.
    virtual void addMethod(std::unique_ptr<COSMethodInfo> method) = 0;
};

/// Describes a class. Belongs to the namespace it is added to.
class OX_API COSClassInfo {
public:
    virtual ~COSClassInfo();

    /// The name inside the namespace.
    virtual const char* getName() const = 0;
    /// Called once, before the class is first used.
    virtual void defineMembers(COSClass& hostClass) const = 0;
    /// A new native instance, paired by the host with the new object.
    virtual void* createInstance() const = 0;
    /// Destroys what `createInstance` made; null is ignored.
    virtual void destroyInstance(void* instance) const = 0;
    virtual void updateInstance(void* instance) const;
    /// Copies of an object name the same instance.
    virtual bool isReferenceClass() const = 0;
    virtual const char* getDescription() const;
    virtual const char* getDetailedDescription() const;
    virtual int getAccess() const;
    virtual bool isHidden() const;
    virtual bool isSealed() const;
    virtual bool isAbstract() const;
    virtual bool canThisClassContainOtherClass() const;
    /// Objects may be elements of object arrays.
    virtual bool canThisClassFormArrays() const = 0;
    virtual bool areClassFunctionsAllowed() const;
    /// Properties are read and written by name from scripts.
    virtual bool areClassPropertiesAllowed() const = 0;
    virtual bool customSave() const;
    virtual bool customLoad() const;
};

// ---- namespaces ---------------------------------------------------------------------------------

class COSNamespace;
class COSMethodSelector;

/// Describes a namespace. Belongs to the object system from the moment it is handed over.
class OX_API COSNamespaceInfo {
public:
    virtual ~COSNamespaceInfo();

    /// The last part of the namespace's name.
    virtual const char* getName() const = 0;
    virtual const char* getDescription() const;
    virtual const char* getDetailedDescription() const;
    virtual bool attemptToLoadInnerNamespace(COSNamespace& hostNamespace, InternedName name) const;
    virtual void throwErrorForDefinitionOfExistingName(InternedName name) const;
    virtual bool attemptToLoadClass(COSNamespace& hostNamespace, InternedName name) const;
    virtual bool attemptToLoadFunction(COSNamespace& hostNamespace, InternedName name) const;
    virtual bool attemptToLoadType(COSNamespace& hostNamespace, InternedName name) const;
    virtual const COSMethodSelector* getMethodSelector() const;
    /// Adds the namespace's contents; called once, when something inside is first looked up.
    virtual void loadContents(COSNamespace& hostNamespace) const;
    virtual bool isDestructible() const;
    virtual bool isLocked() const;
    virtual bool canLoadDynamicContent() const;
};

class OX_API COSNamespace {
public:
    virtual ~COSNamespace();

    /// The namespace of that full, dotted name, or null. Loads the contents of the namespaces that
    /// the name passes through, not those of the namespace it names.
    static COSNamespace* getNamespace(InternedName fullName);
    /// Adds a top-level namespace. Throws when it exists already.
    static void addNamespace(std::unique_ptr<COSNamespaceInfo> info);

    /// Throws when the inner namespace exists already.
    virtual void addInnerNamespace(std::unique_ptr<COSNamespaceInfo> info) = 0;
    /// Throws when a class of that name exists already; the first one stays.
    virtual void addClass(std::unique_ptr<COSClassInfo> info, int access, int mutability) = 0;
};

}  // namespace hos

/// Element `index` of a host object array; null when the value is no object or has no such element.
OX_API hos::ObjectInterface omGetArrayElement(const hvArray* objectArray, std::size_t index) noexcept;
/// A 1x1 value wrapping one host object. Throws for a null object.
OX_API hvArray* omCreateHOSScalar(const hos::ObjectInterface& object);
