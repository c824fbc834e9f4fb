#include <dlfcn.h>
#include <gtest/gtest.h>

#include <boost/exception/exception.hpp>
#include <new>
#include <optional>

#include "host/messages.h"
#include "host/object_system.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/objects/object_system.h"
#include "tests/support/sanitized.h"

// The library as a host loads it: this program does not link it.

static constinit thread_local bool t_callocFails = false;
static constinit thread_local std::size_t t_leastBytes = SIZE_MAX;

#if !KS_HMI_SANITIZED
// The program's own function takes the place of the C library's, which is still there under its inner name.
extern "C" {
void* __libc_calloc(std::size_t count, std::size_t size);
void* calloc(std::size_t count, std::size_t size) {
    if (count * size < t_leastBytes) t_leastBytes = count * size;
    return t_callocFails ? nullptr : __libc_calloc(count, size);
}
}
#endif

namespace {

constexpr const char* kClass = "Kestrel.HMI.InstrumentedSignals";

hos::COSNamespace* find(const char* name) { return hos::COSNamespace::getNamespace(hos::internal::makeInterned(name)); }

bool canConstruct() {
    const auto made = orvex::callByName(kClass, {}, 1);
    return hvIsA(made[0].get(), kClass);
}

class LibraryEntry : public ::testing::Test {
protected:
    ~LibraryEntry() override {
        kestrel::releaseHostSide();
        orvex::releaseObjectSystem();
        EXPECT_EQ(orvex::liveCounts(), orvex::LedgerCounts{}) << orvex::describeLive();
    }
};

TEST_F(LibraryEntry, registersOnceAndLeavesItAllToTheHostAtTheEnd) {
    kestrel::installHostSide();
    orvex::LoadedLibrary library(KS_HMI_LIBRARY_FILE);
    const auto initialize = reinterpret_cast<void (*)()>(library.symbol("OXInitialize_ks_hmi_foundation"));
    const auto terminate = reinterpret_cast<void (*)()>(library.symbol("OXTerminate_ks_hmi_foundation"));
    ASSERT_TRUE(initialize && terminate);
    initialize();
    terminate();
    EXPECT_TRUE(canConstruct());
    EXPECT_GE(t_leastBytes, sizeof(void*)) << "as much as a description needs";
    kestrel::releaseHostSide();
    orvex::releaseObjectSystem();
    initialize();
    EXPECT_EQ(find("Kestrel"), nullptr) << "the second call does nothing, whatever the namespaces are";
    library.unload();
}

TEST_F(LibraryEntry, isLoadedUsedAndUnloadedAHundredTimesAloneAndBesideANeighbour) {
    for (int i = 0; i < 200; ++i) {
        std::optional<orvex::LoadedLibrary> neighbour;
        if (i >= 100) neighbour.emplace(KS_HMI_NEIGHBOUR_FILE);
        ASSERT_EQ(find("Kestrel.HMI") != nullptr, neighbour.has_value());
        kestrel::installHostSide();
        orvex::LoadedLibrary library(KS_HMI_LIBRARY_FILE);
        EXPECT_TRUE(canConstruct());
        kestrel::releaseHostSide();
        orvex::releaseObjectSystem();
        library.unload();
        EXPECT_EQ(dlopen(KS_HMI_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something of it stays";
    }
}

// As a host written in C does, which cannot release the object system first.
TEST_F(LibraryEntry, isClosedAndLoadedAgainWhileItsClassesAreRegistered) {
    kestrel::installHostSide();
    for (int i = 0; i < 3; ++i) {
        void* const library = dlopen(KS_HMI_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        reinterpret_cast<void (*)()>(dlsym(library, "OXInitialize_ks_hmi_foundation"))();
        reinterpret_cast<void (*)()>(dlsym(library, "OXTerminate_ks_hmi_foundation"))();
        dlclose(library);
        EXPECT_TRUE(canConstruct());
    }
    kestrel::releaseHostSide();
    orvex::releaseObjectSystem();
    EXPECT_EQ(dlopen(KS_HMI_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something of it stays";
}

TEST_F(LibraryEntry, aRegistrationWithoutMemoryIsNotTriedAgain) {
    if (KS_HMI_SANITIZED != 0) GTEST_SKIP() << "the checks' own allocator stays";
    for (const bool isBesideANeighbour : {false, true}) {
        std::optional<orvex::LoadedLibrary> neighbour;
        if (isBesideANeighbour) neighbour.emplace(KS_HMI_NEIGHBOUR_FILE);
        void* const library = dlopen(KS_HMI_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr);
        const auto initialize = reinterpret_cast<void (*)()>(dlsym(library, "OXInitialize_ks_hmi_foundation"));
        t_callocFails = true;
        try {
            initialize();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::bad_alloc& error) {
            t_callocFails = false;
            EXPECT_STREQ(error.what(), "out of memory");
            EXPECT_NE(dynamic_cast<const boost::exception_detail::clone_base*>(&error), nullptr);
        }
        t_callocFails = false;
        initialize();
        EXPECT_THROW(canConstruct(), kssvIException);
        orvex::releaseObjectSystem();
        dlclose(library);
    }
}

}  // namespace
