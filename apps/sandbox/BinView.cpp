#include "BinView.h"

#include <Util/Filesystem.h>
#include <Util/Format.h>
#include <Util/Import/DragAndDropHandler.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>
#include <Util/Sticky/StickyGrid.h>

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGraphicsPixmapItem>
#include <QGraphicsRectItem>
#include <QGraphicsSimpleTextItem>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

#include <algorithm>
#include <optional>

namespace Sandbox {

// One file of the bin: thumbnail, name, then length and picture size (or why it failed).
class BinTile : public QGraphicsRectItem
{
public:
    BinTile(const Media::File* file, BinView* view)
        : QGraphicsRectItem(0, 0, BinView::tileWidth - 8, BinView::tileHeight - 8), file(file)
    {
        setPen(QPen(QColor(90, 90, 96)));
        setBrush(QColor(48, 48, 54));
        m_picture = new QGraphicsRectItem(5, 5, BinView::tileWidth - 18, 72, this);
        m_picture->setPen(Qt::NoPen);
        m_picture->setBrush(QColor(20, 20, 22));
        m_thumbnail = new QGraphicsPixmapItem(this);
        m_thumbnail->setPos(5, 5);
        const QFontMetrics metrics{QFont()};
        auto* name = new QGraphicsSimpleTextItem(metrics.elidedText(QFileInfo(file->path().toQString()).fileName(),
                                                                    Qt::ElideMiddle, BinView::tileWidth - 20),
                                                 this);
        name->setBrush(QColor(230, 230, 230));
        name->setPos(6, 80);
        auto* info = new QGraphicsSimpleTextItem(
            metrics.elidedText(describe(file), Qt::ElideRight, BinView::tileWidth - 20), this);
        info->setBrush(file->isFailed() ? QColor(240, 120, 110) : QColor(160, 160, 170));
        info->setPos(6, 97);
        setFlag(QGraphicsItem::ItemClipsChildrenToShape);
        if (file->isFailed()) {
            setOpacity(0.55);
            return;
        }
        const Media::Video* video = file->mainVideo();
        if (!video) {
            auto* note = new QGraphicsSimpleTextItem(QStringLiteral("\u266A"), this);
            note->setFont(QFont(QStringLiteral("DejaVu Sans"), 30));
            note->setBrush(QColor(90, 190, 120));
            note->setPos(BinView::tileWidth / 2 - 18, 16);
            return;
        }
        m_requester = new Util::ThumbnailRequester(Resource::encode(file, video), view);
        m_requester->setSize(BinView::tileWidth - 18, 72);
        m_requester->setResizeMode(Util::ThumbnailRequester::KeepAspectRatio);
        m_requester->setPaddingColor(QColor(20, 20, 22));
        QObject::connect(m_requester, &Util::ThumbnailRequester::thumbnailReady, view,
                         [this, view](Types::Time, const QPixmap& pixmap) {
                             m_thumbnail->setPixmap(pixmap);
                             m_hasThumbnail = !pixmap.isNull();
                             emit view->thumbnailArrived(this->file);
                         });
        // A second in, or the middle of a shorter clip.
        const Types::Time at = video->stillImage ? 0 : std::min(Types::TimeUnitsPerSecond, file->duration() / 2);
        m_requester->request(qint64(at));
    }
    ~BinTile() override { delete m_requester; }

    // A thumbnail still asked for is not drawn.
    void cancelThumbnail()
    {
        if (m_requester && !m_hasThumbnail)
            m_requester->cancel();
    }

    static QString describe(const Media::File* file)
    {
        if (file->isFailed())
            return BinView::tr("cannot be opened");
        const Media::Video* video = file->mainVideo();
        if (video && video->stillImage)
            return BinView::tr("picture  %1").arg(Format::videoResolution(video));
        const QString length = Format::time(int(file->duration() / Types::TimeUnitsPerSecond));
        return video ? QStringLiteral("%1  %2").arg(length, Format::videoResolution(video))
                     : QStringLiteral("%1  %2").arg(length, BinView::tr("sound"));
    }

    const Media::File* file;
    bool m_hasThumbnail = false;

private:
    QGraphicsRectItem* m_picture;
    QGraphicsPixmapItem* m_thumbnail;
    Util::ThumbnailRequester* m_requester = nullptr;
};

BinView::BinView(QWidget* parent) : QGraphicsView(parent), m_grid(new StickyGrid(this))
{
    setScene(new QGraphicsScene(this));
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setBackgroundBrush(QColor(34, 34, 38));
    m_grid->setDirection(StickyGrid::Rows);
    m_grid->setOrigin(QPointF(6, 6));
    m_grid->setSpacing(QPointF(8, 8));
    m_grid->setWidth(2 * tileWidth);
    setMinimumWidth(2 * tileWidth + 30);
    setAcceptDrops(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

BinView::~BinView() { clear(); }

void BinView::setDropTimeline(const Timeline::Object* timeline)
{
    m_drops.reset();
    if (!timeline)
        return;
    m_drops = std::make_unique<DragAndDropHandler>(timeline);
    connect(m_drops.get(), &DragAndDropHandler::projectDropped, this, &BinView::projectDropped);
    connect(m_drops.get(), &DragAndDropHandler::statusChanged, this, &BinView::dropStatus);
    connect(m_drops.get(), &DragAndDropHandler::dropRefused, this, &BinView::dropRefused);
}

void BinView::addFile(const Media::File* file)
{
    const QString path = file ? Filesystem::cleanPath(file->path().toQString()) : QString();
    if (!file || tileOf(file) || std::any_of(m_files.begin(), m_files.end(), [&](const Media::File* f) {
            return Filesystem::cleanPath(f->path().toQString()) == path;
        }))
        return;
    auto* tile = new BinTile(file, this);
    scene()->addItem(tile);
    m_files.push_back(file);
    m_tiles.push_back(tile);
    // Appended after the last tile.
    StickyArea::StickyPoint point(m_grid, QPointF(), 0, int(m_grid->count()));
    m_grid->insertItem(point, tile, false);
    m_grid->updateLayout(nullptr);
    scene()->setSceneRect(scene()->itemsBoundingRect().adjusted(-6, -6, 6, 6));
}

void BinView::clear()
{
    m_grid->clear();
    for (BinTile* tile : m_tiles)
        delete tile;
    m_tiles.clear();
    m_files.clear();
}

int BinView::thumbnailCount() const
{
    return int(std::count_if(m_tiles.begin(), m_tiles.end(), [](BinTile* tile) { return tile->m_hasThumbnail; }));
}

BinTile* BinView::tileOf(const Media::File* file) const
{
    for (BinTile* tile : m_tiles)
        if (tile->file == file)
            return tile;
    return nullptr;
}

const Media::File* BinView::fileAt(const QPoint& viewportPos) const
{
    for (QGraphicsItem* item : items(viewportPos))
        for (QGraphicsItem* i = item; i; i = i->parentItem())
            if (auto* tile = dynamic_cast<BinTile*>(i))
                return tile->file;
    return nullptr;
}

void BinView::cancelThumbnails()
{
    for (BinTile* tile : m_tiles)
        tile->cancelThumbnail();
}

QPoint BinView::tilePoint(const Media::File* file) const
{
    BinTile* tile = tileOf(file);
    return tile ? mapFromScene(tile->sceneBoundingRect().center()) : QPoint(-1, -1);
}

QMimeData* BinView::mimeDataFor(const QStringList& paths)
{
    auto* data = new QMimeData;
    MimeUtils::packFiles(data, paths);
    MimeUtils::setMimeDragAsrc(data, QStringLiteral("bin"));
    return data;
}

void BinView::mousePressEvent(QMouseEvent* event)
{
    m_pressPos = event->pos();
    m_pressed = fileAt(event->pos());
    QGraphicsView::mousePressEvent(event);
}

void BinView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressed && m_pressed->isOpened() && (event->buttons() & Qt::LeftButton)
        && (event->pos() - m_pressPos).manhattanLength() >= QApplication::startDragDistance()) {
        const Media::File* file = std::exchange(m_pressed, nullptr);
        auto* drag = new QDrag(this);
        drag->setMimeData(mimeDataFor({file->path().toQString()}));
        drag->exec(Qt::CopyAction);
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void BinView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (const Media::File* file = fileAt(event->pos()))
        emit fileActivated(file);
}

void BinView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    relayout();
}

// The bin's own tiles are not dropped back on it.
void BinView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_drops || event->source() == this)
        return event->ignore();
    m_drops->dragEnterEvent(event, DragAndDropHandler::Target());
}

void BinView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_drops || event->source() == this)
        return event->ignore();
    m_drops->dragMoveEvent(event, DragAndDropHandler::Target());
}

void BinView::dragLeaveEvent(QDragLeaveEvent* event)
{
    if (m_drops)
        m_drops->dragLeaveEvent(event);
}

void BinView::dropEvent(QDropEvent* event)
{
    if (!m_drops || event->source() == this)
        return event->ignore();
    const QMimeData* data = event->mimeData();
    const DragAndDropHandler::Assessment assessment = m_drops->assess(data, DragAndDropHandler::Target());
    if (assessment.kind != DragAndDropHandler::Kind::Files || !assessment.accepted)
        return m_drops->dropEvent(event, DragAndDropHandler::Target());
    // Files are the window's to import, with its progress and Cancel.
    m_drops->dragLeaveEvent(nullptr);
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    QString error;
    const std::optional<QStringList> files = DragAndDropHandler::expandDroppedPaths(paths, &error);
    if (!files) {
        event->ignore();
        emit dropRefused(error);
        return;
    }
    event->acceptProposedAction();
    emit filesDropped(*files);
}

void BinView::relayout()
{
    const double columns = std::max(1, (viewport()->width() - 6) / tileWidth);
    m_grid->setWidth(columns * tileWidth);
    m_grid->updateLayout(nullptr);
    scene()->setSceneRect(scene()->itemsBoundingRect().adjusted(-6, -6, 6, 6));
}

} // namespace Sandbox
