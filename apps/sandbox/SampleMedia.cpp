#include "SampleMedia.h"

#include <MediaEngine/SampleWriter.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace SampleMedia {

QString barsFile() { return QStringLiteral("bars-clock.mp4"); }
QString shapeFile() { return QStringLiteral("moving-shape.mkv"); }
QString toneFile() { return QStringLiteral("tone.wav"); }
QString stillFile() { return QStringLiteral("still.png"); }
QString brokenFile() { return QStringLiteral("broken.mp4"); }

namespace {

constexpr int frameRate = 25;

void paintBars(QImage& picture, int frame)
{
    static const QColor bars[] = {Qt::white, Qt::yellow, Qt::cyan, Qt::green, Qt::magenta, Qt::red, Qt::blue};
    QPainter p(&picture);
    const int w = picture.width();
    const int h = picture.height();
    for (int i = 0; i < 7; ++i)
        p.fillRect(QRect(i * w / 7, 0, (i + 1) * w / 7 - i * w / 7, h * 2 / 3), bars[i]);
    p.fillRect(QRect(0, h * 2 / 3, w, h - h * 2 / 3), QColor(20, 20, 20));
    const int seconds = frame / frameRate;
    p.setPen(Qt::white);
    p.setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 20, QFont::Bold));
    p.drawText(QRect(0, h * 2 / 3, w, h / 3), Qt::AlignCenter,
               QStringLiteral("00:%1.%2")
                   .arg(seconds, 2, 10, QLatin1Char('0'))
                   .arg(frame % frameRate, 2, 10, QLatin1Char('0')));
}

void paintShape(QImage& picture, int frame)
{
    QPainter p(&picture);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, picture.height());
    sky.setColorAt(0, QColor(30, 60, 120));
    sky.setColorAt(1, QColor(10, 20, 40));
    p.fillRect(picture.rect(), sky);
    const double t = double(frame) / frameRate;
    const double x = 30 + (picture.width() - 60) * (0.5 + 0.5 * std::sin(t * 2.1));
    const double y = 30 + (picture.height() - 60) * (0.5 + 0.5 * std::cos(t * 3.3));
    p.setBrush(QColor(255, 170, 0));
    p.setPen(QPen(Qt::white, 3));
    p.drawEllipse(QPointF(x, y), 24, 24);
}

QImage stillPicture()
{
    QImage image(640, 360, QImage::Format_RGB32);
    QPainter p(&image);
    QLinearGradient g(0, 0, 640, 360);
    g.setColorAt(0, QColor(40, 120, 90));
    g.setColorAt(1, QColor(220, 200, 80));
    p.fillRect(image.rect(), g);
    p.setPen(Qt::white);
    p.setFont(QFont(QStringLiteral("DejaVu Sans"), 40, QFont::Bold));
    p.drawText(image.rect(), Qt::AlignCenter, QStringLiteral("Still picture"));
    return image;
}

} // namespace

QStringList ensure(const QString& folder, QString* error)
{
    QString reason;
    const QDir dir(folder);
    if (!QDir().mkpath(folder)) {
        if (error)
            *error = QStringLiteral("cannot make %1").arg(folder);
        return {};
    }
    const QString bars = dir.filePath(barsFile());
    const QString shape = dir.filePath(shapeFile());
    const QString tone = dir.filePath(toneFile());
    const QString still = dir.filePath(stillFile());
    const QString broken = dir.filePath(brokenFile());
    bool ok = true;
    if (!QFileInfo::exists(bars)) {
        MediaEngine::ClipRecipe recipe;
        recipe.frameRate = frameRate;
        recipe.frameCount = 4 * frameRate;
        recipe.paintFrame = paintBars;
        recipe.toneHz = 440;
        ok = MediaEngine::writeClip(bars, recipe, &reason);
    }
    if (ok && !QFileInfo::exists(shape)) {
        MediaEngine::ClipRecipe recipe;
        recipe.frameRate = frameRate;
        recipe.frameCount = 3 * frameRate;
        recipe.paintFrame = paintShape;
        ok = MediaEngine::writeClip(shape, recipe, &reason);
    }
    if (ok && !QFileInfo::exists(tone))
        ok = MediaEngine::writeTone(tone, 3.0, 660, 44100, &reason);
    if (ok && !QFileInfo::exists(still)) {
        ok = stillPicture().save(still);
        reason = QStringLiteral("cannot write %1").arg(still);
    }
    if (ok && !QFileInfo::exists(broken)) {
        QFile source(bars);
        QFile target(broken);
        ok = source.open(QIODevice::ReadOnly) && target.open(QIODevice::WriteOnly)
             && target.write(source.read(4096)) == 4096;
        reason = QStringLiteral("cannot write %1").arg(broken);
    }
    if (!ok) {
        if (error)
            *error = reason;
        return {};
    }
    return {bars, shape, tone, still, broken};
}

} // namespace SampleMedia
