#pragma once

#include "ui/primitives/canonical/LabeledChipButton.h"
#include "widgets/Widgets.h"

#include <functional>

namespace morvane::ui::widgets
{
// The switch between a card's first face and its second, which holds the controls that are
// set once per sound rather than played: "MORE" on the first face, "BACK" on the second.
class FaceToggle : public primitives::canonical::LabeledChipButton
{
public:
    explicit FaceToggle (const juce::String& moreText = "MORE");
    ~FaceToggle() override;

    bool showsSecondFace() const noexcept { return getToggleState(); }
    // Shows a face without a click; the callback runs as for one.
    void showSecondFace (bool second);

    std::function<void (bool second)> onFlip;

private:
    void clicked() override;
    void paintButton (juce::Graphics&, bool over, bool down) override;

    juce::String moreText;
};

// A compact field whose knob has no room for its value row: the value stands right-aligned in
// the caption row, across from the label.
class KnobValueField : public ostrel::widgets::FieldBox, private juce::Slider::Listener
{
public:
    KnobValueField (const juce::String& label, ostrel::widgets::Knob& knob);
    ~KnobValueField() override;

    void paint (juce::Graphics&) override;
    void resized() override;

private:
    void sliderValueChanged (juce::Slider*) override { repaint(); }

    ostrel::widgets::Knob& knob;
};
}
