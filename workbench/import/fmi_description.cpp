#include "workbench/import/fmi_description.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "workbench/text/text.h"

namespace workbench {

namespace {

struct Word {
    std::string_view text;
    FmiCausality causality;
};
constexpr std::array<Word, 9> kCausalities{{{"input", FmiCausality::input},
                                            {"output", FmiCausality::output},
                                            {"local", FmiCausality::local},
                                            {"internal", FmiCausality::local},
                                            {"none", FmiCausality::local},
                                            {"parameter", FmiCausality::parameter},
                                            {"calculatedParameter", FmiCausality::calculatedParameter},
                                            {"structuralParameter", FmiCausality::structuralParameter},
                                            {"independent", FmiCausality::independent}}};

// What holds nothing that becomes a block, and what its elements are called.
constexpr std::array<std::pair<std::string_view, const char*>, 6> kSections{
    {{"UnitDefinitions", "units"},
     {"TypeDefinitions", "type definitions"},
     {"LogCategories", "log categories"},
     {"VendorAnnotations", "annotations"},
     {"Annotations", "annotations"},
     {"ModelStructure", "entries of the model structure"}}};

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, number);
    if (code != std::errc() || stop != end || !std::isfinite(static_cast<double>(number))) return std::nullopt;
    return number;
}

class Reader {
public:
    Reader(const XmlFile& file, ImportNotes& warnings, ImportNotes& dropped)
        : m_file(file), m_warnings(warnings), m_dropped(dropped) {}

    FmiDescription read() {
        const pugi::xml_node root = m_file.root();
        readHead(root);
        readWaysToRun(root);
        readTypes(root);
        const pugi::xml_node variables = XmlFile::child(root, "ModelVariables");
        if (!variables)
            m_file.fail(root, "has no list of variables (ModelVariables)", "have it written again by its exporter");
        const auto count = static_cast<std::size_t>(std::distance(variables.begin(), variables.end()));
        m_result.variables.reserve(count);
        m_names.reserve(count);
        for (const pugi::xml_node node : variables)
            if (node.type() == pugi::node_element) readVariable(node);
        for (const auto& [section, label] : kSections)
            for (const pugi::xml_node node : XmlFile::child(root, section))
                if (node.type() == pugi::node_element) m_dropped.add(label, m_file.attribute(node, "name"));
        return std::move(m_result);
    }

private:
    void readHead(pugi::xml_node root) {
        m_result.version = m_file.attribute(root, "fmiVersion");
        const std::string_view version = m_result.version;
        if (version.starts_with("1.")) m_result.major = 1;
        if (version.starts_with("2.")) m_result.major = 2;
        if (version.starts_with("3.")) m_result.major = 3;
        if (m_result.major == 0)
            m_file.fail(root, fmt::format("the version {} of FMI is unknown", inQuotes(version)),
                        "export the unit as version 1.0, 2.0 or 3.0");
        m_result.name = m_file.attribute(root, "modelName");
        m_result.token = m_file.attribute(root, m_result.major == 3 ? "instantiationToken" : "guid");
    }

    void readWaysToRun(pugi::xml_node root) {
        const auto identifierIn = [&](const char* name) -> std::optional<std::string> {
            const pugi::xml_node node = XmlFile::child(root, name);
            if (!node) return std::nullopt;
            return m_file.attribute(node, "modelIdentifier");
        };
        m_result.modelExchange = identifierIn("ModelExchange");
        m_result.coSimulation = identifierIn("CoSimulation");
        m_result.scheduledExecution = identifierIn("ScheduledExecution");
        if (m_result.major == 1)
            (XmlFile::child(root, "Implementation") ? m_result.coSimulation : m_result.modelExchange) =
                m_file.attribute(root, "modelIdentifier");
        readAbilities(XmlFile::child(root, "CoSimulation"));
        const pugi::xml_node experiment = XmlFile::child(root, "DefaultExperiment");
        const auto number = [&](const char* name) { return numberOf<double>(m_file.attribute(experiment, name)); };
        m_result.experiment = {number("startTime"), number("stopTime"), number("stepSize"), number("tolerance")};
    }

    bool isTrue(pugi::xml_node node, const char* name) const {
        const std::string text = m_file.attribute(node, name);
        return text == "true" || text == "1";
    }

    void readAbilities(pugi::xml_node node) {
        m_result.abilities = {isTrue(node, "canHandleVariableCommunicationStepSize"),
                              isTrue(node, m_result.major == 3 ? "canGetAndSetFMUState" : "canGetAndSetFMUstate"),
                              isTrue(node, "hasEventMode"), isTrue(node, "needsExecutionTool"),
                              numberOf<double>(m_file.attribute(node, "fixedInternalStepSize"))};
    }

    struct Type {
        std::string unit;
        std::shared_ptr<const FmiItems> items;
    };

    // A type's definition has its unit and its items itself, or, before version 3.0, in the element inside it.
    void readTypes(pugi::xml_node root) {
        for (const pugi::xml_node node : XmlFile::child(root, "TypeDefinitions")) {
            Type type{m_file.attribute(node, "unit"), itemsOf(node)};
            if (type.unit.empty()) type.unit = m_file.attribute(XmlFile::child(node, "Real"), "unit");
            if (!type.items) type.items = itemsOf(XmlFile::child(node, "Enumeration"));
            m_types.emplace(m_file.attribute(node, "name"), std::move(type));
        }
    }

    std::shared_ptr<const FmiItems> itemsOf(pugi::xml_node node) const {
        FmiItems items;
        for (const pugi::xml_node item : node) {
            if (localName(item.name()) != "Item") continue;
            const auto value = numberOf<std::int64_t>(m_file.attribute(item, "value"));
            std::string name = m_file.attribute(item, "name");
            if (value && !name.empty()) items.push_back({std::move(name), *value});
        }
        return items.empty() ? nullptr : std::make_shared<const FmiItems>(std::move(items));
    }

    void readType(pugi::xml_node node, FmiVariable& variable) const {
        variable.unit = m_file.attribute(node, "unit");
        const auto type = m_types.find(m_file.attribute(node, "declaredType"));
        if (type == m_types.end()) return;
        if (variable.unit.empty()) variable.unit = type->second.unit;
        if (variable.type == "Enumeration") variable.items = type->second.items;
    }

    void readVariable(pugi::xml_node node) {
        FmiVariable variable;
        variable.line = m_file.lineOf(node);
        variable.name = m_file.attribute(node, "name");
        variable.variability = m_file.attribute(node, "variability");
        variable.valueReference = numberOf<std::uint32_t>(m_file.attribute(node, "valueReference"));
        const bool isScalarElement = localName(node.name()) == "ScalarVariable";
        variable.type = localName(isScalarElement ? typeElement(node).name() : node.name());
        variable.causality = causalityOf(node, variable);
        readType(isScalarElement ? typeElement(node) : node, variable);
        if (variable.causality == FmiCausality::structuralParameter)
            variable.size = numberOf<std::uint64_t>(m_file.attribute(node, "start"));
        for (const pugi::xml_node inner : node)
            if (localName(inner.name()) == "Dimension") variable.dimensions.push_back(dimensionOf(inner));
        add(variable);
        for (const pugi::xml_node inner : node) {
            if (localName(inner.name()) != "Alias") continue;
            variable.name = m_file.attribute(inner, "name");
            variable.line = m_file.lineOf(inner);
            variable.isAlias = true;
            add(variable);
        }
    }

    static pugi::xml_node typeElement(pugi::xml_node node) {
        static constexpr std::array<std::string_view, 5> kTypes{"Real", "Integer", "Boolean", "String", "Enumeration"};
        return node.find_child([](pugi::xml_node one) {
            return std::find(kTypes.begin(), kTypes.end(), localName(one.name())) != kTypes.end();
        });
    }

    FmiDimension dimensionOf(pugi::xml_node node) const {
        return {numberOf<std::uint64_t>(m_file.attribute(node, "start")).value_or(0),
                numberOf<std::uint32_t>(m_file.attribute(node, "valueReference"))};
    }

    FmiCausality causalityOf(pugi::xml_node node, const FmiVariable& variable) {
        const std::string text = m_file.attribute(node, "causality");
        // Version 1.0 knows parameters and constants by how they vary.
        const bool isFixed = variable.variability == "parameter" || variable.variability == "constant";
        if (m_result.major == 1 && isFixed && (text.empty() || text == "internal")) return FmiCausality::parameter;
        if (text.empty()) return FmiCausality::local;
        for (const Word& word : kCausalities)
            if (word.text == text) return word.causality;
        m_warnings.add(fmt::format("the causality {} is unknown; taken for local", inQuotes(text)), variable.name,
                       variable.line);
        return FmiCausality::local;
    }

    void add(const FmiVariable& variable) {
        if (variable.name.empty())
            m_warnings.add("a variable without a name; left out", "", variable.line);
        else if (!m_names.insert(variable.name).second)
            m_warnings.add("a variable with the same name as another; left out", variable.name, variable.line);
        else
            m_result.variables.push_back(variable);
    }

    const XmlFile& m_file;
    ImportNotes& m_warnings;
    ImportNotes& m_dropped;
    FmiDescription m_result;
    std::unordered_set<std::string> m_names;
    std::unordered_map<std::string, Type> m_types;
};

}  // namespace

const char* pluralOf(FmiCausality causality) noexcept {
    switch (causality) {
        case FmiCausality::input:
            return "inputs";
        case FmiCausality::output:
            return "outputs";
        case FmiCausality::local:
            return "local variables";
        case FmiCausality::parameter:
            return "parameters";
        case FmiCausality::calculatedParameter:
            return "calculated parameters";
        case FmiCausality::structuralParameter:
            return "structural parameters";
        case FmiCausality::independent:
            break;
    }
    return "independent variables";
}

FmiDescription readFmiDescription(const XmlFile& file, ImportNotes& warnings, ImportNotes& dropped) {
    return Reader(file, warnings, dropped).read();
}

}  // namespace workbench
