#include "workbench/import/block_identity.h"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "workbench/text/text.h"

namespace workbench {

namespace {

// FNV-1a: the identifier of a block must be the same in every release.
std::uint64_t hashOf(std::string_view text) noexcept {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3U;
    }
    return hash;
}

class Identities {
public:
    explicit Identities(const KnownBlocks& known) {
        if (known.model)
            for (const kestrel::Block& block : known.model->blocks()) {
                if (!block.source) m_byPath.emplace(block.path, block.eid);
                note({block.source.value_or(toUtf8(block.path)), block.eid}, block.source.has_value());
            }
        if (known.gone)
            for (const GoneBlock& block : *known.gone) note(block, true);
    }

    void assign(std::vector<kestrel::Block>& blocks) {
        for (kestrel::Block& block : blocks)
            if (const std::string* const eid = knownFor(block); eid && m_used.insert(*eid).second) block.eid = *eid;
        for (kestrel::Block& block : blocks)
            if (block.eid.empty()) block.eid = newFor(*block.source);
    }

    std::vector<GoneBlock> gone() {
        std::erase_if(m_known, [&](const GoneBlock& block) { return m_used.contains(block.eid); });
        return std::move(m_known);
    }

private:
    void note(const GoneBlock& block, bool hasSource) {
        m_known.push_back(block);
        m_taken.insert(block.eid);
        if (hasSource) m_bySource.emplace(block.source, block.eid);
    }

    const std::string* knownFor(const kestrel::Block& block) const {
        if (const auto found = m_bySource.find(*block.source); found != m_bySource.end()) return &found->second;
        const auto found = m_byPath.find(block.path);
        return found == m_byPath.end() ? nullptr : &found->second;
    }

    std::string newFor(const std::string& source) {
        std::string eid = fmt::format("{:016x}", hashOf(source));
        for (std::size_t i = 2; !m_taken.insert(eid).second; ++i)
            eid = fmt::format("{:016x}", hashOf(fmt::format("{}\n{}", source, i)));
        return eid;
    }

    std::vector<GoneBlock> m_known;
    std::unordered_set<std::string> m_taken;
    std::unordered_set<std::string> m_used;  // of the known ones
    std::unordered_map<std::string, std::string> m_bySource;
    std::unordered_map<std::u16string, std::string> m_byPath;
};

}  // namespace

std::vector<GoneBlock> assignIdentifiers(std::vector<kestrel::Block>& blocks, const KnownBlocks& known) {
    Identities identities(known);
    identities.assign(blocks);
    return identities.gone();
}

}  // namespace workbench
