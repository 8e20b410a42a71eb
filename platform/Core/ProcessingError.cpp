#include "ProcessingError.h"

namespace Dravik {
namespace Proc {

ProcessingError::ProcessingError(std::int32_t code, const std::string& detail)
    : std::runtime_error("processing error " + std::to_string(code) + (detail.empty() ? "" : ": " + detail)),
      m_code(code),
      m_detail(detail)
{}

ProcessingError::ProcessingError(std::int32_t code, std::string inputFile, std::string outputFile, std::string codec,
                                 std::string detail, std::int64_t position)
    : ProcessingError(code, detail)
{
    m_inputFile = std::move(inputFile);
    m_outputFile = std::move(outputFile);
    m_codec = std::move(codec);
    m_position = position;
}

} // namespace Proc
} // namespace Dravik
