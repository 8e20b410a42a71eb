#pragma once

#include <ctime>

namespace Bench {

// CPU time of the calling thread, in seconds. The machine may be shared, and time spent
// descheduled is nobody's cost in a measure compared within one run.
inline double threadSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

} // namespace Bench
