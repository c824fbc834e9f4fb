#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "foundation/errors.h"
#include "foundation/key_text.h"
#include "foundation/model_prefix.h"
#include "host/text.h"
#include "signals/observed_indexes.h"

namespace ks_hmi {

using ks_hmi_foundation::KeyText;

namespace {

constexpr const char16_t* kActivity = u"Activity";
constexpr const char16_t* kSSID = u"SSID";

constexpr std::string_view kActivityNames[kActivities] = {"Self", "Child", "Leaf", "Data"};

std::string parameter(const SignalSpecification& spec, const char16_t* name) {
    return fl::i18n::to_string(spec.getValueForDomainParams(name));
}

// Where a chart signal stands in the chart index.
struct ChartEntry {
    std::string ssid;
    std::string activity;
    std::uint64_t objectKey;
    std::size_t bit;
};

// Nothing for an unknown activity.
std::optional<ChartEntry> chartEntryOf(const InstrumentedSignals& set, const InstrumentedSignals::SignalPtr& spec) {
    plv_hmi_foundation::errors::requireRecord(spec);
    std::string activity = parameter(*spec, kActivity);
    const auto* const name = std::find(std::begin(kActivityNames), std::end(kActivityNames), activity);
    if (name == std::end(kActivityNames)) return std::nullopt;
    std::string ssid = parameter(*spec, kSSID);
    std::vector<std::string> list;
    set.constructCWLookupStr(list, spec->m_eid, ssid);
    const std::uint64_t objectKey = SignalSpecification::getInfoHashFromStringList(std::move(list));
    return ChartEntry{std::move(ssid), std::move(activity), objectKey,
                      static_cast<std::size_t>(name - std::begin(kActivityNames))};
}

// Adds the same texts as `constructCWLookupStr` lists, without allocating.
void addObjectKey(KeyText& key, const std::u16string& modelName, const std::u16string& eidPath, double ssid) {
    KeyText eid;
    eid.add(eidPath);
    key.add(modelName);
    key.add(ks_hmi_foundation::withoutModelPrefix<char>(eid.text(), key.text(), ks_hmi_foundation::kEIDSeparator));
    key.addGeneral17(ssid);
}

bool observesSameChartObject(const SignalSpecification& a, const SignalSpecification& b) {
    const std::u16string ssid = a.getValueForDomainParams(kSSID);
    if (a.m_eid != b.m_eid || ssid != b.getValueForDomainParams(kSSID)) return false;
    const bool isChartLevel = ssid == u"0";
    return !isChartLevel || a.getValueForDomainParams(kActivity) == b.getValueForDomainParams(kActivity);
}

}  // namespace

bool InstrumentedSignals::isChartworkDomain(const std::u16string& domainType) const {
    // Views compare their sizes first.
    const std::u16string_view type = domainType;
    return type == u"cw_state" || type == u"cw_chart" || type == u"cw_data";
}

void InstrumentedSignals::constructCWLookupStr(std::vector<std::string>& list, const std::string& eid,
                                               const std::string& ssid) const {
    list.push_back(fl::i18n::to_string(m_modelName));
    list.push_back(eid);
    list.push_back(ssid);
}

void InstrumentedSignals::constructCWLookupStrUsingActivity(std::vector<std::string>& list, const std::string& eid,
                                                            const std::string& ssid,
                                                            const std::string& activity) const {
    constructCWLookupStr(list, eid, ssid);
    list.push_back(activity);
}

void InstrumentedSignals::addToObservedCWObjectCache(SignalPtr spec) {
    const auto entry = chartEntryOf(*this, spec);
    if (!entry) return;
    // The activity goes in before the bit is set: when it cannot, nothing has changed but an empty entry.
    auto& activities = m_indexes->chartObjects[entry->objectKey];
    addToObservedCWActivity(spec->m_eid, entry->ssid, entry->activity);
    activities.set(entry->bit);
}

void InstrumentedSignals::removeFromObservedCWObject(SignalPtr spec) {
    const auto entry = chartEntryOf(*this, spec);
    if (!entry) return;
    // Kept: the object's entry stays, also when no bit is left.
    auto& activities = m_indexes->chartObjects[entry->objectKey];
    removeObservedCWActivity(spec->m_eid, entry->ssid, entry->activity);
    activities.reset(entry->bit);
}

void InstrumentedSignals::addToObservedCWActivity(const std::string& eid, const std::string& ssid,
                                                  const std::string& activity) {
    std::vector<std::string> list;
    constructCWLookupStrUsingActivity(list, eid, ssid, activity);
    m_indexes->chartActivities[SignalSpecification::getInfoHashFromStringList(std::move(list))] = true;
}

void InstrumentedSignals::removeObservedCWActivity(const std::string& eid, const std::string& ssid,
                                                   const std::string& activity) {
    std::vector<std::string> list;
    constructCWLookupStrUsingActivity(list, eid, ssid, activity);
    m_indexes->chartActivities.erase(SignalSpecification::getInfoHashFromStringList(std::move(list)));
}

bool InstrumentedSignals::isCWActivityObserved(const std::u16string& eidPath, double ssid,
                                               const std::u16string& activity) const {
    KeyText key;
    addObjectKey(key, m_modelName, eidPath, ssid);
    return m_indexes->chartActivities.contains(key.add(activity).hash());
}

bool InstrumentedSignals::isAnyCWActivityObserved(const std::u16string& eidPath, double ssid) {
    KeyText key;
    addObjectKey(key, m_modelName, eidPath, ssid);
    // Kept: insert if absent; the empty entry left for an unknown object changes no answer.
    return m_indexes->chartObjects[key.hash()].any();
}

std::vector<InstrumentedSignals::SignalPtr> InstrumentedSignals::setDifference_cw(
    const InstrumentedSignals* other) const {
    std::vector<SignalPtr> difference;
    for (const SignalPtr& signal : m_signals) {
        if (!isChartworkDomain(signal->m_domainType)) continue;
        const auto matches = [&](const SignalPtr& candidate) {
            return isChartworkDomain(candidate->m_domainType) && observesSameChartObject(*signal, *candidate);
        };
        const bool isObserved =
            other != nullptr && std::any_of(other->m_signals.begin(), other->m_signals.end(), matches);
        if (!isObserved) difference.push_back(signal);
    }
    return difference;
}

}  // namespace ks_hmi
