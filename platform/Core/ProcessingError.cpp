#include "ProcessingError.h"

namespace Dravik {
namespace Proc {

ProcessingError::ProcessingError(std::int32_t code, const std::string& detail)
    : std::runtime_error("processing error " + std::to_string(code) + (detail.empty() ? "" : ": " + detail))
    , m_code(code)
{
}

} // namespace Proc
} // namespace Dravik
