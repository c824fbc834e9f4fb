#pragma once

#include <filesystem>
#include <sstream>

#include "tests/kshmi/kshmi_test.h"
#include "tests/workbench/import/import_test.h"

namespace kshmi::testing {

/// The description of probe2, with what is put into its head and behind its variables.
inline std::string probe2(const std::string& head = R"(canHandleVariableCommunicationStepSize="true")",
                          const std::string& more = "") {
    return R"(<fmiModelDescription fmiVersion="2.0" modelName="probe" guid="probe">
<CoSimulation modelIdentifier="probe2" )" +
           head + R"(/>
<TypeDefinitions><SimpleType name="Angle"><Real unit="rad"/></SimpleType>
<SimpleType name="Mode"><Enumeration><Item name="off" value="1"/><Item name="eco, low" value="2"/></Enumeration></SimpleType>
</TypeDefinitions>
<DefaultExperiment stopTime="2" stepSize="0.5"/>
<ModelVariables>
<ScalarVariable name="wave.sine" valueReference="0" causality="output"><Real declaredType="Angle"/></ScalarVariable>
<ScalarVariable name="wave.fed" valueReference="1" causality="output"><Real/></ScalarVariable>
<ScalarVariable name="wave.reads" valueReference="3" causality="output"><Integer/></ScalarVariable>
<ScalarVariable name="state.count" valueReference="0" causality="output"><Integer/></ScalarVariable>
<ScalarVariable name="state.mode" valueReference="1" causality="output"><Enumeration declaredType="Mode"/></ScalarVariable>
<ScalarVariable name="state.even" valueReference="0" causality="output"><Boolean/></ScalarVariable>
<ScalarVariable name="state.text" valueReference="0" causality="output"><String/></ScalarVariable>
<ScalarVariable name="gain" valueReference="10" causality="parameter" variability="tunable"><Real start="1"/></ScalarVariable>
<ScalarVariable name="u" valueReference="11" causality="input"><Real start="0"/></ScalarVariable>
<ScalarVariable name="held" valueReference="12" causality="input" variability="discrete"><Real start="0"/></ScalarVariable>
<ScalarVariable name="wish" valueReference="4" causality="input"><Enumeration declaredType="Mode" start="1"/></ScalarVariable>
<ScalarVariable name="state.wished" valueReference="4" causality="output"><Enumeration declaredType="Mode"/></ScalarVariable>
<ScalarVariable name="behaviour" valueReference="2" causality="parameter"><Integer start="0"/></ScalarVariable>
)" + more + "</ModelVariables></fmiModelDescription>";
}

/// What misbehaves of probe3.
enum Behaviour3 { kEarly = 1, kEvent, kFinish3, kStandStill3, kDiscard3, kDie3 };

/// Units that misbehave at t = 1, as tests/units/probe2.c numbers them.
enum Behaviour {
    kCrash = 1,
    kHang,
    kFail,
    kDiscard,
    kFinish,
    kLeave,
    kSpam,
    kAbortAtEnd,
    kChatter,
    kHangAtEnd,
    kFailAtStart,
    kCloseFiles,
    kLeaveProcesses,
    kStandStill,
    kComplain,
    kLoseTrack,
    kDie,
    kWarn,
    kThread,
    kTalk,
    kWriteOver = 1000  ///< and above, each in another way
};

class RecordTest : public KshmiTest {
protected:
    RecordTest() {
        m_temporary = path("tmp");
        std::filesystem::create_directory(m_temporary);
        ::setenv("TMPDIR", m_temporary.c_str(), 1);
    }
    ~RecordTest() override {
        ::unsetenv("TMPDIR");
        EXPECT_TRUE(std::filesystem::is_empty(m_temporary)) << "a unit's folder is left behind";
    }

    static std::string bytesOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// Packs a unit and imports it as model.json.
    void import(const std::string& description, const std::string& binary = "binaries/linux64/probe2.so") const {
        pack(description, binary);
        const Finished finished = run({"import", path("unit.fmu"), "-o", path(), "--quiet"});
        ASSERT_EQ(finished.code, 0) << finished.err;
    }
    void pack(const std::string& description, const std::string& binary = "binaries/linux64/probe2.so") const {
        const std::string file = binary.substr(binary.rfind('/') + 1);
        write(workbench::testing::zipOf(
                  {{"modelDescription.xml", description}, {binary, bytesOf(std::string(KSHMI_PROBES) + "/" + file)}}),
              "unit.fmu");
    }
    /// The same of FMI 3.0.
    void import3(const std::string& variables, const std::string& head = "") const {
        import(
            R"(<fmiModelDescription fmiVersion="3.0" modelName="probe" instantiationToken="probe">
<CoSimulation modelIdentifier="probe3" canHandleVariableCommunicationStepSize="true" )" +
                head +
                R"(/><TypeDefinitions><EnumerationType name="Level"><Item name="low" value="-9223372036854775808"/></EnumerationType>
</TypeDefinitions><DefaultExperiment stopTime="2" stepSize="0.5"/><ModelVariables>)" +
                variables +
                R"(<Int64 name="behaviour" valueReference="50" causality="parameter" start="0"/>
<UInt64 name="n" valueReference="40" causality="structuralParameter" start="3"/></ModelVariables></fmiModelDescription>)",
            "binaries/x86_64-linux/probe3.so");
    }
    void mark(const std::string& line) const { ASSERT_EQ(runOn("mark " + line).code, 0) << runOn("mark " + line).err; }
    /// What is recorded, on standard output.
    std::string recorded(const std::string& options = "") const {
        const Finished finished = runOn("record --quiet " + options);
        EXPECT_EQ(finished.err, "");
        EXPECT_EQ(finished.code, 0);
        return finished.out;
    }
    /// What the unit was called with meanwhile, a line for each call.
    std::string calls(const std::string& options, int code = kSuccess) const {
        ::setenv("KS_PROBE_CALLS", path("calls").c_str(), 1);
        const Finished finished = runOn("record --quiet --replace -o " + path("run.csv") + " " + options);
        ::unsetenv("KS_PROBE_CALLS");
        EXPECT_EQ(finished.code, code) << finished.err;
        std::string told = read("calls");
        std::filesystem::remove(path("calls"));
        return told;
    }
    /// The columns' cells, a line for each row, blanks between.
    static std::string plain(std::string csv) {
        csv.erase(std::remove(csv.begin(), csv.end(), '\r'), csv.end());
        std::replace(csv.begin(), csv.end(), ',', ' ');
        return csv;
    }
    static std::string setTo(int behaviour) { return "--set behaviour=" + std::to_string(behaviour) + " "; }

private:
    std::string m_temporary;
};

}  // namespace kshmi::testing
