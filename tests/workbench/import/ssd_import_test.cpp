#include "tests/workbench/import/import_test.h"

namespace workbench {
namespace {

using namespace testing;

std::string ssd(const std::string& inside, const std::string& version = "1.0") {
    return "<ssd:SystemStructureDescription name=\"Car\" version=\"" + version + "\">\n" + inside +
           "</ssd:SystemStructureDescription>";
}

// Prefixes are not declared, as in files that people have.
const std::string kCar = ssd(R"(<ssd:System name="Root">
<ssd:Elements>
<ssd:Component name="Motor" source="m.fmu"><ssd:Connectors>
<ssd:Connector name="torque" kind="output"><ssc:Real/></ssd:Connector>
<ssd:Connector name="pedal" kind="input"/>
<ssd:Connector name="speed" kind="output"/>
<ssd:Connector name="axle" kind="inout"/>
<ssd:Connector name="odd" kind="sideways"/>
<ssd:Connector name="speed" kind="output"/>
</ssd:Connectors><ssd:ParameterBindings><ssd:ParameterBinding source="p.ssv"/></ssd:ParameterBindings></ssd:Component>
<ssd:System name="Chassis/Rear">
<ssd:Annotations><ssc:Annotation type="x"><ssd:Component name="no block"/></ssc:Annotation></ssd:Annotations>
<ssd:Elements><ssd:Component name="Wheel"><ssd:Connectors><ssd:Connector name="rpm.1" kind="output"/></ssd:Connectors>
</ssd:Component><ssd:System name="Empty"/></ssd:Elements></ssd:System>
<ssd:SignalDictionaryReference name="bus" dictionary="d"/>
</ssd:Elements>
<ssd:Connectors><ssd:Connector name="v" kind="output"/></ssd:Connectors>
<ssd:Connections><ssd:Connection startElement="Motor" startConnector="speed" endConnector="v"/></ssd:Connections>
<ssd:SignalDictionaries><ssd:SignalDictionary name="d"/></ssd:SignalDictionaries>
</ssd:System>
<ssd:Units><ssc:Unit name="rad/s"/></ssd:Units><acme:Extra/>
)");

TEST(SsdImport, makesBlocksOfSystemsAndComponents) {
    const ImportedModel model = imported(kCar);
    EXPECT_EQ(toUtf8(model.model.name()), "Car");
    EXPECT_EQ(blocksOf(model),
              "Root: v\nRoot/Motor: torque, speed\nRoot/Chassis_Rear\nRoot/Chassis_Rear/Wheel: rpm.1\n"
              "Root/Chassis_Rear/Empty\n");
    EXPECT_EQ(model.portCount, 4U);
    EXPECT_EQ(*model.model.blocks().at(3).source, "/Chassis~1Rear/Wheel");
    EXPECT_EQ(model.origin.kind, "ssd");
    EXPECT_EQ(model.origin.version, "1.0");
}

TEST(SsdImport, countsAndNamesWhatItDrops) {
    const ImportedModel model = imported(kCar);
    EXPECT_EQ(textOf(model.dropped),
              "inputs: Root/Motor:pedal\n"
              "connectors of kind inout: Root/Motor:axle\n"
              "local connectors: Root/Motor:odd\n"
              "parameter bindings: \n"
              "annotations: \n"
              "signal dictionary references: bus\n"
              "connections: Motor:speed -> v\n"
              "signal dictionaries: d\n"
              "units: rad/s\n"
              "elements that are not known here: Extra\n");
    EXPECT_EQ(textOf(model.warnings),
              "9 the kind \"sideways\" of a connector is unknown; taken for local: odd\n"
              "10 a connector with the same name as one beside it; left out: speed\n");
    EXPECT_EQ(blocksOf(imported(kCar, {.locals = true})).substr(0, 40), "Root: v\nRoot/Motor: torque, speed, odd\nR");
}

TEST(SsdImport, tellsElementsOfOneNameApart) {
    const ImportedModel model = imported(ssd(R"x(<System name="R"><Elements>
<Component name="a" source="x.fmu"/><Component name="a"/><Component name="a (2)"/><Component/><Component name="a~b"/>
</Elements></System>)x",
                                             "2.0"));
    EXPECT_EQ(blocksOf(model), "R\nR/a\nR/a (2)\nR/a (2) (2)\nR/unnamed\nR/a~b\n");
    std::string sources;
    for (const kestrel::Block& block : model.model.blocks()) sources += *block.source + ' ';
    EXPECT_EQ(sources, " /a /a~#2 /a (2) / /a~0b ");
    EXPECT_EQ(textOf(model.warnings),
              "3 a component without connectors; its source is not looked at: a\n"
              "3 an element with the same name as one beside it: a\n"
              "3 an element without a name; called \"unnamed\": \n"
              "has no outputs, so there is nothing to mark: \n");
}

TEST(SsdImport, readsDraftsAndWhatDoesNotSayItsVersion) {
    const std::string system = "<System name='a'><Connectors><Connector name='y' kind='output'/></Connectors></System>";
    const std::pair<std::string, std::string> cases[] = {
        {"", "does not say its version; read as 1.0"},
        {"Draft20180219", "is of the version \"Draft20180219\"; read as 1.0"}};
    for (const auto& [version, said] : cases) {
        const ImportedModel model = imported(ssd(system, version));
        EXPECT_EQ(blocksOf(model), "a: y\n");
        EXPECT_EQ(textOf(model.warnings), "1 " + said + ": \n");
    }
}

TEST(SsdImport, refusesWhatIsNoSuchDescription) {
    EXPECT_EQ(refusalOfXml(ssd("<System name='a'/>", "3.0")),
              "some.xml:1: the version \"3.0\" of this format is unknown; save the structure in version 1.0 or 2.0");
    EXPECT_EQ(refusalOfXml(ssd("<Units/>")),
              "some.xml:1: holds no System; have it written again by the program that made it");
}

}  // namespace
}  // namespace workbench
