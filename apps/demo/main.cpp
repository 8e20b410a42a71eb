// Sticky layout demo: a magnetic line, a free line and a grid combined in one composite area
// of a QGraphicsScene. A scripted series of drops is offered to the composite, each sticky
// point and the final position of every item is printed, and the scene is rendered to a PNG
// (sticky-demo.png in the current directory, or the path given as first argument).
#include <Util/EditorUtil.h>
#include <Util/Sticky/StickyCompositeArea.h>
#include <Util/Sticky/StickyFreeLine.h>
#include <Util/Sticky/StickyGrid.h>
#include <Util/Sticky/StickyMagneticLine.h>

#include <QApplication>
#include <QFileInfo>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsSimpleTextItem>
#include <QImage>
#include <QPainter>
#include <QPen>

#include <glog/logging.h>

#include <cstdio>
#include <vector>

namespace {

// Data role holding an item's name.
constexpr int NameRole = 0;

struct Lane
{
    StickyArea* area;
    QString name;
    QGraphicsRectItem* root;
};

QString text(const QPointF& p) { return QStringLiteral("(%1, %2)").arg(p.x()).arg(p.y()); }

QString nameOf(const QGraphicsItem* item) { return item->data(NameRole).toString(); }

void print(const QString& line) { std::printf("%s\n", qPrintable(line)); }

QGraphicsRectItem* makeClip(QGraphicsScene& scene, const QString& name, double w, double h, const QColor& color)
{
    auto* item = new QGraphicsRectItem(0, 0, w, h);
    item->setPen(Qt::NoPen);
    item->setBrush(color);
    item->setData(NameRole, name);
    item->setZValue(1);
    auto* label = new QGraphicsSimpleTextItem(name, item);
    label->setBrush(Qt::white);
    label->setPos(4, 2);
    scene.addItem(item);
    return item;
}

QGraphicsRectItem* makeLane(QGraphicsScene& scene, const QString& name, const QRectF& rect)
{
    QGraphicsRectItem* lane = scene.addRect(rect, QPen(QColor(170, 170, 170)), QColor(242, 242, 242));
    QGraphicsSimpleTextItem* label = scene.addSimpleText(name);
    label->setBrush(QColor(90, 90, 90));
    label->setPos(rect.left(), rect.top() - 16);
    return lane;
}

} // namespace

int main(int argc, char** argv)
{
    // Runs without a display: the scene is rendered offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    google::InitGoogleLogging(argv[0]);
    FLAGS_logtostderr = true;
    QApplication app(argc, argv);

    const QString output = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("sticky-demo.png");

    QGraphicsScene scene;
    scene.setSceneRect(0, -30, 600, 400);

    StickyMagneticLine magnetic;
    magnetic.setOrigin(QPointF(20, 10));
    StickyFreeLine freeLine;
    freeLine.setOrigin(QPointF(20, 90));
    StickyGrid grid;
    grid.setOrigin(QPointF(20, 170));
    grid.setWidth(360);
    grid.setSpacing(QPointF(10, 10));
    grid.enableHeightTracking(true);
    QObject::connect(&grid, &StickyArea::heightChanged,
                     [](double h) { print(QStringLiteral("  (grid height is now %1)").arg(h)); });

    const std::vector<Lane> lanes{
        {&magnetic, QStringLiteral("magnetic line"),
         makeLane(scene, QStringLiteral("magnetic line"), {10, 0, 580, 50})},
        {&freeLine, QStringLiteral("free line"), makeLane(scene, QStringLiteral("free line"), {10, 80, 580, 50})},
        {&grid, QStringLiteral("grid"), makeLane(scene, QStringLiteral("grid"), {10, 160, 580, 200})}};

    StickyCompositeArea composite;
    composite.setObjectName(QStringLiteral("editing surface"));
    for (const Lane& lane : lanes) {
        lane.area->setObjectName(lane.name);
        composite.addStickySlot(lane.area, lane.root);
    }

    print(QStringLiteral("EditorUtil %1 sticky layout demo").arg(EditorUtil::version()));
    for (size_t slot = 0; slot < lanes.size(); ++slot)
        print(
            QStringLiteral("slot %1: %2, origin %3").arg(slot).arg(lanes[slot].name, text(lanes[slot].area->origin())));

    struct Drop
    {
        QString name;
        double width;
        double height;
        QPointF at;
        QColor color;
    };
    const std::vector<Drop> script{
        {QStringLiteral("Intro"), 120, 30, {60, 15}, QColor(52, 101, 164)},
        {QStringLiteral("Interview"), 160, 30, {150, 15}, QColor(78, 154, 6)},
        {QStringLiteral("B-roll"), 80, 30, {30, 12}, QColor(196, 160, 0)},
        {QStringLiteral("Music"), 60, 30, {150, 8}, QColor(92, 53, 102)},
        {QStringLiteral("Title"), 90, 30, {250, 95}, QColor(117, 80, 123)},
        {QStringLiteral("Logo"), 40, 30, {10, 100}, QColor(204, 0, 0)},
        {QStringLiteral("Lower third"), 100, 30, {140, 88}, QColor(206, 92, 0)},
        {QStringLiteral("Still 1"), 100, 40, {50, 200}, QColor(32, 74, 135)},
        {QStringLiteral("Still 2"), 100, 40, {60, 230}, QColor(78, 154, 6)},
        {QStringLiteral("Still 3"), 100, 60, {150, 190}, QColor(143, 89, 2)},
    };

    // The composite's point names a slot in its index; once placed, the sub-area tells where
    // the item stands in its own order.
    auto describePoint = [&](const QString& what, const StickyArea::StickyPoint& point) {
        const bool placed = point.index >= 0 && point.index < static_cast<int>(lanes.size());
        const QString slotName = placed ? lanes[static_cast<size_t>(point.index)].name : QStringLiteral("no slot");
        print(QStringLiteral("%1 -> area \"%2\", level %3, index %4 (slot \"%5\"), pos %6")
                  .arg(what, point.area->objectName())
                  .arg(point.level)
                  .arg(point.index)
                  .arg(slotName, text(point.pos)));
    };
    auto describePlacement = [&](const StickyArea::StickyPoint& point, QGraphicsItem* item) {
        if (point.index < 0 || point.index >= static_cast<int>(lanes.size()))
            return;
        StickyArea* area = lanes[static_cast<size_t>(point.index)].area;
        const StickyArea::StickyPoint inArea = area->itemPoint(item);
        print(QStringLiteral("     in the %1: level %2, index %3, pos %4")
                  .arg(area->objectName())
                  .arg(inArea.level)
                  .arg(inArea.index)
                  .arg(text(inArea.pos)));
    };

    QList<QGraphicsItem*> clips;
    for (const Drop& drop : script) {
        QGraphicsRectItem* clip = makeClip(scene, drop.name, drop.width, drop.height, drop.color);
        clip->setPos(drop.at); // where the user let go of it
        const StickyArea::StickyPoint point = composite.findStickyPoint(drop.at, clip);
        describePoint(QStringLiteral("drop \"%1\" (%2 wide) at %3").arg(drop.name).arg(drop.width).arg(text(drop.at)),
                      point);
        composite.insertItem(point, clip, false);
        composite.updateLayout(clip);
        describePlacement(point, clip);
        clips.append(clip);
    }

    // A move between areas: B-roll leaves the magnetic line (which closes the gap) for the grid.
    QGraphicsItem* broll = clips.at(2);
    const QPointF moveTo(260, 185);
    const StickyArea::StickyPoint movePoint = composite.findStickyPoint(moveTo, broll);
    describePoint(QStringLiteral("move \"%1\" to %2").arg(nameOf(broll), text(moveTo)), movePoint);
    composite.moveItem(movePoint, broll);
    composite.updateLayout(broll);
    describePlacement(movePoint, broll);

    print(QStringLiteral("final positions:"));
    for (const Lane& lane : lanes) {
        print(QStringLiteral("  %1 (%2 items, height %3):")
                  .arg(lane.name)
                  .arg(lane.area->count())
                  .arg(lane.area->height()));
        for (auto it = static_cast<const StickyArea*>(lane.area)->begin();
             it != static_cast<const StickyArea*>(lane.area)->end(); ++it) {
            const QGraphicsItem* item = *it;
            print(QStringLiteral("    \"%1\" at %2, %3 x %4")
                      .arg(nameOf(item), text(item->pos()))
                      .arg(item->boundingRect().width())
                      .arg(item->boundingRect().height()));
        }
    }
    print(QStringLiteral("magnetic line ends at x %1").arg(magnetic.width()));

    QImage image(scene.sceneRect().size().toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        scene.render(&painter);
    }
    if (!image.save(output, "PNG")) {
        LOG(ERROR) << "Could not write the scene image to " << output.toStdString();
        return 1;
    }
    print(QStringLiteral("scene rendered to %1").arg(QFileInfo(output).absoluteFilePath()));
    return 0;
}
