#pragma once

#include <Util/EditorUtilExport.h>

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>

#include <memory>

class QAction;

// Usage counts of actions, for a "most used" list. An action carries its tag in the dynamic
// property "statisticsTag"; each trigger adds one to the tag's count. Counts are kept in the
// editor's settings ("ActionUsage") so they survive a restart; nothing is published or sent
// anywhere. GUI thread only.
class EDITORUTIL_EXPORT ActionStatistics : public QObject
{
    Q_OBJECT
public:
    // Reads the stored counts.
    explicit ActionStatistics(QObject* parent = nullptr);
    ~ActionStatistics() override;

    // Counts the triggers of `action` under `tag`; a later tag replaces an earlier one, an
    // empty tag stops counting.
    void tag(QAction* action, const QString& tag);
    static QString tagOf(const QAction* action);

    // One use of `tag`, as a trigger of a tagged action records it.
    void record(const QString& tag);
    int count(const QString& tag) const;
    // The `limit` most used tags with their counts, most used first, ties by tag.
    QList<QPair<QString, int>> mostUsed(int limit = 10) const;
    // Every count back to zero, in the settings too.
    void clear();

Q_SIGNALS:
    void recorded(const QString& tag, int count);

private:
    class Private;
    std::unique_ptr<Private> d;
};
