#pragma once

// Internal to the media engine: arithmetic on stream timestamps that a hostile file can set to
// anything, FFmpeg's "no timestamp" (the smallest int64) included. Never overflows.

#include <cstdint>
#include <limits>

namespace MediaEngine::Detail {

// FFmpeg's AV_NOPTS_VALUE, without FFmpeg's headers.
constexpr int64_t noTimestamp = std::numeric_limits<int64_t>::min();

// a + b, clamped to the range of int64 (and never landing on noTimestamp).
constexpr int64_t saturatingAdd(int64_t a, int64_t b)
{
    constexpr int64_t max = std::numeric_limits<int64_t>::max();
    constexpr int64_t min = noTimestamp + 1;
    if (b > 0 && a > max - b)
        return max;
    if (b < 0 && a < min - b)
        return min;
    const int64_t sum = a + b;
    return sum < min ? min : sum;
}

// a - b, clamped likewise.
constexpr int64_t saturatingSubtract(int64_t a, int64_t b)
{
    if (b == noTimestamp)
        return saturatingAdd(saturatingAdd(a, std::numeric_limits<int64_t>::max()), 1);
    return saturatingAdd(a, -b);
}

// How far apart two times are; a missing time is farther than any other.
constexpr int64_t timeDistance(int64_t a, int64_t b)
{
    if (a == noTimestamp || b == noTimestamp)
        return std::numeric_limits<int64_t>::max();
    const int64_t difference = a > b ? saturatingSubtract(a, b) : saturatingSubtract(b, a);
    return difference;
}

} // namespace MediaEngine::Detail
