#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace morvane
{
// Linear interpolation between the two samples around writeIndex - delay in a power-of-two line.
inline float readInterpolated (const std::vector<float>& line, int writeIndex, int mask, float delay) noexcept
{
    const float pos = (float) writeIndex - delay;
    const float i = std::floor (pos);
    const float frac = pos - i;
    const int size = mask + 1;
    const int base = (((int) i % size) + size) & mask;
    const float a = line[(std::size_t) base];
    return a + (line[(std::size_t) ((base + 1) & mask)] - a) * frac;
}
}
