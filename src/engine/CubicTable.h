#pragma once

#include <algorithm>
#include <array>

namespace morvane
{
// A smooth function of one variable over [from, to], sampled once (in double precision) and read
// back by Catmull-Rom interpolation through the four nearest points. Read only inside the range.
template <int Intervals>
struct CubicTable
{
    float from = 0.0f, scale = 1.0f;
    std::array<float, Intervals + 3> points {}; // one beyond each end for the cubic

    template <typename Fn>
    CubicTable (double lo, double hi, Fn&& f) noexcept
        : from ((float) lo), scale ((float) (Intervals / (hi - lo)))
    {
        const double step = (hi - lo) / Intervals;
        for (int i = 0; i < (int) points.size(); ++i)
            points[(size_t) i] = (float) f (lo + (i - 1) * step);
    }

    float operator() (float x) const noexcept
    {
        const float position = (x - from) * scale;
        const int i = std::clamp ((int) position, 0, Intervals - 1);
        const float t = position - (float) i;
        const float* p = points.data() + i; // p[1] is the point at the interval's start
        return p[1] + 0.5f * t * (p[2] - p[0] + t * (2.0f * p[0] - 5.0f * p[1] + 4.0f * p[2] - p[3]
                                                     + t * (3.0f * (p[1] - p[2]) + p[3] - p[0])));
    }
};
}
