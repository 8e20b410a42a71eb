#include "SceneHelper.h"

#include "ExclusiveService.h"

#include <QGraphicsScene>
#include <QPainter>

class SceneHelper::Scene : public QGraphicsScene
{
public:
    using QGraphicsScene::QGraphicsScene;

    QPixmap background;

protected:
    void drawBackground(QPainter* painter, const QRectF& rect) override
    {
        QGraphicsScene::drawBackground(painter, rect);
        if (!background.isNull())
            painter->drawPixmap(sceneRect(), background, QRectF(background.rect()));
    }
};

SceneHelper::SceneHelper(QObject* parent)
    : QObject(parent), m_scene(new Scene(this)), m_service(new ExclusiveService(this))
{}

SceneHelper::~SceneHelper() = default;

QGraphicsScene* SceneHelper::scene() const { return m_scene; }

ExclusiveService* SceneHelper::service() const { return m_service; }

QPixmap SceneHelper::sceneBackground() const { return m_scene->background; }

void SceneHelper::setSceneBackground(const QPixmap& pixmap)
{
    const QPixmap& current = m_scene->background;
    if (current.isNull() == pixmap.isNull() && (pixmap.isNull() || current.cacheKey() == pixmap.cacheKey()))
        return;
    m_scene->background = pixmap;
    m_scene->update();
    emit sceneBackgroundChanged(pixmap);
}
