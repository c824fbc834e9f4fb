#pragma once

#include <bitset>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/text_hash.h"
#include "signals/address_set.h"
#include "signals/instrumented_signals.h"
#include "signals/near_signals.h"
#include "signals/signal_specification.h"
#include "signals/source_key_index.h"

namespace ks_hmi {

inline constexpr std::size_t kActivities = 4;

/// What a set answers from without walking its list.
struct InstrumentedSignals::Indexes {
    /// One hash multimap in two tables: no path key ever equals a handle key.
    struct Ports {
        SourceKeyIndex byHandle;
        SourceKeyIndex byPath;
        NearSignals near;  ///< those of `byHandle`

        bool isEmpty() const noexcept { return byPath.isEmpty() && byHandle.isEmpty(); }
        /// After this one `enter` cannot throw, also when entries are erased before it.
        void makeRoom() {
            byPath.makeRoom();
            byHandle.makeRoom();
            near.makeRoom(byHandle);
        }
        /// Under the path key and, once the signal is resolved, under its handle key.
        void enter(std::uint64_t pathKey, const SignalPtr& spec) {
            byPath.insert(pathKey, spec);
            if (spec->m_cachedPortIdx == 0) return;
            const std::uint64_t key = handleKeyOf(*spec);
            if (byHandle.insert(key, spec)) near.add(key, *spec);
        }
        /// Erases those under the handle key that `matches`; returns how many there were.
        template <class Matches>
        std::size_t eraseByHandle(std::uint64_t key, Matches matches) {
            const std::size_t erased = byHandle.eraseIf(key, matches);
            if (erased != 0) near.change(key, byHandle.first(key));
            return erased;
        }
    };

    static std::uint64_t handleKeyOf(const SignalSpecification& spec) noexcept {
        return handleKey(spec.m_cachedBlockHandle, spec.m_cachedPortIdx);
    }

    using ChartActivities = boost::unordered_flat_map<std::uint64_t, bool>;
    using ChartObjects = boost::unordered_flat_map<std::uint64_t, std::bitset<kActivities>>;

    Ports ports;
    AddressSet enginePorts;
    ChartActivities chartActivities;
    ChartObjects chartObjects;

    void forgetEnginePorts() noexcept { enginePorts.clear(); }

    /// Equal for equal parts of the non-cached source key, which `SignalSpecification` gives to those who ask for it.
    static std::uint64_t pathKey(std::u16string_view modelName, std::u16string_view blockPath,
                                 std::u16string_view subPath, int outputPortIndex, int logicalPortIndex) noexcept {
        const int port = SignalSpecification::pathKeyPort(outputPortIndex, logicalPortIndex);
        return ks_hmi_foundation::TextHash()
            .add(modelName)
            .add(blockPath)
            .add(subPath)
            .add(static_cast<std::uint32_t>(port))
            .value();
    }
    static std::uint64_t pathKey(std::u16string_view modelName, const SignalSpecification& spec) noexcept {
        return pathKey(modelName, spec.m_blockPath, spec.m_subPath, spec.m_outputPortIndex, spec.m_logicalPortIndex);
    }
};

}  // namespace ks_hmi
