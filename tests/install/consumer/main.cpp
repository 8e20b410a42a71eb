#include <Util/EditorUtil.h>
#include <Util/Interfaces/EditorSettings.h>
#include <Util/Sticky/StickyFreeLine.h>

#include <QApplication>
#include <QFileInfo>
#include <QGraphicsRectItem>
#include <QGraphicsScene>

#include <iostream>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    std::cout << "EditorUtil " << EditorUtil::version().toStdString() << std::endl;
    // The stock pictures of the preview providers come with the installed library.
    std::cout << "stock picture " << (QFileInfo::exists(Settings::effectPreviewImagePath()) ? "found" : "missing")
              << " at " << Settings::effectPreviewImagePath().toStdString() << std::endl;

    // Two items dropped on a free line: the second, dropped left of the line's start, is
    // placed at the start.
    QGraphicsScene scene;
    StickyFreeLine line;
    line.setOrigin(QPointF(10, 0));
    QGraphicsRectItem* first = scene.addRect(0, 0, 40, 20);
    QGraphicsRectItem* second = scene.addRect(0, 0, 30, 20);
    line.insertItem(line.findStickyPoint(QPointF(60, 5), first), first, false);
    line.insertItem(line.findStickyPoint(QPointF(-5, 5), second), second, false);
    line.updateLayout(nullptr);
    std::cout << "free line x: " << first->pos().x() << " " << second->pos().x() << std::endl;
    return line.count() == 2 ? 0 : 1;
}
