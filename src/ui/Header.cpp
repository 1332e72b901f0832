#include "ui/Header.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui
{
namespace
{
void drawChevron (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c, bool right)
{
    const auto centre = b.getCentre();
    const float dx = right ? 2.5f : -2.5f;
    juce::Path p;
    p.startNewSubPath (centre.x - dx, centre.y - 5.0f);
    p.lineTo (centre.x + dx, centre.y);
    p.lineTo (centre.x - dx, centre.y + 5.0f);
    g.setColour (c);
    g.strokePath (p, juce::PathStrokeType (1.5f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}

void drawMenuGlyph (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c)
{
    const auto centre = b.getCentre();
    g.setColour (c);
    for (int i = -1; i <= 1; ++i)
        g.fillRoundedRectangle (centre.x - 7.0f, centre.y + (float) i * 5.0f - 0.75f, 14.0f, 1.5f, 0.75f);
}

void drawSettingsGlyph (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c)
{
    // Three sliders: the settings are mostly choices of how things look.
    const auto centre = b.getCentre();
    g.setColour (c);
    const float knobs[] = { -3.0f, 3.5f, -1.0f };
    for (int i = -1; i <= 1; ++i)
    {
        const float y = centre.y + (float) i * 5.0f;
        g.fillRect (centre.x - 7.0f, y - 0.5f, 14.0f, 1.0f);
        g.fillEllipse (centre.x + knobs[i + 1] - 2.0f, y - 2.0f, 4.0f, 4.0f);
    }
}
}

Header::Header()
    : previousButton ("Previous preset", [] (auto& g, auto& b, auto c) { drawChevron (g, b, c, false); }),
      nextButton ("Next preset", [] (auto& g, auto& b, auto c) { drawChevron (g, b, c, true); }),
      workflowButton ("Patch tools", drawMenuGlyph),
      settingsButton ("Settings", drawSettingsGlyph),
      browseButton ("Browse", 6, 0)
{
    setName ("Header");
    for (auto* b : { (juce::Button*) &previousButton, (juce::Button*) &nextButton, (juce::Button*) &browseButton,
                     (juce::Button*) &workflowButton, (juce::Button*) &settingsButton })
    {
        b->setTitle (b->getName());
        b->setTooltip (b->getName());
        addAndMakeVisible (*b);
    }
    previousButton.onClick = [this] { if (onPreviousPreset) onPreviousPreset(); };
    nextButton.onClick = [this] { if (onNextPreset) onNextPreset(); };
    browseButton.onClick = [this] { if (onBrowse) onBrowse(); };
    workflowButton.onClick = [this] { if (onWorkflow) onWorkflow(); };
    settingsButton.onClick = [this] { if (onSettings) onSettings(); };
}

Header::~Header() = default;

juce::String Header::getPositionText() const
{
    return juce::String (presetIndex).paddedLeft ('0', 3) + " / " + juce::String (presetCount).paddedLeft ('0', 3);
}

void Header::setPresetPosition (int index, int count)
{
    if (index == presetIndex && count == presetCount)
        return;
    presetIndex = index;
    presetCount = juce::jmax (1, count);
    repaint (nameArea());
}

void Header::setPresetName (const juce::String& name)
{
    if (name == presetName)
        return;
    presetName = name;
    repaint (nameArea());
}

void Header::setPeakDb (float db)
{
    peakDb = db;
    const auto area = meterArea();
    const auto pixels = juce::roundToInt (juce::jmap (juce::jlimit (-60.0f, 0.0f, db), -60.0f, 0.0f, 0.0f, (float) area.getWidth()));
    if (pixels != meterPixels)
    {
        meterPixels = pixels;
        repaint (area);
    }
}

juce::Rectangle<int> Header::nameArea() const { return { 264, 12, 456, 48 }; }
juce::Rectangle<int> Header::meterArea() const { return { getWidth() - 276, 32, 168, 8 }; }

void Header::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), 0, rest);
    drawTypeText (g, 9, "Morvane", juce::Rectangle<int> (24, 0, 180, getHeight()), token (Token::textPrimary),
                  juce::Justification::centredLeft);

    const auto names = nameArea();
    drawSurface (g, names.toFloat(), 2, rest);
    drawTypeText (g, 8, getPositionText(), names.reduced (14, 0).withHeight (24).withY (names.getY() + 2),
                  token (Token::textTertiary), juce::Justification::centredLeft);
    drawTypeText (g, 0, presetName.isEmpty() ? juce::String ("—") : presetName,
                  names.reduced (14, 0).withTrimmedTop (18), token (Token::textPrimary), juce::Justification::centredLeft);

    const auto meter = meterArea();
    drawTypeText (g, 7, "Out", meter.withY (meter.getY() - 18).withHeight (14), token (Token::textTertiary),
                  juce::Justification::centredLeft);
    g.setColour (token (Token::bgPanel));
    g.fillRoundedRectangle (meter.toFloat(), 2.0f);
    g.setColour (peakDb > -1.0f ? token (Token::semanticWarn) : token (Token::accentPrimary));
    g.fillRoundedRectangle (meter.withWidth (meterPixels).toFloat(), 2.0f);
}

void Header::resized()
{
    const auto names = nameArea();
    previousButton.setBounds (names.getX() - 84, 18, 36, 36);
    nextButton.setBounds (names.getX() - 42, 18, 36, 36);
    browseButton.setBounds (names.getRight() + 12, 18, 96, 36);
    settingsButton.setBounds (getWidth() - 60, 18, 36, 36);
    workflowButton.setBounds (getWidth() - 102, 18, 36, 36);
}
}
