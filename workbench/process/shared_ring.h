#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace workbench {

/// Bytes on their way from a forked process to the one that made this, in memory that both share: what was sent is
/// there even when the sender crashes. The sender may write anything over it, so the receiver believes nothing that it
/// finds there, and waits for nothing longer than it was told to.
class SharedRing {
public:
    static constexpr std::size_t kCapacity = std::size_t{1} << 21U;

    /// Throws `std::bad_alloc`.
    SharedRing();
    SharedRing(const SharedRing&) = delete;
    SharedRing& operator=(const SharedRing&) = delete;
    ~SharedRing();

    // ---- the sender ----

    /// Two parts that are seen by the receiver at once, unless they are greater than the ring. Waits for room.
    template <class Head>
    void send(const Head& head, const void* body, std::size_t bodySize) {
        const std::size_t size = sizeof head + bodySize;
        const std::size_t at = m_head % kCapacity;
        if (size > kCapacity - at || size > kCapacity - (m_head - m_knownTail))
            return sendInPieces(&head, sizeof head, body, bodySize);
        std::memcpy(m_bytes + at, &head, sizeof head);
        std::memcpy(m_bytes + at + sizeof head, body, bodySize);
        m_head += size;
        fetchAhead(size);
        publish();
        if (m_head - m_told >= kWorthWaking) flush();
    }
    /// Wakes the receiver, for what is not to wait.
    void flush();
    /// Says that the sender is alive, and at which simulated time.
    void tellTime(double time) noexcept {
        m_shared->time.store(time, std::memory_order_relaxed);
        m_shared->beat.store(++m_beat, std::memory_order_relaxed);
    }
    bool isToStop() const noexcept { return m_shared->isToStop.load(std::memory_order_relaxed) != 0; }

    // ---- the receiver ----

    /// Appends what there is to `out`, at most so much that it stays in a processor's cache. False when the ring was
    /// damaged.
    bool receive(std::string& out);
    /// Until something has come or that long.
    void wait(int milliseconds);
    /// Changes whenever the sender tells the time.
    std::uint64_t beat() const noexcept { return m_shared->beat.load(std::memory_order_relaxed); }
    double time() const noexcept { return m_shared->time.load(std::memory_order_relaxed); }
    void askToStop() noexcept { m_shared->isToStop = 1; }

private:
    // Numbers only: whatever is written over them is one.
    using Word = std::atomic<std::uint32_t>;
    struct Shared {
        alignas(64) std::atomic<std::uint64_t> head{0};  ///< bytes ever sent
        std::atomic<std::uint64_t> beat{0};
        std::atomic<double> time{0.0};
        Word senderWaits{0};
        Word sent{0};                                    ///< counts wake-ups of the receiver
        alignas(64) std::atomic<std::uint64_t> tail{0};  ///< bytes ever received
        Word receiverWaits{0};
        Word received{0};  ///< counts wake-ups of the sender
        Word isToStop{0};
    };
    static_assert(Word::is_always_lock_free);
    static constexpr std::size_t kWorthWaking = kCapacity / 16;
    static constexpr std::size_t kLine = 64;
    static constexpr std::size_t kAhead = 32 * kLine;

    static void waitFor(Word& word, std::uint32_t known, int milliseconds) noexcept;
    static void wake(Word& waits, Word& word) noexcept;

    void sendInPieces(const void* head, std::size_t headSize, const void* body, std::size_t bodySize);
    void put(const void* bytes, std::size_t size);
    void publish() noexcept { m_shared->head.store(m_head, std::memory_order_release); }
    std::size_t room();
    // What is written soon was read by the other processor last, and waiting for it line by line took as long as the
    // unit itself.
    void fetchAhead(std::size_t size) const noexcept {
        const std::size_t end = (m_head + kAhead) / kLine;
        for (std::size_t line = (m_head - size + kAhead) / kLine; line < end; ++line)
            fetchForWriting(m_bytes + line * kLine % kCapacity);
    }
    static void fetchForWriting(const char* line) noexcept {
#ifdef __x86_64__
        asm volatile("prefetchw %0" : : "m"(*line));  // The builtin means another instruction on processors in general.
#else
        __builtin_prefetch(line, 1);
#endif
    }

    void* m_memory;
    Shared* m_shared;
    char* m_bytes;
    std::uint64_t m_head = 0;       ///< of the sender, not yet published
    std::uint64_t m_knownTail = 0;  ///< of the sender
    std::uint64_t m_told = 0;       ///< where the receiver was last woken
    std::uint64_t m_beat = 0;
    std::uint64_t m_tail = 0;  ///< of the receiver, which no one else writes
};

}  // namespace workbench
