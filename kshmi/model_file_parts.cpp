#include "kshmi/model_file_parts.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "kshmi/error.h"
#include "kshmi/text.h"
#include "memory_host/orvex/hv_array_impl.h"
#include "signals/signal_specification.h"

namespace kshmi {

namespace {

constexpr double kFormatVersion = 1.0;

bool isText(const hvArray* value) { return hvGetClassID(value) == hvCHAR_CLASS; }

bool isParameterStruct(const hvArray* value) {
    if (hvGetClassID(value) != hvSTRUCT_CLASS || hvGetNumberOfElements(value) != 1) return false;
    for (int i = 0; i < hvGetNumberOfFields(value); ++i)
        if (!isText(hvGetField(value, 0, hvGetFieldNameByNumber(value, i)))) return false;
    return true;
}

/// The fields that the library itself would read as empty when they are no texts.
bool isTextField(std::string_view name) {
    constexpr std::array<std::string_view, 8> kTexts{"UUID",        "BlockPath_",  "EID_",        "SubPath_",
                                                     "SignalName_", "SubSysPath_", "DomainType_", "VisualType_"};
    return std::find(kTexts.begin(), kTexts.end(), name) != kTexts.end();
}

}  // namespace

std::size_t signalFieldNumber(std::string_view name) noexcept {
    const char* const* const names = ks_hmi::SignalSpecification::getStructFields();
    std::size_t number = 0;
    while (number < ModelFile::kSignalFields && name != names[number]) ++number;
    return number;
}

std::string atSignal(const std::string& path, const std::vector<ModelFile::SignalLines>& lines, std::size_t position,
                     const std::string& field, const std::string& text) {
    std::size_t line = 0;
    if (position < lines.size()) {
        const std::size_t number = signalFieldNumber(field);
        line = number < ModelFile::kSignalFields ? lines[position].fields.at(number) : 0;
        if (line == 0) line = lines[position].start;
    }
    return atPlace(path, line, "/signals/" + std::to_string(position) + (field.empty() ? "" : pointerToken(field)),
                   text);
}

void ModelFileParts::setVersion(double version, const std::string& pointer) {
    if (version != kFormatVersion)
        m_file.fail(pointer, "this program reads version 1 of the format only; save the model in that version");
}

void ModelFileParts::beginBlock() { m_blocks.push_back({{}, m_file.line()}); }

void ModelFileParts::checkChart(const std::string& pointer) const {
    const kestrel::Chart& chart = *m_blocks.back().block.chart;
    std::set<std::uint32_t> identifiers;
    std::set<std::u16string_view> texts;
    const auto check = [&](std::uint32_t ssid, std::u16string_view text) {
        if (text.empty()) m_file.fail(pointer, "a state needs a path and a datum a name");
        if (!identifiers.insert(ssid).second)
            m_file.fail(pointer, "the SSID " + std::to_string(ssid) + " is there twice; give each item its own");
        if (!texts.insert(text).second)
            m_file.fail(pointer, quoted(text) + " is there twice; give each item its own name");
    };
    for (const kestrel::ChartState& state : chart.states) check(state.ssid, state.path);
    texts.clear();
    for (const kestrel::ChartData& datum : chart.data) check(datum.ssid, datum.name);
}

void ModelFileParts::beginSignal() {
    m_rows.emplace_back();
    m_signalLines.push_back({m_file.line(), {}});
}

void ModelFileParts::setSignalField(std::size_t field, HvArrayPtr value, const std::string& pointer) {
    const std::string_view name = ks_hmi::SignalSpecification::getStructFields()[field];
    const bool isUnfitText = isTextField(name) && value && !isText(value.get());
    const bool isUnfitStruct = name == "DomainParams_" && value && !isParameterStruct(value.get());
    if (isUnfitText || isUnfitStruct)
        m_file.fail(pointer, orvex::describeValue(value.get()) + " stands where " +
                                 (isUnfitText ? "a text" : "an object of texts") + " belongs; correct it");
    m_rows.back().at(field) = std::move(value);
}

void ModelFileParts::addClient(HvArrayPtr client, const std::string& pointer) {
    const bool isStruct = hvGetClassID(client.get()) == hvSTRUCT_CLASS && hvGetNumberOfElements(client.get()) == 1;
    if (!isStruct || (hvGetNumberOfFields(client.get()) > 0 && *hvGetFieldNameByNumber(client.get(), 0) == '$'))
        m_file.fail(pointer, "a client is an object; correct or remove it");
    m_clients.push_back(std::move(client));
}

ModelFile ModelFileParts::finish() {
    return {buildModel(), buildSignals(), std::move(m_signalLines), std::move(m_clients)};
}

kestrel::Model ModelFileParts::buildModel() {
    std::size_t line = m_nameLine;
    std::string pointer = "/name";
    try {
        kestrel::Model model(m_name);
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            kestrel::Block& block = m_blocks[i].block;
            const bool isPathBad = block.path.empty() || model.findByPath(block.path);
            line = m_blocks[i].line;
            pointer = "/blocks/" + std::to_string(i) + (isPathBad ? "/path" : "/eid");
            model.add(std::move(block));
        }
        return model;
    } catch (const kestrel::ModelError& error) {
        throw Error(atPlace(m_file.path(), line, pointer, printable(std::string_view(error.what())) + " Change it."));
    }
}

HvArrayPtr ModelFileParts::buildSignals() {
    using ks_hmi::SignalSpecification;
    const std::size_t count = m_rows.size();
    const char* const* const names = SignalSpecification::getStructFields();
    HvArrayPtr signals(
        hvCreateStructArray(1, &count, SignalSpecification::getNumStructFields(/*withRuntimeFields=*/false), names));
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t field = 0; field < ModelFile::kSignalFields; ++field)
            if (HvArrayPtr& value = m_rows[i].at(field)) hvSetField(signals.get(), i, names[field], value.release());
    orvex::markAsPersisted(signals.get());
    return signals;
}

}  // namespace kshmi
