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

/// The key of a signal's cached block handle and port: the handle's bits, so that +0 and -0 are different keys.
/// The record itself decides whether it matches, and so NaN never does.
struct HandleKey {
    std::uint64_t bits;
    std::int32_t port;

    HandleKey(double blockHandle, std::int32_t portIdx) noexcept
        : bits(std::bit_cast<std::uint64_t>(blockHandle)), port(portIdx) {}
    friend bool operator==(const HandleKey&, const HandleKey&) = default;
};

struct HandleKeyHash {
    using is_avalanching = void;
    std::size_t operator()(const HandleKey& key) const noexcept {
        const std::uint64_t port = static_cast<std::uint32_t>(key.port);
        return ks_hmi_foundation::foldedProduct(key.bits ^ ks_hmi_foundation::kFirstFactor,
                                                port ^ ks_hmi_foundation::kSecondFactor);
    }
};

/// For addresses and other numbers of which whole runs of bits never vary.
struct NumberHash {
    using is_avalanching = void;
    std::size_t operator()(std::uint64_t number) const noexcept {
        return ks_hmi_foundation::foldedProduct(number, ks_hmi_foundation::kFirstFactor);
    }
};

/// For keys that are well mixed hashes already.
struct IdentityHash {
    using is_avalanching = void;
    std::size_t operator()(std::uint64_t key) const noexcept { return key; }
};

/// A hash multimap from source keys to signals. Equal keys hold several entries, duplicates included, and
/// are walked in the order of insertion. The first entry of a key stands in the flat table itself, further
/// ones are chained in a pool. Only adding and making room can throw; nothing is changed then.
template <class Key, class Hash>
class SourceKeyIndex {
public:
    using SignalPtr = boost::shared_ptr<SignalSpecification>;

    bool isEmpty() const noexcept { return m_keys.empty(); }

    void insert(const Key& key, const SignalPtr& signal) {
        const auto [slot, isNew] = m_keys.try_emplace(key, Slot{signal, kNone, kNone});
        if (isNew) return;
        const std::uint32_t node = takeNode(signal);
        Slot& chain = slot->second;
        (chain.last == kNone ? chain.next : m_further[chain.last].next) = node;
        chain.last = node;
    }

    /// After this one `insert` cannot throw, also when entries are erased before it. Entries may move in memory.
    void makeRoom() {
        // Not `reserve`: erasing lowers the limit of a table whose size would do.
        if (m_keys.size() >= m_keys.max_load()) m_keys.rehash(m_keys.bucket_count() + 1);
        if (m_free == kNone && m_further.size() == m_further.capacity()) m_further.reserve(2 * m_further.size() + 1);
    }

    /// The first entry under the key that `matches`, or null. Valid until the index changes.
    template <class Matches>
    const SignalPtr* find(const Key& key, Matches matches) const {
        const auto slot = m_keys.find(key);
        if (slot == m_keys.end()) return nullptr;
        if (matches(*slot->second.first)) return &slot->second.first;
        for (std::uint32_t node = slot->second.next; node != kNone; node = m_further[node].next) {
            if (matches(*m_further[node].signal)) return &m_further[node].signal;
        }
        return nullptr;
    }

    /// Erases the entries under the key that `matches`; returns how many there were.
    template <class Matches>
    std::size_t eraseIf(const Key& key, Matches matches) {
        const auto slot = m_keys.find(key);
        if (slot == m_keys.end()) return 0;
        Slot& chain = slot->second;
        std::size_t erased = eraseFurther(chain, matches);
        if (!matches(*chain.first)) return erased;
        if (chain.next == kNone) {
            m_keys.erase(slot);
        } else {
            promoteSecond(chain);
        }
        return erased + 1;
    }

private:
    static constexpr std::uint32_t kNone = 0xffffffffU;

    struct Slot {
        SignalPtr first;
        std::uint32_t next;
        std::uint32_t last;
    };
    struct Node {
        SignalPtr signal;
        std::uint32_t next;
    };

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
    std::size_t eraseFurther(Slot& chain, Matches& matches) {
        std::size_t erased = 0;
        std::uint32_t previous = kNone;
        for (std::uint32_t node = chain.next; node != kNone;) {
            const std::uint32_t next = m_further[node].next;
            if (matches(*m_further[node].signal)) {
                (previous == kNone ? chain.next : m_further[previous].next) = next;
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

    void promoteSecond(Slot& chain) noexcept {
        const std::uint32_t second = chain.next;
        chain.first = std::move(m_further[second].signal);
        chain.next = m_further[second].next;
        if (chain.next == kNone) chain.last = kNone;
        freeNode(second);
    }

    boost::unordered_flat_map<Key, Slot, Hash> m_keys;
    std::vector<Node> m_further;
    std::uint32_t m_free = kNone;
};

}  // namespace ks_hmi
