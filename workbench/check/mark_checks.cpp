#include "workbench/check/mark_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

#include "host/values.h"
#include "signals/signal_specification.h"
#include "workbench/check/field_names.h"
#include "workbench/check/record_checks.h"
#include "workbench/session/chart_item_finder.h"
#include "workbench/session/loading/signal_checks.h"
#include "workbench/session/marked_names.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalSpecification;

FindingCode codeOf(Misfit misfit) {
    switch (misfit) {
        case Misfit::blockGone:
            return FindingCode::blockGone;
        case Misfit::portGone:
            return FindingCode::portGone;
        case Misfit::itemGone:
            return FindingCode::itemGone;
        case Misfit::ssid:
            return FindingCode::chartSsid;
        case Misfit::activity:
            return FindingCode::chartActivity;
        default:
            return FindingCode::domain;
    }
}

FindingCode codeOf(NameState state) {
    return state == NameState::moved       ? FindingCode::nameMoved
           : state == NameState::ambiguous ? FindingCode::nameAmbiguous
                                           : FindingCode::nameGone;
}

// A port or, of a chart item, an activity.
struct MarkedPlace {
    const kestrel::Block* block;
    std::int64_t place;  // port number; of an item the SSID below zero
    std::u16string activity;
    friend bool operator==(const MarkedPlace&, const MarkedPlace&) = default;
};

struct PlaceHash {
    std::size_t operator()(const MarkedPlace& one) const noexcept {
        constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
        return std::hash<const void*>()(one.block) ^ (static_cast<std::size_t>(one.place) * kSpread) ^
               std::hash<std::u16string>()(one.activity);
    }
};

class MarkChecks final : public SliceChecks {
public:
    MarkChecks(CheckedFile& checked, const kestrel::Model& model, const CheckedList& list)
        : m_model(model), m_checks(checked, RecordKind::signal, list), m_names(model) {
        m_places.reserve(list.count);
        m_isModelWhole = std::none_of(checked.findings.begin(), checked.findings.end(),
                                      [](const Finding& finding) { return finding.code == FindingCode::blockPlace; });
    }

    void take(const CheckedSlice& slice) override {
        m_checks.each<SignalSpecification>(slice, [&](const SignalSpecification& signal, std::size_t position) {
            const std::size_t i = position - slice.first;
            const bool hasName = i < slice.markedNames.size() && slice.markedNames[i];
            check(signal, position, hasName ? &*slice.markedNames[i] : nullptr);
        });
    }
    // Tells of unconfirmed ones.
    void end() override;

private:
    void check(const SignalSpecification& signal, std::size_t position, const std::u16string* markedName);
    // Whether the name says where the signal has gone.
    bool checkName(const SignalSpecification& signal, std::size_t position, const std::u16string* markedName);
    void checkParameters(const SignalSpecification& signal, std::size_t position);
    void checkPlace(const SignalSpecification& signal, std::size_t position);
    void add(FindingCode code, const SignalSpecification& signal, std::size_t position, const std::string& field,
             std::string text);
    void addMisfit(const SignalFault& fault, const SignalSpecification& signal, std::size_t position);
    std::string subjectOf(const SignalSpecification& signal) const;

    const kestrel::Model& m_model;
    RecordChecks m_checks;
    NameChecker m_names;
    ChartItemFinder m_items;
    std::unordered_map<MarkedPlace, std::size_t, PlaceHash> m_places;
    bool m_isModelWhole = true;  // no block was left out
    std::size_t m_unconfirmed = 0;
    std::size_t m_firstUnconfirmed = 0;
};

void MarkChecks::check(const SignalSpecification& signal, std::size_t position, const std::u16string* markedName) {
    if (Finding* const finding = m_checks.checkUuid(signal.m_uuid, position)) finding->subject = subjectOf(signal);
    const std::optional<SignalFault> fault = sourceFault(signal, m_model, m_items);
    const bool isFollowed = (!fault || fault->isDangling) && checkName(signal, position, markedName);
    const bool isTold =
        fault && ((isFollowed && fault->isDangling) || (fault->misfit == Misfit::blockGone && !m_isModelWhole));
    if (fault && !isTold) addMisfit(*fault, signal, position);
    checkParameters(signal, position);
    if (signal.m_eid.empty())
        add(FindingCode::signalWithoutEid, signal, position, "EID_",
            "the signal has no element identifier, and is lost when its block moves");
    if (!fault) checkPlace(signal, position);
}

bool MarkChecks::checkName(const SignalSpecification& signal, std::size_t position, const std::u16string* markedName) {
    const NameCheck name = m_names.check(signal, markedName);
    if (name.state == NameState::unconfirmed && name.nameNow && m_unconfirmed++ == 0) m_firstUnconfirmed = position;
    const bool isElsewhere = name.state == NameState::moved || name.state == NameState::ambiguous;
    if (!isElsewhere && !(name.state == NameState::gone && name.nameNow)) return false;
    const char* const field = isChartSignal(signal) ? "DomainParams_" : "OutputPortIndex_";
    add(codeOf(name.state), signal, position, field, describe("the signal", name, isChartSignal(signal)));
    return isElsewhere;
}

void MarkChecks::checkParameters(const SignalSpecification& signal, std::size_t position) {
    for (const auto& [name, value] : signal.m_domainParams)
        if (!isFieldName(toUtf8(name)))
            add(FindingCode::signalParameter, signal, position, "DomainParams_",
                fmt::format("the parameter name {} cannot be a field name", inQuotes(name)));
}

void MarkChecks::checkPlace(const SignalSpecification& signal, std::size_t position) {
    const SignalSource source = sourceOf(m_model, signal);
    const std::int64_t place = source.item ? -1 - std::int64_t{source.item->ssid} : source.port;
    const auto [entry, isNew] =
        m_places.try_emplace({source.block, place, source.item ? activityOf(signal) : std::u16string()}, position);
    if (!isNew)
        add(FindingCode::duplicateMark, signal, position, "",
            fmt::format("signal {} marks {} already", entry->second + 1,
                        inQuotes(std::string_view(subjectOf(signal)))));
}

void MarkChecks::add(FindingCode code, const SignalSpecification& signal, std::size_t position,
                     const std::string& field, std::string text) {
    m_checks.add(code, position, field, std::move(text), signal.m_uuid, subjectOf(signal));
}

void MarkChecks::addMisfit(const SignalFault& fault, const SignalSpecification& signal, std::size_t position) {
    Finding& finding =
        m_checks.add(codeOf(fault.misfit), position, fault.field, fault.text, signal.m_uuid, subjectOf(signal));
    const bool isOfChart = finding.code == FindingCode::chartSsid || finding.code == FindingCode::chartActivity;
    if (isOfChart && chartParameters(m_model, signal)) finding.cure = Cure::mend;
}

std::string MarkChecks::subjectOf(const SignalSpecification& signal) const {
    const SignalSource source = sourceOf(m_model, signal);
    return toUtf8(source.block ? fullName(m_model, source) : m_model.name() + u"/" + signal.m_blockPath);
}

void MarkChecks::end() {
    if (m_unconfirmed == 0) return;
    m_checks.add(FindingCode::unconfirmed, m_firstUnconfirmed, "",
                 m_unconfirmed == 1
                     ? std::string("1 signal was marked before names were kept")
                     : fmt::format("{} signals, this one first, were marked before names were kept", m_unconfirmed));
}

}  // namespace

std::optional<ChartParameters> chartParameters(const kestrel::Model& model, const SignalSpecification& signal) {
    const kestrel::Block* const block = blockOf(model, signal);
    if (!block || !block->chart || !isChartSignal(signal)) return std::nullopt;
    std::vector<ChartItem> items = chartItemsOf(*block);
    const std::optional<std::uint32_t> ssid = ssidOf(signal);
    std::erase_if(items, [&](const ChartItem& item) {
        return item.domainType != signal.m_domainType || (ssid ? item.ssid != *ssid : item.subPath != signal.m_subPath);
    });
    if (items.size() != 1) return std::nullopt;
    const std::u16string activity = activityOf(signal);
    if (hasActivity(items.front(), activity)) return ChartParameters{items.front(), activity};
    if (items.front().domainType != kDataDomain) return std::nullopt;
    return ChartParameters{items.front(), defaultActivity(items.front())};
}

namespace {

std::string describe(const ParkedMark& mark) {
    const std::size_t clients = hvGetNumberOfElements(mark.clients.get());
    const std::string with = clients > 0 ? " with " + counted(clients, "client") : "";
    const char* const why = mark.isUnsure
                                ? "{} is parked{}: its {} may have another name after {}, and nobody has said which"
                                : "{} is parked{}: its {} was lost after {}";
    return fmt::format(fmt::runtime(why), nameOfParked(mark), with, textOf(mark.lost), inQuotes(mark.from));
}

}  // namespace

std::string nameOfParked(const ParkedMark& mark) {
    const std::u16string path = ks_host::textOf(hvGetField(mark.signal.get(), 0, "BlockPath_"));
    const std::string name = mark.markedName && !mark.markedName->empty() ? inQuotes(*mark.markedName) + " of " : "";
    return fmt::format("the mark on {}{}", name, inQuotes(path));
}

std::unique_ptr<SliceChecks> markChecks(CheckedFile& checked, const kestrel::Model& model, const CheckedList& list) {
    return std::make_unique<MarkChecks>(checked, model, list);
}

void checkParked(CheckedFile& checked, const std::vector<ParkedMark>& parked) {
    for (std::size_t i = 0; i < parked.size(); ++i) {
        Finding& finding = checked.findings.emplace_back();
        finding.code = FindingCode::parked;
        finding.place.file = checked.path;
        finding.place.pointer = fmt::format("/parked/{}", i);
        finding.text = describe(parked[i]);
        finding.cure = ruleOf(FindingCode::parked).cure;
        finding.position = i;
    }
}

}  // namespace workbench
