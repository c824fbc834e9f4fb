#include "workbench/process/shared_ring.h"

#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <new>

namespace workbench {

namespace {

constexpr std::size_t kHeadRoom = 4096;
constexpr std::size_t kMostAtOnce = std::size_t{1} << 15U;
// A wake-up costs as much as some hundred samples.
constexpr std::size_t kRoomWorthWaking = SharedRing::kCapacity / 4 * 3;
// Wake-ups that get lost cost no more than this.
constexpr int kPatience = 50;
constexpr long kNanosecondsOfMillisecond = 1'000'000;

}  // namespace

// A semaphore of the C library ends the program when its memory was written over; the system says no, and that is all.
void SharedRing::waitFor(Word& word, std::uint32_t known, int milliseconds) noexcept {
    const timespec time{0, milliseconds * kNanosecondsOfMillisecond};
    ::syscall(SYS_futex, &word, FUTEX_WAIT, known, &time, nullptr, 0);
}

void SharedRing::wake(Word& waits, Word& word) noexcept {
    if (waits.exchange(0) == 0) return;
    ++word;
    ::syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

SharedRing::SharedRing()
    : m_memory(::mmap(nullptr, kHeadRoom + kCapacity, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    static_assert(sizeof(Shared) <= kHeadRoom);
    if (m_memory == MAP_FAILED) throw std::bad_alloc();
    m_shared = new (m_memory) Shared;
    m_bytes = static_cast<char*>(m_memory) + kHeadRoom;
}

SharedRing::~SharedRing() { ::munmap(m_memory, kHeadRoom + kCapacity); }

std::size_t SharedRing::room() {
    constexpr std::uint64_t kAll = kCapacity;
    if (m_head - m_knownTail == kAll) m_knownTail = m_shared->tail.load(std::memory_order_acquire);
    while (m_head - m_knownTail == kAll) {
        publish();
        const std::uint32_t known = m_shared->received.load();
        m_shared->senderWaits = 1;
        m_knownTail = m_shared->tail.load();
        if (m_head - m_knownTail == kAll) {
            flush();
            waitFor(m_shared->received, known, kPatience);
        }
        m_shared->senderWaits = 0;
        m_knownTail = m_shared->tail.load(std::memory_order_acquire);
    }
    return static_cast<std::size_t>(kAll - (m_head - m_knownTail));
}

void SharedRing::put(const void* bytes, std::size_t size) {
    const char* from = static_cast<const char*>(bytes);
    while (size > 0) {
        const std::size_t at = m_head % kCapacity;
        const std::size_t piece = std::min({size, kCapacity - at, room()});
        std::memcpy(m_bytes + at, from, piece);
        from += piece;
        size -= piece;
        m_head += piece;
    }
}

void SharedRing::sendInPieces(const void* head, std::size_t headSize, const void* body, std::size_t bodySize) {
    put(head, headSize);
    put(body, bodySize);
    publish();
    if (m_head - m_told >= kWorthWaking) flush();
}

void SharedRing::flush() {
    m_told = m_head;
    wake(m_shared->receiverWaits, m_shared->sent);
}

bool SharedRing::receive(std::string& out) {
    const std::uint64_t there = m_shared->head.load(std::memory_order_acquire) - m_tail;
    if (there > kCapacity) return false;
    const std::size_t size = std::min(static_cast<std::size_t>(there), kMostAtOnce);
    const std::size_t at = m_tail % kCapacity;
    const std::size_t first = std::min(size, kCapacity - at);
    out.append(m_bytes + at, first);
    out.append(m_bytes, size - first);
    m_tail += size;
    m_shared->tail.store(m_tail);
    if (kCapacity - (there - size) >= kRoomWorthWaking) wake(m_shared->senderWaits, m_shared->received);
    return true;
}

void SharedRing::wait(int milliseconds) {
    const std::uint32_t known = m_shared->sent.load();
    m_shared->receiverWaits = 1;
    if (m_shared->head.load() == m_tail) waitFor(m_shared->sent, known, milliseconds);
    m_shared->receiverWaits = 0;
}

}  // namespace workbench
