#pragma once

#include <juce_audio_processors/juce_audio_processors.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include <array>

namespace morvane::ui::widgets
{
// The theme colour of a modulation source, by its id ("lfo1", "ampEnv", ...).
juce::Colour sourceColour (const juce::String& sourceId);
// The matrix source index of an id; 0 for none or an unknown id.
int sourceIndexOf (const juce::String& sourceId);
// Routes source to destination through the first four slots; true if a slot was written.
bool assignFromChip (juce::AudioProcessorValueTreeState& state, int source, int destination);

// The assign menu's rows: menu id, destination number, text.
struct AssignMenuRow
{
    int menuId, destination;
    const char* text;
};
const std::array<AssignMenuRow, 20>& assignMenuRows() noexcept;

// The pill that stands for a modulation source: dragged onto knobs, or a read-out badge.
class SourceChip : public juce::Component
{
public:
    SourceChip (const juce::String& sourceId, const juce::String& text);
    ~SourceChip() override;

    void mouseEnter (const juce::MouseEvent&) override;
    void mouseExit (const juce::MouseEvent&) override;
    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    bool keyPressed (const juce::KeyPress&) override;

    void setSource (const juce::String& newId, const juce::String& newText, bool off);
    void setDraggable (bool shouldBeDraggable);
    void setOffLook (bool off);
    void setAssignState (juce::AudioProcessorValueTreeState* state) noexcept { assignState = state; }
    void setOnClick (std::function<void()> f) { onClick = std::move (f); }
    void showAssignMenu();

    const juce::String& getSourceId() const noexcept { return sourceId; }
    const juce::String& getText() const noexcept { return text; }
    juce::Colour getColour() const noexcept { return colour; }
    bool isDraggable() const noexcept { return draggable; }
    bool hasOffLook() const noexcept { return offLook; }
    bool wasDragStarted() const noexcept { return dragStarted; }

private:
    void updateHelp();

    juce::String sourceId, text;
    juce::Colour colour;
    bool offLook = false;
    bool draggable = true;
    juce::AudioProcessorValueTreeState* assignState = nullptr;
    bool dragStarted = false, hovered = false, pressed = false;
    std::function<void()> onClick;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (SourceChip)
};
}
