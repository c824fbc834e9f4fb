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
    constexpr explicit InternedName(const std::string* entry) noexcept : m_entry(entry) {}  ///< For `makeInterned`.
    constexpr bool isEmpty() const noexcept { return m_entry == nullptr; }  ///< Whether it names nothing.
    /// The interned text, which lives as long as the process; null for the empty name.
    constexpr const std::string* text() const noexcept { return m_entry; }
    friend constexpr bool operator==(InternedName, InternedName) noexcept = default;  ///< Compares addresses only.

private:
    const std::string* m_entry = nullptr;
};

namespace internal {
OX_API InternedName makeInterned(std::string_view text);  ///< The name of that text; the empty name for no text.
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
/// Where declared types are looked up.
class OX_API COSTypeRepository {
public:
    /// The type of that text; lives as long as the process. Throws the host's exception for a text
    /// that names neither a type nor a class.
    static const COSType* getType(InternedName typeText);
};

// ---- properties ---------------------------------------------------------------------------------

/// Access codes.
inline constexpr int kPublicAccess = 0;
inline constexpr int kSettableAccess = 2;  ///< May be assigned.
inline constexpr int kReadOnlyAccess = 5;  ///< An assignment is refused.

/// What a property's getter and setter exchange; the member in use follows from the property's type.
struct PropValue {
    double number = 0.0;       ///< for number and logical types (0 or 1)
    hvArray* array = nullptr;  ///< from a getter: to be released with `releaseValue`; to a setter: borrowed
    std::u16string text;       ///< for both text types
};

/// Describes one property of a class. Belongs to the class it is added to.
class OX_API COSPropInfo {
public:
    virtual ~COSPropInfo();

    virtual InternedName getName() const = 0;    ///< Unique in the class, never empty.
    virtual const COSType* getType() const = 0;  ///< Not owned; from `COSTypeRepository::getType`.
    virtual int getGetAccess() const = 0;        ///< Who may read it.
    /// With `kReadOnlyAccess` the host refuses an assignment before it reaches `setValue`.
    virtual int getSetAccess() const = 0;

    virtual void getValue(const void* instance, PropValue& value) const = 0;  ///< Fills the member that the type uses.
    virtual void setValue(void* instance, const PropValue& value) const = 0;  ///< `value` is converted already.
    /// Called exactly once for each value handed out by `getValue`, also when copying it failed.
    virtual void releaseValue(PropValue& value) const = 0;

    virtual bool isHidden() const = 0;                    ///< Left out of lists and displays.
    virtual bool isTransient() const = 0;                 ///< Not saved with the object.
    virtual bool isDependent() const = 0;                 ///< Computed from other properties, holds no state.
    virtual bool isWarnOnCopyError() const = 0;           ///< A failure to copy it is a warning, not an error.
    virtual bool isAbortedOnEqualAssignment() const = 0;  ///< Assigning an equal value does nothing.
    virtual bool isNotifiedOnRead() const = 0;            ///< The host announces each reading.
    virtual bool isCopied() const = 0;                    ///< Taken along when the object is copied.
    virtual bool isNotifiedOnWrite() const = 0;           ///< The host announces each assignment.
    /// Shown when the object is displayed.
    virtual bool isDisplayed() const = 0;
    virtual bool isNeverAmbiguous() const = 0;    ///< A shortened name that could mean it means it.
    virtual int getPartialMatchPriority() const;  ///< The highest wins a shortened name; default 0.
    virtual bool isCaseInsensitive() const = 0;   ///< Found whatever the case of its name.
    /// Offered when a script author completes a property's name.
    virtual bool isOfferedForCompletion() const = 0;
};

// ---- methods ------------------------------------------------------------------------------------
/// The types of a method's inputs and outputs, in order.
class OX_API COSMethodSignature {
public:
    static std::unique_ptr<COSMethodSignature> createMethodSignature();  ///< A new one without any.
    virtual ~COSMethodSignature();

    /// Types are named, and looked up when a call converts its arguments: a class's own methods name
    /// it before it exists. The empty name stands for an unspecified type.
    virtual void appendInputType(InternedName typeText) = 0;
    virtual void appendOutputType(InternedName typeText) = 0;  ///< As `appendInputType`.
    /// How many trailing inputs may be left out.
    virtual void setOptionalArguments(int count) = 0;

    virtual std::span<const InternedName> inputTypes() const = 0;   ///< As appended.
    virtual std::span<const InternedName> outputTypes() const = 0;  ///< As appended.
    virtual int optionalArguments() const = 0;                      ///< 0 unless set.
};

/// An argument, already converted by its declared type: "double scalar", "uint32 scalar", "int32 scalar",
/// "logical scalar", "unicodeString", "asciiString", and class-typed, "any" and unspecified ones as values.
using Argument = std::variant<double, std::uint32_t, std::int32_t, bool, std::u16string, std::string, const hvArray*>;
/// A result: nothing, a logical scalar, or a value (null: no object came of it).
using Result = std::variant<std::monostate, bool, HvArrayPtr>;

/// One call of a method.
struct Invocation {
    int resultsWanted = 0;  ///< may be 0
    /// At least one slot. A constructor finds the object that the host made for it in the first.
    std::span<Result> results;
    /// Set by the method: how many slots it filled.
    int resultCount = 0;
    std::span<const Argument> arguments;  ///< those that were given, optional ones left out at the end
};

/// Describes one method of a class. Belongs to the class it is added to.
class OX_API COSMethodInfo {
public:
    virtual ~COSMethodInfo();

    virtual InternedName getName() const = 0;  ///< Unique in the class; the class's own for the constructor.
    virtual const COSMethodSignature& getSignature() const = 0;  ///< Lives as long as this.
    virtual void invoke(Invocation& call) const = 0;             ///< Runs the method; what it throws fails the call.

    virtual bool isStatic() const;        ///< Called by class, without an object; default false.
    virtual bool isVisible() const;       ///< Listed among the methods; default true.
    virtual bool isSealed() const;        ///< Subclasses may not replace it; default false.
    virtual bool isAbstract() const;      ///< Subclasses must supply it; default false.
    virtual int getMemberAccess() const;  ///< Who may call it; default `kPublicAccess`.
};

// ---- classes ------------------------------------------------------------------------------------
/// What a class's info object adds its members to. Throws when a name is missing or taken.
class OX_API COSClass {
public:
    virtual ~COSClass();
    virtual void addProperty(std::unique_ptr<COSPropInfo> property) = 0;  ///< Takes it over.
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
    virtual void updateInstance(void* instance) const;  ///< Brings an instance up to date; default: does nothing.
    /// Copies of an object name the same instance.
    virtual bool isReferenceClass() const = 0;
    virtual const char* getDescription() const;          ///< One sentence; default empty, never null.
    virtual const char* getDetailedDescription() const;  ///< More than one; default empty, never null.
    virtual int getAccess() const;                       ///< Who may use the class; default `kPublicAccess`.
    virtual bool isHidden() const;                       ///< Left out of lists; default false.
    virtual bool isSealed() const;                       ///< Has no subclasses; default false.
    virtual bool isAbstract() const;                     ///< Has no objects of its own; default false.
    virtual bool canThisClassContainOtherClass() const;  ///< As parts; default false.
    /// Objects may be elements of object arrays.
    virtual bool canThisClassFormArrays() const = 0;
    virtual bool areClassFunctionsAllowed() const;  ///< Methods are called from scripts; default true.
    /// Properties are read and written by name from scripts.
    virtual bool areClassPropertiesAllowed() const = 0;
    virtual bool customSave() const;  ///< Saves its objects itself; default false.
    virtual bool customLoad() const;  ///< Loads its objects itself; default false.
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
    virtual const char* getDescription() const;          ///< One sentence; default empty, never null.
    virtual const char* getDetailedDescription() const;  ///< More than one; default empty, never null.
    virtual bool attemptToLoadInnerNamespace(COSNamespace& hostNamespace, InternedName name) const;  ///< Finds none.
    virtual void throwErrorForDefinitionOfExistingName(InternedName name) const;  ///< Throws; the text names it.
    virtual bool attemptToLoadClass(COSNamespace& hostNamespace, InternedName name) const;     ///< Finds none; false.
    virtual bool attemptToLoadFunction(COSNamespace& hostNamespace, InternedName name) const;  ///< Finds none; false.
    virtual bool attemptToLoadType(COSNamespace& hostNamespace, InternedName name) const;      ///< Finds none; false.
    virtual const COSMethodSelector* getMethodSelector() const;  ///< Chooses among methods, not owned; default null.
    /// Adds the namespace's contents; called once, when something inside is first looked up.
    virtual void loadContents(COSNamespace& hostNamespace) const;
    virtual bool isDestructible() const;         ///< May be removed; default true.
    virtual bool isLocked() const;               ///< Takes no further contents; default false.
    virtual bool canLoadDynamicContent() const;  ///< Whether the four attempts are worth making; default false.
};
/// A namespace of the object system, which owns it.
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
