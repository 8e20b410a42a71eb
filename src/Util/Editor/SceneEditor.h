#pragma once

#include <Util/Editor/ChainedEditor.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorModel.h>

#include <QPointer>
#include <QRectF>
#include <QSizeF>

#include <functional>
#include <memory>

// The participant of an edit session that keeps the editor's scene in step with the edited
// clip: at load() the scene gets the size of the edited object, and, while background
// preview is on, a still frame of the clip (at its edit time) is drawn behind the items,
// scaled to the scene. Redraws are deferred to the event loop: any number of requests in one
// turn of the loop draw once. The scene is used exclusively through sceneClient(); when the
// observed video no longer has the scene's size, a holder of the scene is told
// sceneBecomeUnavailable().
class EDITORUTIL_EXPORT SceneEditor : public ChainedEditor, public Media::View<Media::Video>
{
    Q_OBJECT

public:
    using BackgroundDelegate = std::function<std::shared_ptr<const Types::Image>(const Timeline::Clip*, Types::Time)>;
    using SceneSizeDelegate = std::function<QSizeF(const Editor::Object*, const Timeline::Clip*)>;

    SceneEditor(AbstractEditor& parent, const Editor::Object* editor);
    ~SceneEditor() override;

    SceneHelper* sceneHelper();
    const SceneHelper* sceneHelper() const;
    // Works on `helper`'s scene from now on (null: none) and takes the scene's exclusive-use
    // service for sceneClient(). Signals sceneHelperChanged(from, to) on a real change.
    void setSceneHelper(SceneHelper* helper);
    ExclusiveClient* sceneClient() const;

    // Gives the frame of a clip at a time within the clip (required by a redraw).
    void setBackgroundDelegate(BackgroundDelegate delegate);
    // Gives the scene size for the edited object (required by load()).
    void setSceneSizeDelegate(SceneSizeDelegate delegate);

    bool backgroundPreviewEnabled() const;
    // Redraws nothing by itself.
    void enableBackgroundPreview(bool enabled);
    // While blocked, scheduleBackground() asks for nothing.
    bool backgroundUpdatesBlocked() const;
    void blockBackgroundUpdates(bool blocked);

    // The video whose frame size the scene must keep (null: none).
    void setVideo(const Media::Video* video);
    const Media::Video* video() const;

    // The time within `clip` at which it is edited: the session's edit position relative to
    // the clip's start, kept inside the clip; 0 without one (and for a null clip).
    static Types::Time clipEditTime(const Timeline::Clip* clip);

    // Draws the background now (normally called from the event loop after
    // scheduleBackground()). Throws std::bad_function_call without a background delegate.
    void updateBackground();

signals:
    void sceneHelperChanged(SceneHelper* from, SceneHelper* to);
    void sceneRectChanged(QRectF rect);
    void sceneBecomeUnavailable();

public slots:
    // Asks for a redraw of the background on the event loop.
    void scheduleBackground();

private slots:
    void onLoad() override;
    void onApply() override;
    void onReset() override;

protected:
    void videoChanged(const Media::Video* previous, const Media::Video* current) override;
    void videoRemoved(const Media::Video* video) override;

private:
    class BackgroundReceiver;

    void sceneBackgroundReplaced(const QPixmap& pixmap);

    QPointer<SceneHelper> m_sceneHelper;
    ExclusiveClient* m_sceneClient;
    BackgroundDelegate m_backgroundDelegate;
    SceneSizeDelegate m_sceneSizeDelegate;
    bool m_backgroundPreviewEnabled = false;
    bool m_backgroundBlocked = false;
    bool m_drawingBackground = false;
    std::unique_ptr<BackgroundReceiver> m_receiver;
    const Media::Video* m_video = nullptr;
    QList<QMetaObject::Connection> m_helperConnections;
};
