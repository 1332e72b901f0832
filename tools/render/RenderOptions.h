#pragma once

#include <juce_core/juce_core.h>

#include <optional>
#include <vector>

namespace morvane::render
{
struct NoteSpec
{
    int note = 60;
    float velocity = 1.0f;
    double start = 0.0;
    double length = 1.0;
};

struct ParameterSetting
{
    juce::String id;
    float value = 0.0f;
};

struct RenderOptions
{
    juce::File out;
    std::optional<juce::File> preset;
    juce::String factory;                 // display name or xml file name
    bool listFactory = false;
    bool listParameters = false;
    std::optional<juce::File> stateIn, stateOut;
    std::optional<juce::File> audition;   // directory for the whole bank
    std::vector<ParameterSetting> sets;
    std::vector<NoteSpec> notes;
    std::optional<juce::File> midi;
    double tail = 1.0;
    std::optional<double> seconds;
    double maxSeconds = 600.0;            // a longer render is refused before it starts
    double rate = 48000.0;
    int block = 512;
    int channels = 2;
    bool bench = false;
    bool help = false;
    bool version = false;
    // The phrase: a phrase file, played by the processor's own sequencer, at --bpm with --swing.
    std::optional<juce::File> phrase;
    double bpm = 120.0;
    std::optional<double> swing;   // percent, 50 to 75
    // The WAV's sample format: 32-bit float, or 24 or 16-bit integers with TPDF dither.
    enum class Format { f32, s24, s16 } format = Format::f32;
};

// The longest render that any --max-seconds can allow (about 115 days).
constexpr double longestRenderSeconds = 1.0e7;

struct ParseResult
{
    RenderOptions options;
    juce::String error; // empty on success
};

// Reads the command line (without the program name). Checks syntax and ranges only; files and
// parameter ids are checked when the session opens them.
ParseResult parseRenderOptions (const juce::StringArray& args);

juce::String usageText();
}
