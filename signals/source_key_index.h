#pragma once

#include <bit>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "foundation/text_hash.h"

namespace ks_hmi {

class SignalSpecification;

/// The key of a signal's cached block handle and port, by the handle's bits, so that +0 and -0 are different keys.
/// The record itself decides whether it matches, and so NaN never does.
inline std::uint64_t handleKey(double blockHandle, std::int32_t portIdx) noexcept {
    const std::uint64_t port = static_cast<std::uint32_t>(portIdx);
    return ks_hmi_foundation::foldedProduct(std::bit_cast<std::uint64_t>(blockHandle) ^ ks_hmi_foundation::kFirstFactor,
                                            port ^ ks_hmi_foundation::kSecondFactor);
}

/// For keys that are well mixed hashes already.
struct IdentityHash {
    using is_avalanching = void;
    std::size_t operator()(std::uint64_t key) const noexcept { return key; }
};

/// A hash multimap from source keys, which are well mixed hashes, to signals. Equal keys hold several entries,
/// duplicates included, and are walked in the order of insertion. The first entry of a key stands in the flat table
/// itself, further ones are chained in a pool. Only adding and making room can throw; nothing is changed then.
class SourceKeyIndex {
public:
    using SignalPtr = boost::shared_ptr<SignalSpecification>;

    bool isEmpty() const noexcept { return m_first.empty(); }

    /// Whether it is the first of its key.
    bool insert(std::uint64_t key, const SignalPtr& signal) {
        if (m_first.try_emplace(key, signal).second) return true;
        Chain& chain = m_chains.try_emplace(key, Chain{kNone, kNone}).first->second;
        const std::uint32_t node = takeNode(signal);
        (chain.last == kNone ? chain.first : m_further[chain.last].next) = node;
        chain.last = node;
        return false;
    }

    std::size_t keyCount() const noexcept { return m_first.size(); }
    /// Null for none.
    const SignalSpecification* first(std::uint64_t key) const {
        const auto slot = m_first.find(key);
        return slot == m_first.end() ? nullptr : slot->second.get();
    }
    /// Hands each key and its first signal to `take`.
    template <class Take>
    void forEachFirst(Take take) const {
        for (const auto& [key, signal] : m_first) take(key, *signal);
    }

    /// After this one `insert` cannot throw, also when entries are erased before it. Entries may move in memory.
    void makeRoom() {
        makeRoomIn(m_first);
        makeRoomIn(m_chains);
        if (m_free == kNone && m_further.size() == m_further.capacity()) m_further.reserve(2 * m_further.size() + 1);
    }

    /// The first entry under the key that `matches`, or null. Valid until the index changes.
    template <class Matches>
    const SignalPtr* find(std::uint64_t key, Matches matches) const {
        const auto slot = m_first.find(key);
        if (slot == m_first.end()) return nullptr;
        return matches(*slot->second) ? &slot->second : findFurther(key, matches);
    }

    /// Whether there is one.
    template <class Matches>
    bool contains(std::uint64_t key, Matches matches) const {
        const auto slot = m_first.find(key);
        return slot != m_first.end() && (matches(*slot->second) || containsFurther(key, matches));
    }

    /// Erases the entries under the key that `matches`; returns how many there were.
    template <class Matches>
    std::size_t eraseIf(std::uint64_t key, Matches matches) {
        const auto slot = m_first.find(key);
        if (slot == m_first.end()) return 0;
        const auto chain = m_chains.find(key);
        const bool isChained = chain != m_chains.end();
        std::size_t erased = isChained ? eraseFurther(chain->second, matches) : 0;
        if (matches(*slot->second)) {
            ++erased;
            if (isChained && chain->second.first != kNone)
                slot->second = takeSecond(chain->second);
            else
                m_first.erase(slot);
        }
        if (isChained && chain->second.first == kNone) m_chains.erase(chain);
        return erased;
    }

private:
    static constexpr std::uint32_t kNone = 0xffffffffU;

    // The further entries of a key.
    struct Chain {
        std::uint32_t first;
        std::uint32_t last;
    };
    struct Node {
        SignalPtr signal;
        std::uint32_t next;
    };

    template <class Table>
    static void makeRoomIn(Table& table) {
        // Small tables stay half empty, so that hardly a key finds its group full.
        constexpr std::size_t kSmall = 1024;
        const std::size_t limit = table.bucket_count() < kSmall ? table.max_load() / 2 : table.max_load();
        // Not `reserve`: erasing lowers the limit of a table whose size would do.
        if (table.size() >= limit) table.rehash(table.bucket_count() + 1);
    }

    // These stand apart, so that the way to the first entry stays short.
    template <class Matches>
    [[gnu::noinline]] const SignalPtr* findFurther(std::uint64_t key, Matches matches) const {
        const auto chain = m_chains.find(key);
        if (chain == m_chains.end()) return nullptr;
        for (std::uint32_t node = chain->second.first; node != kNone; node = m_further[node].next)
            if (matches(*m_further[node].signal)) return &m_further[node].signal;
        return nullptr;
    }
    template <class Matches>
    [[gnu::noinline]] bool containsFurther(std::uint64_t key, Matches matches) const {
        return findFurther(key, matches) != nullptr;
    }

    std::uint32_t takeNode(const SignalPtr& signal) {
        if (m_free == kNone) {
            m_further.push_back(Node{signal, kNone});
            return static_cast<std::uint32_t>(m_further.size() - 1);
        }
        const std::uint32_t node = m_free;
        m_free = m_further[node].next;
        m_further[node] = Node{signal, kNone};
        return node;
    }

    void freeNode(std::uint32_t node) noexcept {
        m_further[node].signal.reset();
        m_further[node].next = m_free;
        m_free = node;
    }

    template <class Matches>
    std::size_t eraseFurther(Chain& chain, Matches& matches) {
        std::size_t erased = 0;
        std::uint32_t previous = kNone;
        for (std::uint32_t node = chain.first; node != kNone;) {
            const std::uint32_t next = m_further[node].next;
            if (matches(*m_further[node].signal)) {
                (previous == kNone ? chain.first : m_further[previous].next) = next;
                freeNode(node);
                ++erased;
            } else {
                previous = node;
            }
            node = next;
        }
        chain.last = previous;
        return erased;
    }

    SignalPtr takeSecond(Chain& chain) noexcept {
        const std::uint32_t second = chain.first;
        SignalPtr signal = std::move(m_further[second].signal);
        chain.first = m_further[second].next;
        if (chain.first == kNone) chain.last = kNone;
        freeNode(second);
        return signal;
    }

    boost::unordered_flat_map<std::uint64_t, SignalPtr, IdentityHash> m_first;
    boost::unordered_flat_map<std::uint64_t, Chain, IdentityHash> m_chains;
    std::vector<Node> m_further;
    std::uint32_t m_free = kNone;
};

}  // namespace ks_hmi
