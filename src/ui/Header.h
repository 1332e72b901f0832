#pragma once

#include "ui/HeaderControls.h"
#include "ui/widgets/PresetNavStrip.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>
#include <memory>
#include <vector>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui
{
// The band across the top: logo and word mark, the preset strip, octave, glide, legato, tempo,
// master volume with its meter, and the doors to the workflow menu and the settings.
class Header : public juce::Component
{
public:
    explicit Header (MorvaneAudioProcessor& processor);
    ~Header() override;

    std::function<void()> onPreviousPreset, onNextPreset, onBrowse, onWorkflow, onSettings;

    void refreshTransport();
    void setOutputLevel (float db);
    void setPresetPosition (int index, int total) { strip.setPosition (index, total); }
    void setPresetName (const juce::String& name) { strip.setName (name); }
    void stepOctave (int delta);

    float getOutputDb() const noexcept { return outputDb; }
    juce::Rectangle<int> meterBar() const;

    void paint (juce::Graphics&) override;
    void resized() override;

    widgets::PresetNavStrip strip;
    header::StepChip octaveDownChip, octaveUpChip;
    header::HeaderValueChip octaveChip, glideChip;
    header::LegatoButton legatoButton, voiceModeButton;
    header::TransportBpmDisplay bpmDisplay;
    header::HeaderValueChip masterChip;
    header::WorkflowButton workflowButton;
    header::SettingsButton settingsButton;

private:
    // Hosts automate from any thread: the listener only posts, through an updater that needs no
    // allocation, and the header reacts on the message thread.
    struct Listener : juce::AudioProcessorValueTreeState::Listener, private juce::AsyncUpdater
    {
        Listener (Header& h, bool transport) : header (&h), refreshesTransport (transport) {}
        ~Listener() override { cancelPendingUpdate(); }
        void parameterChanged (const juce::String&, float) override { triggerAsyncUpdate(); }
        void handleAsyncUpdate() override;
        juce::WeakReference<Header> header;
        bool refreshesTransport;
    };

    MorvaneAudioProcessor& processor;
    juce::AudioProcessorValueTreeState& parameters;
    float outputDb = -120.0f;
    std::unique_ptr<juce::ButtonParameterAttachment> legatoAttachment, voiceModeAttachment;
    std::unique_ptr<Listener> octaveListener, syncListener;
    std::vector<int> dividers;

    JUCE_DECLARE_WEAK_REFERENCEABLE (Header)
};
}
