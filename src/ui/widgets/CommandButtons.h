#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui::widgets
{
// The "✕" of the overlay panels and the Folder button: a bare glyph on a transparent body.
void styleCloseButton (juce::TextButton& button, const juce::String& tooltip, const juce::String& description);
// A plain command: the control fill with its text.
void styleCommandButton (juce::TextButton& button, const juce::String& tooltip);
// A label of the overlay panels: a token colour kept by name for theme changes, one type role.
void styleLabel (juce::Label& label, const juce::String& colourToken, int typeRole);
}
