// Draws the stock pictures that previews of effects, transitions, titles, callouts,
// quizzes, pan-and-zoom and animations are shown on, and writes them as PNG files.
// The pictures are committed in share/EditorUtil/preview; rebuild them after changing a drawing:
//
//   g++ -std=c++17 -fPIC scripts/make-stock-pictures.cpp -o /tmp/make-stock-pictures \
//       $(pkg-config --cflags --libs Qt5Gui)
//   QT_QPA_PLATFORM=offscreen /tmp/make-stock-pictures share/EditorUtil/preview

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <cstdio>
#include <functional>

namespace {

constexpr int Width = 640;
constexpr int Height = 360;

void sky(QPainter& p, QColor top, QColor horizon)
{
    QLinearGradient g(0, 0, 0, Height);
    g.setColorAt(0, top);
    g.setColorAt(1, horizon);
    p.fillRect(0, 0, Width, Height, g);
}

void hills(QPainter& p, QColor colour, double base, double amplitude, double phase)
{
    QPainterPath path(QPointF(0, Height));
    for (int x = 0; x <= Width; x += 8)
        path.lineTo(x, base + amplitude * std::sin(x / 90.0 + phase) + amplitude / 2 * std::sin(x / 37.0));
    path.lineTo(Width, Height);
    path.closeSubpath();
    p.fillPath(path, colour);
}

void sun(QPainter& p, QPointF centre, double radius, QColor colour)
{
    QRadialGradient g(centre, radius * 2);
    g.setColorAt(0, colour);
    g.setColorAt(0.5, colour);
    g.setColorAt(1, QColor(colour.red(), colour.green(), colour.blue(), 0));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawEllipse(centre, radius * 2, radius * 2);
}

// A colourful landscape, so colour filters and effects have something to work on.
void effect(QPainter& p)
{
    sky(p, QColor(70, 130, 210), QColor(250, 210, 160));
    sun(p, QPointF(470, 110), 40, QColor(255, 230, 120));
    hills(p, QColor(90, 150, 80), 250, 25, 0.0);
    hills(p, QColor(50, 110, 60), 290, 20, 2.0);
    p.fillRect(0, 320, Width, 40, QColor(60, 120, 170));
}

// Before a transition: a warm evening.
void transitionA(QPainter& p)
{
    sky(p, QColor(120, 40, 80), QColor(250, 140, 60));
    sun(p, QPointF(200, 240), 50, QColor(255, 190, 90));
    hills(p, QColor(70, 30, 40), 280, 18, 1.0);
}

// After a transition: a cool morning.
void transitionB(QPainter& p)
{
    sky(p, QColor(150, 200, 240), QColor(220, 240, 250));
    sun(p, QPointF(520, 80), 30, QColor(255, 255, 230));
    hills(p, QColor(110, 170, 150), 230, 30, 3.0);
    hills(p, QColor(60, 120, 110), 280, 22, 0.5);
}

// A dark city skyline, so light title text stands out.
void title(QPainter& p)
{
    sky(p, QColor(15, 20, 45), QColor(60, 50, 90));
    p.setPen(Qt::NoPen);
    int x = 0;
    for (int i = 0; x < Width; ++i) {
        const int w = 40 + (i * 37) % 50;
        const int h = 80 + (i * 53) % 140;
        p.fillRect(x, Height - h, w - 4, h, QColor(25, 25, 40));
        for (int wy = Height - h + 10; wy < Height - 10; wy += 18)
            for (int wx = x + 6; wx < x + w - 12; wx += 12)
                if ((wx * 7 + wy * 3 + i) % 5 == 0)
                    p.fillRect(wx, wy, 5, 8, QColor(240, 210, 120));
        x += w;
    }
}

// A bright desk with a screen on it: callouts point at things.
void callout(QPainter& p)
{
    sky(p, QColor(235, 235, 228), QColor(200, 195, 185));
    p.fillRect(0, 270, Width, 90, QColor(150, 110, 80));
    p.setPen(QPen(QColor(40, 40, 40), 6));
    p.setBrush(QColor(60, 110, 170));
    p.drawRoundedRect(QRectF(170, 60, 300, 180), 10, 10);
    p.fillRect(300, 240, 40, 30, QColor(40, 40, 40));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(230, 90, 70));
    p.drawEllipse(QPointF(540, 240), 28, 28);
}

// A green board with a faint grid, behind quiz questions and answers.
void quiz(QPainter& p)
{
    p.fillRect(0, 0, Width, Height, QColor(35, 80, 60));
    p.setPen(QPen(QColor(255, 255, 255, 30), 1));
    for (int x = 0; x < Width; x += 32)
        p.drawLine(x, 0, x, Height);
    for (int y = 0; y < Height; y += 32)
        p.drawLine(0, y, Width, y);
    p.setPen(QPen(QColor(120, 80, 40), 14));
    p.setBrush(Qt::NoBrush);
    p.drawRect(7, 7, Width - 14, Height - 14);
}

// A detailed map-like picture: pan and zoom must show where in the frame it is.
void panZoom(QPainter& p)
{
    for (int y = 0; y < Height; y += 40)
        for (int x = 0; x < Width; x += 40)
            p.fillRect(x, y, 40, 40, ((x + y) / 40) % 2 ? QColor(200, 215, 190) : QColor(180, 200, 170));
    p.setPen(QPen(QColor(70, 120, 200), 10));
    QPainterPath river(QPointF(0, 200));
    river.cubicTo(200, 100, 400, 320, Width, 150);
    p.drawPath(river);
    p.setPen(Qt::NoPen);
    const QColor marks[] = {Qt::red, QColor(240, 170, 30), QColor(120, 60, 160), Qt::darkGreen};
    const QPointF places[] = {{100, 80}, {520, 60}, {140, 300}, {540, 290}};
    for (int i = 0; i < 4; ++i) {
        p.setBrush(marks[i]);
        p.drawEllipse(places[i], 18, 18);
    }
}

// A quiet gradient for an animated picture to move over.
void animationBackground(QPainter& p)
{
    QLinearGradient g(0, 0, Width, Height);
    g.setColorAt(0, QColor(230, 235, 245));
    g.setColorAt(1, QColor(170, 185, 215));
    p.fillRect(0, 0, Width, Height, g);
}

// The animated picture itself: a star on a transparent ground.
void animationIcon(QPainter& p)
{
    const double c = 64, outer = 58, inner = 24;
    QPainterPath star;
    for (int i = 0; i < 10; ++i) {
        const double r = i % 2 ? inner : outer;
        const double a = -M_PI / 2 + i * M_PI / 5;
        const QPointF point(c + r * std::cos(a), c + r * std::sin(a));
        if (i == 0)
            star.moveTo(point);
        else
            star.lineTo(point);
    }
    star.closeSubpath();
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(160, 90, 0), 4));
    p.setBrush(QColor(255, 200, 40));
    p.drawPath(star);
}

bool write(const QDir& dir, const char* name, QSize size, const std::function<void(QPainter&)>& draw)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        draw(painter);
    }
    const QString path = dir.filePath(QString::fromLatin1(name));
    if (!image.save(path, "PNG", 9)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    const QSize frame(Width, Height);
    bool ok = true;
    ok &= write(dir, "effect.png", frame, effect);
    ok &= write(dir, "transitionA.png", frame, transitionA);
    ok &= write(dir, "transitionB.png", frame, transitionB);
    ok &= write(dir, "title.png", frame, title);
    ok &= write(dir, "callout.png", frame, callout);
    ok &= write(dir, "quiz.png", frame, quiz);
    ok &= write(dir, "panzoom.png", frame, panZoom);
    ok &= write(dir, "animationBackground.png", frame, animationBackground);
    ok &= write(dir, "animationIcon.png", QSize(128, 128), animationIcon);
    return ok ? 0 : 1;
}
