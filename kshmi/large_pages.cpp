#include "kshmi/large_pages.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kshmi {

namespace {

// Addresses only: what is not used takes no memory.
constexpr int kReserve = 1 << 30;
constexpr std::size_t kLargePage = std::size_t{1} << 21U;
// What a small run takes stays in small pages.
constexpr std::size_t kSmallRun = std::size_t{1} << 20U;
// As the heap does without being told.
constexpr int kUsualPad = 128 * 1024;
constexpr int kLargestInHeap = 32 * 1024 * 1024;
constexpr std::size_t kMoreThanIsLeft = std::size_t{120} * 1024;

bool isRationed(decltype(RLIMIT_AS) resource) noexcept {
    rlimit limit{};
    return ::getrlimit(resource, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

std::byte* endOfHeap() noexcept { return static_cast<std::byte*>(::sbrk(0)); }

void askForLargePages(std::byte* from, const std::byte* to) noexcept {
    if (from >= to) return;
    void* start = from;
    auto room = static_cast<std::size_t>(to - from);
    if (std::align(kLargePage, kLargePage, start, room)) ::madvise(start, room & ~(kLargePage - 1), MADV_HUGEPAGE);
}

}  // namespace

void useLargePages() noexcept {
    if (isRationed(RLIMIT_AS) || isRationed(RLIMIT_DATA)) return;
    std::byte* const start = endOfHeap() + kSmallRun;
    ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    ::mallopt(M_TOP_PAD, kReserve);
    void* volatile piece = std::malloc(kMoreThanIsLeft);
    std::free(piece);
    ::mallopt(M_TOP_PAD, kUsualPad);
    ::mallopt(M_MMAP_THRESHOLD, kLargestInHeap);
    askForLargePages(start, endOfHeap());
}

}  // namespace kshmi
#else
void kshmi::useLargePages() noexcept {}
#endif
