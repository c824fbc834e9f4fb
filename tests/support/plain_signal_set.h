#pragma once

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/plain_signal.h"

struct ksPort;

/// The set of instrumented signals written down as plainly as possible, to compare the real one with: lists that
/// are searched from the front, and keys that are texts. It shares no code with the library, only its names, so that
/// one lambda can ask both. Identifiers are ASCII.
namespace ks_test {

inline std::u16string plainNumber(double value) {
    char digits[64];
    const int size = std::snprintf(digits, sizeof digits, "%.17g", value);
    return {digits, digits + size};
}
inline std::u16string plainNumber(int value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
}

/// Positions are 0-based; one outside the set throws std::out_of_range and changes nothing.
class PlainSignalSet {
public:
    // ---- the list ----

    std::u16string getModelName() const { return m_modelName; }
    void setModelName(const std::u16string& name) { m_modelName = name; }
    bool isRebindingPending() const { return m_rebindingPending; }
    void setRebindingPending(bool pending) { m_rebindingPending = pending; }
    std::size_t getCount() const { return m_signals.size(); }
    const PlainSignalPtr& share(std::size_t index) const { return m_signals.at(index); }

    void add(const PlainSignalPtr& signal) { insert(m_signals.size(), signal); }
    void insert(std::size_t index, const PlainSignalPtr& signal) {
        if (index > m_signals.size()) throw std::out_of_range("insert");
        m_signals.insert(at(index), signal);
        m_cachedPorts.clear();
        addToObservedPortMap(signal);
    }
    void set(std::size_t index, const PlainSignalPtr& signal) {
        removeFromObservedPortMap(share(index));
        addToObservedPortMap(signal);
        m_signals[index] = signal;
        m_cachedPorts.clear();
    }
    void remove(std::size_t index) {
        const PlainSignalPtr signal = share(index);
        if (signal->isChart()) {
            removeFromObservedCWObject(signal);
        } else {
            removeFromObservedPortMap(signal);
            m_cachedPorts.clear();
        }
        m_signals.erase(at(index));
    }
    void remove(const PlainSignal& value) {
        for (std::size_t i = 0; i < m_signals.size(); ++i) {
            if (!value.isSameSignal(*m_signals[i])) continue;
            m_cachedPorts.clear();
            removeFromObservedPortMap(m_signals[i]);
            m_signals.erase(at(i));
            return;
        }
    }
    bool isEqual(const PlainSignalSet* other) const {
        return std::equal(m_signals.begin(), m_signals.end(), other->m_signals.begin(), other->m_signals.end(),
                          [](const auto& a, const auto& b) { return a->saved() == b->saved(); });
    }
    PlainSignalSet copy(bool excludeUnsaved) const {
        PlainSignalSet result;
        result.m_modelName = m_modelName;
        for (const PlainSignalPtr& signal : m_signals) {
            if (!(excludeUnsaved && signal->m_excludeForSave))
                result.m_signals.push_back(std::make_shared<PlainSignal>(*signal));
        }
        result.m_entries = m_entries;
        if (!m_activities.empty()) {
            result.m_activities = m_activities;
            result.m_chartBits = m_chartBits;
        }
        return result;
    }

    // ---- ports ----

    void addToObservedPortMap(const PlainSignalPtr& signal) {
        if (signal->isChart()) {
            addToObservedCWObjectCache(signal);
            return;
        }
        m_cachedPorts.clear();
        m_entries.emplace_back(pathKey(*signal), signal);
        if (signal->m_cachedPortIdx != 0) m_entries.emplace_back(handleKey(*signal), signal);
    }
    void removeFromObservedPortMap(const PlainSignalPtr& signal) {
        if (signal->isChart()) return;
        const PlainSignal& left = *signal;
        eraseEntries(pathKey(left), [&](const PlainSignal& entry) {
            return entry.m_outputPortIndex == left.m_outputPortIndex && entry.m_blockPath == left.m_blockPath;
        });
        eraseEntries(handleKey(left), [&](const PlainSignal& entry) {
            return entry.m_cachedPortIdx == left.m_cachedPortIdx &&
                   entry.m_cachedBlockHandle == left.m_cachedBlockHandle;
        });
    }
    void updateObservedPortMap() {
        m_entries.clear();
        for (const PlainSignalPtr& signal : m_signals) addToObservedPortMap(signal);
    }
    bool isAnyPortObserved() const { return !m_entries.empty(); }
    void cacheKSPorts(const std::vector<ksPort*>& ports) { m_cachedPorts.assign(ports.begin(), ports.end()); }
    bool isKSPortObserved(const ksPort* port) const { return contains(m_cachedPorts, port); }
    bool isPortObserved(double handle, int port) const {
        const std::u16string key = handleKey(handle, port);
        return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
            return entry.first == key && entry.second->m_cachedPortIdx == port &&
                   entry.second->m_cachedBlockHandle == handle;
        });
    }
    bool isPortObserved(double handle, const std::u16string& path, const std::u16string& subPath, int outputPort,
                        int port, int logicalPort) {
        if (isPortObserved(handle, port)) return true;
        const std::u16string key = pathKey(path, subPath, outputPort, logicalPort);
        for (const auto& [entryKey, entry] : m_entries) {
            if (entryKey != key || entry->m_outputPortIndex != outputPort || entry->m_blockPath != path) continue;
            if (port == 0) return true;
            if (entry->m_cachedPortIdx == 0) {
                const PlainSignalPtr resolved = entry;
                resolved->m_cachedBlockHandle = handle;
                resolved->m_cachedPortIdx = port;
                addToObservedPortMap(resolved);
                return true;
            }
            if (m_rebindingPending && entry->m_cachedPortIdx == port) return true;
        }
        return false;
    }
    bool isPortObserved(const PlainSignal* signal) {
        const PlainSignal asked = *signal;
        return isPortObserved(asked.m_cachedBlockHandle, asked.m_blockPath, asked.m_subPath, asked.m_outputPortIndex,
                              asked.m_cachedPortIdx, asked.m_logicalPortIndex);
    }
    void renumberPorts(double handle, const std::u16string& fullPath, const std::string& fullEid,
                       const std::vector<int>& newNumbers) {
        const std::u16string path = without(m_modelName + u"/", fullPath);
        const std::u16string eid = shortEid(wide(fullEid));
        std::vector<std::size_t> deleted;
        bool isAnyMoved = false;
        for (std::size_t i = 0; i < m_signals.size(); ++i) {
            const PlainSignalPtr signal = m_signals[i];
            if (signal->m_cachedBlockHandle != handle && signal->m_blockPath != path && wide(signal->m_eid) != eid)
                continue;
            const int port = signal->m_outputPortIndex;
            if (port < 1 || port > static_cast<int>(newNumbers.size())) continue;
            const int newNumber = newNumbers[static_cast<std::size_t>(port - 1)];
            if (newNumber == port) continue;
            if (newNumber == 0) {
                deleted.push_back(i);
                continue;
            }
            isAnyMoved = true;
            removeFromObservedPortMap(signal);
            signal->m_outputPortIndex = signal->m_cachedPortIdx = newNumber;
            addToObservedPortMap(signal);
        }
        if (deleted.empty() && !isAnyMoved) return;
        for (std::size_t i = deleted.size(); i > 0; --i) remove(deleted[i - 1]);
        m_cachedPorts.clear();
        updateObservedPortMap();
    }

    // ---- charts ----

    void addToObservedCWObjectCache(const PlainSignalPtr& signal) {
        if (const auto bit = chartBit(*signal)) {
            if (!contains(m_chartBits, *bit)) m_chartBits.push_back(*bit);
            const std::u16string key = bit->first + bit->second;
            if (!contains(m_activities, key)) m_activities.push_back(key);
        }
    }
    void removeFromObservedCWObject(const PlainSignalPtr& signal) {
        if (const auto bit = chartBit(*signal)) {
            std::erase(m_chartBits, *bit);
            std::erase(m_activities, bit->first + bit->second);
        }
    }
    void addToObservedCWActivity(const std::string& eid, const std::string& ssid, const std::string& activity) {
        const std::u16string key = chartKey(wide(eid), wide(ssid)) + wide(activity);
        if (!contains(m_activities, key)) m_activities.push_back(key);
    }
    void removeObservedCWActivity(const std::string& eid, const std::string& ssid, const std::string& activity) {
        std::erase(m_activities, chartKey(wide(eid), wide(ssid)) + wide(activity));
    }
    bool isCWActivityObserved(const std::u16string& fullEid, double ssid, const std::u16string& activity) const {
        return contains(m_activities, chartKey(shortEid(fullEid), plainNumber(ssid)) + activity);
    }
    bool isAnyCWActivityObserved(const std::u16string& fullEid, double ssid) const {
        const std::u16string key = chartKey(shortEid(fullEid), plainNumber(ssid));
        return std::any_of(m_chartBits.begin(), m_chartBits.end(), [&](const auto& bit) { return bit.first == key; });
    }
    std::vector<PlainSignalPtr> setDifference_cw(const PlainSignalSet* other) const {
        std::vector<PlainSignalPtr> difference;
        for (const PlainSignalPtr& a : m_signals) {
            const auto matches = [&](const PlainSignalPtr& b) {
                if (!b->isChart() || a->m_eid != b->m_eid) return false;
                const std::u16string ssidA = a->parameter(u"SSID");
                const std::u16string ssidB = b->parameter(u"SSID");
                if (ssidA == u"0" && ssidB == u"0") return a->parameter(u"Activity") == b->parameter(u"Activity");
                return ssidA == ssidB;
            };
            const bool isMatched = other && std::any_of(other->m_signals.begin(), other->m_signals.end(), matches);
            if (a->isChart() && !isMatched) difference.push_back(a);
        }
        return difference;
    }

private:
    using Entry = std::pair<std::u16string, PlainSignalPtr>;
    using ChartBit = std::pair<std::u16string, std::u16string>;  ///< the object's key and an activity

    template <class Value>
    static bool contains(const std::vector<Value>& values, const Value& value) {
        return std::find(values.begin(), values.end(), value) != values.end();
    }
    static std::u16string wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }
    static std::u16string without(const std::u16string& prefix, const std::u16string& text) {
        return prefix.size() < text.size() && text.starts_with(prefix) ? text.substr(prefix.size()) : text;
    }
    std::vector<PlainSignalPtr>::iterator at(std::size_t index) {
        return m_signals.begin() + static_cast<std::ptrdiff_t>(index);
    }
    std::u16string shortEid(const std::u16string& fullEid) const { return without(m_modelName + u":", fullEid); }
    static std::u16string handleKey(double handle, int port) { return plainNumber(handle) + u"$$" + plainNumber(port); }
    static std::u16string handleKey(const PlainSignal& signal) {
        return handleKey(signal.m_cachedBlockHandle, signal.m_cachedPortIdx);
    }
    std::u16string pathKey(const std::u16string& path, const std::u16string& subPath, int outputPort,
                           int logicalPort) const {
        const std::u16string model = m_modelName.empty() ? m_modelName : m_modelName + u"/";
        return model + path + u"$$" + subPath + u"$$" + plainNumber(logicalPort >= 1 ? logicalPort : outputPort);
    }
    std::u16string pathKey(const PlainSignal& signal) const {
        return pathKey(signal.m_blockPath, signal.m_subPath, signal.m_outputPortIndex, signal.m_logicalPortIndex);
    }
    std::u16string chartKey(const std::u16string& eid, const std::u16string& ssid) const {
        return m_modelName + eid + ssid;
    }
    std::optional<ChartBit> chartBit(const PlainSignal& signal) const {
        const std::u16string activity = signal.parameter(u"Activity");
        if (activity != u"Self" && activity != u"Child" && activity != u"Leaf" && activity != u"Data")
            return std::nullopt;
        return ChartBit(chartKey(wide(signal.m_eid), signal.parameter(u"SSID")), activity);
    }
    template <class Matches>
    void eraseEntries(const std::u16string& key, Matches matches) {
        if (std::erase_if(m_entries, [&](const Entry& e) { return e.first == key && matches(*e.second); }) != 0)
            m_cachedPorts.clear();
    }

    std::u16string m_modelName;
    std::vector<PlainSignalPtr> m_signals;
    bool m_rebindingPending = false;
    std::vector<Entry> m_entries;
    std::vector<const ksPort*> m_cachedPorts;
    std::vector<std::u16string> m_activities;
    std::vector<ChartBit> m_chartBits;
};

}  // namespace ks_test
