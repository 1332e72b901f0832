#include "ui/widgets/ActiveRoutes.h"

namespace morvane::ui::widgets
{
std::vector<Route> activeRoutes (juce::AudioProcessorValueTreeState& state)
{
    std::vector<Route> routes;
    for (int n = 1; n <= 8; ++n)
    {
        const auto prefix = "mod" + juce::String (n);
        auto* source = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter (prefix + "Source"));
        auto* dest = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter (prefix + "Dest"));
        auto* amount = state.getRawParameterValue (prefix + "Amount");
        if (source == nullptr || dest == nullptr || amount == nullptr)
            continue;
        if (source->getIndex() > 0 && dest->getIndex() > 0)
            routes.push_back ({ n, source->getIndex(), dest->getIndex(), amount->load(),
                                source->getCurrentChoiceName(), dest->getCurrentChoiceName() });
    }
    return routes;
}

juce::String formatGlideTime (float seconds)
{
    if (seconds < 0.001f)
        return "0 ms";
    if (seconds < 1.0f)
        return juce::String (juce::roundToInt (seconds * 1000.0f)) + " ms";
    return juce::String (seconds, 1) + " s";
}
}
