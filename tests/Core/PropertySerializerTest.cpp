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

// Whatever is wrong with the text, the property reads as null, loses what it held, and the
// reason is logged.
TEST(PropertySerializer, CorruptTextReadsAsANullPropertyAndLogs)
{
    std::string deepNesting = "DPROP 1\n";
    for (int i = 0; i < 200; ++i)
        deepNesting += "A 0: 1\n";
    deepNesting += "N 0:\n";
    struct Row
    {
        const char* name;
        std::string text;
    };
    const Row rows[] = {
        {"empty", ""},
        {"foreign text", "<recent><item>/a</item></recent>"},
        {"other version", "DPROP 2\nA 6:recent 0\n"},
        {"truncated string", "DPROP 1\nA 6:recent 1\nS 0: 15:/home/a\n"},
        {"count beyond data", "DPROP 1\nA 6:recent 4000000000\nS 0: 1:a\n"},
        {"missing child", "DPROP 1\nA 6:recent 2\nS 0: 1:a\n"},
        {"garbage after", "DPROP 1\nA 6:recent 0\nX"},
        {"bad integer", "DPROP 1\nI 1:n 12x\n"},
        {"integer overflow", "DPROP 1\nI 1:n 99999999999999999999\n"},
        {"unknown tag", "DPROP 1\nQ 1:n\n"},
        {"name length beyond data", "DPROP 1\nS 99:n 1:a\n"},
        {"negative length", "DPROP 1\nS -1:n 1:a\n"},
        {"nesting too deep", deepNesting},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestSupport::LogCapture log;
        DataInputString in(row.text);
        Property p = recentList({"/stale"});
        EXPECT_FALSE(PropertySerializer::Deserialize(p, in));
        EXPECT_EQ(p.GetType(), Property::Type::Null);
        EXPECT_TRUE(p.GetChildren().empty());
        EXPECT_TRUE(log.containsError("corrupted property data"));
    }
}

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
