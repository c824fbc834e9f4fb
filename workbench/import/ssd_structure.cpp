#include "workbench/import/ssd_structure.h"

#include <fmt/format.h>

#include <array>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "workbench/import/block_hierarchy.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using Label = std::pair<std::string_view, const char*>;

constexpr std::array<Label, 9> kKinds{{{"output", nullptr},
                                       {"local", "local connectors"},
                                       {"input", "inputs"},
                                       {"inout", "connectors of kind inout"},
                                       {"parameter", "parameters"},
                                       {"calculatedParameter", "calculated parameters"},
                                       {"structuralParameter", "structural parameters"},
                                       {"constant", "constants"},
                                       {"independent", "independent variables"}}};

// Elements whose children are dropped, one by one.
constexpr std::array<Label, 8> kSections{{{"ParameterBindings", "parameter bindings"},
                                          {"Connections", "connections"},
                                          {"SignalDictionaries", "signal dictionaries"},
                                          {"Annotations", "annotations"},
                                          {"GraphicalElements", "graphical elements"},
                                          {"Enumerations", "enumerations"},
                                          {"Units", "units"},
                                          {"MetaData", "metadata"}}};

// Elements that are dropped themselves.
constexpr std::array<Label, 6> kThings{{{"SignalDictionaryReference", "signal dictionary references"},
                                        {"ElementGeometry", "geometries"},
                                        {"SystemGeometry", "geometries"},
                                        {"DefaultExperiment", "default experiments"},
                                        {"SSDVariant", "variants"},
                                        {"Signature", "signatures"}}};

template <std::size_t kCount>
const Label* labelIn(const std::array<Label, kCount>& labels, std::string_view name) noexcept {
    for (const Label& label : labels)
        if (label.first == name) return &label;
    return nullptr;
}

class Reader {
public:
    Reader(const XmlFile& file, bool locals, Structure& structure)
        : m_file(file), m_hierarchy(file.name()), m_takesLocals(locals), m_structure(structure) {}

    void read() {
        const pugi::xml_node root = m_file.root();
        readVersion(root);
        m_structure.name = m_file.attribute(root, "name");
        const pugi::xml_node system = XmlFile::child(root, "System");
        if (!system) m_file.fail(root, "holds no System", "have it written again by the program that made it");
        element(system, BlockHierarchy::kTop, "");
        for (const pugi::xml_node node : root)
            if (node != system) drop(node);
    }

private:
    void readVersion(pugi::xml_node root) {
        m_structure.version = m_file.attribute(root, "version");
        const std::string_view version = m_structure.version;
        if (version.starts_with("1.") || version.starts_with("2.")) return;
        // Old programs wrote drafts of 1.0, small ones leave it out.
        if (!version.empty() && !version.starts_with("Draft"))
            m_file.fail(root, fmt::format("the version {} of this format is unknown", inQuotes(version)),
                        "save the structure in version 1.0 or 2.0");
        const std::string what =
            version.empty() ? "does not say its version" : fmt::format("is of the version {}", inQuotes(version));
        m_structure.warnings.add(what + "; read as 1.0", "", m_file.lineOf(root));
        if (version.empty()) m_structure.version = "1.0";
    }

    std::string nameOf(pugi::xml_node node) {
        std::string name = m_file.attribute(node, "name");
        if (!name.empty()) return name;
        m_structure.warnings.add("an element without a name; called \"unnamed\"", "", m_file.lineOf(node));
        return "unnamed";
    }

    void element(pugi::xml_node node, BlockHierarchy::Node parent, std::string source) {
        const BlockHierarchy::Node place = m_hierarchy.add(parent, nameOf(node));
        const std::size_t block = m_structure.blocks.size();
        m_structure.blocks.push_back(m_hierarchy.blockAt(place));
        m_structure.blocks.back().source = source;
        bool hasConnectors = false;
        for (const pugi::xml_node inner : node) {
            const std::string_view kind = localName(inner.name());
            hasConnectors = hasConnectors || kind == "Connectors";
            if (kind == "Connectors")
                connectors(inner, m_structure.blocks[block]);
            else if (kind == "Elements")
                elements(inner, place, source);
            else
                drop(inner);
        }
        if (!hasConnectors) noteSource(node);
    }

    // A description need not repeat what the unit behind a component has.
    void noteSource(pugi::xml_node node) {
        if (localName(node.name()) != "Component" || m_file.attribute(node, "source").empty()) return;
        m_structure.warnings.add("a component without connectors; its source is not looked at",
                                 m_file.attribute(node, "name"), m_file.lineOf(node));
    }

    void elements(pugi::xml_node list, BlockHierarchy::Node place, const std::string& source) {
        std::unordered_map<std::string, std::size_t> seen;
        for (const pugi::xml_node node : list) {
            const std::string_view kind = localName(node.name());
            if (kind != "Component" && kind != "System") {
                drop(node);
                continue;
            }
            const std::string name = m_file.attribute(node, "name");
            const std::size_t count = ++seen[name];
            std::string inner = source + pointerToken(name);
            if (count > 1) {
                inner += "~#" + std::to_string(count);
                m_structure.warnings.add("an element with the same name as one beside it", name, m_file.lineOf(node));
            }
            element(node, place, std::move(inner));
        }
    }

    void connectors(pugi::xml_node list, kestrel::Block& block) {
        std::unordered_set<std::string> seen;
        for (const pugi::xml_node node : list) {
            if (localName(node.name()) != "Connector") {
                drop(node);
                continue;
            }
            const std::string name = nameOf(node);
            if (const char* const label = labelOf(node, name))
                m_structure.dropped.add(label, fmt::format("{}:{}", toUtf8(block.path), name));
            else if (!seen.insert(name).second)
                m_structure.warnings.add("a connector with the same name as one beside it; left out", name,
                                         m_file.lineOf(node));
            else
                block.outputs.push_back(toUtf16(name));
        }
    }

    // What a connector is dropped as; null for one that becomes a port.
    const char* labelOf(pugi::xml_node node, const std::string& name) {
        const std::string kind = m_file.attribute(node, "kind");
        const Label* label = labelIn(kKinds, kind);
        if (!label) {
            m_structure.warnings.add(
                fmt::format("the kind {} of a connector is unknown; taken for local", inQuotes(kind)), name,
                m_file.lineOf(node));
            label = labelIn(kKinds, "local");
        }
        return m_takesLocals && label->first == "local" ? nullptr : label->second;
    }

    void drop(pugi::xml_node node) {
        if (node.type() != pugi::node_element) return;
        const std::string_view name = localName(node.name());
        if (const Label* const section = labelIn(kSections, name)) {
            for (const pugi::xml_node inner : node)
                if (inner.type() == pugi::node_element) m_structure.dropped.add(section->second, shown(inner));
        } else if (const Label* const thing = labelIn(kThings, name)) {
            m_structure.dropped.add(thing->second, m_file.attribute(node, "name"));
        } else {
            m_structure.dropped.add("elements that are not known here", std::string(name));
        }
    }

    std::string shown(pugi::xml_node node) const {
        if (localName(node.name()) != "Connection") return m_file.attribute(node, "name");
        const auto end = [&](const char* element, const char* connector) {
            const std::string owner = m_file.attribute(node, element);
            return (owner.empty() ? "" : owner + ":") + m_file.attribute(node, connector);
        };
        return fmt::format("{} -> {}", end("startElement", "startConnector"), end("endElement", "endConnector"));
    }

    const XmlFile& m_file;
    BlockHierarchy m_hierarchy;
    bool m_takesLocals;
    Structure& m_structure;
};

}  // namespace

void readSsdStructure(const XmlFile& file, bool locals, Structure& structure) {
    Reader(file, locals, structure).read();
}

}  // namespace workbench
