#include "ui/widgets/FxSlideOut.h"

#include "audio/PluginProcessor.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "ui/widgets/CommandButtons.h"
#include "ui/widgets/MatrixSlideOut.h"

namespace morvane::ui::widgets
{
FxSlideOut::FxSlideOut (MorvaneAudioProcessor& p) : processor (p)
{
    setName ("FX");
    setTitle ("FX");
    setWantsKeyboardFocus (true);

    const std::tuple<juce::Label*, const char*, int> labels[] = { { &titleLabel, "FX", 2 }, { &voiceLabel, "VOICE", 6 },
                                                                   { &masterLabel, "MASTER", 6 } };
    for (auto [label, text, role] : labels)
    {
        label->setText (text, juce::dontSendNotification);
        styleLabel (*label, "text.secondary", role);
        label->setJustificationType (juce::Justification::centredLeft);
    }
    for (auto* label : { &titleLabel, &voiceLabel, &masterLabel })
        addAndMakeVisible (*label);

    closeButton.setButtonText (juce::String (juce::CharPointer_UTF8 ("\xe2\x9c\x95")));
    styleCloseButton (closeButton, "Close FX panel", "Close the FX panel.");
    closeButton.onClick = [this] { if (onClose) onClose(); };
    addAndMakeVisible (closeButton);

    auto& state = processor.getParameterTree();
    multibandDriveCard = std::make_unique<MultibandDriveCard> (state, processor);
    modFxCard = std::make_unique<ModFxCard> (state, processor);
    postEqCard = std::make_unique<PostEqCard> (state, processor);
    delayCard = std::make_unique<DelayCard> (state, processor);
    reverbCard = std::make_unique<ReverbCard> (state, processor);
    bitCrushCard = std::make_unique<BitCrushCard> (state, processor);
    for (auto* card : { (ostrel::widgets::SectionFrame*) multibandDriveCard.get(), (ostrel::widgets::SectionFrame*) modFxCard.get(),
                        (ostrel::widgets::SectionFrame*) postEqCard.get(), (ostrel::widgets::SectionFrame*) delayCard.get(),
                        (ostrel::widgets::SectionFrame*) reverbCard.get(), (ostrel::widgets::SectionFrame*) bitCrushCard.get() })
    {
        // The cards share the plate's fill, so a hairline keeps them apart.
        card->setOutlineThickness (1.0f);
        addAndMakeVisible (card);
    }
}

FxSlideOut::~FxSlideOut() = default;

void FxSlideOut::paint (juce::Graphics& g) { paintSlideOutPlate (g, getLocalBounds().toFloat()); }

void FxSlideOut::resized()
{
    auto area = getLocalBounds().reduced (16);
    auto top = area.removeFromTop (44);
    closeButton.setBounds (top.removeFromRight (44));
    titleLabel.setBounds (top);
    area.removeFromTop (8);

    // Two full blocks need 640 of height and the panel has 626: when short, the gap between the
    // blocks and the bottom margin halve, and the last row of cards takes what is left.
    const bool tight = area.getHeight() < 2 * (22 + 8 + 248) + 16;
    auto block = [&area] (juce::Label& label, std::initializer_list<juce::Component*> cards, int gapAfter)
    {
        label.setBounds (area.removeFromTop (22));
        area.removeFromTop (8);
        auto row = area.removeFromTop (248);
        const int width = (row.getWidth() - 16) / 3;
        int index = 0;
        for (auto* card : cards)
        {
            card->setBounds (index < 2 ? row.removeFromLeft (width) : row);
            row.removeFromLeft (8);
            ++index;
        }
        area.removeFromTop (gapAfter);
    };
    block (voiceLabel, { multibandDriveCard.get(), modFxCard.get(), postEqCard.get() }, tight ? 8 : 16);
    if (tight)
        area.setBottom (std::max (area.getY(), getHeight() - 8));
    block (masterLabel, { delayCard.get(), reverbCard.get(), bitCrushCard.get() }, 16);
}
}
