#include <fmt/format.h>

#include "tests/workbench/import/import_test.h"
#include "workbench/import/fmi_description.h"
#include "workbench/import/variable_name.h"

namespace workbench {
namespace {

using namespace testing;

TEST(VariableName, splitsAtTheLastDotThatSeparatesNames) {
    const std::vector<std::array<std::string, 3>> cases{
        {"speed", "", "speed"},
        {"a.b.speed", "a.b", "speed"},
        {"a[1.2].m[3,4]", "a[1.2]", "m[3,4]"},
        {"der(a.b.x)", "", "der(a.b.x)"},
        {"a.der(b.x)", "a", "der(b.x)"},
        {"a.'b.c'.x", "a.'b.c'", "x"},
        {"'it\\'s.one'", "", "'it\\'s.one'"},
        {"'open.x", "'open", "x"},  // no quoted name: its quote does not end
        {"motor's.speed", "motor's", "speed"},
        {"a(.x", "a(", "x"},  // no bracket either
        {"f(')').x", "f(')')", "x"},
        {"a..b", "", "a..b"},
        {".a", "", ".a"},
        {"a.", "", "a."},
        {"Temp in degC. max", "Temp in degC", " max"}};
    for (const auto& [name, group, leaf] : cases) {
        const VariableName split = splitVariableName(name);
        EXPECT_EQ(split.group, group) << name;
        EXPECT_EQ(split.leaf, leaf) << name;
        EXPECT_EQ(joinVariableName(split.group, split.leaf), name);
    }
    EXPECT_EQ(groupParts("a[1.2].'b.c'.d"), (std::vector<std::string_view>{"a[1.2]", "'b.c'", "d"}));
}

TEST(FmiImport, makesPortsOfTheOutputsOfEachVersion) {
    const ImportedModel first = imported(R"(<fmiModelDescription fmiVersion="1.0" modelName="Pump" modelIdentifier="p">
<ModelVariables>
<ScalarVariable name="flow" valueReference="0" causality="output"><Real/></ScalarVariable>
<ScalarVariable name="mass" valueReference="1" causality="internal"><Real/></ScalarVariable>
<ScalarVariable name="plot" valueReference="1" causality="none"><Real/></ScalarVariable>
<ScalarVariable name="size" valueReference="2" variability="parameter"><Real/></ScalarVariable>
<ScalarVariable name="rest" valueReference="3"><Real/></ScalarVariable>
</ModelVariables><Implementation/></fmiModelDescription>)");
    EXPECT_EQ(blocksOf(first), "Pump: flow\n");
    EXPECT_EQ(textOf(first.dropped), "4 local variables: mass, plot, rest\n6 parameters: size\n");
    EXPECT_EQ(textOf(first.warnings), "");

    const std::string third = R"(<fmiModelDescription fmiVersion="3.0" modelName="Pump" instantiationToken="t">
<CoSimulation modelIdentifier="pump"/><ModelVariables>
<Float64 name="hydraulics.flow" valueReference="0" causality="output"><Dimension start="3"/>
  <Alias name="flow"/></Float64>
<Clock name="tick" valueReference="1" causality="output" intervalVariability="constant"/>
<Binary name="frame" valueReference="2" causality="output"/>
<UInt64 name="n" valueReference="3" causality="structuralParameter" variability="tunable" start="3"/>
<Int8 name="level" valueReference="4"/>
</ModelVariables><ModelStructure><Output valueReference="0"/></ModelStructure></fmiModelDescription>)";
    EXPECT_EQ(blocksOf(imported(third)), "hydraulics: flow\nPump: tick, frame\n");
    EXPECT_EQ(textOf(imported(third).dropped),
              "entries of the model structure: \n4 aliases: flow\n"
              "7 structural parameters: n\n8 local variables: level\n");
    EXPECT_EQ(blocksOf(imported(third, {.locals = true})), "hydraulics: flow\nPump: flow, tick, frame, level\n");
}

TEST(FmiImport, takesWhatTheRealWorldNames) {
    const ImportedModel model = imported(outputs({"Motor 1.Speed km/h", "Motor 1.a:b", "m[1,2].x", "der(m.x)", "x",
                                                  "Speed km/h.v", "Speed km_h.v", "'a.b'.v", "x", ""}));
    EXPECT_EQ(blocksOf(model),
              "Motor 1: Speed km/h, a:b\nm[1,2]: x\nEngine: der(m.x), x\nSpeed km_h: v\nSpeed km_h (2): v\n'a.b': v\n");
    EXPECT_EQ(textOf(model.warnings),
              "11 a variable with the same name as another; left out: x\n"
              "12 a variable without a name; left out: \n");
    std::vector<std::string> names;
    for (const kestrel::Block& block : model.model.blocks())
        for (const std::u16string& port : block.outputs) names.push_back(joinVariableName(*block.source, toUtf8(port)));
    EXPECT_EQ(names, (std::vector<std::string>{"Motor 1.Speed km/h", "Motor 1.a:b", "m[1,2].x", "der(m.x)", "x",
                                               "Speed km/h.v", "Speed km_h.v", "'a.b'.v"}));
}

TEST(FmiImport, saysWhereTheVariablesAreWhenThereIsNoOutput) {
    const auto warningsOf = [](const char* names) {
        std::string variables;
        for (const char* name = names; *name != '\0'; ++name)
            variables += fmt::format("<ScalarVariable name='{}'><Real/></ScalarVariable>", *name);
        return textOf(imported(fmi2(variables)).warnings);
    };
    EXPECT_EQ(warningsOf("ab"), "has no outputs; it can be imported with its 2 local variables as ports: \n");
    EXPECT_EQ(warningsOf("a"), "has no outputs; it can be imported with its 1 local variable as ports: \n");
    EXPECT_EQ(warningsOf(""), "has no outputs, so there is nothing to mark: \n");
}

TEST(FmiImport, takesAnUnknownCausalityForLocal) {
    const std::string xml = fmi2(R"(<ScalarVariable name="a" causality="sideways"><Real/></ScalarVariable>
<ScalarVariable name="b" causality="sideways"><Real/></ScalarVariable>
)");
    const ImportedModel model = imported(xml, {.locals = true});
    EXPECT_EQ(blocksOf(model), "Engine: a, b\n");
    EXPECT_EQ(textOf(model.warnings), "3 the causality \"sideways\" is unknown; taken for local: a, b\n");
    EXPECT_EQ(textOf(imported(xml).dropped), "3 local variables: a, b\n");
}

TEST(FmiImport, isNamedAsTheModelIs) {
    const auto nameOf = [](const std::string& head, const ImportOptions& options = {}) {
        return toUtf8(imported(fmi2("", head), options).model.name());
    };
    EXPECT_EQ(nameOf(R"(modelName="A.B: c/d")"), "A.B_ c_d");
    EXPECT_EQ(nameOf(""), "some");
    EXPECT_EQ(nameOf(R"(modelName="A")", {.name = "mine"}), "mine");
    EXPECT_EQ(
        refusalOf([&] { nameOf("", {.name = "a/b"}); }),
        "some.xml: The model name \"a/b\" contains '/' or ':', which separate names; give the model another name");
    EXPECT_EQ(imported(fmi2("")).model.blocks().size(), 0U);
}

TEST(FmiImport, readsWhatRunningAUnitNeeds) {
    ImportNotes notes;
    const XmlFile file("d.xml", R"(<fmiModelDescription fmiVersion="3.0" instantiationToken="{t}" modelName="m">
<ModelExchange modelIdentifier="me"/><CoSimulation modelIdentifier="cs"/>
<DefaultExperiment startTime="0.5" stopTime="1e1" stepSize="soon"/>
<ModelVariables><Float32 name="v" valueReference="4294967295" causality="output"><Dimension start="2"/>
<Dimension valueReference="9"/></Float32></ModelVariables></fmiModelDescription>)",
                       notes);
    const FmiDescription unit = readFmiDescription(file, notes, notes);
    EXPECT_EQ(unit.token, "{t}");
    EXPECT_EQ(unit.modelExchange, "me");
    EXPECT_EQ(unit.coSimulation, "cs");
    EXPECT_EQ(unit.scheduledExecution, std::nullopt);
    EXPECT_EQ(unit.experiment.start, 0.5);
    EXPECT_EQ(unit.experiment.stop, 10.0);
    EXPECT_EQ(unit.experiment.step, std::nullopt);
    const FmiVariable& variable = unit.variables.at(0);
    EXPECT_EQ(variable.type, "Float32");
    EXPECT_EQ(variable.valueReference, 4294967295U);
    ASSERT_EQ(variable.dimensions.size(), 2U);
    EXPECT_EQ(variable.dimensions[0].size, 2U);
    EXPECT_EQ(variable.dimensions[1].valueReference, 9U);
}

TEST(FmiImport, refusesWhatIsNoSuchDescription) {
    EXPECT_EQ(refusalOfXml("<a/>"),
              "some.xml:1: is not a model that can be imported: its outermost element is \"a\"; "
              "import a SystemStructureDescription or an fmiModelDescription");
    EXPECT_EQ(refusalOfXml("\n<fmiModelDescription fmiVersion='4.0'/>"),
              "some.xml:2: the version \"4.0\" of FMI is unknown; export the unit as version 1.0, 2.0 or 3.0");
    EXPECT_EQ(refusalOfXml("<fmiModelDescription fmiVersion='2.0'/>"),
              "some.xml:1: has no list of variables (ModelVariables); have it written again by its exporter");
}

}  // namespace
}  // namespace workbench
