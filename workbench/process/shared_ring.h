#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace workbench {

/// Bytes on their way from a forked process to the one that made this, in memory that both share: what was sent is
/// there even when the sender crashes. The sender may write anything over it, so the receiver believes nothing that it
/// finds there, and waits for nothing longer than it was told to.
class SharedRing {
public:
    static constexpr std::size_t kCapacity = std::size_t{1} << 22U;

    /// Throws `std::bad_alloc`.
    SharedRing();
    SharedRing(const SharedRing&) = delete;
    SharedRing& operator=(const SharedRing&) = delete;
    ~SharedRing();

    // ---- the sender ----

    /// Two parts that are seen by the receiver at once, unless they are greater than the ring. Waits for room.
    void send(const void* head, std::size_t headSize, const void* body, std::size_t bodySize);
    /// Wakes the receiver, for what is not to wait.
    void flush();
    /// Says that the sender is alive, and at which simulated time.
    void tellTime(double time) noexcept;
    bool isToStop() const noexcept { return m_shared->isToStop.load(std::memory_order_relaxed) != 0; }

    // ---- the receiver ----

    /// Appends what there is to `out`, at most about a quarter of the capacity. False when the ring was damaged.
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
    static void waitFor(Word& word, std::uint32_t known, int milliseconds) noexcept;
    static void wake(Word& waits, Word& word) noexcept;

    void put(const void* bytes, std::size_t size);
    void publish();
    std::size_t room();

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
