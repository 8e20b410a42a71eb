#include "PreviewPicture.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace PreviewPicture {

namespace {

// The stock picture `index` of the record, scaled to `size`; null when it cannot be read.
QImage stock(const Preview::Identity& identity, std::size_t index, QSize size, const char* operation)
{
    if (index >= identity.media.size()) {
        LOG(ERROR) << "PreviewPicture::" << operation << ": the preview has no stock picture " << index;
        return {};
    }
    const QString path = identity.media[index].path().toQString();
    QImage image(path);
    if (image.isNull() || size.isEmpty()) {
        LOG(ERROR) << "PreviewPicture::" << operation << ": cannot read the stock picture " << path.toStdString();
        return {};
    }
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void mapPixels(QImage& image, const std::function<QRgb(QRgb)>& f)
{
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = f(line[x]);
    }
}

int clamp255(double v) { return std::clamp(int(std::lround(v)), 0, 255); }

QRgb mix(QRgb a, QRgb b, double t)
{
    return qRgb(clamp255(qRed(a) + (qRed(b) - qRed(a)) * t), clamp255(qGreen(a) + (qGreen(b) - qGreen(a)) * t),
                clamp255(qBlue(a) + (qBlue(b) - qBlue(a)) * t));
}

QImage blend(const QImage& a, const QImage& b, double t)
{
    QImage result = a;
    for (int y = 0; y < result.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
        const auto* other = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < result.width(); ++x)
            line[x] = mix(line[x], other[x], t);
    }
    return result;
}

QImage applyEffect(const QImage& picture, const Effect::Object& effect)
{
    const std::string& id = effect.id();
    QImage out = picture;
    if (id == "grayscale") {
        mapPixels(out, [](QRgb p) {
            const int g = qGray(p);
            return qRgb(g, g, g);
        });
    } else if (id == "sepia") {
        mapPixels(out, [](QRgb p) {
            const double r = qRed(p), g = qGreen(p), b = qBlue(p);
            return qRgb(clamp255(0.393 * r + 0.769 * g + 0.189 * b), clamp255(0.349 * r + 0.686 * g + 0.168 * b),
                        clamp255(0.272 * r + 0.534 * g + 0.131 * b));
        });
    } else if (id == "warm" || id == "cool") {
        const int shift = id == "warm" ? 40 : -40;
        mapPixels(out,
                  [shift](QRgb p) { return qRgb(clamp255(qRed(p) + shift), qGreen(p), clamp255(qBlue(p) - shift)); });
    } else if (id == "invert") {
        out.invertPixels();
    } else if (id == "mirror") {
        out = out.mirrored(true, false);
    } else if (id == "blur" || id == "pixelate") {
        // Down and up again: smooth for a blur, blocky for pixels.
        const int factor = id == "blur" ? 8 : 16;
        const QSize small(std::max(1, out.width() / factor), std::max(1, out.height() / factor));
        const Qt::TransformationMode mode = id == "blur" ? Qt::SmoothTransformation : Qt::FastTransformation;
        out = out.scaled(small, Qt::IgnoreAspectRatio, mode)
                  .scaled(picture.size(), Qt::IgnoreAspectRatio, mode)
                  .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    } else if (id == "vignette") {
        const QPointF centre(out.width() / 2.0, out.height() / 2.0);
        const double reach = std::hypot(centre.x(), centre.y());
        for (int y = 0; y < out.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
            for (int x = 0; x < out.width(); ++x) {
                const double d = std::hypot(x - centre.x(), y - centre.y()) / reach;
                line[x] = mix(line[x], qRgb(0, 0, 0), std::clamp((d - 0.4) * 1.4, 0.0, 1.0));
            }
        }
    } else {
        return picture;
    }
    const double strength = std::clamp(effect.parameter("strength", 1.0), 0.0, 1.0);
    return strength < 1.0 ? blend(picture, out, strength) : out;
}

// The painter's coordinates turned by `transform` about the middle of `size`.
void transformAboutMiddle(QPainter& painter, QSize size, const Types::Transform& transform)
{
    const QPointF middle(size.width() / 2.0, size.height() / 2.0);
    painter.translate(middle);
    painter.setTransform(transform.toQTransform(), true);
    painter.translate(-middle);
}

} // namespace

QImage draw(const Preview::Object<Effect::Object>& preview, QSize size)
{
    const QImage picture = stock(preview.identity, 0, size, "draw");
    if (picture.isNull() || !preview.target)
        return picture;
    return applyEffect(picture, *preview.target);
}

QImage draw(const Preview::Object<Transition::Object>& preview, QSize size)
{
    const QImage a = stock(preview.identity, 0, size, "draw");
    if (a.isNull() || !preview.target)
        return a;
    const QImage b = stock(preview.identity, 1, size, "draw");
    if (b.isNull())
        return b;
    const std::string& id = preview.target->id;
    if (id == "crossfade")
        return blend(a, b, 0.5);
    if (id == "dip") {
        QImage black(size, QImage::Format_ARGB32_Premultiplied);
        black.fill(Qt::black);
        return blend(blend(a, b, 0.5), black, 0.85);
    }
    QImage out = a;
    QPainter painter(&out);
    const int half = size.width() / 2;
    if (id == "slide") {
        painter.drawImage(0, 0, a, half, 0, size.width() - half, size.height());
        painter.drawImage(size.width() - half, 0, b, 0, 0, half, size.height());
    } else if (id == "wipe") {
        painter.drawImage(0, 0, b, 0, 0, half, size.height());
    } else {
        painter.drawImage(0, 0, b);
    }
    return out;
}

QImage draw(const Preview::Object<Overlay::Preset>& preview, QSize size)
{
    QImage out = stock(preview.identity, 0, size, "draw");
    if (out.isNull() || !preview.target)
        return out;
    QPainter painter(&out);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(std::max(10, size.height() / 9));
    font.setBold(true);
    painter.setFont(font);
    const QRect frame(QPoint(0, 0), size);
    for (const Overlay::Item& item : preview.target->items()) {
        painter.save();
        transformAboutMiddle(painter, size, item.transform());
        const QString text = QString::fromStdString(item.text());
        QRect box = painter.fontMetrics().boundingRect(frame, Qt::AlignCenter | Qt::TextWordWrap, text);
        box.adjust(-12, -8, 12, 8);
        QPainterPath back;
        back.addRoundedRect(box, 10, 10);
        painter.fillPath(back, QColor(0, 0, 0, 150));
        painter.setPen(Qt::white);
        painter.drawText(box, Qt::AlignCenter | Qt::TextWordWrap, text);
        painter.restore();
    }
    return out;
}

QImage draw(const Preview::Object<Quiz::Preset>& preview, QSize size)
{
    QImage out = stock(preview.identity, 0, size, "draw");
    if (out.isNull() || !preview.target || preview.target->questions.empty())
        return out;
    const Quiz::Question& question = preview.target->questions.front();
    QPainter painter(&out);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect card =
        QRect(QPoint(0, 0), size).adjusted(size.width() / 8, size.height() / 8, -size.width() / 8, -size.height() / 8);
    QPainterPath back;
    back.addRoundedRect(card, 12, 12);
    painter.fillPath(back, QColor(255, 255, 255, 230));
    QFont font = painter.font();
    font.setPixelSize(std::max(9, size.height() / 16));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::black);
    const int line = painter.fontMetrics().height() + 6;
    QRect row(card.left() + 16, card.top() + 12, card.width() - 32, line);
    painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, question.text.toQString());
    font.setBold(false);
    painter.setFont(font);
    for (std::size_t i = 0; i < question.answers.size(); ++i) {
        row.translate(0, line);
        const bool correct = std::find(question.correctAnswers.begin(), question.correctAnswers.end(), int(i))
                             != question.correctAnswers.end();
        const QString mark = correct ? QStringLiteral("\u2714 ") : QStringLiteral("\u25CB ");
        painter.setPen(correct ? QColor(0, 130, 0) : Qt::black);
        painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, mark + question.answers[i].toQString());
    }
    return out;
}

QImage draw(const Preview::Object<Animation::TransformationItem>& preview, QSize size)
{
    const QImage background = stock(preview.identity, 0, size, "draw");
    if (background.isNull() || !preview.target)
        return background;
    const Types::Transform transform = preview.target->valueAt(preview.position).matrix();
    QImage out(size, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::black);
    QPainter painter(&out);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (preview.identity.media.size() < 2) {
        transformAboutMiddle(painter, size, transform);
        painter.drawImage(0, 0, background);
        return out;
    }
    const QSize iconSize(size.width() / 4, size.height() / 4);
    const QImage icon = stock(preview.identity, 1, iconSize, "draw");
    painter.drawImage(0, 0, background);
    if (icon.isNull())
        return QImage();
    transformAboutMiddle(painter, size, transform);
    painter.drawImage(QPoint((size.width() - iconSize.width()) / 2, (size.height() - iconSize.height()) / 2), icon);
    return out;
}

} // namespace PreviewPicture
