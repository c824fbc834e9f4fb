#include <new>
#include <string>

#include "fuzz/fuzz_host.h"
#include "host/messages.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"
#include "tests/support/host_test.h"

// Saved records with any value in any field, read into sets, asked about, written, and read again.

namespace {

using ks_fuzz::Bytes;
using ks_fuzz::require;
using ks_test::call;
using ks_test::property;
using ks_test::text;

constexpr std::size_t kDeepest = 3;
constexpr hvClassID kNumericClasses[] = {hvDOUBLE_CLASS, hvSINGLE_CLASS, hvINT8_CLASS,   hvUINT8_CLASS,
                                         hvINT16_CLASS,  hvUINT16_CLASS, hvINT32_CLASS,  hvUINT32_CLASS,
                                         hvINT64_CLASS,  hvUINT64_CLASS, hvLOGICAL_CLASS};

HvArrayPtr anyValue(Bytes& bytes, std::size_t depth);

double anyNumber(Bytes& bytes) {
    static constexpr double kNumbers[] = {0.0,   -0.0,         1.0,          2.0,          -1.0, 1.5,  1e-310,
                                          1e308, 2147483647.0, 2147483648.0, 4294967295.0, 1e19, -1e19};
    const std::size_t which = bytes.below(std::size(kNumbers) + 2);
    if (which < std::size(kNumbers)) return kNumbers[which];
    return which == std::size(kNumbers) ? std::numeric_limits<double>::quiet_NaN()
                                        : -std::numeric_limits<double>::infinity();
}

HvArrayPtr anyText(Bytes& bytes) {
    static constexpr const char16_t* kTexts[] = {u"",     u"Gain", u"Sub/Chart", u"cw_state",
                                                 u"Self", u"7",    u"\xd800",    u"m1"};
    const std::size_t which = bytes.below(std::size(kTexts) + 1);
    std::u16string result = which < std::size(kTexts) ? kTexts[which] : std::u16string(3, u'\0');
    for (std::size_t more = bytes.below(4); more > 0; --more)
        result += static_cast<char16_t>(bytes.byte() << 8U | bytes.byte());
    return text(result);
}

HvArrayPtr anyMatrix(Bytes& bytes) {
    const hvClassID classID = kNumericClasses[bytes.below(std::size(kNumericClasses))];
    HvArrayPtr result(hvCreateNumericMatrix(bytes.below(3), bytes.below(3), classID, hvREAL));
    if (classID != hvDOUBLE_CLASS) return result;
    auto* const data = static_cast<double*>(hvGetDataForWriting(result.get()));
    for (std::size_t i = 0; i < hvGetNumberOfElements(result.get()); ++i) data[i] = anyNumber(bytes);
    return result;
}

HvArrayPtr anyCells(Bytes& bytes, std::size_t depth) {
    const std::size_t count = bytes.below(4);
    HvArrayPtr result(hvCreateCellArray(1, &count));
    for (std::size_t i = 0; i < count; ++i) hvSetCell(result.get(), i, anyValue(bytes, depth).release());
    return result;
}

HvArrayPtr anyStruct(Bytes& bytes, std::size_t depth) {
    static constexpr const char* kFields[] = {"SSID", "Activity", "ModelName"};
    const std::size_t count = bytes.below(3);
    HvArrayPtr result(hvCreateStructArray(1, &count, static_cast<int>(1 + bytes.below(3)), kFields));
    for (std::size_t i = 0; i < count; ++i) hvReplaceField(result.get(), i, "SSID", anyValue(bytes, depth).release());
    return result;
}

// Null at times: a field that holds nothing.
HvArrayPtr anyValue(Bytes& bytes, std::size_t depth) {
    switch (bytes.below(depth < kDeepest ? 9 : 6)) {
        case 0:
            return nullptr;
        case 1:
        case 2:
            return anyText(bytes);
        case 3:
            return HvArrayPtr(hvCreateDoubleScalar(anyNumber(bytes)));
        case 4:
            return HvArrayPtr(hvCreateLogicalScalar(bytes.below(2) == 1));
        case 5:
            return anyMatrix(bytes);
        case 6:
            return anyCells(bytes, depth + 1);
        case 7:
            return anyStruct(bytes, depth + 1);
        default:
            return call("Kestrel.HMI.SignalSpecification", {});
    }
}

// A struct array as `sample` with some of its fields replaced by whatever the input says.
HvArrayPtr spoiled(const hvArray* sample, Bytes& bytes) {
    HvArrayPtr result(hvCreateDeepCopy(sample));
    for (std::size_t changes = bytes.below(12); changes > 0; --changes) {
        const auto field = static_cast<int>(bytes.below(static_cast<std::size_t>(hvGetNumberOfFields(sample))));
        const std::size_t element = bytes.below(hvGetNumberOfElements(sample));
        hvReplaceField(result.get(), element, hvGetFieldNameByNumber(sample, field), anyValue(bytes, 0).release());
    }
    return result;
}

HvArrayPtr signalSample() {
    const HvArrayPtr object = call("Kestrel.HMI.InstrumentedSignals", {});
    auto& set = *ks_hmi::InstrumentedSignals::getFromHvArray(object.get());
    for (const char16_t* const domain : {u"", u"cw_state"}) {
        auto signal = std::make_unique<ks_hmi::SignalSpecification>();
        signal->m_blockPath = u"Gain";
        signal->m_domainType = domain;
        signal->m_outputPortIndex = 1;
        signal->m_domainParams = {{u"SSID", u"7"}, {u"Activity", u"Self"}};
        set.add(std::move(signal));
    }
    return set.getPersistenceData();
}

HvArrayPtr clientSample() {
    const HvArrayPtr object = call("Kestrel.HMI.StreamingClients", {});
    auto& set = *ks_hmi::StreamingClients::getFromHvArray(object.get());
    for (const char* const uuid : {"a", "b"}) {
        auto client = std::make_unique<ks_hmi::SignalClient>();
        client->m_uuid = uuid;
        client->m_modelPath = {u"Sub"};
        client->m_modelPathEID = {"2"};
        set.add(std::move(client));
    }
    return set.getPersistenceData();
}

void ask(ks_hmi::InstrumentedSignals& set) {
    for (std::size_t i = 0; i < set.getCount(); ++i) {
        ks_hmi::SignalSpecification& signal = *set.get(i);
        require(signal.clone()->isEqual(&signal), "a clone differs from its signal");
        require(signal.isSameSignal(&signal), "a signal is not itself");
        const bool isPort = !set.isChartworkDomain(signal.m_domainType);
        if (isPort) require(set.isPortObserved(&signal), "a port of the list is not observed");
        set.isAnyCWActivityObserved(fl::i18n::to_ustring(signal.m_eid.c_str()), 7.0);
        signal.getHOSObject(u"m1", i % 2 == 0);
    }
    const auto copied = set.copy(false);
    require(set.isEqual(ks_hmi::InstrumentedSignals::getFromHvArray(copied.get())), "a copy differs");
    set.setDifference_cw(nullptr);
    set.renumberPorts(0.5, u"Gain", "", {2, 1, 0});
}

void ask(ks_hmi::StreamingClients& set) {
    for (std::size_t i = 0; i < set.getCount(); ++i) {
        ks_hmi::SignalClient& client = *set.get(i);
        client.getDecimation(u"m1");
        client.isDeprecatedObserver();
        client.getHOSObject(u"m1");
    }
    set.isEqual(&set);
    set.copy();
    set.setModelName(u"m2");
}

// Reading may be refused; what was read can be written, and what was written is read without a refusal.
template <class Set>
void readAskAndWrite(const char* className, const hvArray* data) {
    const HvArrayPtr object = call(className, {text("m1").get()});
    auto& set = *Set::getFromHvArray(object.get());
    try {
        set.setFromPersistenceData(data);
    } catch (const kssvIException&) {
    }
    ask(set);
    const HvArrayPtr saved = set.getPersistenceData();
    const HvArrayPtr again = call(className, {text("m1").get()});
    auto& reread = *Set::getFromHvArray(again.get());
    reread.setFromPersistenceData(saved.get());
    require(reread.getCount() == set.getCount(), "records were lost on the way through the saved form");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ks_fuzz::enterHost();
    Bytes bytes(data, size);
    {
        const HvArrayPtr signals = spoiled(signalSample().get(), bytes);
        readAskAndWrite<ks_hmi::InstrumentedSignals>("Kestrel.HMI.InstrumentedSignals", signals.get());
        const HvArrayPtr clients = spoiled(clientSample().get(), bytes);
        readAskAndWrite<ks_hmi::StreamingClients>("Kestrel.HMI.StreamingClients", clients.get());
    }
    ks_fuzz::requireNothingLives();
    return 0;
}
