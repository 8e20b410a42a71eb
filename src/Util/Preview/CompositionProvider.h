#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QObject>

// Says which composition a preview or player is drawn in and announces when it becomes
// active (a composition is set) or inactive (none). Its owner asks for a (re)start of the
// playback through startRequested() and restartRequested(), and reports died().
class EDITORUTIL_EXPORT CompositionProvider : public QObject, public virtual PubSub::Object
{
    Q_OBJECT

public:
    explicit CompositionProvider(QObject* parent);
    ~CompositionProvider() override;

    void activate();
    void deactivate();

    const Composition::Object* composition() const;
    // Stores `composition`, then emits activated() when it is set and deactivated() when it
    // is null, every time, also when it did not change.
    void setComposition(const Composition::Object* composition);

    bool isPrimary() const;
    void setPrimary(bool primary);
    bool isUsing() const;
    void setUsing(bool used);

signals:
    void activated();
    void deactivated();
    void startRequested();
    void restartRequested();
    void died();

private:
    bool m_using = false;
    bool m_primary = false;
    const Composition::Object* m_composition = nullptr;
};
