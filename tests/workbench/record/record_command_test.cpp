#include "tests/workbench/record/record_test.h"

namespace kshmi {
namespace {

using namespace testing;

class Record : public RecordTest {};

TEST_F(Record, keepsWhatIsObservedWithItsTypes) {
    import(probe2());
    mark("state:count state:mode state:even state:text wave:fed");
    EXPECT_EQ(recorded("--set u=0.1 --set gain=3"),
              "time,count,mode,even,text,fed\r\n"
              "0,0,1,true,\"step \"\"0\"\",\nnext\",0.30000000000000004\r\n"
              "0.5,-1,2,false,\"step \"\"1\"\",\nnext\",0.30000000000000004\r\n"
              "1,-2,3,true,\"step \"\"2\"\",\nnext\",0.30000000000000004\r\n"
              "1.5,-3,1,false,\"step \"\"3\"\",\nnext\",0.30000000000000004\r\n"
              "2,-4,2,true,\"step \"\"4\"\",\nnext\",0.30000000000000004\r\n");
}

TEST_F(Record, fetchesWhatIsObservedAndNothingElse) {
    import(probe2());
    mark("wave:reads");
    EXPECT_EQ(plain(recorded()), "time reads\n0 0\n0.5 0\n1 0\n1.5 0\n2 0\n");
    mark("wave:sine");
    // Reals are read in front of integers.
    EXPECT_EQ(plain(recorded("--until 0.5 --step 0.5")), "time reads sine\n0 1 0\n0.5 2 0.479425538604203\n");
}

TEST_F(Record, nothingObservedIsSaid) {
    import(probe2());
    expectSaid("record", kNothing, "nothing to record: no output of the unit is observed; mark some first");
}

struct Misbehaviour {
    Behaviour behaviour;
    const char* said;
};

TEST_F(Record, aUnitThatStopsEarlyLeavesWhatWasRecorded) {
    import(probe2());
    mark("state:count");
    const Misbehaviour cases[] = {
        {kCrash, "stopped at t = 1: the unit was brought down by signal 11 (Segmentation fault): about to crash at 1"},
        {kHang, "stopped at t = 1: the unit did not come back within 0.3 s"},
        {kFail, "stopped at t = 1: fmi2DoStep reported an error: too hot at 1"},
        {kDiscard, "stopped at t = 1: the unit gave up the step to t = 1.5 at t = 1.2"},
        {kLoseTrack, "stopped at t = 1: the unit gave up the step to t = 1.5 at t = 1"},
        {kFinish, "stopped at t = 1: the unit ended the run itself"},
        {kLeave, "stopped at t = 1: the unit ended its process itself, with exit code 3"}};
    for (const Misbehaviour& one : cases) {
        const Finished finished = runOn("record --timeout 0.3 " + setTo(one.behaviour));
        EXPECT_EQ(finished.code, kStoppedEarly) << one.said;
        expectParts(finished.err, {one.said, "what was recorded until then is kept in the output"});
        EXPECT_EQ(plain(finished.out), "time count\n0 0\n0.5 -1\n1 -2\n") << one.said;
    }
    const Finished atEnd = runOn("record " + setTo(kAbortAtEnd));
    EXPECT_EQ(atEnd.code, kStoppedEarly);
    expectParts(atEnd.err, {"stopped at t = 2: the unit was brought down by signal 6 (Aborted)"});
    expectParts(plain(atEnd.out), {"\n2 -4\n"});
    expectSaid("record --timeout 0.3 " + setTo(kHangAtEnd), kStoppedEarly, "stopped at t = 2");
    expectSaid("record " + setTo(kFailAtStart), kStoppedEarly,
               "stopped at t = 0: fmi2EnterInitializationMode reported an error");
}

TEST_F(Record, aUnitIsCalledAsTheStandardHasIt) {
    const std::string both = R"(canHandleVariableCommunicationStepSize="true" canGetAndSetFMUstate="true")";
    std::filesystem::create_directory(path("% a"));
    ::setenv("TMPDIR", path("% a").c_str(), 1);
    import(replaced(probe2(both), "stepSize=\"0.5\"", R"(startTime="0.5" stepSize="0.5" tolerance="1e-4")"));
    mark("state:count");
    const std::string inputs = "--inputs " + write("time,u\n0,1\n1,2\n", "in.csv");
    const std::string start = "0 files, 0 handlers, no input, error output\n";
    EXPECT_EQ(calls("--until 1.3 --set gain=+3 " + inputs),
              "instantiate, log 0, escaped\n" + start +
                  "set real 10 to 3\n"
                  "setup, tolerance 1 0.0001, start 0.5, stop 1 1.3\nenter initialization\nset real 11 to 1.5\n"
                  "exit initialization\nget state, new\nstep 0.5 + 0.5, final 0\nset real 11 to 2\nget state, again\n"
                  "step 1 + 0.3, final 0\nterminate\nfree state\nfree\n");
    EXPECT_EQ(plain(read("run.csv")), "time count\n0.5 0\n1 -1\n1.3 -2\n");
    write("time,u\n0,1\n1,1\n", "in.csv");
    const std::string fed = calls("--until 1.5 --step 0.25 " + inputs);
    EXPECT_EQ(fed.find("set real"), fed.rfind("set real")) << "again, though it has not changed";
    pack(replaced(probe2(), "stopTime=\"2\"", ""));
    expectParts(calls("--log --step 1 --until 1 " + setTo(kWarn)),
                {"instantiate, log 1, ",
                 "set integer 2 to " + std::to_string(kWarn) + "\nsetup, tolerance 0 0, start 0, stop 1 1\n",
                 "exit initialization\nstep 0 + 1, final 1\nterminate\nfree\n"});
    expectParts(calls("--until 2 " + setTo(kWarn)), {"step 1 + ", "terminate"});
    const std::string died = calls("--until 2 " + setTo(kDie), kStoppedEarly);
    EXPECT_TRUE(died.ends_with("step 1 + 0.5, final 1\n")) << died;
    std::filesystem::remove(path("% a"));
}

TEST_F(Record, timesAreMultiplesOfTheStep) {
    import(probe2());
    mark("state:count");
    EXPECT_EQ(plain(recorded("--until 1.1 --step 0.1")),
              "time count\n0 0\n0.1 -1\n0.2 -2\n0.30000000000000004 -3\n0.4 -4\n0.5 -5\n0.6000000000000001 -6\n"
              "0.7000000000000001 -7\n0.8 -8\n0.9 -9\n1 -10\n1.1 -11\n");
    EXPECT_EQ(plain(recorded("--until 0.25 --step 0.1")), "time count\n0 0\n0.1 -1\n0.2 -2\n0.25 -3\n");
}

TEST_F(Record, aDiscardedStepIsTriedAgainWhereTheUnitCanGoBack) {
    import(probe2(R"(canHandleVariableCommunicationStepSize="true" canGetAndSetFMUstate="true")"));
    mark("state:count");
    for (const auto& [behaviour, retried] : {std::pair(kDiscard, "1.2"), std::pair(kLoseTrack, "1.25")})
        EXPECT_EQ(plain(recorded(setTo(behaviour))),
                  "time count\n0 0\n0.5 -1\n1 -2\n" + std::string(retried) + " -3\n1.5 -4\n2 -5\n");
}

TEST_F(Record, whatCannotRunIsRefusedWithTheReason) {
    import(probe2());
    mark("state:count");
    struct Case {
        std::string description;
        std::string binary;
        std::string said;
    };
    const Case cases[] = {
        {replaced(probe2(), "CoSimulation", "ModelExchange"), "binaries/linux64/probe2.so", "for model exchange only"},
        {replaced(probe2(), "CoSimulation", "ScheduledExecution"), "binaries/linux64/probe2.so", "need a scheduler"},
        {replaced(probe2(), "\"probe2\"", "\"probe\""), "binaries/linux64/probe2.so",
         "has no binaries/linux64/probe.so, as its description calls it (modelIdentifier), but something else there"},
        {replaced(probe2(), "\"2.0\"", "\"1.0\""), "binaries/linux64/probe2.so", "a unit of FMI 1.0, which is not run"},
        {probe2(R"(needsExecutionTool="true")"), "binaries/linux64/probe2.so", "only runs together with the program"},
        {probe2(), "binaries/win64/probe2.so",
         "has no binaries/linux64/probe2.so, which this machine needs, but binaries for: win64"},
        {probe2(), "sources/probe2.so", "holds no binaries"},
        {replaced(probe2(), "\"probe2\"", "\"../probe2\""), "binaries/linux64/probe2.so",
         "does not say what its binary"},
    };
    for (const Case& one : cases) {
        pack(one.description, one.binary);
        expectSaid("record", kBadFile, one.said);
    }
    write("<fmi", "unit.fmu");
    expectSaid("record", kBadFile,
               "unit.fmu: is a description only, without the unit itself; name the .fmu with --fmu");
    write("PK?", "unit.fmu");
    expectSaid("record", kBadFile, "unit.fmu: is not a unit, which is a ZIP archive; name the .fmu with --fmu");
    pack(probe2());
    ::setenv("TMPDIR", path("none").c_str(), 1);
    expectSaid("record", kBadFile, "none: is not a folder, and the unit is to be unpacked there; set TMPDIR to one");
    std::filesystem::remove(path("unit.fmu"));
    expectSaid("record", kBadFile,
               "unit.fmu: is not there any more, and the model was imported from it; name the .fmu with --fmu");
    write(kModel);
    expectSaid("record", kWrongUsage, "was not imported from a unit; name the .fmu with --fmu");
}

TEST_F(Record, aUnitThatLiesIsFoundOut) {
    import(probe2());
    mark("state:count wave:fed");
    pack(replaced(probe2(), "guid=\"probe\"", "guid=\"other\""));
    expectSaid("record", kStoppedEarly, "fmi2Instantiate made no instance: guid other is not mine");
    pack(replaced(probe2(), "state.count", "state.number"));
    Finished finished = runOn("record");
    EXPECT_EQ(finished.code, 0);
    expectParts(finished.err, {"is not the unit that the model was imported from",
                               "\"count\" is not recorded: it needs a "
                               "variable \"state.count\", which the unit does not have"});
    expectParts(finished.out, {"time,fed\r\n"});
    run({"block", "add", path(), "Gone", "--outputs", "a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q,r,s,t,u"});
    mark("Gone");
    finished = runOn("record --quiet");
    expectParts(finished.err, {"warning: 2 more signals are not recorded, for reasons like these"});
    write(workbench::testing::zipOf({{"modelDescription.xml", probe2()}, {"binaries/linux64/probe2.so", "no library"}}),
          "unit.fmu");
    expectSaid("record", kStoppedEarly, "stopped at t = 0: the unit's binary cannot be loaded");
    write(workbench::testing::zipOf(
              {{"modelDescription.xml", probe2()}, {"binaries/linux64/probe2.so", bytesOf(KSHMI_PROBES "/probe3.so")}}),
          "unit.fmu");
    expectSaid("record", kStoppedEarly,
               "the unit's binary lacks the function fmi2Instantiate, which the standard demands");
}

TEST_F(Record, wrongUsageNamesTheOptionAndTheVariable) {
    const std::string more =
        R"(<ScalarVariable name="fixed" valueReference="9" variability="constant"><Real start="1"/></ScalarVariable>
<ScalarVariable name="label" valueReference="9" causality="parameter"><String start=""/></ScalarVariable>)";
    import(replaced(probe2("", more), "stopTime=\"2\"", ""));
    mark("state:count");
    expectSaid("record", kWrongUsage, "the unit does not say how long it is to run; give the time");
    expectSaid("record --until -1", kWrongUsage, "the run cannot end at t = -1: it starts at t = 0");
    expectSaid("record --until 1 --step 0", kWrongUsage,
               "steps of 0 s do not lead from t = 0 to t = 1; give a positive step");
    expectSaid("record --until 1 --set fixed=2", kWrongUsage, "\"fixed\" cannot be set: it is a constant");
    expectSaid("record --until 1 --set label=x", kStoppedEarly, "lacks the function fmi2SetString");
    expectSaid("record --until 1 --set gian=2", kWrongUsage,
               "the unit has no variable \"gian\"; did you mean \"gain\"?");
    expectSaid(
        "record --until 1 --set x=2", kWrongUsage,
        "the unit has no variable \"x\"; it takes \"gain\", \"u\", \"held\", \"wish\", \"behaviour\", \"label\"");
    expectSaid("record --until x", kWrongUsage, "--until: \"x\": give a number of seconds");
    expectSaid("record --until inf", kWrongUsage, "--until: \"inf\": give a number of seconds");
    expectSaid("record --timeout -1", kWrongUsage, "--timeout: \"-1\": give a number of seconds, 0 for no limit");
    for (const char* const file : {"none/run.csv", "none/run.db"})
        expectSaid("record --until 1 -o " + path(file), kBadFile, "its folder is not there; make it first");
    expectSaid("record --until 1 -o " + write("time\n0\n", "text.db"), kBadFile,
               "is not a database; give another name");
    expectSaid("record --until 1 --set gain=two", kWrongUsage, "start value of \"gain\": \"two\" is not a number");
    expectSaid("record --until 1 --set behaviour=1.5", kWrongUsage,
               "\"1.5\" is not a whole number from -2147483648 to");
    for (const char* const wide : {"2147483648", "-2147483649", "18446744073709551616"})
        expectSaid(std::string("record --until 1 --set behaviour=") + wide, kWrongUsage,
                   "is not a whole number from -2147483648 to 2147483647");
    expectSaid("record --until 1 --set gain", kWrongUsage, "--set: \"gain\" is not NAME=VALUE");
    expectSaid("record --until 1 --set gain=1 --set gain=2", kWrongUsage, "the start value of \"gain\" is given twice");
    expectSaid("record --until 1 --json", kWrongUsage, "--json: the recording goes to standard output");
    const std::string inputs = write("time,u\n0,1\n", "in.csv");
    for (const std::string& source : {path(), path("unit.fmu"), inputs})
        expectSaid("record --until 1 --replace --inputs " + inputs + " -o " + source, kWrongUsage,
                   "is what the run is made from; record to another file");
    EXPECT_EQ(runOn("record --until 1 --quiet -o " + path("run.csv")).code, 0);
    expectSaid("record --until 1 -o " + path("run.csv"), kBadFile, "exists already; give another name, or --replace");
    EXPECT_EQ(runOn("record --until 0.5 --quiet --replace -o " + path("run.csv")).code, 0);
    EXPECT_EQ(plain(read("run.csv")), "time count\n0 0\n0.5 -1\n");
}

TEST_F(Record, aUnitOfOneStepLengthDoesNotGetAShorterOne) {
    import(probe2(R"(canGetAndSetFMUstate="true")"));
    mark("state:count");
    expectSaid("record " + setTo(kDiscard), kStoppedEarly, "stopped at t = 1: the unit gave up the step to t = 1.5");
    const Finished finished = runOn("record --quiet --until 0.8 --step 0.3");
    EXPECT_EQ(plain(finished.out), "time count\n0 0\n0.3 -1\n0.6 -2\n");
    expectParts(finished.err, {"takes steps of one length only; it runs until t = 0.6, not 0.8"});
    EXPECT_EQ(finished.code, 0);
}

TEST_F(Record, theUnitsMessagesAndItsOwnOutputStayOutOfTheRecording) {
    import(probe2());
    mark("state:count");
    const std::string talk = runOn("record --quiet --log --until 1.5 " + setTo(kTalk)).err;
    EXPECT_EQ(std::count(talk.begin(), talk.end(), 'w'), 16383);
    expectParts(runOn("record --quiet --log " + setTo(kThread)).err, {"[error] probe: from a thread at 1\n"});
    const Finished finished = runOn("record --quiet --log --until 1 " + setTo(kChatter));
    EXPECT_EQ(finished.err, "t = 0 [information] probe: stepped at 0.5\nt = 0.5 [information] probe: stepped at 1\n");
    EXPECT_EQ(plain(finished.out), "time count\n0 0\n0.5 -1\n1 -2\n");
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(plain(runOn("record --quiet --until 1 " + setTo(kSpam)).out), "time count\n0 0\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "spam on standard output\n");
}

}  // namespace
}  // namespace kshmi
