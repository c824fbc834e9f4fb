#include <cstdint>
#include <limits>

#include "tests/workbench/record/record_test.h"
#include "workbench/record/recorded_run.h"
#include "workbench/unit/array_element.h"

namespace kshmi {
namespace {

using namespace testing;

const std::string kTypes = R"(
<Float32 name="f" valueReference="0" causality="output"/><Int8 name="i8" valueReference="1" causality="output"/>
<UInt8 name="u8" valueReference="2" causality="output"/><Int16 name="i16" valueReference="3" causality="output"/>
<UInt16 name="u16" valueReference="4" causality="output"/><Int32 name="i32" valueReference="5" causality="output"/>
<UInt32 name="u32" valueReference="6" causality="output"/><Int64 name="i64" valueReference="7" causality="output"/>
<UInt64 name="u64" valueReference="8" causality="output"/><Boolean name="b" valueReference="9" causality="output"/>
<Enumeration name="e" valueReference="10" causality="output" declaredType="Level"/><String name="s" valueReference="11" causality="output"/>
<Binary name="bin" valueReference="12" causality="output"/><Clock name="c" valueReference="13" causality="output"/>)";

class RecordFmi3 : public RecordTest {};

TEST_F(RecordFmi3, allTypesAreKept) {
    import3(kTypes);
    mark("--all *");
    const Finished finished = runOn("record --quiet --until 0.5");
    EXPECT_EQ(finished.out,
              "time,f,i8,u8,i16,u16,i32,u32,i64,u64,b,e,s,bin\r\n"
              "0,0.1,-8,200,-16000,60000,0,4000000000,-9223372036854775808,18446744073709551615,true,"
              "-9223372036854775808,\"s0\",\"ff00\"\r\n"
              "0.5,0.1,-8,200,-16000,60000,-1,4000000000,-9223372036854775807,18446744073709551615,false,"
              "-9223372036854775807,\"s1\",\"ff01\"\r\n");
    expectParts(finished.err, {"\"c\" is not recorded: it is a Clock, which cannot be read"});
    EXPECT_EQ(runOn("record --quiet --until 0.5 -o " + path("run.db")).code, 0);
    const workbench::RecordedRun run = workbench::readRecordedRun(path("run.db"));
    EXPECT_EQ(run.columns[7].values[0], -9223372036854775808.0);
    EXPECT_EQ(run.columns[8].values[0], 18446744073709551615.0);
    EXPECT_EQ(*workbench::findName(run.columns[10].names, std::numeric_limits<std::int64_t>::min()), "low");
    EXPECT_EQ(runOn("report -o " + path("page.html") + " --run " + path("run.db")).code, 0);
    EXPECT_EQ(run.columns[12].texts, (std::vector<std::string>{"ff00", "ff01"}));
}

TEST_F(RecordFmi3, arraysBecomeColumnsByElement) {
    import3(R"(<Float64 name="x" valueReference="20" causality="output"><Dimension valueReference="40"/></Float64>
<Float64 name="m" valueReference="21" causality="output"><Dimension start="2"/><Dimension start="2"/></Float64>
<Float64 name="y" valueReference="23" causality="output"><Dimension valueReference="40"/></Float64>
<Float64 name="u" valueReference="24" causality="input"><Dimension valueReference="40"/></Float64>)");
    mark("--all *:x");
    EXPECT_EQ(recorded("--until 0.5"), "time,x[1],x[2],x[3]\r\n0,0,1,2\r\n0.5,0.5,1.5,2.5\r\n");
    mark("--all *:m --all *:y");
    EXPECT_EQ(recorded("--until 0 --set n=2 --set \"u=4 5\""),
              "time,x[1],x[2],\"m[1,1]\",\"m[1,2]\",\"m[2,1]\",\"m[2,2]\",y[1],y[2]\r\n0,0,1,0,1,2,3,4,5\r\n");
    const std::string inputs = "--inputs " + write("time,u[2],u[1]\n0,1,10\n", "in.csv");
    expectParts(recorded("--until 0 --set n=2 " + inputs), {",10,1\r\n"});
    expectSaid("record --until 0 " + inputs, kBadFile, "an array lacks columns for some of its elements");
    expectSaid("record --until 0 --set n=2 --set \"u=1\"", kWrongUsage,
               "\"u\" takes 2 values, with blanks between them");
    expectSaid("record --until 0 --set n=99999999", kBadFile, "the array \"x\" has more than 1000000 elements");
    expectSaid("record --until 0 --set n=17", kStoppedEarly,
               "fmi3SetUInt64 reported an error: not in configuration mode");
}

TEST_F(RecordFmi3, inputsJumpInEventsWhereTheUnitHasThem) {
    for (const char* const head : {"", R"(hasEventMode="true")"}) {
        import3(R"(<Float64 name="y" valueReference="23" causality="output"><Dimension start="1"/></Float64>
<Int32 name="gear" valueReference="25" causality="output"/><Int32 name="wish" valueReference="25" causality="input"/>
<Float64 name="u" valueReference="24" causality="input"><Dimension start="1"/></Float64>)",
                head);
        mark("--all *");
        const std::string inputs = "--inputs " + write("time,u[1],wish\n0,0,1\n0.5,1,1\n1,4,3\n", "in.csv");
        EXPECT_EQ(plain(recorded("--until 1.5 --set n=1 --step 0.25 " + inputs)),
                  "time y[1] gear\n0 0 1\n0.25 0 1\n0.5 0.5 1\n0.75 1 1\n1 2.5 1\n1.25 4 3\n1.5 4 3\n")
            << head;
        std::filesystem::remove(path());
    }
}

TEST_F(RecordFmi3, elementsCountTheLastDimensionFastest) {
    const std::vector<std::uint64_t> extents{2, 3};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(workbench::elementAt(workbench::elementText(i, extents), extents), i);
    EXPECT_EQ(workbench::elementText(3, extents), "[2,1]");
    for (const char* const none : {"[3,1]", "[2,4]", "[0,1]", "[1]", "[1,1,1]", "[1;1]", "1,1", ""})
        EXPECT_GE(workbench::elementAt(none, extents), 6U) << none;
    import3(R"(<Float32 name="f" valueReference="0" causality="output"/>
<Float32 name="g" valueReference="60" causality="parameter"/><UInt8 name="b" valueReference="61" causality="parameter"/>)");
    mark("--all *:f");
    expectSaid("record --set g=1e39", kWrongUsage,
               "start value of \"g\": \"1e39\" is not within the limits of a Float32");
    expectSaid("record --set b=256", kWrongUsage, "\"256\" is not a whole number from 0 to 255");
    expectSaid("record --set b=-1", kWrongUsage, "\"-1\" is not a whole number from 0 to 255");
}

TEST_F(RecordFmi3, aUnitIsCalledAsTheStandardHasIt) {
    const std::string input =
        R"(<Float64 name="u" valueReference="24" causality="input"><Dimension valueReference="40"/></Float64>
<Float64 name="now" valueReference="22" causality="output"/>)";
    const std::string others =
        R"(<Boolean name="on" valueReference="26" causality="parameter"/><Boolean name="off" valueReference="27" causality="parameter"/>
<String name="note" valueReference="28" causality="input"/>)";
    import3(input + others, R"(hasEventMode="true" canGetAndSetFMUState="true")");
    mark("--all *");
    write("time,note\n0,a\n0.5,\n1,\"\"\n", "in.csv");
    const std::string noted = calls("--set on=1 --set off=false --until 1.5 --inputs " + path("in.csv"));
    expectParts(noted, {"set 26 to 1\nset 27 to 0\nenter initialization", "set 28 to a\n", "set 28 to \n"});
    EXPECT_EQ(noted.rfind("set 28 to a"), noted.find("set 28 to a")) << "again, though it has not changed";
    EXPECT_EQ(calls("--until 0.25 --set n=2 --set \"u=4 5\" " + setTo(kEvent)),
              "instantiate, log 0, events 1, early 1, resources\nenter configuration\nset 40, 1 values to 2\nexit "
              "configuration\n"
              "set 24[0] to 4\nset 24[1] to 5\nset 50, 1 values to 2\n"
              "enter initialization, tolerance 0 0, start 0, stop 1 0.25\nexit initialization\nenter steps\n"
              "get state, new\nstep 0 + 0.25, final 0\nenter events\nenter steps\nterminate\nfree state\nfree\n");
    expectParts(calls("--until 1.5 " + setTo(kDiscard3)),
                {"step 1 + 0.5, final 0\nset state\nstep 1 + 0.25, final 0\n"});
    EXPECT_FALSE(calls(setTo(kDie3), kStoppedEarly).ends_with("free\n"));
}

TEST_F(RecordFmi3, earlyReturnsAndEventsAreHonoured) {
    const std::string variables = R"(<Float64 name="now" valueReference="22" causality="output"/>
<Int32 name="events" valueReference="30" causality="output"/>)";
    import3(variables);
    mark("--all *");
    EXPECT_EQ(plain(recorded("--until 1 --set behaviour=1")),
              "time now events\n0 0 0\n0.5 0.5 0\n0.75 0.75 0\n1 1 0\n");
    expectSaid("record --set behaviour=3", kStoppedEarly, "stopped at t = 1.5: the unit ended the run itself");
    expectSaid("record --set behaviour=4", kStoppedEarly,
               "stopped at t = 0: the unit returned 1000 times without getting any further");
    std::filesystem::remove(path());
    import3(variables, R"(hasEventMode="true")");
    mark("--all *");
    EXPECT_EQ(plain(recorded("--until 1 --set behaviour=2")),
              "time now events\n0 0 0\n0.25 0.25 2\n0.5 0.5 4\n1 1 6\n");
}

}  // namespace
}  // namespace kshmi
