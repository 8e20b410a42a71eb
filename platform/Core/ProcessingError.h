#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Dravik {
namespace Proc {

// Failure of a processing job (export, capture, analysis, stabilization, frame grab),
// identified by a code the interface turns into a message for the operation at hand.
class ProcessingError : public std::runtime_error
{
public:
    enum Code : std::int32_t
    {
        NoError = 0,
        InvalidPresetCodec = 6, // the preset's codec does not fit its container
        // Also a file that holds no video or audio stream.
        InternalError = 8,
        VideoCodecUnavailable = 10,
        AudioCodecUnavailable = 11,
        HardwareAccelerationFailed = 12,
        ContainerUnavailable = 14,
        FrameSizeUnsupported = 15,
        OutputCodecNotActivated = 19,
        InputCodecNotActivated = 20,
        NoSpaceLeft = 22,
        CopyProtected = 26,
        CannotCreateOutput = 33,
        OutOfMemory = 34,
        AllocationFailed = 35,
        // The file is missing, unreadable, truncated or corrupt.
        InputCorrupted = 36,
        StabilizationPathUnusable = 43,
    };

    explicit ProcessingError(std::int32_t code, const std::string& detail = {});
    // The engine's full report: the files and codec involved, a free-form detail and the
    // stream position (in the model's time unit) where the job stopped.
    ProcessingError(std::int32_t code, std::string inputFile, std::string outputFile, std::string codec,
                    std::string detail, std::int64_t position);

    const std::string& GetInputFile() const { return m_inputFile; }
    const std::string& GetOutputFile() const { return m_outputFile; }
    const std::string& GetCodec() const { return m_codec; }
    const std::string& GetDetail() const { return m_detail; }
    std::int64_t GetPosition() const { return m_position; }

    virtual std::int32_t GetCode() const { return m_code; }

private:
    std::int32_t m_code;
    std::string m_inputFile;
    std::string m_outputFile;
    std::string m_codec;
    std::string m_detail;
    std::int64_t m_position = 0;
};

} // namespace Proc
} // namespace Dravik
