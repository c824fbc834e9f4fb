#pragma once

#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ks_test {

/// A record's members, as far as any operation of a set looks at them or changes them.
struct PlainSignal {
    std::size_t number = 0;  ///< which record of the run this is
    std::u16string m_blockPath, m_subPath, m_domainType;
    std::string m_eid;
    std::vector<std::pair<std::u16string, std::u16string>> m_domainParams;  ///< in the order of the record's own map
    int m_outputPortIndex = 0, m_logicalPortIndex = 0, m_cachedPortIdx = 0;
    double m_cachedBlockHandle = 0.0;
    bool m_excludeForSave = false;

    template <class Record>
    static PlainSignal of(const Record& r) {
        return {0,
                r.m_blockPath,
                r.m_subPath,
                r.m_domainType,
                r.m_eid,
                {r.m_domainParams.begin(), r.m_domainParams.end()},
                r.m_outputPortIndex,
                r.m_logicalPortIndex,
                r.m_cachedPortIdx,
                r.m_cachedBlockHandle,
                r.m_excludeForSave};
    }

    std::u16string parameter(const std::u16string& name) const {
        for (const auto& [key, value] : m_domainParams) {
            if (key == name) return value;
        }
        return {};
    }
    bool isChart() const {
        return m_domainType == u"cw_state" || m_domainType == u"cw_chart" || m_domainType == u"cw_data";
    }
    /// What of a record is saved.
    auto saved() const {
        return std::tie(m_eid, m_blockPath, m_subPath, m_domainType, m_domainParams, m_outputPortIndex,
                        m_logicalPortIndex);
    }
    /// Equal to the last bit of the handle.
    bool isIdentical(const PlainSignal& other) const {
        return saved() == other.saved() && m_cachedPortIdx == other.m_cachedPortIdx &&
               std::bit_cast<std::uint64_t>(m_cachedBlockHandle) ==
                   std::bit_cast<std::uint64_t>(other.m_cachedBlockHandle) &&
               m_excludeForSave == other.m_excludeForSave;
    }
    bool isSameSignal(const PlainSignal& other) const {
        if (m_cachedBlockHandle != 0.0 && m_cachedBlockHandle == other.m_cachedBlockHandle &&
            m_cachedPortIdx == other.m_cachedPortIdx)
            return true;
        return m_outputPortIndex == other.m_outputPortIndex && m_logicalPortIndex == other.m_logicalPortIndex &&
               m_blockPath == other.m_blockPath && m_subPath == other.m_subPath;
    }
    /// A new record with what a saved model keeps of this one.
    PlainSignal asLoaded() const {
        PlainSignal loaded = *this;
        loaded.m_cachedPortIdx = 0;
        loaded.m_cachedBlockHandle = 0.0;
        loaded.m_excludeForSave = false;
        return loaded;
    }
};
using PlainSignalPtr = std::shared_ptr<PlainSignal>;

}  // namespace ks_test
