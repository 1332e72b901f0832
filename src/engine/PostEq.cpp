#include "engine/PostEq.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr double twoPi = 6.283185307179586;

    void designShelf (Biquad& q, double corner, double gainDb, bool high) noexcept
    {
        const double rate = q.sampleRate;
        const double w = twoPi * std::min (corner, 0.45 * rate) / rate;
        const double A = std::pow (10.0, gainDb / 40.0);
        const double c = std::cos (w);
        const double twoRootAAlpha = 2.0 * std::sqrt (A) * std::sin (w) / 2.0 * std::sqrt (2.0); // shelf slope 1
        if (high)
            q.setNormalised (A * ((A + 1) + (A - 1) * c + twoRootAAlpha), -2 * A * ((A - 1) + (A + 1) * c),
                             A * ((A + 1) + (A - 1) * c - twoRootAAlpha), (A + 1) - (A - 1) * c + twoRootAAlpha,
                             2 * ((A - 1) - (A + 1) * c), (A + 1) - (A - 1) * c - twoRootAAlpha);
        else
            q.setNormalised (A * ((A + 1) - (A - 1) * c + twoRootAAlpha), 2 * A * ((A - 1) - (A + 1) * c),
                             A * ((A + 1) - (A - 1) * c - twoRootAAlpha), (A + 1) + (A - 1) * c + twoRootAAlpha,
                             -2 * ((A - 1) + (A + 1) * c), (A + 1) + (A - 1) * c - twoRootAAlpha);
    }
}

void Biquad::setNormalised (double nb0, double nb1, double nb2, double na0, double na1, double na2) noexcept
{
    b0 = (float) (nb0 / na0);
    b1 = (float) (nb1 / na0);
    b2 = (float) (nb2 / na0);
    a1 = (float) (na1 / na0);
    a2 = (float) (na2 / na0);
}

void PostEq::prepare (double hostRate) noexcept
{
    const double rate = hostRate > 0.0 ? hostRate : 44100.0;
    for (auto* q : { &lowShelf, &highShelf, &notch })
    {
        q->sampleRate = rate;
        q->history = {};
    }
    designShelves();
    designNotch();
}

void PostEq::setTilt (float dB) noexcept
{
    const float t = std::clamp (dB, -12.0f, 12.0f);
    if (std::abs (t - tilt) < 0.001f)
        return;
    tilt = t;
    designShelves();
}

void PostEq::setNotch (float hz, float depth) noexcept
{
    const float h = std::clamp (hz, 50.0f, 12000.0f);
    const float d = std::clamp (depth, 0.0f, 1.0f);
    bool moved = false;
    if (std::abs (h - notchHz) >= 0.01f)
    {
        notchHz = h;
        moved = true;
    }
    if (std::abs (d - notchDepth) >= 0.001f)
    {
        notchDepth = d;
        moved = true;
    }
    if (moved)
        designNotch();
}

void PostEq::designShelves() noexcept
{
    designShelf (lowShelf, 200.0, -tilt, false);
    designShelf (highShelf, 2500.0, tilt, true);
}

void PostEq::designNotch() noexcept
{
    const double rate = notch.sampleRate;
    const double A = std::pow (10.0, notchDepth * -18.0 / 40.0);
    const double w = twoPi * std::clamp ((double) notchHz, 10.0, 0.45 * rate) / rate;
    const double alpha = std::sin (w) * 0.125; // Q of 4
    const double c = std::cos (w);
    notch.setNormalised (1 + alpha * A, -2 * c, 1 - alpha * A, 1 + alpha / A, -2 * c, 1 - alpha / A);
}

float PostEq::process (float x) noexcept
{
    if (! enabled)
        return x;
    if (std::abs (tilt) > 0.01f)
        x = highShelf.process (lowShelf.process (x));
    if (notchDepth > 0.001f)
        x = notch.process (x);
    return x;
}
}
