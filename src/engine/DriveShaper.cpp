#include "engine/DriveShaper.h"
#include "engine/CubicTable.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    // log cosh t = |t| - log 2 + log (1 + e^(-2|t|)). The last term is smooth and falls below a
    // float's resolution of the whole past |t| = 9, so it is tabulated there (error about 1e-8).
    const CubicTable<1024> logCoshTail (0.0, 9.0, [] (double a) { return std::log1p (std::exp (-2.0 * a)); });

    inline float logCosh (float t) noexcept
    {
        const float a = std::abs (t);
        return a - 0.693147181f + (a < 9.0f ? logCoshTail (a) : 0.0f);
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
    // Their result depends on t = g x / 2 alone, so it is worked out once, in double precision, and
    // tabulated (error about 1e-8). Past |t| = 0.5 both steps move by the same Vt-sized amount,
    // so the curve is a straight line there (within 1e-9).
    double diodeNewton (double t) noexcept
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

    const CubicTable<1024> diodeCurve (-0.5, 0.5, diodeNewton);
    const float diodeOffsetAbove = (float) (diodeNewton (0.5) - 0.5);
    const float diodeOffsetBelow = (float) (diodeNewton (-0.5) + 0.5);

    inline float diodeCurveAt (float t) noexcept
    {
        if (t >= 0.5f)
            return t + diodeOffsetAbove;
        if (t <= -0.5f)
            return t + diodeOffsetBelow;
        return diodeCurve (t);
    }

    // The output scale depends on the gain alone: its division is made when the gain moves.
    inline float diodeShape (float x, float g, DriveShaper::Memo& scale) noexcept
    {
        return recall (scale, g, [] (float gain) { return 1.8f / std::max (gain, 1.0f); }) * diodeCurveAt (0.5f * g * x);
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

// Inlined into both of its callers, where the mode's switch is predicted.
__attribute__ ((always_inline)) inline float DriveShaper::shape (int m, float x, float p, float g, Memos& memos) noexcept
{
    if (g <= 1.000001f)
        return x;
    switch (m)
    {
        case diode: return diodeShape (x, g, memos.diodeScale);
        case fold:  return foldShape (x, p, g, memos.fold);
        default:    return softShape (x, p, g, memos.soft);
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
    Memos memos;
    return shape (m, x, p, g, memos);
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
    const float y = shape (mode, x, lastInput, gain, memos);
    if (fadeCounter > 0)
    {
        const float old = shape (previousMode, x, lastInput, gain, memos);
        lastInput = x;
        const float angle = (1.0f - (float) fadeCounter / (float) fadeLength) * 1.5707964f;
        --fadeCounter;
        return fast::cos (angle) * old + fast::sin (angle) * y;
    }
    lastInput = x;
    return y;
}
}
