#pragma once

#include "ui/widgets/SourceChip.h"
#include "widgets/BipolarBar.h"
#include "widgets/ChoiceDropdown.h"
#include "widgets/SegmentedControl.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>
#include <memory>

namespace morvane::ui::widgets
{
// One matrix slot as an editing row: number, source, destination, signed amount, curve, clear.
// The row holds no data of its own: everything is the slot's parameters.
class RoutingRow : public juce::Component
{
public:
    RoutingRow (juce::AudioProcessorValueTreeState& state, int slot);
    ~RoutingRow() override;

    std::function<void (int)> onDestinationFlash;

    void paint (juce::Graphics&) override;
    void resized() override;

    void refreshSource();
    void refreshAmount();
    juce::PopupMenu buildSourceMenu() const;
    void chooseSource (int index);
    void clear();
    // Marked rows are the route a knob's "jump to matrix" came for.
    void setMarked (bool marked);
    bool isMarked() const noexcept { return marked; }
    int destinationIndex() const;

    SourceChip& getSourceChip() noexcept { return *sourceChip; }
    ostrel::widgets::BipolarBar& getAmountBar() noexcept { return amountBar; }
    ostrel::widgets::ChoiceDropdown& getDestinationChoice() noexcept { return *destinationChoice; }
    ostrel::widgets::SegmentedControl* getCurveControl() noexcept { return curveControl.get(); }
    juce::TextButton& getClearButton() noexcept { return clearButton; }

private:
    // Any thread, the audio thread too: the listener only posts, through an updater that needs no
    // allocation, and the row reacts on the message thread.
    class ParamListener : public juce::AudioProcessorParameter::Listener, private juce::AsyncUpdater
    {
    public:
        ParamListener (juce::RangedAudioParameter& p, std::function<void()> callback);
        ~ParamListener() override;
        void parameterValueChanged (int, float) override { triggerAsyncUpdate(); }
        void parameterGestureChanged (int, bool) override {}

    private:
        void handleAsyncUpdate() override { if (callback) callback(); }

        juce::RangedAudioParameter& parameter;
        std::function<void()> callback;
    };

    struct HoverRelay : juce::MouseListener
    {
        explicit HoverRelay (RoutingRow& r) : row (r) {}
        void mouseMove (const juce::MouseEvent&) override { row.hovered(); }
        void mouseEnter (const juce::MouseEvent&) override { row.hovered(); }
        RoutingRow& row;
    };

    void hovered();
    juce::RangedAudioParameter* parameter (const char* field) const;

    juce::AudioProcessorValueTreeState& state;
    const int slot;
    bool marked = false;
    const juce::String slotText;
    std::unique_ptr<SourceChip> sourceChip;
    std::unique_ptr<ostrel::widgets::ChoiceDropdown> destinationChoice;
    ostrel::widgets::BipolarBar amountBar;
    std::unique_ptr<ostrel::widgets::SegmentedControl> curveControl;
    juce::TextButton clearButton;
    std::unique_ptr<HoverRelay> hoverRelay;
    std::unique_ptr<ParamListener> sourceListener, amountListener;
};
}
