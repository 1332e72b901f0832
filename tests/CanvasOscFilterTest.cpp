#include "TestHelpers.h"

#include "engine/WaveShape.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/DetuneBar.h"
#include "ui/widgets/OscCard.h"
#include "ui/widgets/ValueFormat.h"
#include "ui/widgets/VoiceFilterPanel.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui::widgets;

TEST (CanvasOscFilter, ValueTextsAtTheirEdges)
{
    const std::pair<juce::String, juce::String> cases[] = {
        { formatPercent (0.0, false), "0%" },
        { formatPercent (1.0, true), "100 %" },
        { formatPercent (0.004, false), "0%" },
        { formatSigned (-1.25, 2, true, true, false), minus + "1.25" },
        { formatSigned (-0.5, 1, false, false, false), "-0.5" },
        { formatSigned (0.0, 1, true, false, false), "0.0" },
        { formatSigned (0.0, 1, false, false, true), "+0.0" },
        { formatSigned (48.0, 1, true, false, false), "+48.0" },
        { formatSignedInt (0, true, false), "0" },
        { formatSignedInt (1, true, false), "+1" },
        { formatSignedInt (1, false, false), "1" },
        { formatSignedInt (-12, true, true), minus + "12" },
        { formatSignedInt (-100, true, false), "-100" },
    };
    for (const auto& [got, expected] : cases)
        EXPECT_EQ (got, expected);

    const juce::Rectangle<int> bounds (0, 0, 420, 312);
    EXPECT_EQ (insetAtEdges ({ 216, 216, 204, 96 }, bounds, 16), juce::Rectangle<int> (216, 216, 188, 80));
    EXPECT_EQ (insetAtEdges ({ 0, 38, 96, 44 }, bounds, 8), juce::Rectangle<int> (8, 38, 88, 44));
    EXPECT_EQ (insetAtEdges ({ 20, 20, 50, 50 }, bounds, 8), juce::Rectangle<int> (20, 20, 50, 50));
}

TEST (CanvasOscFilter, OscCardTextsFollowThePart)
{
    MorvaneAudioProcessor p;
    OscCard card (p, 2);
    card.setBounds (0, 0, 420, 312);
    EXPECT_EQ (card.getLevelKnob().getTextFromValue (-90.0), minusInfinityDb);
    EXPECT_EQ (card.getLevelKnob().getTextFromValue (-6.5), minus + "6.5 dB");
    EXPECT_EQ (card.getDcwKnob().getTextFromValue (0.8), "80%");
    EXPECT_EQ (card.getSemitoneChip().getTextFromValue (7.0), "+7 st");
    EXPECT_EQ (card.getSemitoneChip().getTextFromValue (-12.0), "-12 st");
    EXPECT_EQ (card.getFineChip().getTextFromValue (-50.0), minus + "50.0 c");
    EXPECT_EQ (card.getWaveCell (0).getTooltip(), juce::String (juce::CharPointer_UTF8 ("Sawtooth \xe2\x80\x94 bright, classic")));
    EXPECT_EQ (card.getSemitoneChip().getTooltip(), "OSC 2 coarse pitch in semitones.");
}

TEST (CanvasOscFilter, WaveCellClickSetsTheWaveInOneGestureAndCellsFollowTheParameter)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    OscCard card (p, 1);
    card.setBounds (0, 0, 420, 312);
    for (int wave : { 7, 0, 9 })
    {
        HostView watch (s, juce::StringArray { "osc1Wave" });
        card.getWaveCell (wave).triggerClick();
        settle();
        EXPECT_EQ ((int) real (s, "osc1Wave"), wave);
        EXPECT_EQ (watch.gestures(), "1/1");
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ (card.getWaveCell (i).getToggleState(), i == wave) << wave << " " << i;
    }
    setReal (s, "osc1Wave", 4.0f);
    settle();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ (card.getWaveCell (i).getToggleState(), i == 4) << i;
}

TEST (CanvasOscFilter, DcwVisualiserRunsTheEngineWaveAndDragsTheDepth)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    setReal (s, "osc2Wave", 5.0f);
    setReal (s, "osc2DcwDepth", 0.0f);
    DcwVisualiser vis (s, 2);
    vis.setBounds (0, 0, 172, 126);
    vis.refresh();
    for (size_t i = 0; i < 128; i += 9)
        EXPECT_EQ (vis.getShapedCurve()[i], vis.getNeutralCurve()[i]);

    {
        HostView watch (s, juce::StringArray { "osc2DcwDepth" });
        drag (vis, { 80, 100 }, { { 80, 62 }, { 80, 25 } });
        EXPECT_EQ (watch.gestures(), "1/1");
    }
    EXPECT_NEAR (real (s, "osc2DcwDepth"), 0.5f, 0.001f);
    EXPECT_FALSE (vis.refresh());
    for (size_t i = 0; i < 128; i += 9)
        EXPECT_FLOAT_EQ (vis.getShapedCurve()[i], waveShape (5, (float) i / 128.0f, 0.5f, 16.0f)) << i;

    drag (vis, { 80, 100 }, { { 80, -150 }, { 80, -400 } });
    EXPECT_FLOAT_EQ (real (s, "osc2DcwDepth"), 1.0f);

    // The painted shaped curve passes where the wave function puts it.
    vis.refresh();
    const auto image = render (vis);
    const auto accent = ui::token (ui::Token::accentPrimary);
    const auto inner = juce::Rectangle<float> (0, 0, 172, 126).reduced (4.0f);
    int hits = 0, checked = 0;
    for (int i = 8; i < 120; i += 16)
    {
        const float v = juce::jlimit (-1.0f, 1.0f, waveShape (5, (float) i / 128.0f, 1.0f, 16.0f));
        const int x = juce::roundToInt (inner.getX() + inner.getWidth() * (float) i / 127.0f);
        const int y = juce::roundToInt (inner.getCentreY() - v * inner.getHeight() / 2.0f * 0.85f);
        bool near = false;
        for (int dy = -2; dy <= 2 && ! near; ++dy)
        {
            const auto c = image.getPixelAt (x, y + dy);
            near = std::abs (c.getRed() - accent.getRed()) < 40 && std::abs (c.getGreen() - accent.getGreen()) < 40
                && std::abs (c.getBlue() - accent.getBlue()) < 40;
        }
        hits += near ? 1 : 0;
        ++checked;
    }
    EXPECT_GE (hits, checked - 1);
}

TEST (CanvasOscFilter, ModulationBadgeShowsTheStrongerRoute)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    OscCard card (p, 1);
    card.setBounds (0, 0, 420, 312);
    // Slot 1 starts routed to the amp; clear it so only these routes count.
    setReal (s, "mod1Dest", 0.0f);
    card.updateModBadge();
    EXPECT_FALSE (card.getModBadge().isVisible());

    // lfo 1 to osc1 level, and velocity to osc1 dcw.
    const std::pair<const char*, float> routes[] = { { "mod2Source", 5.0f }, { "mod2Dest", 8.0f }, { "mod2Amount", 0.5f },
                                                     { "mod3Source", 1.0f }, { "mod3Dest", 4.0f }, { "mod3Amount", -0.6f } };
    for (auto [id, v] : routes)
        setReal (s, id, v);
    card.updateModBadge();
    EXPECT_TRUE (card.getModBadge().isVisible());
    EXPECT_EQ (card.getModBadge().getSourceId(), "velocity");
    EXPECT_EQ (card.getModBadge().getText(), "VEL-60");

    setReal (s, "mod3Amount", 0.5f);
    card.updateModBadge();
    EXPECT_EQ (card.getModBadge().getSourceId(), "lfo1");
    EXPECT_EQ (card.getModBadge().getText(), "LFO 1+50");
}

TEST (CanvasOscFilter, DetuneConvertsOnlyWhenTheUserSwitchesTheUnit)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    DetuneBar bar (s);
    bar.setBounds (0, 0, 204, 312);
    EXPECT_EQ (bar.getBoundDetuneId(), "osc2Detune");
    setReal (s, "osc2Detune", 30.0f);
    bar.switchDetuneUnit (1);
    EXPECT_EQ (bar.getBoundDetuneId(), "osc2DetuneHz");
    EXPECT_NEAR (real (s, "osc2DetuneHz"), (std::pow (2.0f, 30.0f / 1200.0f) - 1.0f) * 440.0f, 0.01f);
    EXPECT_EQ (bar.getDetuneKnob().getTextFromValue (7.7), "+7.7 Hz");
    bar.switchDetuneUnit (0);
    EXPECT_EQ (bar.getBoundDetuneId(), "osc2Detune");
    EXPECT_NEAR (real (s, "osc2Detune"), 30.0f, 0.05f);
    EXPECT_EQ (bar.getDetuneKnob().getTextFromValue (30.2), "+30 ct");
    setReal (s, "osc2Detune", 100.0f);
    bar.switchDetuneUnit (1);
    EXPECT_FLOAT_EQ (real (s, "osc2DetuneHz"), 20.0f);

    // A load (or the host) that changes the unit rebinds the knob and converts nothing.
    for (auto [mode, cents, hertz] : { std::tuple { 0, 7.0f, 0.6f }, { 1, -12.0f, 0.6f }, { 0, 25.0f, -3.5f } })
    {
        p.applyPresetXml (presetXml ({ { "detuneMode", mode }, { "osc2Detune", cents }, { "osc2DetuneHz", hertz } }));
        settle();
        EXPECT_EQ (bar.getBoundDetuneId(), mode > 0 ? "osc2DetuneHz" : "osc2Detune") << mode;
        EXPECT_NEAR (real (s, "osc2Detune"), cents, 1e-4f) << mode;
        EXPECT_NEAR (real (s, "osc2DetuneHz"), hertz, 1e-4f) << mode;
        EXPECT_FALSE (p.isPresetDirty()) << mode;
    }
}

TEST (CanvasOscFilter, ResponseCurveFallsAboveCutoffAndNotchesForThePhaseModel)
{
    for (int model : { 0, 1, 2 })
    {
        EXPECT_NEAR (filterDrawingMagnitude (model, 0.05f, 0.0f), 1.0f, 0.01f) << model;
        EXPECT_LT (filterDrawingMagnitude (model, 4.0f, 0.5f), 0.01f) << model;
        EXPECT_GT (filterDrawingMagnitude (model, 1.0f, 1.0f), filterDrawingMagnitude (model, 1.0f, 0.0f)) << model;
    }
    for (float centre : { 0.5f, 1.0f, 2.0f })
    {
        EXPECT_LT (filterDrawingMagnitude (3, centre, 0.5f), 0.6f) << centre;
        EXPECT_GT (filterDrawingMagnitude (3, centre * 1.41f, 0.5f), filterDrawingMagnitude (3, centre, 0.5f)) << centre;
    }
    EXPECT_NEAR (filterDrawingMagnitude (3, 20.0f, 0.5f), 1.0f, 0.01f);
}

TEST (CanvasOscFilter, ResponseStripDragMovesCutoffAndResonanceInOneGesture)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    setReal (s, "filterCutoff", 1000.0f);
    setReal (s, "filterReso", 0.25f);
    FilterResponseStrip strip (s);
    strip.setEnvelopeOverlay (false);
    strip.setBounds (0, 0, 172, 126);
    const auto plot = strip.getPlot().toFloat();
    EXPECT_EQ (strip.getPlot(), juce::Rectangle<int> (8, 8, 156, 94));
    EXPECT_FALSE (strip.getCurve().isEmpty());

    HostView watch (s, juce::StringArray { "filterCutoff", "filterReso" });
    const auto handle = strip.cutoffHandle();
    const juce::Point<float> to { plot.getX() + plot.getWidth() * 0.25f, plot.getY() + plot.getHeight() * 0.2f };
    strip.mouseDown (mouseAt (strip, handle + juce::Point<float> (5, 0)));
    EXPECT_EQ (strip.getDragMode(), 1);
    strip.mouseDrag (mouseAt (strip, to));
    strip.mouseUp (mouseAt (strip, to));
    EXPECT_EQ (watch.gestures(), "2/2");
    EXPECT_NEAR (real (s, "filterCutoff"), std::pow (10.0f, std::log10 (20.0f) + 3.0f * 0.25f), 1.0f);
    EXPECT_NEAR (real (s, "filterReso"), 0.8f, 0.001f);

    strip.mouseDown (mouseAt (strip, { 2, 2 }));
    EXPECT_EQ (strip.getDragMode(), 0);
    strip.mouseUp (mouseAt (strip, { 2, 2 }));

    // Far outside the plot the drag clamps at the range ends.
    drag (strip, strip.cutoffHandle().roundToInt(), { { 1000, 1000 } });
    EXPECT_FLOAT_EQ (real (s, "filterCutoff"), 20000.0f);
    EXPECT_FLOAT_EQ (real (s, "filterReso"), 0.0f);

    strip.setBounds (0, 0, 10, 20);
    EXPECT_TRUE (strip.getCurve().isEmpty());
}

TEST (CanvasOscFilter, FilterPanelSwitchModelKnobsAndTexts)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    VoiceFilterPanel panel (s, p);
    panel.setBounds (0, 0, 528, 312);
    EXPECT_EQ (panel.getCutoffKnob().getTextFromValue (999.4), "999 Hz");
    EXPECT_EQ (panel.getCutoffKnob().getTextFromValue (12345.0), "12.3 kHz");
    EXPECT_EQ (panel.getResoKnob().getTextFromValue (0.5), "50 %");
    EXPECT_EQ (panel.getEnvKnob().getTextFromValue (-48.0), "-48.0 dB");
    EXPECT_EQ (panel.getEnvKnob().getTextFromValue (12.0), "+12.0 dB");

    {
        HostView watch (s, juce::StringArray { "filterEnabled" });
        panel.getEnableButton().triggerClick();
        settle();
        EXPECT_EQ (watch.gestures(), "1/1");
    }
    EXPECT_EQ (real (s, "filterEnabled"), 0.0f);
    EXPECT_FALSE (panel.isActive());
    EXPECT_FLOAT_EQ (panel.getCutoffKnob().getAlpha(), 0.4f);
    EXPECT_FLOAT_EQ (panel.getEnableButton().getAlpha(), 1.0f);
    EXPECT_FLOAT_EQ (panel.getEnvKnob().getAlpha() * panel.getEnvelope().getAlpha(), 0.4f);
    setReal (s, "filterEnabled", 1.0f);
    settle();
    EXPECT_TRUE (panel.getEnableButton().getToggleState());
    EXPECT_TRUE (panel.isActive());

    // The phase model's knobs stay in place and are dimmed on the other models.
    for (const auto& [model, alpha] : { std::pair { 3.0f, 1.0f }, { 2.0f, 0.4f } })
    {
        setReal (s, "filterModel", model);
        panel.updatePhaserControls();
        for (auto* knob : { &panel.getPhaseKnob(), &panel.getNotchKnob(), &panel.getStereoKnob() })
        {
            EXPECT_TRUE (knob->isVisible());
            EXPECT_FLOAT_EQ (knob->getAlpha(), alpha) << model;
        }
    }
    // The five knobs stay clear of the envelope and its ENV and VEL knobs.
    EXPECT_LE (panel.getStereoKnob().getRight(), panel.getEnvelope().getX());
    EXPECT_EQ (panel.getCutoffKnob().getBounds(), juce::Rectangle<int> (14, 216, 44, 96));
}
