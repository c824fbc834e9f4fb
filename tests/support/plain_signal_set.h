#pragma once

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The set of instrumented signals written down as plainly as possible, to compare the real one with: lists that
/// are searched from the front, and keys that are texts. It shares no code with the library.
/// Identifiers, which the real set takes in UTF-8, are UTF-16 here as all texts are.
namespace ks_test {

/// A record's members, as far as any operation of a set looks at them or changes them.
struct PlainSignal {
    std::size_t number = 0;  ///< which record of the run this is
    std::u16string path, subPath, eid, domainType;
    std::vector<std::pair<std::u16string, std::u16string>> parameters;  ///< in the order of the record's own map
    int outputPort = 0, logicalPort = 0, cachedPort = 0;
    double handle = 0.0;
    bool excludeForSave = false;

    std::u16string parameter(const std::u16string& name) const {
        for (const auto& [key, value] : parameters) {
            if (key == name) return value;
        }
        return {};
    }
    bool isChart() const { return domainType == u"cw_state" || domainType == u"cw_chart" || domainType == u"cw_data"; }
    bool isEqual(const PlainSignal& other) const {
        return eid == other.eid && path == other.path && subPath == other.subPath && domainType == other.domainType &&
               parameters == other.parameters && outputPort == other.outputPort && logicalPort == other.logicalPort;
    }
    bool isSameSignal(const PlainSignal& other) const {
        if (handle != 0.0 && other.handle != 0.0 && handle == other.handle && cachedPort == other.cachedPort)
            return true;
        return outputPort == other.outputPort && logicalPort == other.logicalPort && path == other.path &&
               subPath == other.subPath;
    }
    /// A new record with what a saved model keeps of this one.
    PlainSignal asLoaded() const {
        PlainSignal loaded = *this;
        loaded.cachedPort = 0;
        loaded.handle = 0.0;
        loaded.excludeForSave = false;
        return loaded;
    }
};
using PlainSignalPtr = std::shared_ptr<PlainSignal>;

inline std::u16string plainNumber(double value) {
    char digits[64];
    const int size = std::snprintf(digits, sizeof digits, "%.17g", value);
    return {digits, digits + size};
}
inline std::u16string plainNumber(int value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
}

/// Positions are 0-based. Operations that take one answer false, and change nothing, for one outside the set.
class PlainSignalSet {
public:
    std::u16string modelName;
    std::vector<PlainSignalPtr> signals;
    bool rebindingPending = false;

    bool insert(std::size_t index, const PlainSignalPtr& signal) {
        if (index > signals.size()) return false;
        signals.insert(at(index), signal);
        m_cachedPorts.clear();
        addToIndex(signal);
        return true;
    }
    bool set(std::size_t index, const PlainSignalPtr& signal) {
        if (index >= signals.size()) return false;
        removeFromIndex(*signals[index]);
        addToIndex(signal);
        signals[index] = signal;
        m_cachedPorts.clear();
        return true;
    }
    bool removeAt(std::size_t index) {
        if (index >= signals.size()) return false;
        const PlainSignalPtr signal = signals[index];
        if (signal->isChart()) {
            removeChart(*signal);
        } else {
            removeFromIndex(*signal);
            m_cachedPorts.clear();
        }
        signals.erase(at(index));
        return true;
    }
    void remove(const PlainSignal& value) {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            if (!value.isSameSignal(*signals[i])) continue;
            m_cachedPorts.clear();
            removeFromIndex(*signals[i]);
            signals.erase(at(i));
            return;
        }
    }
    bool isEqual(const PlainSignalSet& other) const {
        if (signals.size() != other.signals.size()) return false;
        for (std::size_t i = 0; i < signals.size(); ++i) {
            if (!signals[i]->isEqual(*other.signals[i])) return false;
        }
        return true;
    }
    PlainSignalSet copy(bool excludeUnsaved) const {
        PlainSignalSet result;
        result.modelName = modelName;
        for (const PlainSignalPtr& signal : signals) {
            if (!(excludeUnsaved && signal->excludeForSave))
                result.signals.push_back(std::make_shared<PlainSignal>(*signal));
        }
        result.m_entries = m_entries;
        if (!m_activities.empty()) {
            result.m_activities = m_activities;
            result.m_chartBits = m_chartBits;
        }
        return result;
    }

    // ---- ports ----

    void addToIndex(const PlainSignalPtr& signal) {
        if (signal->isChart()) {
            addChart(*signal);
            return;
        }
        m_cachedPorts.clear();
        m_entries.emplace_back(pathKey(*signal), signal);
        if (signal->cachedPort != 0) m_entries.emplace_back(handleKey(signal->handle, signal->cachedPort), signal);
    }
    void removeFromIndex(const PlainSignal& signal) {
        if (signal.isChart()) return;
        eraseEntries(pathKey(signal), [&](const PlainSignal& entry) {
            return entry.outputPort == signal.outputPort && entry.path == signal.path;
        });
        eraseEntries(handleKey(signal.handle, signal.cachedPort), [&](const PlainSignal& entry) {
            return entry.cachedPort == signal.cachedPort && entry.handle == signal.handle;
        });
    }
    void rebuildIndex() {
        m_entries.clear();
        for (const PlainSignalPtr& signal : signals) addToIndex(signal);
    }
    bool isAnyPortObserved() const { return !m_entries.empty(); }
    void cachePorts(std::vector<const void*> ports) { m_cachedPorts = std::move(ports); }
    bool isCachedPort(const void* port) const {
        return std::find(m_cachedPorts.begin(), m_cachedPorts.end(), port) != m_cachedPorts.end();
    }
    bool isPortObserved(double handle, int port) const {
        const std::u16string key = handleKey(handle, port);
        return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
            return entry.first == key && entry.second->cachedPort == port && entry.second->handle == handle;
        });
    }
    bool isPortObserved(double handle, const std::u16string& path, const std::u16string& subPath, int outputPort,
                        int port, int logicalPort) {
        if (isPortObserved(handle, port)) return true;
        const std::u16string key = pathKey(path, subPath, outputPort, logicalPort);
        for (const auto& [entryKey, entry] : m_entries) {
            if (entryKey != key || entry->outputPort != outputPort || entry->path != path) continue;
            if (port == 0) return true;
            if (entry->cachedPort == 0) {
                const PlainSignalPtr resolved = entry;
                resolved->handle = handle;
                resolved->cachedPort = port;
                addToIndex(resolved);
                return true;
            }
            if (rebindingPending && entry->cachedPort == port) return true;
        }
        return false;
    }
    void renumberPorts(double handle, const std::u16string& fullPath, const std::u16string& fullEid,
                       const std::vector<int>& newNumbers) {
        const std::u16string path = without(modelName + u"/", fullPath);
        const std::u16string eid = without(modelName + u":", fullEid);
        std::vector<std::size_t> deleted;
        std::vector<PlainSignalPtr> moved;
        for (std::size_t i = 0; i < signals.size(); ++i) {
            const PlainSignalPtr signal = signals[i];
            if (signal->handle != handle && signal->path != path && signal->eid != eid) continue;
            const int port = signal->outputPort;
            if (port < 1 || port > static_cast<int>(newNumbers.size())) continue;
            const int newNumber = newNumbers[static_cast<std::size_t>(port - 1)];
            if (newNumber == port || std::find(moved.begin(), moved.end(), signal) != moved.end()) continue;
            if (newNumber == 0) {
                deleted.push_back(i);
                continue;
            }
            moved.push_back(signal);
            removeFromIndex(*signal);
            signal->outputPort = signal->cachedPort = newNumber;
            addToIndex(signal);
        }
        while (!deleted.empty()) {
            removeAt(deleted.back());
            deleted.pop_back();
            moved.push_back(nullptr);
        }
        if (moved.empty()) return;
        m_cachedPorts.clear();
        rebuildIndex();
    }

    // ---- charts ----

    void addChart(const PlainSignal& signal) {
        if (const auto bit = chartBit(signal)) {
            if (!contains(m_chartBits, *bit)) m_chartBits.push_back(*bit);
            addActivity(signal.eid, signal.parameter(u"SSID"), signal.parameter(u"Activity"));
        }
    }
    void removeChart(const PlainSignal& signal) {
        if (const auto bit = chartBit(signal)) {
            std::erase(m_chartBits, *bit);
            removeActivity(signal.eid, signal.parameter(u"SSID"), signal.parameter(u"Activity"));
        }
    }
    void addActivity(const std::u16string& eid, const std::u16string& ssid, const std::u16string& activity) {
        const std::u16string key = chartKey(eid, ssid) + activity;
        if (!contains(m_activities, key)) m_activities.push_back(key);
    }
    void removeActivity(const std::u16string& eid, const std::u16string& ssid, const std::u16string& activity) {
        std::erase(m_activities, chartKey(eid, ssid) + activity);
    }
    bool isActivityObserved(const std::u16string& fullEid, double ssid, const std::u16string& activity) const {
        return contains(m_activities, chartKey(shortEid(fullEid), plainNumber(ssid)) + activity);
    }
    bool isAnyActivityObserved(const std::u16string& fullEid, double ssid) const {
        const std::u16string key = chartKey(shortEid(fullEid), plainNumber(ssid));
        return std::any_of(m_chartBits.begin(), m_chartBits.end(), [&](const auto& bit) { return bit.first == key; });
    }
    /// The numbers of the chart signals that `other` does not observe.
    std::vector<std::size_t> chartDifference(const PlainSignalSet& other) const {
        std::vector<std::size_t> difference;
        for (const PlainSignalPtr& a : signals) {
            const auto matches = [&](const PlainSignalPtr& b) {
                if (!b->isChart() || a->eid != b->eid) return false;
                const std::u16string ssidA = a->parameter(u"SSID");
                const std::u16string ssidB = b->parameter(u"SSID");
                if (ssidA == u"0" && ssidB == u"0") return a->parameter(u"Activity") == b->parameter(u"Activity");
                return ssidA == ssidB;
            };
            if (a->isChart() && std::none_of(other.signals.begin(), other.signals.end(), matches))
                difference.push_back(a->number);
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
    static std::u16string without(const std::u16string& prefix, const std::u16string& text) {
        return prefix.size() < text.size() && text.substr(0, prefix.size()) == prefix ? text.substr(prefix.size())
                                                                                      : text;
    }
    std::vector<PlainSignalPtr>::iterator at(std::size_t index) {
        return signals.begin() + static_cast<std::ptrdiff_t>(index);
    }
    std::u16string shortEid(const std::u16string& fullEid) const { return without(modelName + u":", fullEid); }
    static std::u16string handleKey(double handle, int port) { return plainNumber(handle) + u"$$" + plainNumber(port); }
    std::u16string pathKey(const std::u16string& path, const std::u16string& subPath, int outputPort,
                           int logicalPort) const {
        const std::u16string model = modelName.empty() ? modelName : modelName + u"/";
        return model + path + u"$$" + subPath + u"$$" + plainNumber(logicalPort >= 1 ? logicalPort : outputPort);
    }
    std::u16string pathKey(const PlainSignal& signal) const {
        return pathKey(signal.path, signal.subPath, signal.outputPort, signal.logicalPort);
    }
    std::u16string chartKey(const std::u16string& eid, const std::u16string& ssid) const {
        return modelName + eid + ssid;
    }
    std::optional<ChartBit> chartBit(const PlainSignal& signal) const {
        const std::u16string activity = signal.parameter(u"Activity");
        if (activity != u"Self" && activity != u"Child" && activity != u"Leaf" && activity != u"Data")
            return std::nullopt;
        return ChartBit(chartKey(signal.eid, signal.parameter(u"SSID")), activity);
    }
    template <class Matches>
    void eraseEntries(const std::u16string& key, Matches matches) {
        if (std::erase_if(m_entries, [&](const Entry& e) { return e.first == key && matches(*e.second); }) != 0)
            m_cachedPorts.clear();
    }

    std::vector<Entry> m_entries;
    std::vector<const void*> m_cachedPorts;
    std::vector<std::u16string> m_activities;
    std::vector<ChartBit> m_chartBits;
};

}  // namespace ks_test
