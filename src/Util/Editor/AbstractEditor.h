#pragma once

#include <Util/EditorUtilExport.h>

#include <QObject>

// A participant in an edit session. The session's three steps reach it as signals:
// load() when the session begins, apply() when the work is committed, reset() when it is
// discarded. Calling one of them announces that step to everything connected.
class EDITORUTIL_EXPORT AbstractEditor : public QObject
{
    Q_OBJECT

public:
    explicit AbstractEditor(QObject* parent);
    ~AbstractEditor() override;

signals:
    void load();
    void apply();
    void reset();
};
