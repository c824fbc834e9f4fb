#include <fcntl.h>
#include <unistd.h>

#include "tests/kshmi/kshmi_test.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// Models that are made, read, written and opened without a file of their own.
namespace workbench {
namespace {

using kshmi::testing::kModel;
using kshmi::testing::replaced;

class ModelInMemory : public kshmi::testing::KshmiTest {
protected:
    ModelInMemory() { enterHost({}); }
    Session opened() const { return Session(path("new.json"), readModelText("text", kModel)); }

    template <class Work>
    static Error refusalOf(Work work) {
        try {
            work();
        } catch (const Error& error) {
            return error;
        }
        return Error("was not refused");
    }
};

TEST_F(ModelInMemory, newModelIsWrittenReadAndOpened) {
    const ModelFile made = newModelFile(u"größe");
    const std::string text = modelText(made.model, made.signals.get(), made.clients.get());
    EXPECT_EQ(text,
              "{\n  \"kestrelModel\": 1,\n  \"name\": \"größe\",\n  \"blocks\": [],\n  \"signals\": [],\n"
              "  \"clients\": []\n}\n");
    ModelFile again = readModelText("text", text);
    EXPECT_FALSE(again.version);
    EXPECT_EQ(Session("nowhere", std::move(again)).text(), text);
    EXPECT_THROW(newModelFile(u"a/b"), Error);
}

TEST_F(ModelInMemory, whatIsReadIsWrittenWithoutAFile) {
    EXPECT_EQ(opened().text(), kModel);
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(ModelInMemory, aModelComesInAndGoesOutAsAStream) {
    {
        const kshmi::testing::StandardInput input(write("{", "in.json"));
        EXPECT_STREQ(refusalOf([] { Session("-"); }).what(),
                     "standard input:1:2: not JSON: the document ends too early; correct it");
    }
    {
        const kshmi::testing::StandardInput input(write(kModel + " ", "in.json"));
        Session session("-");
        EXPECT_TRUE(session.isStream());
        EXPECT_EQ(session.input(), kModel + " ");
        EXPECT_EQ(refusalOf([&] { session.save(); }).code(), ErrorCode::request);
        std::string text;
        session.saveTo([&](std::string_view piece) { text += piece; });
        EXPECT_EQ(session.save().leftOut, 0U);
        EXPECT_EQ(text, kModel);
        session.saveAs(path("out.json"));
        EXPECT_EQ(read("out.json"), kModel);
        EXPECT_EQ(session.save().warnings, std::vector<std::string>());
    }
    EXPECT_EQ(fileCount(), 2U);
}

TEST_F(ModelInMemory, savingUnderANameKeepsTheFileThatIsThere) {
    Session session = opened();
    write("mine", "other.json");
    const Error refusal = refusalOf([&] { session.saveAs(path("other.json")); });
    EXPECT_EQ(refusal.code(), ErrorCode::file);
    EXPECT_EQ(refusal.place().file, path("other.json"));
    EXPECT_EQ(read("other.json"), "mine");
    EXPECT_EQ(session.path(), path("new.json"));
    EXPECT_EQ(fileCount(), 1U);

    session.saveAs(path("new.json"));
    EXPECT_EQ(read("new.json"), kModel);
    session.saveAs(path("other.json"), Session::Existing::replace);
    EXPECT_EQ(read("other.json"), kModel);
    EXPECT_EQ(session.path(), path("other.json"));
    session.save();
    write("changed meanwhile", "other.json");
    EXPECT_THROW(session.save(), Error);
    EXPECT_EQ(fileCount(), 2U);
}

TEST_F(ModelInMemory, errorTellsItsPlaceAndItsRemedyAsData) {
    const Error format = refusalOf([] { readModelText("m.json", replaced(kModel, R"("eid": "2", )", "")); });
    EXPECT_EQ(format.code(), ErrorCode::format);
    EXPECT_EQ(format.place().file, "m.json");
    EXPECT_EQ(format.place().line, 6U);
    EXPECT_EQ(format.place().pointer, "/blocks/1");
    EXPECT_EQ("m.json:6: /blocks/1: " + format.text(), format.what());

    const std::string dangling = replaced(kModel, R"("EID_": "1")", R"("EID_": "77")");
    const Error model = refusalOf([&] { Session("m.json", readModelText("m.json", dangling)); });
    EXPECT_EQ(model.code(), ErrorCode::model);
    EXPECT_EQ(model.remedy(), Remedy::removeDangling);
    EXPECT_EQ(model.place().pointer, "/signals/0/EID_");
}

TEST_F(ModelInMemory, namesOfMarksAndParkedMarksOutliveASave) {
    const std::string named =
        replaced(kModel, "\"VisualType_\": \"\"\n", "\"VisualType_\": \"\",\n      \"markedName\": \"On/Fast\"\n");
    const std::string mark =
        R"("parked": [{"lost": "port", "from": "m", "clients": [], "signal": {"UUID": "u-7", "markedName": ""}}])";
    const ModelFile file = readModelText("text", named.substr(0, named.size() - 3) + ", " + mark + "}");
    ASSERT_EQ(file.extras.parked.size(), 1U);
    EXPECT_EQ(file.extras.parked[0].markedName, u"");
    ASSERT_NE(file.extras.markedName(1), nullptr);
    EXPECT_EQ(*file.extras.markedName(1), u"On/Fast");
    EXPECT_EQ(file.extras.markedName(0), nullptr);
    const std::string text = modelText(file);
    EXPECT_NE(text.find("\"lost\": \"port\",\n      \"from\": \"m\"\n    }\n  ]\n}\n"), std::string::npos) << text;
    EXPECT_EQ(Session("m.json", readModelText("text", text)).text(), text);

    const auto pointerOf = [&](const char* what, const char* with) {
        return refusalOf([&] { readModelText("text", replaced(text, what, with)); }).place().pointer;
    };
    EXPECT_EQ(pointerOf("\"lost\": \"port\"", "\"lost\": \"key\""), "/parked/0/lost");
    EXPECT_EQ(pointerOf("\"markedName\": \"\"", "\"markedName\": 1"), "/parked/0/signal/markedName");
}

}  // namespace
}  // namespace workbench
