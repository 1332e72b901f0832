#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <set>

namespace morvane
{
// Cuts the undo history into one step per edit. Every write from the editor is a gesture, so a
// step opens where the first gesture of an edit begins and closes where the last one ends. The
// tree records parameter values lazily, on its own timer; the values of an edit are flushed into
// its step at both ends, so that a quick next edit can't land in the same step.
class EditHistory : private juce::AudioProcessorParameter::Listener
{
public:
    EditHistory (juce::AudioProcessorValueTreeState& state, juce::UndoManager& undoManager);
    ~EditHistory() override;

    void undo();
    void redo();
    bool canUndo() const { return undoManager.canUndo(); }
    bool canRedo() const { return undoManager.canRedo(); }

    // Several writes that make one edit (a drop, a unit switch, a randomise) share one step.
    class Step
    {
    public:
        explicit Step (juce::AudioProcessorValueTreeState& state);
        ~Step();

    private:
        EditHistory* history;
        JUCE_DECLARE_NON_COPYABLE (Step)
    };

    static EditHistory* find (juce::AudioProcessorValueTreeState& state);

private:
    void parameterValueChanged (int, float) override {}
    void parameterGestureChanged (int index, bool starting) override;
    void openStep();
    void flush();

    juce::AudioProcessorValueTreeState& state;
    juce::UndoManager& undoManager;
    std::set<int> openGestures;
    int held = 0;
};
}
