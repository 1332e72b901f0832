#include "ui/PatchTools.h"

namespace morvane::ui::patch
{
namespace
{
struct Draw
{
    const char* id;
    float offset, span; // value = offset + span * r; a span of 0 draws a choice
};

const Draw oscDraws[] = { { "osc1Wave", 0, 0 }, { "osc2Wave", 0, 0 }, { "osc1DcwDepth", 0, 0.9f },
                          { "osc2DcwDepth", 0, 0.9f }, { "osc2Detune", -18, 36 }, { "reeseBeat", 0, 8 },
                          { "reeseSpread", 0, 0.65f }, { "pdMorphAmount", 0, 0.6f } };
const Draw filterDraws[] = { { "filterModel", 0, 0 }, { "filterCutoff", 120, 11880 }, { "filterReso", 0, 0.72f },
                             { "filterEnvAmount", -18, 50 } };
const Draw driveDraws[] = { { "driveMode", 0, 0 }, { "drive", 0, 18 }, { "driveMix", 0.45f, 0.55f },
                            { "feedbackAmount", 0, 0.35f }, { "feedbackTone", 180, 8820 } };
const Draw movementDraws[] = { { "lfo1Shape", 0, 0 }, { "lfo1Rate", 0.12f, 11.88f }, { "lfo1Depth", 0, 1 },
                               { "mod2Amount", -0.5f, 1 }, { "mod3Amount", -0.5f, 1 }, { "mod4Amount", -0.5f, 1 },
                               { "mod5Amount", -0.5f, 1 }, { "mod6Amount", -0.5f, 1 }, { "mod7Amount", -0.5f, 1 },
                               { "mod8Amount", -0.5f, 1 } };

template <size_t N>
void runTable (juce::AudioProcessorValueTreeState& state, const Draw (&table)[N], std::mt19937& engine)
{
    for (const auto& draw : table)
    {
        if (draw.span == 0.0f)
        {
            auto* choice = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter (draw.id));
            if (choice == nullptr)
                continue;
            std::uniform_int_distribution<int> pick (0, choice->choices.size() - 1);
            setParameter (state, draw.id, (float) pick (engine));
            continue;
        }
        // 24 bits of one draw, taken before the lookup so that a missing id still uses its draw.
        const float r = (float) (engine() >> 8) * (1.0f / 16777216.0f);
        setParameter (state, draw.id, draw.offset + draw.span * r);
    }
}
}

bool setParameter (juce::AudioProcessorValueTreeState& state, const juce::String& id, float value)
{
    auto* parameter = state.getParameter (id);
    if (parameter == nullptr)
        return false;
    parameter->beginChangeGesture();
    parameter->setValueNotifyingHost (parameter->convertTo0to1 (value));
    parameter->endChangeGesture();
    return true;
}

juce::ValueTree capture (juce::AudioProcessorValueTreeState& state) { return state.copyState(); }

void recall (juce::AudioProcessorValueTreeState& state, const juce::ValueTree& slot)
{
    if (slot.isValid())
        state.replaceState (slot.createCopy());
}

void morph (juce::AudioProcessorValueTreeState& state, const juce::ValueTree& a, const juce::ValueTree& b, float t)
{
    if (! a.isValid() || ! b.isValid())
        return;
    t = juce::jlimit (0.0f, 1.0f, t);
    for (const auto& child : a)
    {
        if (! child.hasProperty ("id") || ! child.hasProperty ("value"))
            continue;
        const auto id = child["id"].toString();
        const auto other = b.getChildWithProperty ("id", id);
        if (! other.isValid() || ! other.hasProperty ("value"))
            continue;
        const auto va = (float) child["value"], vb = (float) other["value"];
        setParameter (state, id, (vb - va) * t + va);
    }
}

void randomise (juce::AudioProcessorValueTreeState& state, const juce::String& scope, std::mt19937& engine)
{
    const bool full = scope == "full";
    if (full || scope == "osc") runTable (state, oscDraws, engine);
    if (full || scope == "filter") runTable (state, filterDraws, engine);
    if (full || scope == "drive") runTable (state, driveDraws, engine);
    if (full || scope == "movement") runTable (state, movementDraws, engine);
}

void applyMacro (juce::AudioProcessorValueTreeState& state, int index, float v, Gesture gesture)
{
    if (index < 0 || index > 3)
        return;
    const std::pair<const char*, float> targets[4][2] = {
        { { "drive", 20 * v }, { "feedbackAmount", 0.28f * v } },
        { { "lfo1Depth", v }, { "reeseSpread", 0.8f * v } },
        { { "subLevel", 90 * v - 90 }, { "monoLowFreq", 120 * v + 80 } },
        { { "noiseLevel", 42 * v - 90 }, { "phaseStereo", v } },
    };
    for (const auto& [id, value] : targets[index])
    {
        auto* parameter = state.getParameter (id);
        if (parameter == nullptr)
            continue;
        if (gesture == Gesture::begin)
            parameter->beginChangeGesture();
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (value));
        if (gesture == Gesture::end)
            parameter->endChangeGesture();
    }
}
}
