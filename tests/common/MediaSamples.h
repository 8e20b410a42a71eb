#pragma once

// Small media files for tests: the leading structure of real containers (enough for a
// signature check) and real pictures, as bytes or written into a folder. Header-only so that
// any test folder can use it.

#include "TestFiles.h"

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QString>
#include <QtEndian>

namespace MediaSamples {

using TestSupport::writeFile;

inline QByteArray be32(quint32 v)
{
    QByteArray b(4, '\0');
    qToBigEndian(v, reinterpret_cast<uchar*>(b.data()));
    return b;
}

inline QByteArray le32(quint32 v)
{
    QByteArray b(4, '\0');
    qToLittleEndian(v, reinterpret_cast<uchar*>(b.data()));
    return b;
}

// An ISO base media box.
inline QByteArray box(const char* type, const QByteArray& payload)
{
    return be32(quint32(8 + payload.size())) + QByteArray(type, 4) + payload;
}

// ftyp, moov and mdat boxes, each complete.
inline QByteArray mp4(int mediaBytes = 64)
{
    return box("ftyp", QByteArray("isom", 4) + be32(0) + QByteArray("isomavc1", 8)) + box("moov", QByteArray(32, 'm'))
           + box("mdat", QByteArray(mediaBytes, 'd'));
}

// A RIFF WAVE file; `declaredExtra` bytes more than it holds are announced in its header.
inline QByteArray wave(int declaredExtra = 0)
{
    const QByteArray body = QByteArray("WAVE", 4) + QByteArray("fmt ", 4) + le32(16) + QByteArray(16, '\1')
                            + QByteArray("data", 4) + le32(8) + QByteArray(8, '\0');
    return QByteArray("RIFF", 4) + le32(quint32(body.size() + declaredExtra)) + body;
}

inline QByteArray png(int width, int height, QColor color = Qt::darkCyan)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

inline quint32 crc32Of(const QByteArray& bytes)
{
    quint32 crc = 0xffffffffu;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

inline QByteArray pngChunk(const char* type, const QByteArray& data)
{
    const QByteArray typed = QByteArray(type) + data;
    return be32(quint32(data.size())) + typed + be32(crc32Of(typed));
}

// A well-formed png whose header announces the frame size and whose data is a few bytes.
inline QByteArray pngAnnouncing(quint32 width, quint32 height)
{
    QByteArray header = be32(width) + be32(height);
    header += QByteArray("\x08\x06\x00\x00\x00", 5); // 8 bits, RGBA, no interlacing
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", header)
           + pngChunk("IDAT", qCompress(QByteArray(1024, '\0')).mid(4)) // zlib stream without Qt's size prefix
           + pngChunk("IEND", QByteArray());
}

} // namespace MediaSamples
