#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <optional>
#include <string_view>

#include "foundation/ascii_hash.h"
#include "foundation/key_text.h"
#include "foundation/number_digits.h"
#include "signals/signal_specification.h"

namespace ks_hmi {

using ks_hmi_foundation::AsciiHash;
using ks_hmi_foundation::KeyText;

SignalSpecification::BlockUUIDMap SignalSpecification::m_blockUUIDmap;

namespace {

constexpr char kKeySeparator[] = "$$";

// Kept: six decimals; handles that differ beyond them share an entry.
std::string portKey(int port, double handle) {
    return std::string(KeyText().add(port).add("-").addFixed6(handle).text());
}

// The path key where all texts are ASCII; nothing otherwise.
std::optional<std::uint64_t> asciiPathKey(std::u16string_view modelName, std::u16string_view blockPath,
                                          std::u16string_view subPath, int port) {
    AsciiHash hash;
    if (!modelName.empty()) {
        if (!hash.add(modelName)) return std::nullopt;
        hash.add('/');
    }
    if (!hash.add(blockPath)) return std::nullopt;
    hash.add('$').add('$');
    if (!hash.add(subPath)) return std::nullopt;
    hash.add('$').add('$');
    char digits[ks_hmi_foundation::kMostIntBytes];
    return hash.add(digits, ks_hmi_foundation::putInt(digits, port)).value();
}

std::string mintUUID() {
    static boost::uuids::random_generator_pure generate;
    return boost::uuids::to_string(generate());
}

}  // namespace

std::uint64_t SignalSpecification::getInfoHashFromStringList(std::vector<std::string> texts) {
    KeyText key;
    for (const std::string& text : texts) key.add(text);
    return key.hash();
}

std::uint64_t SignalSpecification::getNonCachedInfoHash(const std::u16string& blockPath, const std::u16string& subPath,
                                                        int outputPortIndex, int logicalPortIndex,
                                                        const std::u16string& modelName) {
    const int port = pathKeyPort(outputPortIndex, logicalPortIndex);
    if constexpr (AsciiHash::kIsBoosts)
        if (const auto hash = asciiPathKey(modelName, blockPath, subPath, port)) return *hash;
    KeyText key;
    if (!modelName.empty()) key.add(modelName).add("/");
    return key.add(blockPath).add(kKeySeparator).add(subPath).add(kKeySeparator).add(port).hash();
}

std::uint64_t SignalSpecification::getCachedInfoHash(double blockHandle, int portIdx) {
    return KeyText().addGeneral17(blockHandle).add(kKeySeparator).add(portIdx).hash();
}

std::uint64_t SignalSpecification::getSourceKeyNonCached(const std::u16string& modelName) const {
    return getNonCachedInfoHash(m_blockPath, m_subPath, m_outputPortIndex, m_logicalPortIndex, modelName);
}

std::uint64_t SignalSpecification::getSourceKeyCached() const {
    return getCachedInfoHash(m_cachedBlockHandle, m_cachedPortIdx);
}

bool SignalSpecification::isInBlockHandleUUIDmap(const int& port, const double& handle) {
    return m_blockUUIDmap.contains(portKey(port, handle));
}

void SignalSpecification::addToBlockHandleUUIDmap(const int& port, const double& handle, const std::string& uuid) {
    m_blockUUIDmap.insert_or_assign(portKey(port, handle), uuid);
}

std::string SignalSpecification::getUUIDFromBlockHandle(const int& port, const double& handle, const bool& useMap) {
    if (!useMap) return mintUUID();
    std::string key = portKey(port, handle);
    if (const auto found = m_blockUUIDmap.find(key); found != m_blockUUIDmap.end()) return found->second;
    // Copied while it is entered, so that nothing can fail once the map has it.
    std::string uuid = mintUUID();
    m_blockUUIDmap.emplace(std::move(key), uuid);
    return uuid;
}

std::unique_ptr<SignalSpecification> SignalSpecification::createSigSpecFromPort(const std::u16string& blockPath,
                                                                                const std::string& eid, int portIdx,
                                                                                int logicalPortIdx, double blockHandle,
                                                                                const std::u16string& modelName,
                                                                                bool excludeForSave) {
    auto spec = std::make_unique<SignalSpecification>();
    spec->m_blockPath = blockPath;
    spec->m_eid = eid;
    spec->m_outputPortIndex = portIdx;
    spec->m_logicalPortIndex = logicalPortIdx;
    spec->m_cachedPortIdx = portIdx;
    spec->m_cachedBlockHandle = blockHandle;
    spec->stripModelName(modelName);
    // Kept: a fresh UUID stays out of the map; only those who ask for the map enter one.
    const auto known = m_blockUUIDmap.find(portKey(portIdx, blockHandle));
    spec->m_uuid = known != m_blockUUIDmap.end() ? known->second : mintUUID();
    spec->m_excludeForSave = excludeForSave;
    return spec;
}

SignalSpecification::BlockUUIDMap& SignalSpecification::getBlockUUIDmap() { return m_blockUUIDmap; }

}  // namespace ks_hmi
