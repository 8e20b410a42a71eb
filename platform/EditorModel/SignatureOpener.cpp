#include "SignatureOpener.h"

#include <QFile>
#include <QFileInfo>
#include <QFutureInterface>
#include <QFutureWatcher>
#include <QImageReader>
#include <QtEndian>

#include <glog/logging.h>

#include <cstring>

namespace Media {

namespace {

constexpr qint64 headBytes = 4096;

bool startsWith(const QByteArray& head, const char* magic, int size, int at = 0)
{
    return head.size() >= at + size && std::memcmp(head.constData() + at, magic, size) == 0;
}

quint32 be32(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint32>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

quint32 le32(const QByteArray& bytes, int at)
{
    return qFromLittleEndian<quint32>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

bool isMpegAudioFrame(const QByteArray& head)
{
    if (head.size() < 4)
        return false;
    const auto b0 = static_cast<uchar>(head[0]);
    const auto b1 = static_cast<uchar>(head[1]);
    const auto b2 = static_cast<uchar>(head[2]);
    if (b0 != 0xFF || (b1 & 0xE0) != 0xE0)
        return false;
    const int version = (b1 >> 3) & 0x3;
    const int layer = (b1 >> 1) & 0x3;
    if (layer == 0) // ADTS (AAC) carries layer 0 with the MPEG-4/2 version bit patterns
        return (b1 & 0xF6) == 0xF0;
    const int bitrateIndex = (b2 >> 4) & 0xF;
    const int rateIndex = (b2 >> 2) & 0x3;
    return version != 1 && bitrateIndex != 0xF && rateIndex != 0x3;
}

// Walks the top-level boxes of an ISO base media file: each must fit in the file.
bool isoBoxesFit(QFile& file)
{
    const qint64 size = file.size();
    qint64 at = 0;
    int boxes = 0;
    while (at < size) {
        if (!file.seek(at))
            return false;
        const QByteArray header = file.read(16);
        if (header.size() < 8)
            return false;
        quint64 boxSize = be32(header, 0);
        if (boxSize == 1) {
            if (header.size() < 16)
                return false;
            boxSize = (quint64(be32(header, 8)) << 32) | be32(header, 12);
        } else if (boxSize == 0) {
            boxSize = quint64(size - at); // runs to the end of the file
        }
        if (boxSize < 8 || boxSize > quint64(size - at))
            return false;
        at += qint64(boxSize);
        if (++boxes > 100000)
            return false;
    }
    return boxes > 0;
}

// Walks the chunks of a PNG file: each must fit in the file, up to the closing IEND chunk.
bool pngChunksFit(QFile& file)
{
    const qint64 size = file.size();
    qint64 at = 8; // the signature
    for (int chunks = 0; chunks < 1000000; ++chunks) {
        if (!file.seek(at))
            return false;
        const QByteArray header = file.read(8);
        if (header.size() < 8)
            return false;
        const qint64 length = be32(header, 0);
        at += 12 + length; // length, type, data, checksum
        if (at > size)
            return false;
        if (header.mid(4, 4) == "IEND")
            return true;
    }
    return false;
}

OpenResult failure(const QString& path, const char* why)
{
    OpenResult result;
    result.errors.push_back(
        OpenError{SignatureOpener::CorruptOrMissingCode, std::string(why) + ": " + path.toStdString()});
    return result;
}

bool isAudioContainer(const QString& container)
{
    static const QStringList audio{QStringLiteral("wave"), QStringLiteral("aiff"), QStringLiteral("mp3"),
                                   QStringLiteral("flac"), QStringLiteral("ogg"),  QStringLiteral("aac")};
    return audio.contains(container);
}

} // namespace

QString SignatureOpener::detectContainer(const QByteArray& head)
{
    if (head.size() >= 12) {
        static const char* const isoBoxes[] = {"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"};
        for (const char* box : isoBoxes) {
            if (startsWith(head, box, 4, 4))
                return QStringLiteral("mp4");
        }
    }
    if (startsWith(head, "\x1A\x45\xDF\xA3", 4))
        return QStringLiteral("matroska");
    if (startsWith(head, "RIFF", 4) && startsWith(head, "AVI ", 4, 8))
        return QStringLiteral("avi");
    if (startsWith(head, "RIFF", 4) && startsWith(head, "WAVE", 4, 8))
        return QStringLiteral("wave");
    if (startsWith(head, "FORM", 4) && (startsWith(head, "AIFF", 4, 8) || startsWith(head, "AIFC", 4, 8)))
        return QStringLiteral("aiff");
    if (startsWith(head, "ID3", 3))
        return QStringLiteral("mp3");
    if (startsWith(head, "OggS", 4))
        return QStringLiteral("ogg");
    if (startsWith(head, "fLaC", 4))
        return QStringLiteral("flac");
    if (startsWith(head, "FLV\x01", 4))
        return QStringLiteral("flv");
    if (startsWith(head, "\x30\x26\xB2\x75\x8E\x66\xCF\x11", 8))
        return QStringLiteral("asf");
    if (startsWith(head, "\x00\x00\x01\xBA", 4))
        return QStringLiteral("mpeg");
    if (head.size() >= 189 && head[0] == 0x47 && head[188] == 0x47)
        return QStringLiteral("mpegts");
    if (isMpegAudioFrame(head))
        return (static_cast<uchar>(head[1]) & 0x06) == 0 ? QStringLiteral("aac") : QStringLiteral("mp3");
    return {};
}

OpenResult SignatureOpener::probe(const QString& path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return failure(path, "missing file");
    if (!info.isFile())
        return failure(path, "not a regular file");
    if (info.size() == 0)
        return failure(path, "empty file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(path, "unreadable file");
    const QByteArray head = file.read(headBytes);
    if (head.isEmpty())
        return failure(path, "unreadable file");

    const QString container = detectContainer(head);
    if (!container.isEmpty()) {
        bool intact = true;
        if (container == QLatin1String("mp4"))
            intact = isoBoxesFit(file);
        else if ((container == QLatin1String("avi") || container == QLatin1String("wave")) && head.size() >= 8)
            intact = qint64(le32(head, 4)) + 8 <= file.size();
        else if (container == QLatin1String("aiff") && head.size() >= 8)
            intact = qint64(be32(head, 4)) + 8 <= file.size();
        if (!intact)
            return failure(path, "truncated container");
        OpenResult result;
        result.ok = true;
        if (isAudioContainer(container)) {
            Audio audio;
            audio.index = 0;
            audio.codec = Types::String(container);
            result.metadata.audios.push_back(audio);
        } else {
            Video video;
            video.index = 0;
            video.codec = Types::String(container);
            result.metadata.videos.push_back(video);
        }
        return result;
    }

    // A picture is judged by its header alone, never decoded: a few bytes can announce
    // pixels enough to stall the pool and exhaust the memory.
    QImageReader reader(&file);
    file.seek(0);
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead())
        return failure(path, "neither a known media container nor a readable image");
    const QByteArray format = reader.format();
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty())
        return failure(path, "a picture whose size cannot be read");
    if (size.width() > MaxPictureSide || size.height() > MaxPictureSide
        || qint64(size.width()) * size.height() > MaxPicturePixels) {
        OpenResult result;
        result.errors.push_back(
            OpenError{TooLargeCode,
                      QStringLiteral("a picture of %1x%2 pixels: ").arg(size.width()).arg(size.height()).toStdString()
                          + path.toStdString()});
        return result;
    }
    if (format == "png" && !pngChunksFit(file))
        return failure(path, "truncated picture");
    OpenResult result;
    result.ok = true;
    Video video;
    video.index = 0;
    video.width = size.width();
    video.height = size.height();
    video.stillImage = true;
    video.codec = Types::String(std::string(format.constData()));
    result.metadata.videos.push_back(video);
    return result;
}

SignatureOpener::SignatureOpener() : m_context(std::make_unique<QObject>()) {}

SignatureOpener::~SignatureOpener()
{
    // Watchers go first, so no answer is delivered for a probe that ends while the pool drains.
    m_context.reset();
    m_pool.waitForDone();
}

void SignatureOpener::open(const Types::String& path, Done done)
{
    if (!done) {
        LOG(ERROR) << "Media::SignatureOpener::open: no callback for " << path;
        return;
    }
    auto* watcher = new QFutureWatcher<OpenResult>(m_context.get());
    QObject::connect(watcher, &QFutureWatcher<OpenResult>::finished, watcher, [watcher, done = std::move(done)] {
        const OpenResult result = watcher->result();
        watcher->deleteLater();
        done(result);
    });
    QFutureInterface<OpenResult> promise;
    promise.reportStarted();
    watcher->setFuture(promise.future());
    m_pool.start([promise, file = path.toQString()]() mutable {
        const OpenResult result = probe(file);
        promise.reportResult(result);
        promise.reportFinished();
    });
}

int SignatureOpener::maxThreadCount() const { return m_pool.maxThreadCount(); }

void SignatureOpener::setMaxThreadCount(int count)
{
    if (count < 1) {
        LOG(ERROR) << "Media::SignatureOpener::setMaxThreadCount: " << count << " threads make no sense";
        return;
    }
    m_pool.setMaxThreadCount(count);
}

} // namespace Media
