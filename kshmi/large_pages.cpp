#include "kshmi/large_pages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#ifdef __GLIBC__
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kshmi {

namespace {

// Addresses only: what is not used takes no memory.
constexpr int kReserve = 1 << 30;
constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21U;
// What a small run takes stays in small pages.
constexpr std::uintptr_t kSmallRun = std::uintptr_t{1} << 20U;
// As the heap does without being told.
constexpr int kUsualPad = 128 * 1024;
constexpr int kLargestInHeap = 32 * 1024 * 1024;
constexpr std::size_t kMoreThanIsLeft = 120 * 1024;

bool isRationed(decltype(RLIMIT_AS) resource) noexcept {
    rlimit limit{};
    return ::getrlimit(resource, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

std::uintptr_t endOfHeap() noexcept { return reinterpret_cast<std::uintptr_t>(::sbrk(0)); }

}  // namespace

void useLargePages() noexcept {
    if (isRationed(RLIMIT_AS) || isRationed(RLIMIT_DATA)) return;
    const std::uintptr_t start = (endOfHeap() + kSmallRun + kLargePage - 1) & ~(kLargePage - 1);
    ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    ::mallopt(M_TOP_PAD, kReserve);
    void* volatile piece = std::malloc(kMoreThanIsLeft);
    std::free(piece);
    ::mallopt(M_TOP_PAD, kUsualPad);
    ::mallopt(M_MMAP_THRESHOLD, kLargestInHeap);
    const std::uintptr_t end = endOfHeap() & ~(kLargePage - 1);
    if (end > start) ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

}  // namespace kshmi
#else
void kshmi::useLargePages() noexcept {}
#endif
