#include "tests/support/failing_allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/sanitized.h"

namespace {

struct Plan {
    bool isArmed;
    bool andEverythingAfter;
    std::size_t failAt, counted, fired;
};
constinit thread_local Plan t_plan{};

// Before there is any value: the host is to take each piece of storage from here.
[[maybe_unused]] const int g_isAsked = ::setenv("KS_HMI_HOST_STORAGE", "heap", /*overwrite=*/1);

}  // namespace

namespace ks_test {

FailingAllocations::FailingAllocations(std::size_t failAt, bool andEverythingAfter) noexcept {
    t_plan = {true, andEverythingAfter, failAt, 0, 0};
}
FailingAllocations::~FailingAllocations() { t_plan.isArmed = false; }
std::size_t FailingAllocations::fired() const noexcept { return t_plan.fired; }

}  // namespace ks_test

bool ks_test::FailingAllocations::arePossible() noexcept { return KS_HMI_SANITIZED == 0; }

#if !KS_HMI_SANITIZED

// The program's own operators take the place of the standard library's in every library that it loads; those for
// arrays and those that do not throw call them.

namespace {

bool isToFail() noexcept {
    if (!t_plan.isArmed) return false;
    ++t_plan.counted;
    if (t_plan.counted < t_plan.failAt) return false;
    if (t_plan.counted > t_plan.failAt && !t_plan.andEverythingAfter) return false;
    ++t_plan.fired;
    return true;
}

// What is freed is overwritten first, so that who still uses it is found out.
void release(void* storage) noexcept {
    if (storage != nullptr) std::memset(storage, 0xdd, malloc_usable_size(storage));
    asm volatile("" : : "r"(storage) : "memory");  // or the writing would be left out
    std::free(storage);
}

void* orThrow(void* storage) {
    if (storage == nullptr) throw std::bad_alloc();
    return storage;
}

}  // namespace

void* operator new(std::size_t size) { return orThrow(isToFail() ? nullptr : std::malloc(size == 0 ? 1 : size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto step = static_cast<std::size_t>(alignment);
    return orThrow(isToFail() ? nullptr : std::aligned_alloc(step, (size + step - 1) / step * step));
}
void operator delete(void* storage) noexcept { release(storage); }
void operator delete(void* storage, std::size_t) noexcept { release(storage); }
void operator delete(void* storage, std::align_val_t) noexcept { release(storage); }
void operator delete(void* storage, std::size_t, std::align_val_t) noexcept { release(storage); }
void operator delete[](void* storage, std::size_t, std::align_val_t) noexcept { release(storage); }

#endif
