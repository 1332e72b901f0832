#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>

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
// Binds knobs to the eight modulation slots. All slot data stay in parameters, so every change
// is an ordinary, undoable, persisted parameter edit. Message thread only.
juce::RangedAudioParameter* slotAmountParameter (MorvaneAudioProcessor& processor, int slot);
void setChoiceIndex (MorvaneAudioProcessor& processor, const juce::String& parameterId, int index);
// The first slot (1 to 8) with a source that points at the destination, else 0.
int findSlotForDestination (MorvaneAudioProcessor& processor, int destination);
// False, with nothing changed, when all slots are taken.
bool assignSourceToDestination (MorvaneAudioProcessor& processor, int source, int destination);
void clearDestination (MorvaneAudioProcessor& processor, int destination);
juce::String modulationStatusText (MorvaneAudioProcessor& processor, int destination);
const juce::StringArray& sourceDisplayNames();

// Makes a knob a modulation destination: dropped sources, the depth ring, the live dot, the
// modulation entries of its menu, MIDI learn and the jump to the matrix. The card has already
// attached the knob to its parameter.
void wireKnob (ostrel::widgets::Knob& knob, MorvaneAudioProcessor& processor, const juce::String& parameterId, int destination);

struct RegisteredKnob
{
    juce::Component::SafePointer<ostrel::widgets::Knob> knob;
    int destination;
    juce::String parameterId;
};

// What one processor's editor wires: its knobs, pruned of dead ones (the editor's timer and the
// matrix walk them), and the hooks the editor installs for its lifetime: open the matrix at a
// destination, repaint for a highlight. Each instance has its own, so that two instances in one
// host never touch each other's knobs.
struct EditorWiring
{
    std::vector<RegisteredKnob> knobs;
    std::function<void (int)> revealInMatrix, routingHighlight;
};
EditorWiring& wiringOf (const MorvaneAudioProcessor& processor);
// The editor's destructor: its knobs and hooks go with it.
void forgetWiring (const MorvaneAudioProcessor& processor);
std::vector<RegisteredKnob>& knobRegistry (const MorvaneAudioProcessor& processor);
void pruneKnobRegistry (const MorvaneAudioProcessor& processor);

// The editor's timer: each knob's ring and live dot from the slots' live outputs, and the end
// of a MIDI learn that the audio thread completed.
void refreshKnobs (MorvaneAudioProcessor& processor);
// Flashes every knob of a destination.
void flashDestination (const MorvaneAudioProcessor& processor, int destination);
}
