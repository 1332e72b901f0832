#pragma once

#include <juce_core/juce_core.h>

#include <chrono>
#include <ostream>

namespace morvane::render
{
// One updating line of progress for a long render: percent and real-time factor, redrawn in place
// with a carriage return. Silent until the render has run for half a second, so short renders
// print nothing, and silent altogether when not enabled.
class ProgressLine
{
public:
    ProgressLine (std::ostream& stream, bool enabled, juce::int64 totalSamples, double sampleRate);

    void update (juce::int64 doneSamples);
    // Draws the final state and ends the line, if anything was drawn.
    void finish (juce::int64 doneSamples);

    static juce::String text (juce::int64 done, juce::int64 total, double sampleRate, double wallSeconds);

private:
    using Clock = std::chrono::steady_clock;
    void draw (juce::int64 doneSamples, double wallSeconds);

    std::ostream& out;
    const bool enabled;
    const juce::int64 total;
    const double rate;
    const Clock::time_point start = Clock::now();
    double lastDrawn = -1.0;
    bool shown = false;
};

// True when stderr is an interactive terminal rather than a pipe or a file.
bool stderrIsTerminal();
}
