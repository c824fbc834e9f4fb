#include "memory_host/orvex/calls/library_loader.h"

#include <dlfcn.h>

#include <new>
#include <string>
#include <utility>

#include "tests/memory_host/ledger_test_base.h"

namespace {

TEST(LibraryLoader, whatALibraryThrowsAsItStartsOutlivesIt) {
    try {
        const orvex::LoadedLibrary library(KS_HMI_UNLUCKY_FILE);
        FAIL() << "started";
    } catch (const std::bad_alloc& failure) {
        EXPECT_STREQ(failure.what(), std::bad_alloc().what());
    }
    void* const first = dlopen(KS_HMI_UNLUCKY_FILE, RTLD_NOW | RTLD_LOCAL);
    *static_cast<bool*>(dlsym(first, "g_refuses")) = true;
    EXPECT_EQ(failureOf([&] {
                  try {
                      const orvex::LoadedLibrary library(KS_HMI_UNLUCKY_FILE);
                  } catch (...) {
                      dlclose(first);
                      throw;
                  }
              }),
              "Refused: refused");
}

TEST(LibraryLoader, saysWhatIsMissing) {
    const std::pair<const char*, const char*> cases[] = {
        {"/nowhere/libabsent.so", "/nowhere/libabsent.so"},
        {"libm.so.6", "does not export \"OXInitialize_m\""},
        {"notes.txt", "libNAME.so"},
    };
    for (const auto& [path, expected] : cases) {
        const std::string failure = failureOf([path = path] { orvex::LoadedLibrary library(path); });
        EXPECT_NE(failure.find(expected), std::string::npos) << failure;
    }
}

}  // namespace
