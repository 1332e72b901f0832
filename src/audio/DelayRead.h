#pragma once

#include <cstddef>
#include <vector>

namespace morvane
{
// Linear interpolation between the two samples around writeIndex - delay in a power-of-two line,
// for delay >= 0. The whole samples are counted in integers, so the fraction keeps its precision
// however far the write index has run, and the wrap is a mask rather than a division.
inline float readInterpolated (const float* line, int writeIndex, int mask, float delay) noexcept
{
    const int whole = (int) delay;
    const float fraction = delay - (float) whole;
    const int newer = (writeIndex - whole) & mask;
    const float a = line[newer];
    return a + (line[(newer - 1) & mask] - a) * fraction;
}

inline float readInterpolated (const std::vector<float>& line, int writeIndex, int mask, float delay) noexcept
{
    return readInterpolated (line.data(), writeIndex, mask, delay);
}
}
