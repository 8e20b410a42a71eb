#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

// Built-in quizzes and the JSON description of quiz questions and sessions.
//
// A description holds the questions as parallel arrays: "questions" (the texts), "answers"
// (for each question, its answer texts) and "correctResults" (for each question, the indices
// of its correct answers). A session, a quiz as it stands in a video, adds "timestamp" (where
// the quiz shows, in the model's time unit) and "replayFrom " (with its trailing space: where a
// wrong answer sends the viewer back to, -1 for nowhere):
//
//   {"questions": ["2 + 2?"], "answers": [["3", "4"]], "correctResults": [[1]],
//    "timestamp": 120000000, "replayFrom ": 0}
//
// Readers refuse a malformed, truncated, wrongly typed or oversized description, or one that
// repeats a key inside an object, with a reason
// naming the key and index, fill nothing, never throw, and allocate in proportion to the
// input, which is bounded by maxDocumentBytes.
namespace Quiz::Utils {

// Limits a description must stay within.
constexpr int maxDocumentBytes = 8 * 1024 * 1024;
constexpr int maxQuestions = 10000;
constexpr int maxAnswers = 64;
constexpr int maxTextLength = 4096;
// Times are JSON numbers: integers of the time unit up to 2^53 are exact.
constexpr Types::Time maxTime = Types::Time(1) << 53;

struct Session
{
    std::vector<Question> questions;
    Types::Time timestamp = 0;
    Types::Time replayFrom = -1; // -1: a wrong answer does not send the viewer back

    friend EDITORUTIL_EXPORT bool operator==(const Session& a, const Session& b);
};

// The built-in quizzes (one multiple-choice, one true-or-false, one several-correct question),
// in the user's language; each one passes questionsFromJson(toJson(...)).
EDITORUTIL_EXPORT std::vector<std::unique_ptr<Preset>> defaultQuizzes();

EDITORUTIL_EXPORT QJsonObject toJson(const std::vector<Question>& questions);
EDITORUTIL_EXPORT QJsonObject toJson(const Session& session);
// The questions of a description; nothing (and the reason in `error`) when it is not valid.
EDITORUTIL_EXPORT std::optional<std::vector<Question>> questionsFromJson(const QJsonObject& object,
                                                                         QString* error = nullptr);
// A session; "replayFrom" without the trailing space is read too. A replay target must come
// before the quiz.
EDITORUTIL_EXPORT std::optional<Session> sessionFromJson(const QJsonObject& object, QString* error = nullptr);

// Compact UTF-8 text of a session, and back from text (at most maxDocumentBytes).
EDITORUTIL_EXPORT QByteArray write(const Session& session);
EDITORUTIL_EXPORT std::optional<Session> read(const QByteArray& json, QString* error = nullptr);
// The same for questions alone (what a dragged quiz preset carries).
EDITORUTIL_EXPORT QByteArray writeQuestions(const std::vector<Question>& questions);
EDITORUTIL_EXPORT std::optional<std::vector<Question>> readQuestions(const QByteArray& json, QString* error = nullptr);

} // namespace Quiz::Utils
