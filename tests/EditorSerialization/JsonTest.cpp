#include <EditorSerialization/Json.h>

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

// A key repeated inside one object refuses the whole document, however it is spelled; keys
// that only look alike, or repeat across objects, do not.
TEST(JsonTest, RepeatedKeysAreRefusedWhereverTheyHide)
{
    struct Row
    {
        const char* name;
        QByteArray json;
        const char* error; // nullptr: the document is read
    };
    const Row rows[] = {
        {"array then number", R"({"a":[1],"a":1})", "the key \"a\" repeated at byte 9"},
        {"escaped spelling", R"({"a":{"b":2},"\u0061":1})", "the key \"a\" repeated at byte 13"},
        {"unknown escape", R"({"a":[1],"\a":1})", "the key \"a\" repeated"},
        {"surrogate pair", "{\"\xf0\x9f\x98\x80\":[1],\"\\ud83d\\ude00\":1}", "repeated at byte 12"},
        {"deep inside an array", R"([1,{"x":[{"k":[],"k":[]}]}])", "the key \"k\" repeated at byte 17"},
        {"after a value that looks like a key", R"({"a":"b","b":[],"b":0})", "the key \"b\" repeated at byte 16"},
        {"keys equal up to a NUL", QByteArray("{\"a\0x\":[1],\"a\0y\":1}", 19),
         "a key holding a NUL character at byte 1"},
        {"escaped NUL in a key", R"({"\u0000":1})", "a key holding a NUL character at byte 1"},
        {"same key in sibling objects", R"([{"a":[1]},{"a":[1]}])", nullptr},
        {"key text only as values", R"({"a":"a","b":["a","a"]})", nullptr},
        {"quotes and braces inside texts", R"({"a\"}{":1,"a":"\"a\":{"})", nullptr},
        {"keys that differ by an escape", R"({"a\n":1,"a\\n":2,"a\/":3,"":4})", nullptr},
        {"NUL in a value", QByteArray("{\"a\":\"\0\",\"b\":\"\\u0000\"}", 22), nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QString error;
        const QJsonDocument document = Serialize::readJson(row.json, &error);
        if (row.error) {
            EXPECT_TRUE(document.isNull());
            EXPECT_TRUE(error.contains(QString::fromUtf8(row.error))) << error.toStdString();
        } else {
            EXPECT_FALSE(document.isNull()) << error.toStdString();
            EXPECT_TRUE(error.isEmpty());
        }
    }
}

TEST(JsonTest, QtsReasonAndOffsetForTextThatIsNotJson)
{
    QString error;
    EXPECT_TRUE(Serialize::readJson(R"({"a":[1,2})", &error).isNull());
    EXPECT_EQ(error, QStringLiteral("unterminated array at byte 10"));
    const QJsonDocument document = Serialize::readJson(R"({"a":[1,{"b":"}"}]})", &error);
    EXPECT_EQ(document.object().value(QStringLiteral("a")).toArray().at(1).toObject().value(QStringLiteral("b")),
              QStringLiteral("}"));
}
