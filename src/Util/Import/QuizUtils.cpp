#include "QuizUtils.h"

#include <Util/Interfaces/EditorSerialization.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace Quiz::Utils {

namespace {

const QString questionsKey = QStringLiteral("questions");
const QString answersKey = QStringLiteral("answers");
const QString correctKey = QStringLiteral("correctResults");
const QString timestampKey = QStringLiteral("timestamp");
const QString replayKey = QStringLiteral("replayFrom "); // the trailing space belongs to the key
const QString replayKeyTrimmed = QStringLiteral("replayFrom");

QString tr(const char* text) { return QCoreApplication::translate("Quiz", text); }

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QString at(const QString& key, int index) { return QStringLiteral("\"%1\"[%2]").arg(key).arg(index); }

bool readArray(const QJsonObject& object, const QString& key, QJsonArray& out, QString* error)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined())
        return fail(error, tr("The key \"%1\" is missing.").arg(key));
    if (!value.isArray())
        return fail(error, tr("\"%1\" must be an array.").arg(key));
    out = value.toArray();
    return true;
}

bool readText(const QJsonValue& value, const QString& where, Types::String& out, QString* error)
{
    if (!value.isString())
        return fail(error, tr("%1 must be a text.").arg(where));
    const QString text = value.toString();
    if (text.trimmed().isEmpty())
        return fail(error, tr("%1 is empty.").arg(where));
    if (text.size() > maxTextLength)
        return fail(error, tr("%1 is longer than %2 characters.").arg(where).arg(maxTextLength));
    out = Types::String(text);
    return true;
}

// A whole number of the time unit from `min` to maxTime.
bool readTime(const QJsonValue& value, const QString& key, Types::Time min, Types::Time& out, QString* error)
{
    const double number = value.toDouble(std::nan(""));
    if (!value.isDouble() || std::floor(number) != number || number < double(min) || number > double(maxTime))
        return fail(error, tr("\"%1\" must be a whole number from %2 to %3.").arg(key).arg(min).arg(maxTime));
    out = Types::Time(number);
    return true;
}

bool readQuestion(const QJsonValue& text, const QJsonValue& answers, const QJsonValue& correct, int index,
                  Question& out, QString* error)
{
    if (!readText(text, at(questionsKey, index), out.text, error))
        return false;
    if (!answers.isArray())
        return fail(error, tr("%1 must be an array.").arg(at(answersKey, index)));
    const QJsonArray answerList = answers.toArray();
    if (answerList.size() < 2 || answerList.size() > maxAnswers)
        return fail(error, tr("%1 must hold from 2 to %2 answers.").arg(at(answersKey, index)).arg(maxAnswers));
    out.answers.reserve(size_t(answerList.size()));
    for (int i = 0; i < answerList.size(); ++i) {
        Types::String answer;
        if (!readText(answerList.at(i), at(answersKey, index) + QStringLiteral("[%1]").arg(i), answer, error))
            return false;
        out.answers.push_back(std::move(answer));
    }
    if (!correct.isArray())
        return fail(error, tr("%1 must be an array.").arg(at(correctKey, index)));
    const QJsonArray correctList = correct.toArray();
    if (correctList.isEmpty() || correctList.size() > answerList.size())
        return fail(error,
                    tr("%1 must name from 1 to %2 correct answers.").arg(at(correctKey, index)).arg(answerList.size()));
    std::vector<bool> seen(size_t(answerList.size()), false);
    for (int i = 0; i < correctList.size(); ++i) {
        const double number = correctList.at(i).toDouble(-1);
        const QString where = at(correctKey, index) + QStringLiteral("[%1]").arg(i);
        if (!correctList.at(i).isDouble() || std::floor(number) != number || number < 0 || number >= answerList.size())
            return fail(error,
                        tr("%1 must be the index of an answer, from 0 to %2.").arg(where).arg(answerList.size() - 1));
        if (seen[size_t(number)])
            return fail(error, tr("%1 names an answer twice.").arg(where));
        seen[size_t(number)] = true;
        out.correctAnswers.push_back(int(number));
    }
    return true;
}

bool sameQuestion(const Question& a, const Question& b)
{
    return a.text == b.text && a.answers == b.answers && a.correctAnswers == b.correctAnswers;
}

Preset makePreset(const char* name, std::initializer_list<std::pair<const char*, std::vector<const char*>>> questions,
                  std::initializer_list<std::vector<int>> correct)
{
    Preset preset;
    preset.name = Types::String(tr(name));
    auto right = correct.begin();
    for (const auto& [text, answers] : questions) {
        Question question;
        question.text = Types::String(tr(text));
        for (const char* answer : answers)
            question.answers.emplace_back(tr(answer));
        question.correctAnswers = *right++;
        preset.questions.push_back(std::move(question));
    }
    return preset;
}

} // namespace

bool operator==(const Session& a, const Session& b)
{
    return a.timestamp == b.timestamp && a.replayFrom == b.replayFrom
           && std::equal(a.questions.begin(), a.questions.end(), b.questions.begin(), b.questions.end(), sameQuestion);
}

std::vector<std::unique_ptr<Preset>> defaultQuizzes()
{
    std::vector<std::unique_ptr<Preset>> quizzes;
    quizzes.push_back(std::make_unique<Preset>(
        makePreset(QT_TRANSLATE_NOOP("Quiz", "Multiple choice"),
                   {{QT_TRANSLATE_NOOP("Quiz", "Type your question here"),
                     {QT_TRANSLATE_NOOP("Quiz", "First answer"), QT_TRANSLATE_NOOP("Quiz", "Second answer"),
                      QT_TRANSLATE_NOOP("Quiz", "Third answer")}}},
                   {{0}})));
    quizzes.push_back(
        std::make_unique<Preset>(makePreset(QT_TRANSLATE_NOOP("Quiz", "True or false"),
                                            {{QT_TRANSLATE_NOOP("Quiz", "Type your statement here"),
                                              {QT_TRANSLATE_NOOP("Quiz", "True"), QT_TRANSLATE_NOOP("Quiz", "False")}}},
                                            {{0}})));
    quizzes.push_back(std::make_unique<Preset>(
        makePreset(QT_TRANSLATE_NOOP("Quiz", "Several correct answers"),
                   {{QT_TRANSLATE_NOOP("Quiz", "Choose every correct answer"),
                     {QT_TRANSLATE_NOOP("Quiz", "First answer"), QT_TRANSLATE_NOOP("Quiz", "Second answer"),
                      QT_TRANSLATE_NOOP("Quiz", "Third answer"), QT_TRANSLATE_NOOP("Quiz", "Fourth answer")}}},
                   {{0, 2}})));
    return quizzes;
}

QJsonObject toJson(const std::vector<Question>& questions)
{
    QJsonArray texts;
    QJsonArray answers;
    QJsonArray correct;
    for (const Question& question : questions) {
        texts.append(question.text.toQString());
        QJsonArray answerTexts;
        for (const Types::String& answer : question.answers)
            answerTexts.append(answer.toQString());
        answers.append(answerTexts);
        QJsonArray indices;
        for (int index : question.correctAnswers)
            indices.append(index);
        correct.append(indices);
    }
    return QJsonObject{{questionsKey, texts}, {answersKey, answers}, {correctKey, correct}};
}

QJsonObject toJson(const Session& session)
{
    QJsonObject object = toJson(session.questions);
    object.insert(timestampKey, double(session.timestamp));
    object.insert(replayKey, double(session.replayFrom));
    return object;
}

std::optional<std::vector<Question>> questionsFromJson(const QJsonObject& object, QString* error)
{
    QJsonArray texts;
    QJsonArray answers;
    QJsonArray correct;
    if (!readArray(object, questionsKey, texts, error) || !readArray(object, answersKey, answers, error)
        || !readArray(object, correctKey, correct, error))
        return std::nullopt;
    if (texts.isEmpty() || texts.size() > maxQuestions) {
        fail(error, tr("\"%1\" must hold from 1 to %2 questions.").arg(questionsKey).arg(maxQuestions));
        return std::nullopt;
    }
    if (answers.size() != texts.size() || correct.size() != texts.size()) {
        fail(error, tr("\"%1\" and \"%2\" must have one entry per question (%3).")
                        .arg(answersKey, correctKey)
                        .arg(texts.size()));
        return std::nullopt;
    }
    std::vector<Question> questions(size_t(texts.size()));
    for (int i = 0; i < texts.size(); ++i) {
        if (!readQuestion(texts.at(i), answers.at(i), correct.at(i), i, questions[size_t(i)], error))
            return std::nullopt;
    }
    return questions;
}

std::optional<Session> sessionFromJson(const QJsonObject& object, QString* error)
{
    std::optional<std::vector<Question>> questions = questionsFromJson(object, error);
    if (!questions)
        return std::nullopt;
    Session session;
    session.questions = std::move(*questions);
    if (!readTime(object.value(timestampKey), timestampKey, 0, session.timestamp, error))
        return std::nullopt;
    const QJsonValue replay = object.contains(replayKey) ? object.value(replayKey) : object.value(replayKeyTrimmed);
    if (!replay.isUndefined() && !readTime(replay, replayKey, -1, session.replayFrom, error))
        return std::nullopt;
    if (session.replayFrom >= session.timestamp) {
        fail(error, tr("\"%1\" must come before the quiz's \"%2\".").arg(replayKey, timestampKey));
        return std::nullopt;
    }
    return session;
}

QByteArray write(const Session& session) { return QJsonDocument(toJson(session)).toJson(QJsonDocument::Compact); }

namespace {

// The object a text holds; nothing (and why) when it is too large, not JSON or not an object.
std::optional<QJsonObject> parse(const QByteArray& json, QString* error)
{
    if (json.size() > maxDocumentBytes) {
        fail(error,
             tr("The quiz description has %1 bytes, more than the %2 allowed.").arg(json.size()).arg(maxDocumentBytes));
        return std::nullopt;
    }
    QString why;
    const QJsonDocument document = Serialize::readJson(json, &why);
    if (document.isNull()) {
        fail(error, tr("The quiz description is not valid JSON (%1).").arg(why));
        return std::nullopt;
    }
    if (!document.isObject()) {
        fail(error, tr("The quiz description must be a JSON object."));
        return std::nullopt;
    }
    return document.object();
}

} // namespace

std::optional<Session> read(const QByteArray& json, QString* error)
{
    const std::optional<QJsonObject> object = parse(json, error);
    return object ? sessionFromJson(*object, error) : std::nullopt;
}

QByteArray writeQuestions(const std::vector<Question>& questions)
{
    return QJsonDocument(toJson(questions)).toJson(QJsonDocument::Compact);
}

std::optional<std::vector<Question>> readQuestions(const QByteArray& json, QString* error)
{
    const std::optional<QJsonObject> object = parse(json, error);
    return object ? questionsFromJson(*object, error) : std::nullopt;
}

} // namespace Quiz::Utils
