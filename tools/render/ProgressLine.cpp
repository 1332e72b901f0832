#include "render/ProgressLine.h"

#include <algorithm>

#if JUCE_WINDOWS
 #include <io.h>
#else
 #include <unistd.h>
#endif

namespace morvane::render
{
namespace
{
    constexpr double quietSeconds = 0.5, redrawSeconds = 0.2;
}

ProgressLine::ProgressLine (std::ostream& stream, bool isEnabled, juce::int64 totalSamples, double sampleRate)
    : out (stream), enabled (isEnabled), total (totalSamples), rate (sampleRate)
{
}

juce::String ProgressLine::text (juce::int64 done, juce::int64 totalSamples, double sampleRate, double wallSeconds)
{
    const double fraction = totalSamples > 0 ? std::clamp ((double) done / (double) totalSamples, 0.0, 1.0) : 1.0;
    const double audioSeconds = (double) done / sampleRate;
    const auto factor = wallSeconds > 0.0 ? juce::String (audioSeconds / wallSeconds, 1) + "x real time" : juce::String ("-");
    return "morvane-render: " + juce::String ((int) std::floor (fraction * 100.0)).paddedLeft (' ', 3) + "% ("
           + juce::String (audioSeconds, 1) + " of " + juce::String ((double) totalSamples / sampleRate, 1) + " s), " + factor;
}

void ProgressLine::draw (juce::int64 doneSamples, double wallSeconds)
{
    // Trailing blanks wipe what a longer earlier line left behind.
    out << '\r' << text (doneSamples, total, rate, wallSeconds) << "   " << std::flush;
    lastDrawn = wallSeconds;
    shown = true;
}

void ProgressLine::update (juce::int64 doneSamples)
{
    if (! enabled)
        return;
    const double wall = std::chrono::duration<double> (Clock::now() - start).count();
    if (wall >= quietSeconds && wall - lastDrawn >= redrawSeconds)
        draw (doneSamples, wall);
}

void ProgressLine::finish (juce::int64 doneSamples)
{
    if (! enabled || ! shown)
        return;
    draw (doneSamples, std::chrono::duration<double> (Clock::now() - start).count());
    out << std::endl;
}

bool stderrIsTerminal()
{
   #if JUCE_WINDOWS
    return _isatty (2) != 0;
   #else
    return isatty (STDERR_FILENO) != 0;
   #endif
}
}
