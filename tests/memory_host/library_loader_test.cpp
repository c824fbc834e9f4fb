#include "memory_host/orvex/calls/library_loader.h"

#include <dlfcn.h>

#include <new>

#include "tests/memory_host/ledger_test_base.h"

namespace {

TEST(LibraryLoader, whatALibraryThrowsAsItStartsOutlivesIt) {
    const auto load = [] { const orvex::LoadedLibrary library(KS_HMI_UNLUCKY_FILE); };
    try {
        load();
        FAIL() << "started";
    } catch (const std::bad_alloc& failure) {
        EXPECT_STREQ(failure.what(), std::bad_alloc().what());
    }
    void* const first = dlopen(KS_HMI_UNLUCKY_FILE, RTLD_NOW | RTLD_LOCAL);
    *static_cast<bool*>(dlsym(first, "g_refuses")) = true;
    try {
        load();
        FAIL() << "started";
    } catch (const kssvIException& failure) {
        dlclose(first);
        EXPECT_EQ(failure.messageId().key(), "Refused");
    }
    for (const char* const path : {"/nowhere/libabsent.so", "libm.so.6", "notes.txt"})
        EXPECT_NE(failureOf([path] { const orvex::LoadedLibrary library(path); }), "") << path;
}

}  // namespace
