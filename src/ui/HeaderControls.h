#pragma once

#include "ui/primitives/canonical/IconButton.h"
#include "ui/primitives/canonical/LabeledChipButton.h"
#include "widgets/ValueDrag.h"
#include "widgets/ValueEntry.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>
#include <memory>

namespace morvane::ui::header
{
// "-" and "+" beside the octave.
class StepChip : public primitives::canonical::LabeledChipButton
{
public:
    StepChip (const juce::String& text, const juce::String& title, const juce::String& tooltip);
};

// A value dragged up and down, shown as text on a value field.
class HeaderValueChip : public juce::Slider
{
public:
    HeaderValueChip (const juce::String& label, std::function<juce::String (double)> formatter);
    ~HeaderValueChip() override;

    void attach (juce::RangedAudioParameter* parameter, juce::UndoManager* undoManager);
    juce::String text() const { return formatter (getValue()); }

    // Typed values, opened by Return or a double-click: what the chip shows reads back.
    std::optional<double> parseValue (const juce::String& typed);
    bool applyTypedValue (const juce::String& typed);
    void showValueEntry();
    bool isEditingValue() const noexcept { return valueEditor.isEditing(); }

    void mouseEnter (const juce::MouseEvent&) override;
    void mouseExit (const juce::MouseEvent&) override;
    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void mouseDoubleClick (const juce::MouseEvent&) override;
    bool keyPressed (const juce::KeyPress&) override;
    void paint (juce::Graphics&) override;
    juce::String getTextFromValue (double value) override { return formatter (value); }
    double getValueFromText (const juce::String& typed) override { return parseValue (typed).value_or (getValue()); }
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    juce::String label;
    std::function<juce::String (double)> formatter;
    bool hovered = false, pressed = false;
    std::unique_ptr<juce::SliderParameterAttachment> attachment;
    ostrel::widgets::ValueEntryEditor valueEditor;
    ostrel::widgets::VerticalValueDrag valueDrag;
};

class LegatoButton : public juce::Button
{
public:
    LegatoButton();
    void paintButton (juce::Graphics&, bool over, bool down) override;

    // The words of the two states; the voice mode's switch reads "MIX" and "RING".
    juce::String offText { "OFF" }, onText { "ON" };
};

// The tempo that synced modulation follows: the host's, or the standalone's own, edited in place.
class TransportBpmDisplay : public juce::Component,
                            public juce::SettableTooltipClient
{
public:
    explicit TransportBpmDisplay (juce::AudioProcessorValueTreeState& parameters);
    ~TransportBpmDisplay() override;

    bool editable = false;
    bool synced = false;
    double bpm = 120.0;

    juce::String text() const;
    void beginEdit();
    void endEdit (bool commit);
    juce::TextEditor* getEditor() const noexcept { return editor.get(); }

    void mouseDoubleClick (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    void resized() override;

private:
    juce::AudioProcessorValueTreeState& parameters;
    std::unique_ptr<juce::TextEditor> editor;
};

class WorkflowButton : public primitives::canonical::IconButton
{
public:
    WorkflowButton();
};

class SettingsButton : public primitives::canonical::IconButton
{
public:
    SettingsButton();
};

juce::String formatGlideChip (double seconds);
juce::String formatMasterChip (double db);
}
