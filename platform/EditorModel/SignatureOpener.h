#pragma once

#include <EditorModel/Media.h>

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>

namespace Media {

// The model's default way of opening media files, without decoding streams: a file opens
// when it exists, is a readable regular file, and is either a file whose leading bytes are
// those of a known media container (ISO base media / QuickTime, Matroska/WebM, RIFF
// AVI/WAVE, AIFF, MP3, AAC, Ogg, FLAC, FLV, ASF, MPEG program and transport streams) whose
// header does not declare more data than the file holds, or a still image in a format Qt
// reads, judged by its header alone (format and size; a PNG's chunks must also fit in the
// file), never decoded. A picture larger than the media engine's limits (a side over
// MaxPictureSide, more than MaxPicturePixels pixels) fails with code 34, "too large";
// anything else fails with code 36, "corrupted or missing".
//
// The work runs on a thread pool of the opener's own; each answer is delivered on the
// thread that owns the opener (the GUI thread), from its event loop. Answers still due when
// the opener is destroyed are dropped.
class SignatureOpener : public Opener
{
public:
    static constexpr int CorruptOrMissingCode = 36;
    static constexpr int TooLargeCode = 34;
    static constexpr int MaxPictureSide = 16384;
    static constexpr qint64 MaxPicturePixels = 8192LL * 8192;

    SignatureOpener();
    ~SignatureOpener() override;
    SignatureOpener(const SignatureOpener&) = delete;
    SignatureOpener& operator=(const SignatureOpener&) = delete;

    void open(const Types::String& path, Done done) override;

    // The synchronous check behind open(), callable from any thread.
    static OpenResult probe(const QString& path);
    // The container recognised from the leading bytes of a file, or an empty string.
    static QString detectContainer(const QByteArray& head);

    int maxThreadCount() const;
    void setMaxThreadCount(int count);

private:
    std::unique_ptr<QObject> m_context; // parent of the watchers of running probes
    QThreadPool m_pool;
};

} // namespace Media
