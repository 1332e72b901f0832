#include "engine/PostEq.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void EqSection::design (Kind kind, double frequency, double q, double gainA) noexcept
{
    const double w = std::tan (3.141592653589793 * std::min (frequency, 0.45 * sampleRate) / sampleRate);
    const double A = gainA;
    double g = w, k = 1.0 / q;
    double c0 = 1.0, c1 = 0.0, c2 = 0.0;
    switch (kind)
    {
        case lowShelf:
            g = w / std::sqrt (A);
            c1 = k * (A - 1.0);
            c2 = A * A - 1.0;
            break;
        case highShelf:
            g = w * std::sqrt (A);
            c0 = A * A;
            c1 = k * (1.0 - A) * A;
            c2 = 1.0 - A * A;
            break;
        case peak:
            k = 1.0 / (q * A);
            c1 = k * (A * A - 1.0);
            break;
    }
    const double d1 = 1.0 / (1.0 + g * (g + k));
    a1 = (float) d1;
    a2 = (float) (g * d1);
    a3 = (float) (g * g * d1);
    m0 = (float) c0;
    m1 = (float) c1;
    m2 = (float) c2;
    a1Lanes = fast::splat (a1);
    a2Lanes = fast::splat (a2);
    a3Lanes = fast::splat (a3);
    m0Lanes = fast::splat (m0);
    m1Lanes = fast::splat (m1);
    m2Lanes = fast::splat (m2);
}

void PostEq::prepare (double hostRate) noexcept
{
    const double rate = hostRate > 0.0 ? hostRate : 44100.0;
    for (auto* q : { &lowShelf, &highShelf, &notch })
    {
        q->sampleRate = rate;
        q->clear();
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

// Shelf slope 1 is a Q of 1/sqrt(2); the tilt turns the lows down by as much as it lifts the highs.
void PostEq::designShelves() noexcept
{
    lowShelf.design (EqSection::lowShelf, 200.0, 0.7071067811865476, std::pow (10.0, -tilt / 40.0));
    highShelf.design (EqSection::highShelf, 2500.0, 0.7071067811865476, std::pow (10.0, tilt / 40.0));
}

// A Q of 4; at full depth the cut is 18 dB.
void PostEq::designNotch() noexcept
{
    notch.design (EqSection::peak, std::max ((double) notchHz, 10.0), 4.0, std::pow (10.0, notchDepth * -18.0 / 40.0));
}
}
