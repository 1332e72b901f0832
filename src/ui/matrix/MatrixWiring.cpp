#include "ui/matrix/MatrixWiring.h"

#include "audio/PluginProcessor.h"
#include "widgets/Knob.h"

#include <cmath>
#include <map>

namespace morvane::ui::matrix
{
namespace
{
juce::String slotId (int slot, const char* field) { return "mod" + juce::String (slot) + field; }

juce::AudioParameterChoice* choice (MorvaneAudioProcessor& p, const juce::String& id)
{
    return dynamic_cast<juce::AudioParameterChoice*> (p.getParameterTree().getParameter (id));
}

int choiceIndex (MorvaneAudioProcessor& p, int slot, const char* field)
{
    auto* c = choice (p, slotId (slot, field));
    return c != nullptr ? c->getIndex() : -1;
}

float amountOf (MorvaneAudioProcessor& p, int slot)
{
    auto* amount = slotAmountParameter (p, slot);
    return amount != nullptr ? amount->convertFrom0to1 (amount->getValue()) : 0.0f;
}

void setAmount (MorvaneAudioProcessor& p, int slot, float value)
{
    if (auto* amount = slotAmountParameter (p, slot))
    {
        amount->beginChangeGesture();
        amount->setValueNotifyingHost (amount->convertTo0to1 (value));
        amount->endChangeGesture();
    }
}
}

juce::RangedAudioParameter* slotAmountParameter (MorvaneAudioProcessor& p, int slot)
{
    return slot >= 1 ? p.getParameterTree().getParameter (slotId (slot, "Amount")) : nullptr;
}

void setChoiceIndex (MorvaneAudioProcessor& p, const juce::String& parameterId, int index)
{
    auto* c = choice (p, parameterId);
    const int n = c != nullptr ? c->choices.size() : 0;
    if (n <= 1)
        return;
    c->beginChangeGesture();
    c->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, (float) index / (float) (n - 1)));
    c->endChangeGesture();
}

int findSlotForDestination (MorvaneAudioProcessor& p, int destination)
{
    for (int slot = 1; slot <= 8; ++slot)
        if (choiceIndex (p, slot, "Dest") == destination && choiceIndex (p, slot, "Source") > 0)
            return slot;
    return 0;
}

bool assignSourceToDestination (MorvaneAudioProcessor& p, int source, int destination)
{
    const EditHistory::Step step (p.getParameterTree());
    for (int slot = 1; slot <= 8; ++slot)
        if (choiceIndex (p, slot, "Dest") == destination)
        {
            setChoiceIndex (p, slotId (slot, "Source"), source);
            if (std::abs (amountOf (p, slot)) < 0.001f)
                setAmount (p, slot, 0.35f);
            return true;
        }
    for (int slot = 1; slot <= 8; ++slot)
        if (choiceIndex (p, slot, "Source") == 0)
        {
            setChoiceIndex (p, slotId (slot, "Source"), source);
            setChoiceIndex (p, slotId (slot, "Dest"), destination);
            setAmount (p, slot, 0.35f);
            return true;
        }
    return false;
}

void clearDestination (MorvaneAudioProcessor& p, int destination)
{
    const EditHistory::Step step (p.getParameterTree());
    for (int slot = 1; slot <= 8; ++slot)
        if (choiceIndex (p, slot, "Dest") == destination)
        {
            setChoiceIndex (p, slotId (slot, "Source"), 0);
            setAmount (p, slot, 0.0f);
        }
}

const juce::StringArray& sourceDisplayNames()
{
    static const juce::StringArray names { "Velocity", "Key", "Mod wheel", "Aftertouch", "LFO 1", "DCW env osc 1", "DCW env osc 2" };
    return names;
}

juce::String modulationStatusText (MorvaneAudioProcessor& p, int destination)
{
    const auto& names = sourceDisplayNames();
    for (int slot = 1; slot <= 8; ++slot)
    {
        const int source = choiceIndex (p, slot, "Source");
        if (choiceIndex (p, slot, "Dest") != destination || source < 1 || source > names.size())
            continue;
        const auto* raw = p.getParameterTree().getRawParameterValue (slotId (slot, "Amount"));
        const int percent = juce::roundToInt ((raw != nullptr ? raw->load() : 0.0f) * 100.0f);
        return "Modulating: " + names[source - 1] + juce::String (juce::CharPointer_UTF8 (" \xc2\xb7 "))
               + (percent >= 0 ? "+" : "") + juce::String (percent) + " %";
    }
    return {};
}

namespace
{
// Message thread only, like everything that wires knobs.
std::map<const MorvaneAudioProcessor*, EditorWiring>& wirings()
{
    static std::map<const MorvaneAudioProcessor*, EditorWiring> all;
    return all;
}
}

EditorWiring& wiringOf (const MorvaneAudioProcessor& processor) { return wirings()[&processor]; }
void forgetWiring (const MorvaneAudioProcessor& processor) { wirings().erase (&processor); }
std::vector<RegisteredKnob>& knobRegistry (const MorvaneAudioProcessor& processor) { return wiringOf (processor).knobs; }

void pruneKnobRegistry (const MorvaneAudioProcessor& processor)
{
    auto& r = knobRegistry (processor);
    r.erase (std::remove_if (r.begin(), r.end(), [] (const RegisteredKnob& k) { return k.knob == nullptr || k.destination < 1; }), r.end());
}

void wireKnob (ostrel::widgets::Knob& knob, MorvaneAudioProcessor& processor, const juce::String& parameterId, int destination)
{
    pruneKnobRegistry (processor);
    auto& registry = knobRegistry (processor);
    auto existing = std::find_if (registry.begin(), registry.end(), [&knob] (const RegisteredKnob& k) { return k.knob == &knob; });
    if (existing != registry.end())
        existing->destination = destination;
    else
        registry.push_back ({ &knob, destination, parameterId });

    auto* p = &processor;
    knob.setModulationEnabled (true);
    knob.setModulated (findSlotForDestination (processor, destination) >= 1);
    knob.setSourceDropHandler ([p, destination] (int source) { return assignSourceToDestination (*p, source, destination); });
    knob.setModulationSources (sourceDisplayNames(), [p, destination] (int source) { assignSourceToDestination (*p, source, destination); });
    knob.setModulationStatus ([p, destination] { return modulationStatusText (*p, destination); },
                              [p, destination] { clearDestination (*p, destination); });

    auto amount = [p, destination] { return slotAmountParameter (*p, findSlotForDestination (*p, destination)); };
    knob.setDepthCallbacks (
        [amount] { auto* a = amount(); return a != nullptr ? a->convertFrom0to1 (a->getValue()) : 0.0f; },
        [amount] { if (auto* a = amount()) a->beginChangeGesture(); },
        [amount] (float v) { if (auto* a = amount()) a->setValueNotifyingHost (a->convertTo0to1 (juce::jlimit (-1.0f, 1.0f, v))); },
        [amount] { if (auto* a = amount()) a->endChangeGesture(); });

    juce::Component::SafePointer<ostrel::widgets::Knob> safe (&knob);
    knob.setMidiLearnHandler ([p, parameterId, safe]
    {
        if (p->isMidiLearnTarget (parameterId))
            p->cancelMidiLearn();
        else
            p->startMidiLearn (parameterId);
        if (safe != nullptr)
            safe->setMidiLearnPending (! safe->isMidiLearnPending());
    });
    knob.setRevealHandler ([p, destination]
    {
        if (auto& reveal = wiringOf (*p).revealInMatrix)
            reveal (destination);
    });
}

void refreshKnobs (MorvaneAudioProcessor& processor)
{
    pruneKnobRegistry (processor);
    std::array<float, 64> sums {};
    std::array<bool, 64> pointed {};
    const auto& outputs = processor.getEngine().slotOutputs;
    for (int slot = 1; slot <= 8; ++slot)
    {
        const int dest = choiceIndex (processor, slot, "Dest");
        if (dest < 1 || dest >= (int) sums.size())
            continue;
        sums[(size_t) dest] += outputs[(size_t) slot - 1].load (std::memory_order_relaxed);
        pointed[(size_t) dest] = pointed[(size_t) dest] || choiceIndex (processor, slot, "Source") > 0;
    }
    for (auto& entry : knobRegistry (processor))
    {
        const auto d = (size_t) juce::jlimit (0, (int) sums.size() - 1, entry.destination);
        entry.knob->setModulated (std::abs (sums[d]) > 0.001f || pointed[d]);
        entry.knob->setLivePosition (juce::jlimit (0.0, 1.0, 0.5 + 0.5 * (double) sums[d]));
        // A learn the audio thread completed (or another knob took over) ends the pulse.
        if (entry.knob->isMidiLearnPending() && ! processor.isMidiLearnTarget (entry.parameterId))
            entry.knob->setMidiLearnPending (false);
    }
}

void flashDestination (const MorvaneAudioProcessor& processor, int destination)
{
    pruneKnobRegistry (processor);
    for (auto& entry : knobRegistry (processor))
        if (entry.destination == destination)
            entry.knob->flashHalo();
}
}
