#include "ui/widgets/OscCard.h"

#include "audio/PluginProcessor.h"
#include "engine/ModLabels.h"
#include "engine/WaveShape.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "ui/widgets/ActiveRoutes.h"
#include "ui/widgets/ValueFormat.h"

#include <atomic>

namespace morvane::ui::widgets
{
namespace
{
const char* const waveTips[10] = {
    "Sawtooth \xe2\x80\x94 bright, classic",
    "Square \xe2\x80\x94 hollow, woody",
    "Pulse \xe2\x80\x94 narrow, nasal",
    "Short pulse \xe2\x80\x94 thin, buzzy",
    "Half sine \xe2\x80\x94 soft, dark",
    "Resonant saw \xe2\x80\x94 vocal, formant-y",
    "Resonant triangle \xe2\x80\x94 chimey, glassy",
    "Resonant trapezoid \xe2\x80\x94 hollow formant",
    "Pulse-width modulation \xe2\x80\x94 band-limited rect, duty via PW knob",
    "Resonant pulse \xe2\x80\x94 nasal formant pulse",
};

juce::Path polyline (std::initializer_list<juce::Point<float>> points)
{
    juce::Path path;
    bool first = true;
    for (auto p : points)
    {
        if (first)
            path.startNewSubPath (p);
        else
            path.lineTo (p);
        first = false;
    }
    return path;
}

juce::Path sampledThumbnail (int wave)
{
    juce::Path path;
    for (int i = 0; i < 40; ++i)
    {
        const float t = (float) i / 39.0f;
        const juce::Point<float> p { 28.0f * t, 4.5f - 4.0f * juce::jlimit (-1.0f, 1.0f, waveShape (wave, t, 0.38f, 4.0f)) };
        if (i == 0)
            path.startNewSubPath (p);
        else
            path.lineTo (p);
    }
    return path;
}

std::array<juce::Path, 10> makeThumbnails()
{
    std::array<juce::Path, 10> t;
    t[0] = polyline ({ { 0, 0.5f }, { 28, 8.5f }, { 28, 0.5f } });
    t[1] = polyline ({ { 0, 0.5f }, { 14, 0.5f }, { 14, 8.5f }, { 28, 8.5f } });
    t[2] = polyline ({ { 0, 8.5f }, { 7, 8.5f }, { 7, 0.5f }, { 14, 0.5f }, { 14, 8.5f }, { 28, 8.5f } });
    t[3] = polyline ({ { 0, 8.5f }, { 4, 8.5f }, { 4, 0.5f }, { 10, 0.5f }, { 10, 8.5f }, { 18, 8.5f },
                       { 18, 0.5f }, { 24, 0.5f }, { 24, 8.5f }, { 28, 8.5f } });
    t[4].startNewSubPath (0, 8.5f);
    t[4].lineTo (4, 8.5f);
    t[4].cubicTo (8, 8.5f, 8, 0.5f, 14, 0.5f);
    t[4].cubicTo (20, 0.5f, 20, 8.5f, 24, 8.5f);
    t[4].lineTo (28, 8.5f);
    for (int w : { 5, 6, 7, 9 })
        t[(size_t) w] = sampledThumbnail (w);
    t[8] = polyline ({ { 0, 0.5f }, { 10, 0.5f }, { 10, 8.5f }, { 28, 8.5f } });
    return t;
}

int nextRadioGroup()
{
    static std::atomic<int> counter { 0 };
    return ++counter;
}

juce::String badgeSourceId (const juce::String& name)
{
    const auto n = name.toUpperCase();
    if (n.contains ("LFO")) return "lfo1";
    if (n.contains ("VEL")) return "velocity";
    if (n.contains ("KEY")) return "key";
    if (n.contains ("WHEEL")) return "modwheel";
    if (n.contains ("AFTER")) return "aftertouch";
    if (n.contains ("DCW") && n.contains ("1")) return "dcw1Env";
    if (n.contains ("DCW") && n.contains ("2")) return "dcw2Env";
    return "lfo1";
}

juce::Colour sourceTokenColour (const juce::String& id)
{
    if (id == "velocity") return token (Token::sourceVelocity);
    if (id == "key") return token (Token::sourceKey);
    if (id == "modwheel") return token (Token::sourceModWheel);
    if (id == "aftertouch") return token (Token::sourceAftertouch);
    if (id == "dcw1Env") return token (Token::sourceDcw1);
    if (id == "dcw2Env") return token (Token::sourceDcw2);
    if (id == "lfo1") return token (Token::sourceLfo);
    return token (Token::textTertiary);
}

juce::String levelText (double v)
{
    if (v <= -90.0)
        return juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92\xe2\x88\x9e dB"));
    return formatSigned (v, 1, false, true, false) + " dB";
}
}

WaveCell::WaveCell (int index) : juce::Button ("Wave " + juce::String (index + 1)), waveIndex (index)
{
    setClickingTogglesState (true);
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
    setTooltip (juce::String (juce::CharPointer_UTF8 (waveTips[juce::jlimit (0, 9, index)])));
    setSize (44, 44);
}

WaveCell::~WaveCell() = default;

const juce::Path& WaveCell::thumbnail (int index)
{
    static const auto paths = makeThumbnails();
    return paths[(size_t) juce::jlimit (0, 9, index)];
}

void WaveCell::paintButton (juce::Graphics& g, bool over, bool down)
{
    const bool toggled = getToggleState();
    const auto bounds = getLocalBounds().toFloat();
    drawControlSurface (g, bounds, over, down, toggled, hasKeyboardFocus (false), isEnabled(), 6);
    if (isEnabled())
    {
        const auto r = bounds.reduced (0.5f);
        if (toggled)
        {
            g.setColour (token (Token::accentPrimary).withAlpha (over ? 0.96f : 0.88f));
            g.fillRoundedRectangle (r, 2.0f);
            g.setColour (token (Token::accentPrimary));
            g.drawRoundedRectangle (r, 2.0f, 0.5f);
        }
        else if (over)
        {
            g.setColour (overlay::hover);
            g.fillRoundedRectangle (r, 2.0f);
            g.setColour (token (Token::controlBorderHover));
            g.drawRoundedRectangle (r, 2.0f, 1.0f);
        }
        else
        {
            g.setColour (token (Token::borderHair));
            g.drawRoundedRectangle (r, 2.0f, 1.0f);
        }
    }
    const auto glyph = ! isEnabled() ? token (Token::textDisabled)
                     : toggled      ? token (Token::accentPrimaryText)
                     : over         ? token (Token::textPrimary)
                                    : token (Token::textSecondary);
    const float w = bounds.getWidth(), h = bounds.getHeight();
    const float s = std::min ((h - 4.0f) / 9.0f, (w - 4.0f) / 28.0f);
    if (s <= 0.0f)
        return;
    const auto inner = bounds.reduced (2.0f);
    const auto transform = juce::AffineTransform::scale (s).translated (inner.getCentreX() - 14.0f * s,
                                                                        inner.getCentreY() - 4.5f * s);
    g.setColour (glyph);
    g.strokePath (thumbnail (waveIndex), juce::PathStrokeType (1.0f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded),
                  transform);
}

OscSourceBadge::OscSourceBadge() { setInterceptsMouseClicks (false, false); }

void OscSourceBadge::setSource (const juce::String& id, const juce::String& newText)
{
    sourceId = id;
    text = newText;
    repaint();
}

void OscSourceBadge::paint (juce::Graphics& g)
{
    const auto r = getLocalBounds().toFloat().reduced (0.5f);
    const auto colour = sourceTokenColour (sourceId);
    g.setColour (token (Token::bgPanel));
    g.fillRoundedRectangle (r, 3.0f);
    g.setColour (colour.withAlpha (0.8f));
    g.drawRoundedRectangle (r, 3.0f, 1.0f);
    g.fillEllipse (r.getX() + 6.0f, r.getCentreY() - 3.0f, 6.0f, 6.0f);
    drawTypeText (g, 7, text, getLocalBounds().withTrimmedLeft (16).withTrimmedRight (4), token (Token::textPrimary),
                  juce::Justification::centredLeft);
}

void OscCard::WaveListener::parameterChanged (const juce::String&, float)
{
    owner.triggerAsyncUpdate();
}

OscCard::OscCard (MorvaneAudioProcessor& p, int index)
    : processor (p),
      state (p.getParameterTree()),
      oscIndex (juce::jlimit (1, 2, index)),
      paramPrefix ("osc" + juce::String (oscIndex)),
      title ("OSC " + juce::String (oscIndex)),
      visualiser (state, oscIndex),
      radioGroup (nextRadioGroup()),
      dcwEnvelope (state, { paramPrefix + "DcwAttack", paramPrefix + "DcwDecay", paramPrefix + "DcwSustain", paramPrefix + "DcwRelease" }),
      semitoneChip (state, paramPrefix + "Semitone", "SEMI"),
      fineChip (state, paramPrefix + "Fine", "FINE"),
      syncButton (state, "syncOsc" + juce::String (oscIndex), "OSC " + juce::String (oscIndex) + " sync",
                  "Hard sync: this oscillator restarts its cycle with the other oscillator's.")
{
    setName ("OscCard" + juce::String (oscIndex));
    setTitle ("OSC " + juce::String (oscIndex));
    addAndMakeVisible (title);
    addAndMakeVisible (visualiser);
    addChildComponent (modBadge);

    for (int i = 0; i < 10; ++i)
    {
        auto& cell = waveCells[(size_t) i];
        cell = std::make_unique<WaveCell> (i);
        cell->setRadioGroupId (radioGroup, juce::dontSendNotification);
        cell->onClick = [this, i] { chooseWave (i); };
        addAndMakeVisible (*cell);
    }
    state.addParameterListener (paramPrefix + "Wave", &waveListener);
    syncWaveCells();

    dcwEnvelope.setCurveHeightRange (44, 56);
    addAndMakeVisible (dcwEnvelope);

    const int x = oscIndex - 1;
    struct KnobBinding
    {
        ostrel::widgets::Knob& knob;
        const char* label;
        juce::String parameterId;
        const char* tip;
        int destination;
        std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>& attachment;
    };
    KnobBinding bindings[] = {
        { dcwKnob, "DCW", paramPrefix + "DcwDepth", "Phase distortion amount for this oscillator.", 4 + x, dcwAttachment },
        { levelKnob, "LEVEL", paramPrefix + "Level", "Oscillator level into the main filter.", 8 + x, levelAttachment },
        { morphKnob, "MORPH", "pdMorphAmount", "Morphs both PD oscillators toward the next wave shape.", 23, morphAttachment },
        { pulseWidthKnob, "PW", paramPrefix + "PulseWidth", "Pulse width of the PWM wave.", 21 + x, pulseWidthAttachment },
    };
    pulseWidthKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });
    dcwKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });
    levelKnob.setValueFormatter (levelText);
    levelKnob.setCentreDetent (true, 0.5);
    morphKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });
    for (auto& binding : bindings)
    {
        binding.knob.setLabel (binding.label);
        binding.knob.setTooltip (binding.tip);
        if (state.getParameter (binding.parameterId) == nullptr)
            continue;
        binding.attachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, binding.parameterId, binding.knob);
        matrix::wireKnob (binding.knob, processor, binding.parameterId, binding.destination);
    }
    knobRow.setGapStep (1);
    knobRow.setKnobs ({ &dcwKnob, &levelKnob, &morphKnob, &pulseWidthKnob });
    addAndMakeVisible (knobRow);

    const auto n = juce::String (oscIndex);
    semitoneChip.setArrowsVisible (false);
    semitoneChip.setValueFormatter ([] (double v) { return formatSignedInt (juce::roundToInt (v), true, false) + " st"; });
    semitoneChip.setTooltip ("OSC " + n + " coarse pitch in semitones.");
    fineChip.setArrowsVisible (false);
    fineChip.setValueFormatter ([] (double v) { return formatSigned (v, 1, false, true, false) + " c"; });
    fineChip.setTooltip ("OSC " + n + " fine pitch in cents.");
    addAndMakeVisible (semitoneChip);
    addAndMakeVisible (fineChip);
    syncField.setCompact (true);
    syncField.setContent (&syncButton);
    addAndMakeVisible (syncField);
    updateDimming();

    updateModBadge();
    startTimerHz (15);
}

OscCard::~OscCard() { state.removeParameterListener (paramPrefix + "Wave", &waveListener); }

void OscCard::chooseWave (int index)
{
    auto* wave = state.getParameter (paramPrefix + "Wave");
    if (wave == nullptr)
        return;
    const float target = wave->convertTo0to1 ((float) index);
    if (juce::roundToInt (wave->convertFrom0to1 (wave->getValue())) == index)
    {
        syncWaveCells();
        return;
    }
    wave->beginChangeGesture();
    wave->setValueNotifyingHost (target);
    wave->endChangeGesture();
}

void OscCard::syncWaveCells()
{
    auto* wave = state.getParameter (paramPrefix + "Wave");
    if (wave == nullptr)
        return;
    const int current = juce::roundToInt (wave->convertFrom0to1 (wave->getValue()));
    for (auto& cell : waveCells)
        cell->setToggleState (cell->getWaveIndex() == current, juce::dontSendNotification);
}

void OscCard::updateModBadge()
{
    const int x = oscIndex - 1;
    juce::String levelName, dcwName;
    float levelAmount = 0.0f, dcwAmount = 0.0f;
    for (const auto& route : activeRoutes (state))
    {
        if (route.destination == 8 + x && levelName.isEmpty())
        {
            levelName = route.sourceName;
            levelAmount = route.amount;
        }
        if (route.destination == 4 + x && dcwName.isEmpty())
        {
            dcwName = route.sourceName;
            dcwAmount = route.amount;
        }
    }
    juce::String name;
    float amount = 0.0f;
    if (levelName.isNotEmpty() && std::abs (levelAmount) >= std::abs (dcwAmount))
        name = levelName, amount = levelAmount;
    else if (dcwName.isNotEmpty())
        name = dcwName, amount = dcwAmount;

    if (name.isEmpty())
    {
        if (modBadge.isVisible())
        {
            modBadge.setVisible (false);
            resized();
        }
        badgeSource.clear();
        badgeText.clear();
        return;
    }
    const auto id = badgeSourceId (name);
    const int percent = juce::roundToInt (amount * 100.0f);
    const auto text = shortSourceLabel (name) + (percent >= 0 ? "+" : "") + juce::String (percent);
    if (id != badgeSource || text != badgeText)
    {
        modBadge.setSource (id, text);
        badgeSource = id;
        badgeText = text;
    }
    if (! modBadge.isVisible())
    {
        modBadge.setVisible (true);
        resized();
    }
}

void OscCard::updateDimming()
{
    // The PWM wave reads the width, and so does the wave before it while the morph leans on it.
    const auto* wave = state.getRawParameterValue (paramPrefix + "Wave");
    const auto* morph = state.getRawParameterValue ("pdMorphAmount");
    const int w = wave != nullptr ? juce::roundToInt (wave->load()) : 8;
    const bool widthHeard = w == 8 || (w == 7 && morph != nullptr && morph->load() > 0.0f);
    const float widthAlpha = widthHeard ? 1.0f : 0.4f;
    if (pulseWidthKnob.getAlpha() != widthAlpha)
        pulseWidthKnob.setAlpha (widthAlpha);
    const float syncAlpha = syncButton.getToggleState() ? 1.0f : 0.6f;
    if (syncField.getAlpha() != syncAlpha)
        syncField.setAlpha (syncAlpha);
}

void OscCard::paint (juce::Graphics& g)
{
    SectionFrame::paint (g);
    drawTypeText (g, 7, "DCW ENV", juce::Rectangle<int> (236, 8, 164, 22), token (Token::textSecondary),
                  juce::Justification (33));
}

void OscCard::resized()
{
    SectionFrame::resized();
    if (modBadge.isVisible())
    {
        title.setBounds (20, 8, 82, 22);
        modBadge.setBounds (110, 12, 74, 22);
    }
    else
    {
        title.setBounds (20, 8, 164, 22);
    }
    // The lower right corner has room for three knobs or for the chips, not both: the chips sit
    // side by side between the visualiser and the wave cells, which moves the visualiser up.
    visualiser.setBounds (16, 38, 172, 126);
    semitoneChip.setBounds (16, 176, 60, 44);
    fineChip.setBounds (80, 176, 60, 44);
    syncField.setBounds (144, 176, 44, 44);
    for (int i = 0; i < 10; ++i)
        waveCells[(size_t) i]->setBounds (16 + 36 * (i % 5), i < 5 ? 232 : 264, 28, 24);
    dcwEnvelope.setBounds (232, 38, 172, 160);
    knobRow.setBounds (insetAtEdges ({ 216, 216, 204, 96 }, getLocalBounds(), 16));
}
}
