#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <optional>

namespace ostrel::widgets
{

// Reads a typed value: a finite number, optionally followed by a short unit ("3.5 dB", "40%").
// Anything else is refused (empty result); a number outside min..max is clamped into it.
std::optional<double> parseTypedValue(const juce::String& text, double minimum, double maximum);

// A one-line editor that a control shows over itself for typed values. It is kept and hidden
// rather than deleted, because it ends its own edit from inside its key handler.
class ValueEntryEditor : public juce::TextEditor, private juce::Timer
{
public:
    ValueEntryEditor();

    // Shows the editor over area with text selected; onCommit receives the text on Return.
    void begin(juce::Rectangle<int> area, const juce::String& text);
    void end();
    bool isEditing() const noexcept { return editing; }

    std::function<void(const juce::String&)> onCommit;

private:
    void focusLost(FocusChangeType) override;
    // A window that gets the keyboard back only after a menu has gone (the window system hands it
    // over asynchronously) gives it to the component that had it before the menu, without telling
    // the box: for its first second the box takes it back.
    void timerCallback() override;
    bool editing = false;
    int focusTries = 0;
};

// Process-wide clipboard access of the library. The default is the system clipboard; a
// headless host (tests, the snapshot tool) can install its own.
namespace clipboard
{
void copyText(const juce::String& text);
juce::String pasteText();
void setHandlers(std::function<void(const juce::String&)> copy, std::function<juce::String()> paste);
} // namespace clipboard

} // namespace ostrel::widgets
