#include "engine/DriveShaper.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
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
}

namespace driveCurves
{
    const CubicTable<1024> logCoshTail (0.0, 9.0, [] (double a) { return std::log1p (std::exp (-2.0 * a)); });
    const CubicTable<1024> diodeCurve (-0.5, 0.5, diodeNewton);
    const float diodeOffsetAbove = (float) (diodeNewton (0.5) - 0.5);
    const float diodeOffsetBelow = (float) (diodeNewton (-0.5) + 0.5);
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

float DriveShaper::processFading (float x) noexcept
{
    const float y = shape (mode, x, lastInput, gain, memos);
    const float old = shape (previousMode, x, lastInput, gain, memos);
    lastInput = x;
    const float angle = (1.0f - (float) fadeCounter / (float) fadeLength) * 1.5707964f;
    --fadeCounter;
    return fast::cos (angle) * old + fast::sin (angle) * y;
}
}
