#pragma once

#include <Util/Interfaces/EditorModel.h>

#include <QGraphicsView>

#include <memory>
#include <vector>

class DragAndDropHandler;

class QMimeData;
class StickyGrid;

namespace Sandbox {

class BinTile;

// The media bin: a sticky grid of tiles, one per imported file, each with a thumbnail drawn
// by the model's thumbnail service, the file's name, length and picture size. A file that
// failed to open is shown greyed. Tiles are dragged out as file lists. A DragAndDropHandler
// answers drags from the desktop; dropped files (folders expanded, natural order) are handed on
// by filesDropped for the window to import, and a dropped project is announced.
class BinView : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr int tileWidth = 150;
    static constexpr int tileHeight = 124;

    explicit BinView(QWidget* parent = nullptr);
    ~BinView() override;

    // The timeline whose drop rules the bin answers drags by (the bin's source); null refuses drops.
    void setDropTimeline(const Timeline::Object* timeline);
    // Adds a tile for the file (once per file and path).
    void addFile(const Media::File* file);
    void clear();
    const std::vector<const Media::File*>& files() const { return m_files; }
    // Tiles whose thumbnail has arrived.
    int thumbnailCount() const;
    // Stops asking for the thumbnails not yet drawn; their tiles stay without a picture.
    void cancelThumbnails();
    // The file of the tile under a viewport point, or null; the point over a file's tile.
    const Media::File* fileAt(const QPoint& viewportPos) const;
    QPoint tilePoint(const Media::File* file) const;
    // What a drag of the file carries (its path and the bin as origin).
    static QMimeData* mimeDataFor(const QStringList& paths);

Q_SIGNALS:
    void thumbnailArrived(const Media::File* file);
    void fileActivated(const Media::File* file);
    // Files dropped from the desktop, folders expanded, in natural name order, each once.
    void filesDropped(const QStringList& paths);
    void projectDropped(const QString& path);
    // Why the drag in progress cannot land (empty while it can), or why a drop was refused.
    void dropStatus(const QString& status);
    void dropRefused(const QString& reason);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    BinTile* tileOf(const Media::File* file) const;
    void relayout();

    StickyGrid* m_grid;
    std::vector<const Media::File*> m_files;
    std::vector<BinTile*> m_tiles;
    QPoint m_pressPos;
    const Media::File* m_pressed = nullptr;
    std::unique_ptr<DragAndDropHandler> m_drops;
};

} // namespace Sandbox
