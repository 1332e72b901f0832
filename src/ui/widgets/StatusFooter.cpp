#include "ui/widgets/StatusFooter.h"

#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
namespace
{
constexpr float arcHalf = 2.4504423f;
constexpr const char* macroLabels[4] = { "GRW", "MOT", "WT", "AIR" };
constexpr Token macroColours[4] = { Token::accentEmber, Token::accentModRing, Token::accentPrimary, Token::accentLive };

void strokeArc (juce::Graphics& g, juce::Point<float> centre, float from, float to, float width)
{
    juce::Path arc;
    arc.addCentredArc (centre.x, centre.y, 20.0f, 20.0f, 0.0f, from, to, true);
    g.strokePath (arc, juce::PathStrokeType (width, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}
}

StatusFooter::FooterButton::FooterButton (const juce::String& caption) : LabeledChipButton (caption, 7, 8)
{
    setTitle (caption);
}

StatusFooter::StatusFooter()
{
    setName ("StatusFooter");
    for (auto* b : { &matrixButton, &playButton, &fxButton })
        addAndMakeVisible (*b);
    matrixButton.onClick = [this] { press (matrixButton, matrixOpen, onMatrix); };
    playButton.onClick = [this] { press (playButton, playOpen, onPlay); };
    fxButton.onClick = [this] { press (fxButton, fxOpen, onFx); };
}

StatusFooter::~StatusFooter() = default;

void StatusFooter::press (FooterButton& button, bool& flag, const std::function<void()>& callback)
{
    flag = ! flag;
    button.setToggleState (flag, juce::dontSendNotification);
    repaint();
    if (callback)
        callback();
}

void StatusFooter::setSampleRate (double rate)
{
    if (juce::approximatelyEqual (rate, sampleRate))
        return;
    sampleRate = rate;
    repaint (block (972, 204));
}

void StatusFooter::setCpuPercent (float percent)
{
    // The read-out shows one decimal: a change below it would repaint the same pixels.
    const bool samePixels = juce::String (percent, 1) == juce::String (cpuPercent, 1)
                            && (percent >= 70.0f) == (cpuPercent >= 70.0f);
    cpuPercent = percent;
    if (! samePixels)
        repaint (block (972, 204));
}

void StatusFooter::setVoiceText (const juce::String& text)
{
    if (text == voiceText)
        return;
    voiceText = text;
    repaint (block (756, 204));
}

void StatusFooter::setDirty (bool d)
{
    if (d == dirty)
        return;
    dirty = d;
    repaint (block (1188, 96));
}

void StatusFooter::setMatrixOpen (bool open)
{
    matrixOpen = open;
    matrixButton.setToggleState (open, juce::dontSendNotification);
}

void StatusFooter::setPlayOpen (bool open)
{
    playOpen = open;
    playButton.setToggleState (open, juce::dontSendNotification);
}

void StatusFooter::setFxOpen (bool open)
{
    fxOpen = open;
    fxButton.setToggleState (open, juce::dontSendNotification);
}

juce::Rectangle<int> StatusFooter::macroBox (int index) const
{
    return { 324 + 52 * index, juce::jmax ((getHeight() - 44) / 2, 0), 44, 44 };
}

juce::Rectangle<int> StatusFooter::block (int x, int width) const { return { x, 0, width, getHeight() }; }

void StatusFooter::moveMacro (const juce::MouseEvent& e, MacroGesture gesture)
{
    const auto box = macroBox (activeMacro);
    const auto value = juce::jlimit (0.0f, 1.0f, (float) (e.x - box.getX()) / 44.0f);
    macros[(size_t) activeMacro] = value;
    if (onMacro)
        onMacro (activeMacro, value, gesture);
    repaint (box);
}

void StatusFooter::mouseDown (const juce::MouseEvent& e)
{
    activeMacro = -1;
    for (int i = 0; i < 4; ++i)
        if (macroBox (i).contains (e.getPosition()))
            activeMacro = i;
    if (activeMacro >= 0)
        moveMacro (e, MacroGesture::begin);
}

void StatusFooter::mouseDrag (const juce::MouseEvent& e)
{
    if (activeMacro >= 0)
        moveMacro (e, MacroGesture::drag);
}

void StatusFooter::mouseUp (const juce::MouseEvent&)
{
    if (activeMacro < 0)
        return;
    const auto index = activeMacro;
    if (onMacro)
        onMacro (index, macros[(size_t) index], MacroGesture::end);
    activeMacro = -1;
    repaint (macroBox (index));
}

juce::String StatusFooter::audioText() const
{
    const auto khz = sampleRate / 1000.0;
    // Without a running device there is no rate to claim.
    const auto rate = sampleRate <= 0.0 ? juce::String ("no audio")
                      : std::abs (khz - std::round (khz)) < 1.0e-9 ? juce::String ((int) std::round (khz)) + " kHz"
                                                                  : juce::String (khz, 1) + " kHz";
    return juce::String::formatted ("%.1f%%", (double) cpuPercent) + juce::String (juce::CharPointer_UTF8 (" \xc2\xb7 ")) + rate;
}

void StatusFooter::paint (juce::Graphics& g)
{
    g.setColour (token (Token::borderHair));
    g.fillRect (0, 0, getWidth(), 1);
    for (int x : { 318, 750, 966 })
        g.fillRect (x, 8, 1, getHeight() - 16);

    for (int i = 0; i < 4; ++i)
    {
        const auto box = macroBox (i);
        const auto centre = box.getCentre().toFloat();
        g.setColour (token (Token::bgSurface2).withAlpha (i == activeMacro ? 0.9f : 0.62f));
        g.fillEllipse (juce::Rectangle<float> (40.0f, 40.0f).withCentre (centre));
        g.setColour (token (Token::borderHair));
        strokeArc (g, centre, -arcHalf, arcHalf, 2.0f);
        if (macros[(size_t) i] > 0.0f)
        {
            g.setColour (token (macroColours[i]));
            strokeArc (g, centre, -arcHalf, macros[(size_t) i] * 2.0f * arcHalf - arcHalf, 3.0f);
        }
        g.setFont (fontForTypeRole (7));
        g.setColour (token (Token::textSecondary));
        g.drawText (macroLabels[i], box, juce::Justification::centred, false);
    }

    auto drawBlock = [&] (int x, int width, const char* caption, juce::Justification just) {
        const auto area = block (x, width);
        drawTypeText (g, 7, caption, area.withTrimmedTop (4).withHeight (juce::jmin (22, area.getHeight())),
                      token (Token::textTertiary), just);
        return area.withTrimmedTop (4 + 22).withTrimmedBottom (8);
    };
    const auto voiceArea = drawBlock (756, 204, "VOICE", juce::Justification::centredLeft);
    drawTypeText (g, 2, voiceText, voiceArea, token (Token::textSecondary), juce::Justification::centredLeft);

    const auto audioArea = drawBlock (972, 204, "AUDIO", juce::Justification::centredRight);
    juce::AttributedString line;
    line.setJustification (juce::Justification::centredRight);
    const auto font = fontForTypeRole (2);
    line.append (juce::String::formatted ("%.1f%%", (double) cpuPercent), font,
                 token (cpuPercent >= 70.0f ? Token::semanticWarn : Token::textSecondary));
    line.append (juce::String (juce::CharPointer_UTF8 (" \xc2\xb7 ")), font, token (Token::textTertiary));
    line.append (audioText().fromLastOccurrenceOf (juce::String (juce::CharPointer_UTF8 ("\xc2\xb7 ")), false, false),
                 font, token (Token::textSecondary));
    line.draw (g, audioArea.toFloat());

    const auto statusArea = drawBlock (1188, 96, "STATUS", juce::Justification::centredRight);
    drawTypeText (g, 2, dirty ? "DIRTY" : "READY", statusArea, token (dirty ? Token::semanticWarn : Token::textTertiary),
                  juce::Justification::centredRight);
}

void StatusFooter::resized()
{
    const int y = (getHeight() - 44) / 2;
    matrixButton.setBounds (0, y, 96, 44);
    playButton.setBounds (104, y, 96, 44);
    fxButton.setBounds (208, y, 96, 44);
}
}
