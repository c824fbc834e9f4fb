#include "workbench/import/fmi_structure.h"

#include <string_view>
#include <unordered_map>

#include "workbench/import/block_hierarchy.h"
#include "workbench/import/fmi_description.h"
#include "workbench/import/variable_name.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Names of more parts stay whole.
constexpr std::size_t kMostParts = 200;

class Grouping {
public:
    Grouping(const XmlFile& file, Structure& structure) : m_hierarchy(file.name()), m_structure(structure) {
        // The first one gets the plain name.
        m_unit = m_hierarchy.add(BlockHierarchy::kTop, structure.name.empty() ? "unit" : structure.name);
    }

    void add(std::string_view name) {
        VariableName split = splitVariableName(name);
        if (groupParts(split.group).size() > kMostParts) split = {{}, name};
        blockOf(split.group).outputs.push_back(toUtf16(split.leaf));
    }

private:
    kestrel::Block& blockOf(std::string_view group) {
        const auto [place, isNew] = m_blocks.try_emplace(std::string(group), m_structure.blocks.size());
        if (isNew) {
            m_structure.blocks.push_back(m_hierarchy.blockAt(nodeOf(group)));
            m_structure.blocks.back().source = group;
        }
        return m_structure.blocks[place->second];
    }

    BlockHierarchy::Node nodeOf(std::string_view group) {
        if (group.empty()) return m_unit;
        BlockHierarchy::Node node = BlockHierarchy::kTop;
        for (const std::string_view part : groupParts(group)) node = m_hierarchy.at(node, part);
        return node;
    }

    BlockHierarchy m_hierarchy;
    Structure& m_structure;
    BlockHierarchy::Node m_unit = BlockHierarchy::kTop;
    std::unordered_map<std::string, std::size_t> m_blocks;
};

}  // namespace

void readFmiStructure(const XmlFile& file, bool locals, Structure& structure) {
    const FmiDescription description = readFmiDescription(file, structure.warnings, structure.dropped);
    structure.version = description.version;
    structure.name = description.name;
    Grouping grouping(file, structure);
    for (const FmiVariable& variable : description.variables) {
        const bool isOutput = variable.causality == FmiCausality::output && !variable.isAlias;
        const bool isLocal = variable.causality == FmiCausality::output || variable.causality == FmiCausality::local;
        if (isOutput || (locals && isLocal))
            grouping.add(variable.name);
        else
            structure.dropped.add(variable.isAlias ? "aliases" : pluralOf(variable.causality), variable.name,
                                  variable.line);
    }
}

}  // namespace workbench
