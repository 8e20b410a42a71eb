#include "SceneEditor.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGraphicsScene>
#include <QPixmap>

#include <glog/logging.h>

#include <algorithm>

namespace {
// The event that asks for a background redraw.
constexpr QEvent::Type RedrawEvent = QEvent::Type(1000);
} // namespace

// Receives the posted redraw requests. Every request is posted, and the redraw runs when
// the last one of a burst arrives, so requests made in one turn of the loop draw once.
class SceneEditor::BackgroundReceiver : public QObject
{
public:
    explicit BackgroundReceiver(SceneEditor* editor) : m_editor(editor) {}

    void post()
    {
        ++m_pending;
        QCoreApplication::postEvent(this, new QEvent(RedrawEvent), 0);
    }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != RedrawEvent)
            return QObject::event(event);
        if (--m_pending == 0) {
            // The event loop is no place for an exception: a missing delegate is logged.
            try {
                m_editor->updateBackground();
            } catch (const std::bad_function_call&) {
                LOG(ERROR) << "SceneEditor: no background delegate; the scene background is not drawn";
            }
        }
        return true;
    }

private:
    SceneEditor* m_editor;
    int m_pending = 0;
};

SceneEditor::SceneEditor(AbstractEditor& parent, const Editor::Object* editor)
    : ChainedEditor(parent, editor),
      m_sceneClient(new ExclusiveClient(nullptr, this)),
      m_receiver(std::make_unique<BackgroundReceiver>(this))
{}

SceneEditor::~SceneEditor() = default;

SceneHelper* SceneEditor::sceneHelper() { return m_sceneHelper; }

const SceneHelper* SceneEditor::sceneHelper() const { return m_sceneHelper; }

void SceneEditor::setSceneHelper(SceneHelper* helper)
{
    SceneHelper* const previous = m_sceneHelper;
    if (previous == helper)
        return;
    for (const QMetaObject::Connection& connection : qAsConst(m_helperConnections))
        disconnect(connection);
    m_helperConnections.clear();

    m_sceneHelper = helper;
    if (helper) {
        m_helperConnections << connect(helper->scene(), &QGraphicsScene::sceneRectChanged, this,
                                       [this](const QRectF& rect) {
                                           emit sceneRectChanged(rect);
                                           scheduleBackground();
                                       });
        m_helperConnections << connect(helper, &SceneHelper::sceneBackgroundChanged, this,
                                       &SceneEditor::sceneBackgroundReplaced);
    }
    m_sceneClient->setService(helper ? helper->service() : nullptr);
    emit sceneHelperChanged(previous, helper);
}

ExclusiveClient* SceneEditor::sceneClient() const { return m_sceneClient; }

void SceneEditor::setBackgroundDelegate(BackgroundDelegate delegate) { m_backgroundDelegate = std::move(delegate); }

void SceneEditor::setSceneSizeDelegate(SceneSizeDelegate delegate) { m_sceneSizeDelegate = std::move(delegate); }

bool SceneEditor::backgroundPreviewEnabled() const { return m_backgroundPreviewEnabled; }

void SceneEditor::enableBackgroundPreview(bool enabled) { m_backgroundPreviewEnabled = enabled; }

bool SceneEditor::backgroundUpdatesBlocked() const { return m_backgroundBlocked; }

void SceneEditor::blockBackgroundUpdates(bool blocked) { m_backgroundBlocked = blocked; }

void SceneEditor::setVideo(const Media::Video* video)
{
    if (video == m_video)
        return;
    if (m_video && isObserved(m_video))
        forget(m_video);
    m_video = video;
    if (video)
        observe(video);
}

const Media::Video* SceneEditor::video() const { return m_video; }

Types::Time SceneEditor::clipEditTime(const Timeline::Clip* clip)
{
    if (!clip)
        return 0;
    const Timeline::Object* owner = Timeline::ownerOf(clip);
    const Timeline::ClipTiming timing = owner ? owner->clipTiming(clip) : Timeline::ClipTiming();
    const Types::Time start = timing.start();
    const Types::Time last = timing.end() - start - 1;
    const std::optional<Types::Time> position = Editor::editPosition(clip);
    const Types::Time offset = position ? *position - start : 0;
    return std::max(std::min(last, offset), Types::Time(0));
}

void SceneEditor::scheduleBackground()
{
    if (m_backgroundBlocked)
        return;
    m_receiver->post();
}

void SceneEditor::updateBackground()
{
    const Editor::Object* session = editor();
    if (!m_backgroundPreviewEnabled || !session || !session->canEdit())
        return;
    const Timeline::Clip* clip = session->clip;
    const std::shared_ptr<const Types::Image> frame = m_backgroundDelegate(clip, clipEditTime(clip));
    if (!m_sceneHelper)
        return;
    const QSize size = m_sceneHelper->scene()->sceneRect().size().toSize();
    QPixmap pixmap = frame ? QPixmap::fromImage(*frame) : QPixmap();
    if (!pixmap.isNull())
        pixmap = pixmap.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_drawingBackground = true;
    m_sceneHelper->setSceneBackground(pixmap);
    m_drawingBackground = false;
}

void SceneEditor::sceneBackgroundReplaced(const QPixmap& pixmap)
{
    // A background cleared by somebody else (a scene reset) is drawn again.
    if (!m_drawingBackground && pixmap.isNull() && m_backgroundPreviewEnabled)
        scheduleBackground();
}

void SceneEditor::onLoad()
{
    const Editor::Object* session = editor();
    const Timeline::Clip* clip = session ? session->clip : nullptr;
    const QSizeF size = m_sceneSizeDelegate(session, clip);
    if (m_sceneHelper)
        m_sceneHelper->scene()->setSceneRect(QRectF(QPointF(0, 0), size));
    // A session that edits no clip has no use for the scene.
    if (m_sceneClient->isInUse() && !(session && session->canEdit()))
        m_sceneClient->breakAll();
    ChainedEditor::onLoad();
}

void SceneEditor::onApply() { ChainedEditor::onApply(); }

void SceneEditor::onReset()
{
    ChainedEditor::onReset();
    m_sceneClient->finalize();
}

void SceneEditor::videoChanged(const Media::Video*, const Media::Video* current)
{
    if (!m_sceneHelper || !current)
        return;
    const QSizeF scene = m_sceneHelper->scene()->sceneRect().size();
    const QSizeF frame(QSize(current->width, current->height));
    if (qFuzzyCompare(scene.width(), frame.width()) && qFuzzyCompare(scene.height(), frame.height()))
        return;
    if (m_sceneClient->isInUse())
        emit sceneBecomeUnavailable();
}

void SceneEditor::videoRemoved(const Media::Video* video)
{
    if (video == m_video)
        m_video = nullptr;
}
