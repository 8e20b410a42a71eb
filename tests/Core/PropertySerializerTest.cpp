#include <Core/PropertySerializer.h>

#include "TestSupport.h"

#include <gtest/gtest.h>

using Dravik::Core::DataInputString;
using Dravik::Core::DataOutputString;
using Dravik::Core::Property;
using Dravik::Core::PropertySerializer;

namespace {

std::string serialize(const Property& p)
{
    DataOutputString out;
    PropertySerializer::Serialize(p, out);
    return out.GetString();
}

Property recentList(std::initializer_list<const char*> paths)
{
    Property list("recent", Property::Type::Array);
    for (const char* path : paths)
        list.Append(Property::MakeString("", path));
    return list;
}

} // namespace

TEST(PropertySerializer, WritesTheDocumentedTextForAListOfPaths)
{
    EXPECT_EQ(serialize(recentList({"/home/a.dscproj", "/b.dscproj"})),
              "DPROP 1\nA 6:recent 2\nS 0: 15:/home/a.dscproj\nS 0: 10:/b.dscproj\n");
}

TEST(PropertySerializer, RoundTripsEveryKindOfValue)
{
    Property root("settings", Property::Type::Object);
    root.Append(Property::MakeBool("on", true));
    root.Append(Property::MakeInt("count", -9007199254740993LL));
    root.Append(Property::MakeDouble("ratio", 29.97002997002997));
    root.Append(Property::MakeString("empty", ""));
    // Bytes that would break a delimited format: separators, newlines, digits and colons.
    root.Append(Property::MakeString("tricky", "12:a b\nS 0: \n\xD0\xBF\xD1\x83\xD1\x82\xD1\x8C"));
    root.Append(Property("nothing"));
    Property& nested = root.Append(recentList({"C:\\v\\a.mp4"}));
    nested.Append(Property("deeper", Property::Type::Array));

    DataInputString in(serialize(root));
    Property back;
    ASSERT_TRUE(PropertySerializer::Deserialize(back, in));
    EXPECT_EQ(back, root);
    ASSERT_NE(back.Find("tricky"), nullptr);
    EXPECT_EQ(back.Find("tricky")->GetString(), "12:a b\nS 0: \n\xD0\xBF\xD1\x83\xD1\x82\xD1\x8C");
    EXPECT_EQ(back.Find("count")->GetInt(), -9007199254740993LL);
    EXPECT_DOUBLE_EQ(back.Find("ratio")->GetDouble(), 29.97002997002997);
}

struct CorruptCase
{
    const char* name;
    std::string text;
};

class PropertySerializerCorrupt : public testing::TestWithParam<CorruptCase>
{
};

TEST_P(PropertySerializerCorrupt, ReadsAsANullPropertyAndLogs)
{
    TestSupport::LogCapture log;
    DataInputString in(GetParam().text);
    Property p = recentList({"/stale"});
    EXPECT_FALSE(PropertySerializer::Deserialize(p, in));
    EXPECT_EQ(p.GetType(), Property::Type::Null);
    EXPECT_TRUE(p.GetChildren().empty());
    EXPECT_TRUE(log.containsError("corrupted property data"));
}

std::string deepNesting()
{
    std::string text = "DPROP 1\n";
    for (int i = 0; i < 200; ++i)
        text += "A 0: 1\n";
    return text + "N 0:\n";
}

INSTANTIATE_TEST_SUITE_P(Inputs, PropertySerializerCorrupt,
                         testing::Values(CorruptCase{"empty", ""},
                                         CorruptCase{"foreign text", "<recent><item>/a</item></recent>"},
                                         CorruptCase{"other version", "DPROP 2\nA 6:recent 0\n"},
                                         CorruptCase{"truncated string", "DPROP 1\nA 6:recent 1\nS 0: 15:/home/a\n"},
                                         CorruptCase{"count beyond data", "DPROP 1\nA 6:recent 4000000000\nS 0: 1:a\n"},
                                         CorruptCase{"missing child", "DPROP 1\nA 6:recent 2\nS 0: 1:a\n"},
                                         CorruptCase{"garbage after", "DPROP 1\nA 6:recent 0\nX"},
                                         CorruptCase{"bad integer", "DPROP 1\nI 1:n 12x\n"},
                                         CorruptCase{"integer overflow", "DPROP 1\nI 1:n 99999999999999999999\n"},
                                         CorruptCase{"unknown tag", "DPROP 1\nQ 1:n\n"},
                                         CorruptCase{"name length beyond data", "DPROP 1\nS 99:n 1:a\n"},
                                         CorruptCase{"negative length", "DPROP 1\nS -1:n 1:a\n"},
                                         CorruptCase{"nesting too deep", deepNesting()}),
                         [](const testing::TestParamInfo<CorruptCase>& info) {
                             std::string name = info.param.name;
                             for (char& c : name)
                                 if (c == ' ')
                                     c = '_';
                             return name;
                         });

TEST(PropertySerializer, AcceptsTrailingBlankLines)
{
    DataInputString in(serialize(recentList({"/a"})) + "\n\n");
    Property p;
    ASSERT_TRUE(PropertySerializer::Deserialize(p, in));
    ASSERT_EQ(p.Size(), 1u);
    EXPECT_EQ(p.GetChildren()[0].GetString(), "/a");
}

TEST(Property, TypedGettersReturnEmptyValuesForOtherTypes)
{
    const Property s = Property::MakeString("s", "text");
    EXPECT_EQ(s.GetInt(), 0);
    EXPECT_FALSE(s.GetBool());
    const Property i = Property::MakeInt("i", 5);
    EXPECT_EQ(i.GetString(), "");
    Property scalar = Property::MakeInt("x", 1);
    scalar.Append(Property::MakeString("", "a"));
    EXPECT_EQ(scalar.GetType(), Property::Type::Array);
    EXPECT_EQ(scalar.GetInt(), 0);
}
