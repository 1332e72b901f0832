#include "ui/widgets/MatrixSlideOut.h"

#include "audio/PluginProcessor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/CommandButtons.h"

namespace morvane::ui::widgets
{
void paintSlideOutPlate (juce::Graphics& g, juce::Rectangle<float> bounds)
{
    drawSurface (g, bounds, 3, SurfaceState::rest);
    g.setColour (token (Token::accentPrimary).withAlpha (0.86f));
    g.fillRoundedRectangle (bounds.getX(), bounds.getY(), 204.0f, 4.0f, 2.0f);
}

MatrixSlideOut::MatrixSlideOut (MorvaneAudioProcessor& p) : processor (p)
{
    setName ("MatrixSlideOut");
    setWantsKeyboardFocus (true);
    titleLabel.setText ("MODULATION MATRIX", juce::dontSendNotification);
    styleLabel (titleLabel, "text.secondary", 2);
    titleLabel.setJustificationType (juce::Justification::centredLeft);
    addAndMakeVisible (titleLabel);

    closeButton.setButtonText (juce::String (juce::CharPointer_UTF8 ("\xe2\x9c\x95")));
    styleCloseButton (closeButton, "Close modulation matrix", "Close the modulation matrix.");
    closeButton.onClick = [this] { if (onClose) onClose(); };
    addAndMakeVisible (closeButton);

    for (int n = 1; n <= 8; ++n)
    {
        auto& row = rows[(size_t) n - 1];
        row = std::make_unique<RoutingRow> (processor.getParameterTree(), n);
        row->onDestinationFlash = [this] (int destination)
        {
            if (destination < 1)
                return;
            matrix::flashDestination (processor, destination);
            if (auto& highlight = matrix::wiringOf (processor).routingHighlight)
                highlight (destination);
        };
        addAndMakeVisible (*row);
    }
}

MatrixSlideOut::~MatrixSlideOut() = default;

void MatrixSlideOut::markDestination (int destination)
{
    for (auto& row : rows)
        row->setMarked (destination > 0 && row->destinationIndex() == destination);
}

void MatrixSlideOut::paint (juce::Graphics& g) { paintSlideOutPlate (g, getLocalBounds().toFloat()); }

void MatrixSlideOut::resized()
{
    auto area = getLocalBounds().reduced (16);
    auto top = area.removeFromTop (44);
    closeButton.setBounds (top.removeFromRight (44));
    titleLabel.setBounds (top);
    area.removeFromTop (8);
    const int columnWidth = (area.getWidth() - 12) / 2;
    for (int column = 0; column < 2; ++column)
    {
        auto col = juce::Rectangle<int> (area.getX() + column * (columnWidth + 12), area.getY(), columnWidth, area.getHeight());
        for (int i = 0; i < 4; ++i)
        {
            rows[(size_t) (column * 4 + i)]->setBounds (col.removeFromTop (88));
            col.removeFromTop (8);
        }
    }
}
}
