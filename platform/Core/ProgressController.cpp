#include "ProgressController.h"

#include <algorithm>

namespace Dravik {
namespace Core {

void ProgressController::SetRange(std::int64_t total)
{
    m_total.store(std::max<std::int64_t>(total, 0));
    m_done.store(std::min(m_done.load(), m_total.load()));
}

void ProgressController::SetProgress(std::int64_t done)
{
    const std::int64_t clamped = std::clamp<std::int64_t>(done, 0, m_total.load());
    m_done.store(clamped);
    if (m_observer)
        m_observer(clamped, m_total.load());
}

} // namespace Core
} // namespace Dravik
