#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <optional>
#include <vector>

namespace morvane::snapshot
{
struct Setting
{
    juce::String id;
    float value = 0.0f;
};

struct SnapshotOptions
{
    juce::File out;
    int view = 0;
    bool secondFaces = false;               // cards with a second face show it
    float scale = 1.0f;
    juce::String theme;                    // a built-in theme id
    std::optional<juce::File> themeFile;   // or an imported theme file
    juce::String factory;
    std::optional<juce::File> preset;
    std::vector<Setting> sets;
    bool gallery = false;
    int iconSize = 0;                      // the program's icon alone, at this many pixels
    bool help = false;
    bool version = false;
};

struct ParseResult
{
    SnapshotOptions options;
    juce::String error; // empty on success
};

ParseResult parseSnapshotOptions (const juce::StringArray& args);
juce::String usageText();
// View names as the command line takes them, by view code.
int viewCodeForName (const juce::String& name);

// What the window would show, at the scale's pixel size. Failures are one line in `error`.
std::optional<juce::Image> renderSnapshot (const SnapshotOptions& options, juce::String& error);
// 0 on success, 2 on bad input (nothing written), 1 when the file can't be written.
int runSnapshot (const SnapshotOptions& options);
}
