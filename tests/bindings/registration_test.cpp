#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <typeinfo>

#include "host/object_system.h"
#include "tests/support/host_function.h"
#include "tests/support/host_recorder.h"

// What the library hands to the object system, which is the test's own here: it stands in front of the host's.

namespace {

using ks_test::Lines;

// Writes down what is looked up and added, and keeps it, as the object system does.
class RecordingObjectSystem {
public:
    // Knows the first `known` of "Kestrel" and "Kestrel.HMI".
    explicit RecordingObjectSystem(int known);
    ~RecordingObjectSystem() { active = nullptr; }

    void note(const std::string& line) {
        lines.push_back(line);
        if (onLine) onLine(lines.size());
    }
    hos::COSNamespace* find(const std::string& name) {
        note("find " + name);
        const auto found = m_known.find(name);
        return found == m_known.end() ? nullptr : found->second.get();
    }
    void addNamespace(const std::string& where, std::unique_ptr<hos::COSNamespaceInfo> info) {
        note("namespace " + where + info->getName());
        namespaces.push_back(std::move(info));
    }
    Lines takeLines() { return std::exchange(lines, {}); }

    static inline RecordingObjectSystem* active = nullptr;
    Lines lines;
    std::function<void(std::size_t)> onLine;  // called with the number of lines so far
    std::vector<std::unique_ptr<hos::COSNamespaceInfo>> namespaces;
    std::vector<std::unique_ptr<hos::COSClassInfo>> classes;

private:
    std::map<std::string, std::unique_ptr<hos::COSNamespace>> m_known;
};

class RecordingNamespace final : public hos::COSNamespace {
public:
    explicit RecordingNamespace(std::string name) : m_name(std::move(name)) {}
    void addInnerNamespace(std::unique_ptr<hos::COSNamespaceInfo> info) override {
        RecordingObjectSystem::active->addNamespace(m_name + '.', std::move(info));
    }
    void addClass(std::unique_ptr<hos::COSClassInfo> info, int access, int mutability) override {
        RecordingObjectSystem::active->note("class " + m_name + '.' + info->getName() + ' ' + std::to_string(access) +
                                            ' ' + std::to_string(mutability));
        RecordingObjectSystem::active->classes.push_back(std::move(info));
    }

private:
    std::string m_name;
};

RecordingObjectSystem::RecordingObjectSystem(int known) {
    active = this;
    if (known > 0) m_known["Kestrel"] = std::make_unique<RecordingNamespace>("Kestrel");
    if (known > 1) m_known["Kestrel.HMI"] = std::make_unique<RecordingNamespace>("Kestrel.HMI");
}

// The library, loaded anew and not initialised.
class Library {
public:
    Library() : m_handle(dlopen(KS_HMI_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL)) { EXPECT_NE(m_handle, nullptr); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { dlclose(m_handle); }
    void call(const char* entryPoint) const {
        const auto function = reinterpret_cast<void (*)()>(dlsym(m_handle, entryPoint));
        ASSERT_NE(function, nullptr) << entryPoint;
        function();
    }

private:
    void* m_handle;
};

constexpr const char* kInitialize = "OXInitialize_ks_hmi_foundation";
constexpr const char* kOnDemand = "_ZN6ks_hmi7testAPI30addStreamingClientHOSNamespaceEv";

const Lines kClasses{"class Kestrel.HMI.InstrumentedSignals 0 2", "class Kestrel.HMI.StreamingClients 0 2"};
const Lines kRegistrations[] = {
    {"find Kestrel", "namespace Kestrel"},
    {"find Kestrel", "find Kestrel.HMI", "namespace Kestrel.HMI"},
    {"find Kestrel", "find Kestrel.HMI", kClasses[0], kClasses[1]},
};

class Registration : public ::testing::TestWithParam<const char*> {};

TEST_P(Registration, addsOnlyWhatIsNotThereAndTheRestWhenItIsLookedUp) {
    for (int known = 0; known < 3; ++known) {
        const Library library;
        RecordingObjectSystem system(known);
        library.call(GetParam());
        EXPECT_EQ(system.takeLines(), kRegistrations[known]);
        library.call(GetParam());
        EXPECT_EQ(system.takeLines(), Lines{}) << "a second call does nothing";
        RecordingNamespace kestrel("Kestrel");
        RecordingNamespace hmi("Kestrel.HMI");
        if (known == 0) {
            system.namespaces.back()->loadContents(kestrel);
            EXPECT_EQ(system.takeLines(), Lines{"namespace Kestrel.HMI"});
        }
        if (known < 2) {
            system.namespaces.back()->loadContents(hmi);
            EXPECT_EQ(system.takeLines(), kClasses);
        }
    }
}

TEST_P(Registration, whatTheObjectSystemThrowsPassesAndIsNotTriedAgain) {
    struct Refused {};
    for (int known = 0; known < 3; ++known) {
        for (std::size_t failAt = 1; failAt <= kRegistrations[known].size(); ++failAt) {
            const Library library;
            RecordingObjectSystem system(known);
            system.onLine = [&](std::size_t line) {
                if (line == failAt) throw Refused();
            };
            EXPECT_THROW(library.call(GetParam()), Refused) << known << ' ' << failAt;
            EXPECT_EQ(system.takeLines().size(), failAt);
            library.call(GetParam());
            EXPECT_EQ(system.takeLines(), Lines{});
        }
    }
}

TEST_P(Registration, isUnderWayBeforeTheObjectSystemIsAsked) {
    const Library library;
    RecordingObjectSystem system(2);
    system.onLine = [&](std::size_t) { library.call(GetParam()); };
    library.call(GetParam());
    EXPECT_EQ(system.takeLines(), kRegistrations[2]) << "a call from inside does nothing";
}

INSTANTIATE_TEST_SUITE_P(EntryPoints, Registration, ::testing::Values(kInitialize, kOnDemand),
                         [](const auto& test) { return test.param == kInitialize ? "initialize" : "onDemand"; });

TEST_F(Registration, eachEntryPointRegistersOnceWithDescriptionsOfItsOwn) {
    for (int known = 0; known < 3; ++known) {
        const Library library;
        RecordingObjectSystem system(known);
        Lines expected = kRegistrations[known];
        expected.insert(expected.end(), kRegistrations[known].begin(), kRegistrations[known].end());
        for (const char* const entryPoint : {kInitialize, kOnDemand, kInitialize, kOnDemand}) library.call(entryPoint);
        EXPECT_EQ(system.takeLines(), expected);
        ASSERT_EQ(system.namespaces.size(), known < 2 ? 2U : 0U);
        if (known == 2) continue;
        const hos::COSNamespaceInfo& first = *system.namespaces[0];
        const hos::COSNamespaceInfo& second = *system.namespaces[1];
        EXPECT_NE(&typeid(first), &typeid(second)) << "both are named alike, each in a file of its own";
    }
}

TEST_F(Registration, theHostReleasesDescriptionsAsItsOwnStorage) {
    const Library library;
    RecordingObjectSystem system(0);
    library.call(kInitialize);
    RecordingNamespace kestrel("Kestrel");
    RecordingNamespace hmi("Kestrel.HMI");
    system.namespaces.back()->loadContents(kestrel);
    system.namespaces.back()->loadContents(hmi);
    EXPECT_EQ(ks_test::recorded({"utFree"}, [&] { system.namespaces.clear(); }), (Lines{"utFree", "utFree"}));
    EXPECT_EQ(ks_test::recorded({"utFree"}, [&] { system.classes.clear(); }), (Lines{"utFree", "utFree"}));
}

}  // namespace

namespace hos {

COSNamespace* COSNamespace::getNamespace(InternedName fullName) {
    static auto* const function = ks_test::hostFunction(&COSNamespace::getNamespace);
    return RecordingObjectSystem::active ? RecordingObjectSystem::active->find(*fullName.text()) : function(fullName);
}

void COSNamespace::addNamespace(std::unique_ptr<COSNamespaceInfo> info) {
    static auto* const function = ks_test::hostFunction(&COSNamespace::addNamespace);
    if (RecordingObjectSystem::active) return RecordingObjectSystem::active->addNamespace("", std::move(info));
    function(std::move(info));
}

}  // namespace hos
