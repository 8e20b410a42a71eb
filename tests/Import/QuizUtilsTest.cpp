#include <Util/Import/QuizUtils.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace Quiz::Utils;

namespace {

Quiz::Question question(const char* text, std::vector<const char*> answers, std::vector<int> correct)
{
    Quiz::Question q;
    q.text = Types::String(text);
    for (const char* answer : answers)
        q.answers.emplace_back(answer);
    q.correctAnswers = std::move(correct);
    return q;
}

Session sample()
{
    Session session;
    session.questions = {question("Was ist 2 + 2?", {"3", "4", "fünf 🙂"}, {1}),
                         question("Pick the primes", {"2", "4", "5"}, {0, 2})};
    session.timestamp = 120 * Types::TimeUnitsPerSecond;
    session.replayFrom = 90 * Types::TimeUnitsPerSecond;
    return session;
}

} // namespace

TEST(QuizUtilsTest, WrittenSessionHasExactlyItsKeysAndReadsBackTheSame)
{
    const Session session = sample();
    const QByteArray text = write(session);
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    EXPECT_EQ(object.keys(), (QStringList{"answers", "correctResults", "questions", "replayFrom ", "timestamp"}));
    EXPECT_EQ(object.value(QStringLiteral("correctResults")).toArray(), (QJsonArray{QJsonArray{1}, QJsonArray{0, 2}}));
    EXPECT_EQ(object.value(QStringLiteral("replayFrom ")).toDouble(), 900000000.0);

    QString error;
    const std::optional<Session> back = read(text, &error);
    ASSERT_TRUE(back) << error.toStdString();
    EXPECT_TRUE(*back == session);
    EXPECT_EQ(back->questions[0].answers[2].str(), "fünf 🙂");

    // The built-in quizzes are valid descriptions too.
    const auto quizzes = defaultQuizzes();
    ASSERT_EQ(quizzes.size(), 3u);
    for (const auto& quiz : quizzes) {
        SCOPED_TRACE(quiz->name.str());
        const auto questions = questionsFromJson(toJson(quiz->questions));
        ASSERT_TRUE(questions);
        EXPECT_TRUE(Session{*questions} == Session{quiz->questions});
    }
    EXPECT_EQ(quizzes[2]->questions[0].correctAnswers, (std::vector<int>{0, 2}));
}

TEST(QuizUtilsTest, HostileDescriptionsAreRefusedWithTheKeyAndIndex)
{
    const QByteArray valid = write(sample());
    auto edited = [&valid](const char* key, const QJsonValue& value) {
        QJsonObject object = QJsonDocument::fromJson(valid).object();
        if (value.isUndefined())
            object.remove(QString::fromUtf8(key));
        else
            object.insert(QString::fromUtf8(key), value);
        return QJsonDocument(object).toJson();
    };
    QByteArray deep(100000, '[');
    QByteArray huge = "{\"questions\": [\"" + QByteArray(maxDocumentBytes, 'x') + "\"]}";
    struct Row
    {
        const char* name;
        QByteArray json;
        QString error;
    };
    const Row rows[] = {
        {"empty", QByteArray(), QStringLiteral("The quiz description is not valid JSON")},
        {"truncated", valid.left(valid.size() / 2), QStringLiteral("The quiz description is not valid JSON")},
        {"not an object", "[1, 2]", QStringLiteral("The quiz description must be a JSON object.")},
        {"nested without end", deep, QStringLiteral("The quiz description is not valid JSON (too deeply nested")},
        {"repeated key", R"({"questions": ["a"], "\u0071uestions": ["b"]})",
         QStringLiteral("The quiz description is not valid JSON (the key \"questions\" repeated at byte 21).")},
        // Found by fuzzing: Qt compares keys only up to a NUL, so these two were one key to it.
        {"keys equal up to a NUL", QByteArray("{\"quest\0a\":[[0]],\"quest\0b\":1}", 29),
         QStringLiteral("The quiz description is not valid JSON (a key holding a NUL character at byte 1).")},
        {"oversized", huge,
         QStringLiteral("The quiz description has %1 bytes, more than the 8388608 allowed.").arg(huge.size())},
        {"missing questions", edited("questions", QJsonValue::Undefined),
         QStringLiteral("The key \"questions\" is missing.")},
        {"answers not an array", edited("answers", 3), QStringLiteral("\"answers\" must be an array.")},
        {"no questions", edited("questions", QJsonArray()),
         QStringLiteral("\"questions\" must hold from 1 to 10000 questions.")},
        {"length mismatch", edited("correctResults", QJsonArray{QJsonArray{1}}),
         QStringLiteral("\"answers\" and \"correctResults\" must have one entry per question (2).")},
        {"question not a text", edited("questions", QJsonArray{1, QStringLiteral("b")}),
         QStringLiteral("\"questions\"[0] must be a text.")},
        {"one answer", edited("answers", QJsonArray{QJsonArray{QStringLiteral("a")}, QJsonArray{}}),
         QStringLiteral("\"answers\"[0] must hold from 2 to 64 answers.")},
        {"blank answer",
         edited("answers", QJsonArray{QJsonArray{QStringLiteral("a"), QStringLiteral(" ")}, QJsonArray{}}),
         QStringLiteral("\"answers\"[0][1] is empty.")},
        {"index out of range", edited("correctResults", QJsonArray{QJsonArray{3}, QJsonArray{0}}),
         QStringLiteral("\"correctResults\"[0][0] must be the index of an answer, from 0 to 2.")},
        {"fractional index", edited("correctResults", QJsonArray{QJsonArray{0.5}, QJsonArray{0}}),
         QStringLiteral("\"correctResults\"[0][0] must be the index of an answer, from 0 to 2.")},
        {"index twice", edited("correctResults", QJsonArray{QJsonArray{1}, QJsonArray{0, 0}}),
         QStringLiteral("\"correctResults\"[1][1] names an answer twice.")},
        {"no correct answer", edited("correctResults", QJsonArray{QJsonArray{1}, QJsonArray{}}),
         QStringLiteral("\"correctResults\"[1] must name from 1 to 3 correct answers.")},
        {"timestamp text", edited("timestamp", QStringLiteral("12")),
         QStringLiteral("\"timestamp\" must be a whole number from 0 to 9007199254740992.")},
        {"timestamp beyond exact", edited("timestamp", 1e300),
         QStringLiteral("\"timestamp\" must be a whole number from 0 to 9007199254740992.")},
        {"replay after the quiz", edited("replayFrom ", 2e9),
         QStringLiteral("\"replayFrom \" must come before the quiz's \"timestamp\".")},
        {"replay below -1", edited("replayFrom ", -2),
         QStringLiteral("\"replayFrom \" must be a whole number from -1 to 9007199254740992.")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QString error;
        EXPECT_FALSE(read(row.json, &error));
        EXPECT_TRUE(error.startsWith(row.error)) << error.toStdString();
    }

    // Without the trailing space the replay target is still read; without it at all, none.
    QJsonObject object = QJsonDocument::fromJson(valid).object();
    object.insert(QStringLiteral("replayFrom"), object.take(QStringLiteral("replayFrom ")));
    EXPECT_EQ(sessionFromJson(object)->replayFrom, 90 * Types::TimeUnitsPerSecond);
    object.remove(QStringLiteral("replayFrom"));
    EXPECT_EQ(sessionFromJson(object)->replayFrom, -1);
}
