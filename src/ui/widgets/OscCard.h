#pragma once

#include "ui/widgets/AdsrEnvelopeEditor.h"
#include "ui/widgets/DcwVisualiser.h"
#include "ui/widgets/PanelEnableButton.h"
#include "widgets/Widgets.h"

#include <array>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// One wave thumbnail that selects its wave.
class WaveCell : public juce::Button
{
public:
    explicit WaveCell (int waveIndex);
    ~WaveCell() override;
    int getWaveIndex() const noexcept { return waveIndex; }
    static const juce::Path& thumbnail (int waveIndex);
    void paintButton (juce::Graphics&, bool over, bool down) override;

private:
    int waveIndex;
    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (WaveCell)
};

// The chip that names the strongest modulation of level or DCW. Stands in for the routing
// row's source chip until that exists.
class OscSourceBadge : public juce::Component
{
public:
    OscSourceBadge();
    void setSource (const juce::String& sourceId, const juce::String& text);
    const juce::String& getSourceId() const noexcept { return sourceId; }
    const juce::String& getText() const noexcept { return text; }
    void paint (juce::Graphics&) override;

private:
    juce::String sourceId { "off" }, text;
};

// The card of one phase-distortion oscillator (1 or 2).
class OscCard : public ostrel::widgets::SectionFrame, private juce::Timer, private juce::AsyncUpdater
{
public:
    OscCard (MorvaneAudioProcessor& processor, int oscIndex);
    ~OscCard() override;

    void paint (juce::Graphics&) override;
    void resized() override;

    WaveCell& getWaveCell (int index) { return *waveCells[(size_t) juce::jlimit (0, 9, index)]; }
    DcwVisualiser& getVisualiser() noexcept { return visualiser; }
    AdsrEnvelopeEditor& getDcwEnvelope() noexcept { return dcwEnvelope; }
    ostrel::widgets::Knob& getDcwKnob() noexcept { return dcwKnob; }
    ostrel::widgets::Knob& getLevelKnob() noexcept { return levelKnob; }
    ostrel::widgets::Knob& getMorphKnob() noexcept { return morphKnob; }
    ostrel::widgets::Knob& getPulseWidthKnob() noexcept { return pulseWidthKnob; }
    PanelEnableButton& getSyncButton() noexcept { return syncButton; }
    ostrel::widgets::ValueChip& getSemitoneChip() noexcept { return semitoneChip; }
    ostrel::widgets::ValueChip& getFineChip() noexcept { return fineChip; }
    const OscSourceBadge& getModBadge() const noexcept { return modBadge; }
    // Brings the wave cells in line with the parameter; the listener does it asynchronously.
    void syncWaveCells();
    // The badge update that the 15 Hz timer runs.
    void updateModBadge();
    // Dims what does nothing now: the pulse width away from the PWM wave, sync while it is off.
    void updateDimming();

private:
    struct WaveListener : juce::AudioProcessorValueTreeState::Listener
    {
        explicit WaveListener (OscCard& o) : owner (o) {}
        void parameterChanged (const juce::String&, float) override;
        OscCard& owner;
    };

    void timerCallback() override
    {
        updateModBadge();
        updateDimming();
    }
    void handleAsyncUpdate() override { syncWaveCells(); }
    void chooseWave (int index);

    MorvaneAudioProcessor& processor;
    juce::AudioProcessorValueTreeState& state;
    int oscIndex;
    juce::String paramPrefix;
    ostrel::widgets::SectionTitle title;
    DcwVisualiser visualiser;
    OscSourceBadge modBadge;
    juce::String badgeSource, badgeText;
    std::array<std::unique_ptr<WaveCell>, 10> waveCells;
    int radioGroup;
    WaveListener waveListener { *this };
    AdsrEnvelopeEditor dcwEnvelope;
    ostrel::widgets::Knob dcwKnob { ostrel::widgets::KnobSize::Mini }, levelKnob { ostrel::widgets::KnobSize::Mini },
        morphKnob { ostrel::widgets::KnobSize::Mini }, pulseWidthKnob { ostrel::widgets::KnobSize::Mini };
    ostrel::widgets::KnobRow knobRow { ostrel::widgets::KnobSize::Mini };
    ostrel::widgets::ValueChip semitoneChip, fineChip;
    PanelEnableButton syncButton;
    ostrel::widgets::FieldBox syncField { "SYNC" };
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> dcwAttachment, levelAttachment, morphAttachment,
        pulseWidthAttachment;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (OscCard)
};
}
