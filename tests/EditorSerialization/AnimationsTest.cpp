#include <EditorSerialization/Animations.h>

#include "TestSupport.h"

#include <gtest/gtest.h>

TEST(AnimationsTest, KeysReadBackInTimeOrderAndMalformedDocumentsAreRefusedWithALogLine)
{
    Animation::TransformationItem item;
    item.name = "Fly in \xc3\xa9";
    item.setKey(5'000'000'000'123, Transformation::Object().setMatrix(Types::Transform(2, 0, 0, 0, 2, 0, -5, 7.5, 1)));
    item.setKey(0, Transformation::Object());
    const std::optional<Animation::TransformationItem> read = Serialize::readAnimation(Serialize::writeAnimation(item));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->name, item.name);
    ASSERT_EQ(read->keys().size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(read->keys()[i].time, item.keys()[i].time) << "times beyond 53 bits survive";
        EXPECT_EQ(read->keys()[i].value, item.keys()[i].value);
    }
    const QByteArray reordered = R"({"format":"animation","version":1,"keys":[
        {"time":"9","transform":[1,0,0,0,1,0,0,0,1]},{"time":"3","transform":[2,0,0,0,2,0,0,0,1]}]})";
    ASSERT_TRUE(Serialize::readAnimation(reordered));
    EXPECT_EQ(Serialize::readAnimation(reordered)->keys().front().time, 3);

    const QByteArray key = R"({"time":"0","transform":[1,0,0,0,1,0,0,0,1]})";
    const std::pair<const char*, QByteArray> malformed[] = {
        {"empty", ""},
        {"other format", R"({"format":"overlay-presets","version":1,"keys":[)" + key + "]}"},
        {"future version", R"({"format":"animation","version":2,"keys":[)" + key + "]}"},
        {"numeric name", R"({"format":"animation","version":1,"name":4,"keys":[)" + key + "]}"},
        {"no keys", R"({"format":"animation","version":1,"keys":[]})"},
        {"numeric time", R"({"format":"animation","version":1,"keys":[{"time":0,"transform":[1,0,0,0,1,0,0,0,1]}]})"},
        {"negative time",
         R"({"format":"animation","version":1,"keys":[{"time":"-1","transform":[1,0,0,0,1,0,0,0,1]}]})"},
        {"short transform", R"({"format":"animation","version":1,"keys":[{"time":"0","transform":[1,0,0]}]})"},
        {"two keys at one time", R"({"format":"animation","version":1,"keys":[)" + key + "," + key + "]}"},
        {"too large", QByteArray(Serialize::maxAnimationBytes + 1, ' ')},
    };
    for (const auto& [name, document] : malformed) {
        SCOPED_TRACE(name);
        TestSupport::LogCapture log;
        EXPECT_FALSE(Serialize::readAnimation(document));
        EXPECT_TRUE(log.containsError("Serialize::readAnimation"));
    }
}
