#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace ostrel::widgets
{
class Knob;
}

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::matrix
{
// Makes a knob a modulation destination: dropped sources, the depth ring, the live dot, the
// modulation entries of its menu, MIDI learn and the jump to the matrix. The card has already
// attached the knob to its parameter.
void wireKnob (ostrel::widgets::Knob& knob, MorvaneAudioProcessor& processor, const juce::String& parameterId, int destination);
}
