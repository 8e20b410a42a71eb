#pragma once

#include <QSize>
#include <QString>

#include <vector>

namespace Media {

// What opening one media file found out.
struct OpenOutcome
{
    enum class Kind { Unknown, Video, Audio, Image };

    bool opened = false;
    Kind kind = Kind::Unknown;
    // Container or image format as detected ("mp4", "matroska", "png", ...).
    QString format;
    // Frame size of an image (empty when not known).
    QSize frameSize;
    // Processing-error codes of a failure, in the order they arose.
    std::vector<int> errorCodes;
};

// The media engine's side of opening files: the model asks it, off the GUI thread, whether
// a file can be used. Implementations must be callable from several worker threads at once.
class FileOpener
{
public:
    // "The input file is corrupted or missing from the specified location."
    static constexpr int CorruptOrMissingCode = 36;

    virtual ~FileOpener();
    virtual OpenOutcome open(const QString& path) const = 0;
};

// Opens without decoding streams: the file must exist, be readable, and be either a still
// image Qt decodes or a file whose leading bytes are those of a known media container
// (ISO base media / QuickTime, Matroska/WebM, RIFF AVI/WAVE, AIFF, MP3, AAC, Ogg, FLAC, FLV,
// ASF, MPEG program and transport streams). Container headers that declare more data than
// the file holds are reported as truncated. Every failure carries code 36.
class SignatureFileOpener : public FileOpener
{
public:
    OpenOutcome open(const QString& path) const override;

    // The container recognised from the leading bytes of a file, or an empty string.
    static QString detectContainer(const QByteArray& head);
};

} // namespace Media
