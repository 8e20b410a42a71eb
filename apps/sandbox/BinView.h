#pragma once

#include <Util/Interfaces/EditorModel.h>

#include <QGraphicsView>

#include <memory>
#include <set>
#include <vector>

class DragAndDropHandler;

class QMimeData;
class StickyGrid;

namespace Sandbox {

class BinTile;

// The media bin: a sticky grid of tiles, one per imported file, each with a thumbnail drawn
// by the model's thumbnail service, the file's name, length and picture size. A file that
// failed to open is shown greyed. Tiles are dragged out as file lists. Files dropped from the
// desktop are added by a DragAndDropHandler to the bin's own timeline (folders expanded, one
// question about the files that fail) and get their tiles when they land.
class BinView : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr int tileWidth = 150;
    static constexpr int tileHeight = 124;

    explicit BinView(QWidget* parent = nullptr);
    ~BinView() override;

    // The timeline desktop drops add their files to (the bin's source); null refuses drops.
    void setDropTimeline(const Timeline::Object* timeline);
    // Adds a tile for the file (once per file and path).
    void addFile(const Media::File* file);
    void clear();
    const std::vector<const Media::File*>& files() const { return m_files; }
    // Tiles whose thumbnail has arrived.
    int thumbnailCount() const;
    // The file of the tile under a viewport point, or null; the point over a file's tile.
    const Media::File* fileAt(const QPoint& viewportPos) const;
    QPoint tilePoint(const Media::File* file) const;
    // What a drag of the file carries (its path and the bin as origin).
    static QMimeData* mimeDataFor(const QStringList& paths);

Q_SIGNALS:
    void thumbnailArrived(const Media::File* file);
    void fileActivated(const Media::File* file);
    // Files dropped from the desktop have their tiles: `opened` of them opened, `failed` did not.
    void filesLanded(int opened, int failed);
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
    void landed();

    StickyGrid* m_grid;
    std::vector<const Media::File*> m_files;
    std::vector<BinTile*> m_tiles;
    QPoint m_pressPos;
    const Media::File* m_pressed = nullptr;
    std::unique_ptr<DragAndDropHandler> m_drops;
    std::set<const Timeline::Clip*> m_landed; // clips of the drop timeline already shown
};

} // namespace Sandbox
