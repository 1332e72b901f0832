#include "engine/DriveShaper.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane
{
namespace
{
    // log(cosh(t)) written so that exp never overflows.
    inline float logCosh (float t) noexcept
    {
        const float a = std::abs (t);
        return fast::log ((fast::exp (-2.0f * a) + 1.0f) * 0.5f) + a;
    }

    template <typename Fn>
    inline float recall (DriveShaper::Memo& memo, float t, Fn&& f) noexcept
    {
        if (t != memo.at)
            memo = { t, f (t) };
        return memo.value;
    }

    inline float softShape (float x, float p, float g, DriveShaper::Memo& memo) noexcept
    {
        const float u = g * x, w = g * p;
        if (std::abs (u - w) < 0.001f)
            return fast::tanh (u) / g;
        const float far = recall (memo, w, logCosh);
        return (recall (memo, u, logCosh) - far) / (g * (u - w));
    }

    // Two Newton steps on a back-to-back diode pair (Vt 0.026, asymmetry 0.7), from the input.
    // Their result depends on t = g x / 2 alone, so it is worked out once, in double precision,
    // and read back with cubic interpolation (error about 1e-8). Past |t| = 0.5 both steps move by
    // the same Vt-sized amount, so the curve is a straight line there (within 1e-9).
    struct DiodeCurve
    {
        static constexpr double edge = 0.5;
        static constexpr int intervals = 1024;
        static constexpr float scale = (float) (intervals / (2.0 * edge));
        std::array<float, intervals + 3> table {}; // one point beyond each end for the cubic
        float offsetAbove = 0.0f, offsetBelow = 0.0f;

        static double newton (double t) noexcept
        {
            double v = t;
            for (int i = 0; i < 2; ++i)
            {
                const double e = std::exp (std::clamp (v * 38.461536, -30.0, 30.0));
                const double r = 0.7 / e;
                v -= ((e - r) * 0.1 + (v - t)) / ((r + e) * 3.8461537 + 1.0);
            }
            return v;
        }

        DiodeCurve() noexcept
        {
            for (int i = 0; i < (int) table.size(); ++i)
                table[(size_t) i] = (float) newton (-edge + (i - 1) / (double) scale);
            offsetAbove = (float) (newton (edge) - edge);
            offsetBelow = (float) (newton (-edge) + edge);
        }

        float operator() (float t) const noexcept
        {
            if (t >= (float) edge)
                return t + offsetAbove;
            if (t <= (float) -edge)
                return t + offsetBelow;
            const float x = (t + (float) edge) * scale;
            const int i = std::min ((int) x, intervals - 1);
            const float f = x - (float) i;
            const float* p = table.data() + i; // p[1] sits at t's interval start
            // Catmull-Rom through the four nearest points.
            return p[1] + 0.5f * f * (p[2] - p[0] + f * (2.0f * p[0] - 5.0f * p[1] + 4.0f * p[2] - p[3]
                                                      + f * (3.0f * (p[1] - p[2]) + p[3] - p[0])));
        }
    };

    const DiodeCurve diodeCurve;

    inline float diodeShape (float x, float g) noexcept
    {
        return 2.0f / std::max (g, 1.0f) * diodeCurve (0.5f * g * x) * 0.9f;
    }

    inline float foldShape (float x, float p, float g, DriveShaper::Memo& memo) noexcept
    {
        const float a = (g - 1.0f) * 6.0f + 1.0f;
        const float u = a * x, w = a * p;
        if (std::abs (u - w) < 0.0001f)
            return fast::sin (u) * 0.7f;
        const auto cosine = [] (float t) { return fast::cos (t); };
        const float far = recall (memo, w, cosine);
        return (far - recall (memo, u, cosine)) / (u - w) * 0.7f;
    }
}

void DriveShaper::prepare (double oversampledRate) noexcept
{
    const double rate = oversampledRate > 0.0 ? oversampledRate : 44100.0;
    fadeLength = std::max ((int) (rate * 0.005 + 0.5), 1);
    clearState();
}

void DriveShaper::clearState() noexcept
{
    previousMode = mode;
    lastInput = 0.0f;
    fadeCounter = 0;
}

void DriveShaper::setModeNow (int newMode) noexcept
{
    mode = previousMode = std::clamp (newMode, 0, (int) numModes - 1);
    fadeCounter = 0;
}

void DriveShaper::changeMode (int newMode) noexcept
{
    newMode = std::clamp (newMode, 0, (int) numModes - 1);
    if (newMode == mode)
        return;
    previousMode = mode;
    mode = newMode;
    fadeCounter = fadeLength;
}

float DriveShaper::shape (int m, float x, float p, float g) noexcept
{
    Memo soft, fold;
    return shape (m, x, p, g, soft, fold);
}

float DriveShaper::shape (int m, float x, float p, float g, Memo& softMemo, Memo& foldMemo) noexcept
{
    if (g <= 1.000001f)
        return x;
    switch (m)
    {
        case diode: return diodeShape (x, g);
        case fold:  return foldShape (x, p, g, foldMemo);
        default:    return softShape (x, p, g, softMemo);
    }
}

float DriveShaper::autoMakeup (int m, float driveDb) noexcept
{
    if (driveDb <= 0.01f)
        return 1.0f;
    const float c = m == diode ? 0.55f : (m == fold ? 0.4f : 0.5f);
    return std::pow (10.0f, c * driveDb * 0.05f);
}

float DriveShaper::processDriven (float x) noexcept
{
    const float y = shape (mode, x, lastInput, gain, softMemo, foldMemo);
    if (fadeCounter > 0)
    {
        const float old = shape (previousMode, x, lastInput, gain, softMemo, foldMemo);
        lastInput = x;
        const float angle = (1.0f - (float) fadeCounter / (float) fadeLength) * 1.5707964f;
        --fadeCounter;
        return fast::cos (angle) * old + fast::sin (angle) * y;
    }
    lastInput = x;
    return y;
}
}
