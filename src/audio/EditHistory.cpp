#include "audio/EditHistory.h"

#include "audio/PluginProcessor.h"

namespace morvane
{
EditHistory::EditHistory (juce::AudioProcessorValueTreeState& s, juce::UndoManager& um) : state (s), undoManager (um)
{
    for (auto* parameter : state.processor.getParameters())
        parameter->addListener (this);
}

EditHistory::~EditHistory()
{
    for (auto* parameter : state.processor.getParameters())
        parameter->removeListener (this);
}

// The tree takes in a parameter's new value on its own timer; a step must hold its edit's values
// before the next one opens, so they are written in here. Not through copyState: that takes the
// tree's lock, and a gesture's callback already holds the parameter's listener lock, the reverse
// of the order in which a host's state restore takes the two.
void EditHistory::flush()
{
    for (auto child : state.state)
    {
        if (! child.hasProperty ("id"))
            continue;
        const auto* raw = state.getRawParameterValue (child.getProperty ("id").toString());
        if (raw == nullptr)
            continue;
        const float value = raw->load();
        if ((float) child.getProperty ("value") != value)
            child.setProperty ("value", value, &undoManager);
    }
}

void EditHistory::openStep()
{
    flush();
    undoManager.beginNewTransaction();
}

void EditHistory::parameterGestureChanged (int index, bool starting)
{
    // Hosts and controllers move parameters from other threads; only the editor's edits are steps.
    if (! juce::MessageManager::existsAndIsCurrentThread())
        return;
    if (starting)
    {
        if (openGestures.empty() && held == 0)
            openStep();
        openGestures.insert (index);
        return;
    }
    openGestures.erase (index);
    if (openGestures.empty())
        flush();
}

void EditHistory::undo()
{
    flush();
    undoManager.undo();
}

void EditHistory::redo()
{
    flush();
    undoManager.redo();
}

EditHistory* EditHistory::find (juce::AudioProcessorValueTreeState& s)
{
    if (auto* p = dynamic_cast<MorvaneAudioProcessor*> (&s.processor))
        return &p->getEditHistory();
    return nullptr;
}

EditHistory::Step::Step (juce::AudioProcessorValueTreeState& s) : history (find (s))
{
    if (history == nullptr)
        return;
    if (history->held++ == 0 && history->openGestures.empty())
        history->openStep();
}

EditHistory::Step::~Step()
{
    if (history == nullptr)
        return;
    if (--history->held == 0)
        history->flush();
}
}
