#pragma once

#include "presets/Catalogue.h"

#include <juce_core/juce_core.h>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::presets
{
// Folders under the user application data directory; never listed by the program.
juce::File userPresetFolder();
juce::File themesFolder();

// A file stem from a typed name: letters and digits of any script, blanks, "-", "." and "_" stay;
// everything else becomes "_". An empty name gives "preset".
juce::String presetFileStem (const juce::String& name);
juce::File userPresetFile (const juce::File& folder, const juce::String& name);

// Writes every parameter with the root attribute displayName, replacing a file of the same stem,
// then makes it the current preset. A failed write is not reported: the identity is set all the same.
void writeUserPreset (MorvaneAudioProcessor& processor, const juce::String& name, const juce::File& folder);

// Applies a preset file and names the preset after its displayName, or else its file name.
// False, with nothing changed, when the file is not XML.
bool loadPresetFile (MorvaneAudioProcessor& processor, const juce::File& file);

// Position of the first entry with that file name along the flattened catalogue, 1-based; 0 if none.
int positionOfXml (const Catalogue& catalogue, const juce::String& xml);
// Where the editor opens: the factory entry of the current source, else 1.
int positionOfSource (const Catalogue& catalogue, const juce::String& source);

// Loads the entry at a position, clamped to the bank (no wrap-around), and returns the position
// reached; an unavailable entry empties the identity and leaves the sound. With an empty bank
// nothing happens and the old position comes back.
int loadFactoryPosition (MorvaneAudioProcessor& processor, const Catalogue& catalogue, int position, int current);

// The name the header shows: the identity's name, or the entry's at the position, " *" when dirty.
juce::String presetDisplayName (const MorvaneAudioProcessor& processor, const Catalogue& catalogue, int position);
}
