#pragma once

#include "ui/widgets/AdsrEnvelopeEditor.h"

namespace morvane::ui::widgets
{
// The card of the amplifier's envelope.
class AmpEnvelopePanel : public ostrel::widgets::SectionFrame
{
public:
    explicit AmpEnvelopePanel (juce::AudioProcessorValueTreeState& state);
    ~AmpEnvelopePanel() override;

    void resized() override;

    ostrel::widgets::SectionTitle title { "AMP ENV" };
    AdsrEnvelopeEditor editor;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (AmpEnvelopePanel)
};
}
