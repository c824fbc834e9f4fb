#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/object_system.h"
#include "memory_host/orvex/objects/objects.h"
#include "tests/support/values.h"

/// A library as the object system sees one: the namespaces "Lib" and "Lib.Tools", and a class in them that counts.
namespace counter_library {

using hos::internal::makeInterned;

/// What the library under test sees happening, in order.
inline std::vector<std::string> g_events;

struct Counter {
    std::uint32_t count = 0;
    std::u16string name;
};

class CounterProperty final : public hos::COSPropInfo {
public:
    CounterProperty(const char* name, const char* type, int setAccess)
        : m_name(makeInterned(name)), m_type(makeInterned(type)), m_setAccess(setAccess) {}
    hos::InternedName getName() const override { return m_name; }
    const hos::COSType* getType() const override { return hos::COSTypeRepository::getType(m_type); }
    int getGetAccess() const override { return hos::kPublicAccess; }
    int getSetAccess() const override { return m_setAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override {
        const auto& counter = *static_cast<const Counter*>(instance);
        value.number = counter.count;
        value.text = counter.name;
        if (*m_type.text() == "any") value.array = hvCreateDoubleScalar(counter.count);
        g_events.push_back("get");
    }
    void setValue(void* instance, const hos::PropValue& value) const override {
        static_cast<Counter*>(instance)->name = value.text;
        static_cast<Counter*>(instance)->count = static_cast<std::uint32_t>(value.number);
    }
    void releaseValue(hos::PropValue& value) const override {
        THvArrayDeleter::destroy(std::exchange(value.array, nullptr));
        g_events.push_back("release");
    }
    bool isHidden() const override { return false; }
    bool isTransient() const override { return false; }
    bool isDependent() const override { return false; }
    bool isWarnOnCopyError() const override { return false; }
    bool isAbortedOnEqualAssignment() const override { return false; }
    bool isNotifiedOnRead() const override { return false; }
    bool isCopied() const override { return true; }
    bool isNotifiedOnWrite() const override { return false; }
    bool isDisplayed() const override { return *m_type.text() != "any"; }
    bool isNeverAmbiguous() const override { return false; }
    bool isCaseInsensitive() const override { return false; }
    bool isOfferedForCompletion() const override { return false; }

private:
    hos::InternedName m_name;
    hos::InternedName m_type;
    int m_setAccess;
};

using Body = std::function<void(hos::Invocation&)>;

class CounterMethod final : public hos::COSMethodInfo {
public:
    CounterMethod(const char* name, const std::vector<const char*>& inputs, const std::vector<const char*>& outputs,
                  Body body, int optional = 0, bool isStaticMethod = false)
        : m_name(makeInterned(name)),
          m_signature(hos::COSMethodSignature::createMethodSignature()),
          m_body(std::move(body)),
          m_isStatic(isStaticMethod) {
        for (const char* type : inputs) m_signature->appendInputType(makeInterned(type));
        for (const char* type : outputs) m_signature->appendOutputType(makeInterned(type));
        m_signature->setOptionalArguments(optional);
    }
    hos::InternedName getName() const override { return m_name; }
    const hos::COSMethodSignature& getSignature() const override { return *m_signature; }
    void invoke(hos::Invocation& call) const override { m_body(call); }
    bool isStatic() const override { return m_isStatic; }

private:
    hos::InternedName m_name;
    std::unique_ptr<hos::COSMethodSignature> m_signature;
    Body m_body;
    bool m_isStatic;
};

inline constexpr const char* kCounter = "Lib.Tools.Counter";

inline void constructCounter(hos::Invocation& call) {
    const hvArray* self = std::get<HvArrayPtr>(call.results[0]).get();
    auto* counter = static_cast<Counter*>(hos::getNativeInstance(omGetArrayElement(self, 0), makeInterned(kCounter)));
    if (!call.arguments.empty()) counter->name = std::get<std::u16string>(call.arguments[0]);
    call.resultCount = 1;
}

/// Gives what `make` makes, a host value with the scope that says that it is the caller's.
template <class Make>
Body gives(Make make) {
    return [make](hos::Invocation& call) {
        call.results[0] = make();
        if (const auto* const value = std::get_if<HvArrayPtr>(&call.results[0]))
            hvSetArrayScope(value->get(), hvSCOPE_NONE);
        call.resultCount = 1;
    };
}

class CounterClass final : public hos::COSClassInfo {
public:
    ~CounterClass() override { g_events.push_back("class info gone"); }
    const char* getName() const override { return "Counter"; }
    void defineMembers(hos::COSClass& hostClass) const override {
        g_events.push_back("members");
        const auto property = [&](const char* name, const char* type, int access) {
            hostClass.addProperty(std::make_unique<CounterProperty>(name, type, access));
        };
        property("Name", "unicodeString", hos::kSettableAccess);
        property("Count", "uint32 scalar", hos::kReadOnlyAccess);
        property("State", "any", hos::kReadOnlyAccess);
        const auto method = [&](auto&&... parts) {
            hostClass.addMethod(std::make_unique<CounterMethod>(std::forward<decltype(parts)>(parts)...));
        };
        using Types = std::vector<const char*>;
        method("Counter", Types{"unicodeString"}, Types{kCounter}, constructCounter, 1);
        for (const char* type : {"double scalar", "uint32 scalar", "int32 scalar", "logical scalar", "unicodeString",
                                 "asciiString", kCounter, "No.Such.Class"})
            method((std::string("take ") + type).c_str(), Types{kCounter, type}, Types{}, [](hos::Invocation&) {});
        method("isGood", Types{kCounter, "", "logical scalar"}, Types{"logical scalar"}, gives([] { return true; }), 1);
        method("noObject", Types{kCounter}, Types{kCounter}, gives([] { return HvArrayPtr(); }));
        method("wrongResult", Types{kCounter}, Types{kCounter}, gives([] { return ks_test::number(1.0); }));
        method(
            "bare", Types{}, Types{"any"},
            [](hos::Invocation& call) {
                call.results[0] = ks_test::number(1.0);
                call.resultCount = 1;
            },
            0, true);
        method("make", Types{}, Types{"any"}, gives([] { return ks_test::number(1.0); }), 0, true);
    }
    void* createInstance() const override {
        g_events.push_back("created");
        return new Counter;
    }
    void destroyInstance(void* instance) const override {
        g_events.push_back("destroyed");
        delete static_cast<Counter*>(instance);
    }
    bool isReferenceClass() const override { return true; }
    bool canThisClassFormArrays() const override { return true; }
    bool areClassPropertiesAllowed() const override { return true; }
};

using Contents = std::function<void(hos::COSNamespace&)>;

class NamespaceInfo final : public hos::COSNamespaceInfo {
public:
    NamespaceInfo(const char* name, Contents contents) : m_name(name), m_contents(std::move(contents)) {}
    ~NamespaceInfo() override { g_events.push_back(m_name + " info gone"); }
    const char* getName() const override { return m_name.c_str(); }
    void loadContents(hos::COSNamespace& hostNamespace) const override {
        g_events.push_back(m_name + " loads");
        m_contents(hostNamespace);
    }

private:
    std::string m_name;
    Contents m_contents;
};

inline void addCounter(hos::COSNamespace& tools) { tools.addClass(std::make_unique<CounterClass>(), 0, 2); }

inline void addTools(hos::COSNamespace& lib) {
    lib.addInnerNamespace(std::make_unique<NamespaceInfo>("Tools", addCounter));
}

}  // namespace counter_library
