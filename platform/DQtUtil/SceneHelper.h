#pragma once

#include <QObject>
#include <QPixmap>

class ExclusiveService;
class QGraphicsScene;

// Owns the editing scene and the background picture drawn behind its items, scaled to the
// scene rectangle. Panels that place items on the scene take it through service().
class SceneHelper : public QObject
{
    Q_OBJECT

public:
    explicit SceneHelper(QObject* parent = nullptr);
    ~SceneHelper() override;

    QGraphicsScene* scene() const;
    // The exclusive-use service of the scene: one editor at a time works on it.
    ExclusiveService* service() const;

    QPixmap sceneBackground() const;
    // Shows `pixmap` behind the scene's items; a null pixmap clears the background.
    // Signals only when the picture changes.
    void setSceneBackground(const QPixmap& pixmap);

signals:
    void sceneBackgroundChanged(QPixmap pixmap);

private:
    class Scene;
    Scene* m_scene;
    ExclusiveService* m_service;
};
