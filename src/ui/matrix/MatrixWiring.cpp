#include "ui/matrix/MatrixWiring.h"

#include "audio/PluginProcessor.h"
#include "widgets/Knob.h"

namespace morvane::ui::matrix
{
void wireKnob (ostrel::widgets::Knob& knob, MorvaneAudioProcessor& processor, const juce::String& parameterId, int destination)
{
    // The modulation wiring lands with the matrix view; the attachment the card made is the binding.
    juce::ignoreUnused (knob, processor, parameterId, destination);
}
}
