#include "foundation/model_path.h"

#include <gtest/gtest.h>

using namespace ks_hmi_foundation;

namespace {

TEST(ModelPath, joinsAndSplitsPaths) {
    EXPECT_EQ(AddModelToPath(u"", u"m1"), u"");
    EXPECT_EQ(AddModelToPath(u"Sub/Gain", u""), u"Sub/Gain");
    EXPECT_EQ(AddModelToPath(u"Sub/Gain", u"m1"), u"m1/Sub/Gain");

    struct Row {
        std::u16string path, model, expected;
    };
    const Row rows[] = {
        {u"m1/Sub/Gain", u"m1", u"Sub/Gain"}, {u"m1/", u"m1", u"m1/"},         {u"m10/Gain", u"m1", u"m10/Gain"},
        {u"m1/Sub", u"m2", u"m1/Sub"},        {u"/Gain", u"", u"Gain"},        {u"/", u"", u"/"},
        {u"m1/m1/Gain", u"m1", u"m1/Gain"},   {u"M1/Gain", u"m1", u"M1/Gain"}, {u"m1", u"m1", u"m1"},
        {u"Größe/x", u"Größe", u"x"},
    };
    for (const Row& row : rows) EXPECT_EQ(RemoveModelFromPath(row.path, row.model), row.expected);
}

TEST(ModelPath, joinsAndSplitsElementIdentifiers) {
    EXPECT_EQ(AddModelToEID("", u"m1"), "");
    EXPECT_EQ(AddModelToEID("12", u""), "12");
    EXPECT_EQ(AddModelToEID("12", u"Größe"), "Größe:12");

    struct Row {
        std::string eid;
        std::u16string model;
        std::string expected;
    };
    const Row rows[] = {
        {"m1:12:3", u"m1", "12:3"}, {"m1:", u"m1", "m1:"},        {"m10:12", u"m1", "m10:12"},
        {":12", u"", "12"},         {"Größe:12", u"Größe", "12"}, {"m1/12", u"m1", "m1/12"},
    };
    for (const Row& row : rows) EXPECT_EQ(RemoveModelFromEID(row.eid, row.model), row.expected);
}

}  // namespace
