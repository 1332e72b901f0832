#include "ui/widgets/AmpEnvelopePanel.h"

namespace morvane::ui::widgets
{
AmpEnvelopePanel::AmpEnvelopePanel (juce::AudioProcessorValueTreeState& state)
    : editor (state, { "ampAttack", "ampDecay", "ampSustain", "ampRelease" })
{
    setName ("AmpEnvelopePanel");
    addAndMakeVisible (title);
    editor.setLabels ({ "A", "D", "S", "R" });
    addAndMakeVisible (editor);
}

AmpEnvelopePanel::~AmpEnvelopePanel() = default;

void AmpEnvelopePanel::resized()
{
    SectionFrame::resized();
    title.setBounds (20, 8, 272, 22);
    editor.setBounds (16, 62, 280, 234);
}
}
