#pragma once

#include "audio/PhraseSequencer.h"

#include <juce_core/juce_core.h>

namespace morvane
{
// The phrase as text, one step to a line, for phrase files and the saved state:
//   C2          a note (names C-1 to G9 with # or b, or a MIDI number 0-127); C2 is note 36
//   C2 acc      accented
//   C2 tie      tied: holds the note sounding from the step before, or starts this one
//   tie         holds the note before on; a rest where nothing sounds
//   rest        silence (also "-")
// Blank lines and comments (from a '#' at the start of a word) are skipped. At most 16 steps.
juce::String phraseToText (const PhrasePattern& pattern);

// Reads the steps into pattern (its swing and velocity stay). On a fault it returns a message
// naming the line, and the pattern is left as it was.
juce::String phraseFromText (const juce::String& text, PhrasePattern& pattern);

// A note name or number; -1 when the text is neither.
int parseNoteName (const juce::String& text);
juce::String noteName (int note);
}
