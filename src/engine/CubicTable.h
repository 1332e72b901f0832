#pragma once

#include <algorithm>
#include <array>

namespace morvane
{
// A smooth function of one variable over [from, to], sampled once (in double precision) and read
// back by Catmull-Rom interpolation through the four nearest points. Each interval keeps its cubic
// in powers of the position within it, worked out in double precision, so a read is three
// multiply-adds. Read only inside the range.
template <int Intervals>
struct CubicTable
{
    float from = 0.0f, scale = 1.0f;
    std::array<std::array<float, 4>, (std::size_t) Intervals> cubics {};

    template <typename Fn>
    CubicTable (double lo, double hi, Fn&& f) noexcept
        : from ((float) lo), scale ((float) (Intervals / (hi - lo)))
    {
        const double step = (hi - lo) / Intervals;
        // One point beyond each end for the cubic; the points are those a float table would hold.
        std::array<double, (std::size_t) Intervals + 3> p {};
        for (int i = 0; i < (int) p.size(); ++i)
            p[(size_t) i] = (double) (float) f (lo + (i - 1) * step);
        for (size_t i = 0; i < (size_t) Intervals; ++i)
        {
            const double p0 = p[i], p1 = p[i + 1], p2 = p[i + 2], p3 = p[i + 3];
            cubics[i] = { (float) p1, (float) (0.5 * (p2 - p0)), (float) (0.5 * (2.0 * p0 - 5.0 * p1 + 4.0 * p2 - p3)),
                          (float) (0.5 * (3.0 * (p1 - p2) + p3 - p0)) };
        }
    }

    float operator() (float x) const noexcept
    {
        const float position = (x - from) * scale;
        const int i = std::clamp ((int) position, 0, Intervals - 1);
        const float t = position - (float) i;
        const auto& c = cubics[(size_t) i];
        return c[0] + t * (c[1] + t * (c[2] + t * c[3]));
    }
};
}
