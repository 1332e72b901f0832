#include "AllocationCounter.h"
#include "EditorTestSupport.h"
#include "TestHelpers.h"

#include "engine/DriveShaper.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/AmpEnvelopePanel.h"
#include "ui/widgets/DetuneBar.h"
#include "ui/widgets/DriveCard.h"
#include "ui/widgets/DriveThumbnail.h"
#include "ui/widgets/LfoCard.h"
#include "ui/widgets/OscCard.h"
#include "ui/widgets/SourceChip.h"
#include "ui/widgets/SourceUtilityStrip.h"
#include "ui/widgets/VoiceFilterPanel.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui::widgets;

namespace
{
juce::RangedAudioParameter* param (MorvaneAudioProcessor& p, const char* id) { return p.getParameterTree().getParameter (id); }

// The canvas panels at their places on the grid, on one processor.
struct Panels
{
    MorvaneAudioProcessor p;
    juce::AudioProcessorValueTreeState& state = p.getParameterTree();
    LfoCard lfo { state, p };
    SourceUtilityStrip strip { p };
    DriveCard drive { state, p };
    AmpEnvelopePanel amp { state };
    Panels()
    {
        lfo.setBounds (1080, 324, 204, 312);
        strip.setBounds (1080, 0, 204, 312);
        drive.setBounds (864, 324, 204, 312);
        amp.setBounds (540, 324, 312, 312);
    }
};
}

TEST (SourceChip, ColoursIndicesAndTheFirstFourSlots)
{
    const std::pair<const char*, ui::Token> colours[] = { { "velocity", ui::Token::sourceVelocity }, { "filterEnv", ui::Token::sourceKey },
                                                          { "smoothRandom", ui::Token::sourceModWheel }, { "noteRandom", ui::Token::sourceAftertouch },
                                                          { "beatPhase", ui::Token::sourceLfo }, { "dcw2Env", ui::Token::sourceDcw2 },
                                                          { "nonsense", ui::Token::accentPrimary } };
    for (auto [id, t] : colours)
        EXPECT_EQ (sourceColour (id), ui::token (t)) << id;
    EXPECT_EQ (sourceIndexOf ("lfo1"), 5);
    EXPECT_EQ (sourceIndexOf ("beatPhase"), 12);
    EXPECT_EQ (sourceIndexOf ("off"), 0);

    MorvaneAudioProcessor p;
    auto& state = p.getParameterTree();
    for (int slot = 1; slot <= 8; ++slot)
        test::setParameter (p, "mod" + juce::String (slot) + "Source", 0.0f);
    EXPECT_FALSE (assignFromChip (state, 0, 2));
    // Four free slots fill in order; a destination already routed is taken over in place.
    for (int dest : { 2, 17, 18, 1 })
        EXPECT_TRUE (assignFromChip (state, 5, dest));
    EXPECT_EQ (juce::roundToInt (real (state, "mod3Dest")), 18);
    EXPECT_NEAR (real (state, "mod3Amount"), 0.35f, 1e-4f);
    EXPECT_TRUE (assignFromChip (state, 1, 18));
    EXPECT_EQ (juce::roundToInt (real (state, "mod3Source")), 1);
    EXPECT_FALSE (assignFromChip (state, 5, 4)) << "slots 5 to 8 are not the chip's";
    EXPECT_EQ (juce::roundToInt (real (state, "mod5Source")), 0);
}

// The gestures and the ends of this drag are rows of CanvasPanels.EachControlReachesItsEnds.
TEST (LfoCard, PreviewDragMovesRateAcrossAndDepthUp)
{
    MorvaneAudioProcessor p;
    LfoCard card (p.getParameterTree(), p);
    card.setBounds (0, 0, 204, 312);
    EXPECT_EQ (card.preview.getBounds(), juce::Rectangle<int> (16, 62, 172, 96));
    auto* rate = param (p, "lfo1Rate");
    auto* depth = param (p, "lfo1Depth");
    const float rate0 = rate->getValue(), depth0 = depth->getValue();
    drag (card.preview, { 80, 60 }, { { 100, 50 }, { 140, 40 } });
    EXPECT_NEAR (rate->getValue(), rate0 + 60.0f / 240.0f, 1e-4f);
    EXPECT_NEAR (depth->getValue(), depth0 + 20.0f / 200.0f, 1e-4f);
}

TEST (LfoCard, SyncedRateReadsAsDivisionAndDrivesThePreview)
{
    MorvaneAudioProcessor p;
    LfoCard card (p.getParameterTree(), p);
    test::setParameter (p, "lfo1Sync", 1.0f);
    test::setParameter (p, "lfoSyncBpm", 150.0f);
    param (p, "lfo1Rate")->setValueNotifyingHost (1.0f);
    settle();
    EXPECT_EQ (card.rateKnob.formattedValue(), "1/32");
    EXPECT_NEAR (card.preview.cyclesPerSecond(), 150.0f / 60.0f / 0.125f, 1e-3f);
    test::setParameter (p, "lfo1Sync", 0.0f);
    test::setParameter (p, "lfo1Rate", 12.5f);
    settle();
    EXPECT_EQ (card.rateKnob.formattedValue(), "12.5 Hz");
    const std::pair<float, int> divisions[] = { { 0.0f, 0 }, { 0.05f, 0 }, { 0.06f, 1 }, { 0.5f, 5 }, { 1.5f, 9 }, { -1.0f, 0 } };
    for (auto [n, index] : divisions)
        EXPECT_EQ (lfoDivisionIndex (n), index) << n;
    // Wave points at the shapes' corners; the square's are exact.
    const std::tuple<int, float, float, float> corners[] = { { 0, 0.25f, 1.0f, 1e-5f }, { 1, 0.0f, 1.0f, 1e-5f }, { 1, 0.5f, -1.0f, 1e-5f },
                                                             { 2, 0.49f, 1.0f, 0.0f }, { 2, 0.51f, -1.0f, 0.0f } };
    for (auto [shape, phase, value, tolerance] : corners)
        EXPECT_NEAR (lfoPreviewValue (shape, phase), value, tolerance) << shape << " " << phase;
    EXPECT_EQ (lfoPreviewValue (3, 2.1f), lfoPreviewValue (3, 2.9f));
}

TEST (SourceUtilityStrip, FoldedWaveChoiceWritesBothParameters)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    SourceUtilityStrip strip (p);
    strip.setBounds (1080, 0, 204, 312);
    test::setParameter (p, "subWave", 4.0f);
    HostView m (param (p, "subMode")), w (param (p, "subWave"));
    strip.waveChoice.setSelectedId (1, juce::sendNotificationSync);
    EXPECT_EQ (juce::roundToInt (real (s, "subMode")), 0);
    EXPECT_EQ (juce::roundToInt (real (s, "subWave")), 4) << "sine leaves the wave";
    EXPECT_EQ (w.changes, 0);
    strip.waveChoice.setSelectedId (2, juce::sendNotificationSync); // SAW
    EXPECT_EQ (juce::roundToInt (real (s, "subMode")), 1);
    EXPECT_EQ (juce::roundToInt (real (s, "subWave")), 0);
    EXPECT_EQ (m.gestures(), "1/1");
    EXPECT_EQ (w.gestures(), "1/1");
    strip.waveChoice.setSelectedId (10, juce::sendNotificationSync); // PWM
    EXPECT_EQ (juce::roundToInt (real (s, "subWave")), 8);
    EXPECT_EQ (m.begins, 1) << "the mode was already right";

    // From a preset or the host: the drop-down follows without writing back.
    test::setParameter (p, "subWave", 9.0f); // respulse, the last item
    settle();
    EXPECT_EQ (strip.waveChoice.getComboBox().getText(), "RPLS");
    test::setParameter (p, "subWave", 1.0f);
    settle();
    EXPECT_EQ (strip.waveChoice.getSelectedId(), 3);
    EXPECT_EQ (strip.waveChoice.getComboBox().getText(), "SQR");
}

TEST (SourceUtilityStrip, NoiseRouteSegmentsOnAFloat)
{
    MorvaneAudioProcessor p;
    SourceUtilityStrip strip (p);
    auto* segments = strip.noiseRouteSegments();
    ASSERT_NE (segments, nullptr);
    const std::pair<float, int> shown[] = { { 0.49f, 0 }, { 0.5f, 1 }, { 0.0f, 0 }, { 1.0f, 1 } };
    for (auto [value, on] : shown)
    {
        test::setParameter (p, "noiseRouting", value);
        settle();
        EXPECT_TRUE (segments->getCell (on)->getToggleState()) << value;
        EXPECT_FALSE (segments->getCell (1 - on)->getToggleState()) << value;
    }
    HostView host (param (p, "noiseRouting"));
    test::setParameter (p, "noiseRouting", 0.3f);
    settle();
    for (int cell : { 1, 0 })
    {
        segments->getCell (cell)->triggerClick();
        settle();
        EXPECT_EQ (real (p.getParameterTree(), "noiseRouting"), (float) cell);
    }
    EXPECT_EQ (host.gestures(), "2/2");
}

TEST (SourceUtilityStrip, LevelsAtTheirFloorDimTheColumn)
{
    MorvaneAudioProcessor p;
    test::setParameter (p, "subLevel", -90.0f);
    test::setParameter (p, "noiseLevel", -90.0f);
    SourceUtilityStrip strip (p);
    EXPECT_FALSE (strip.isSubMuted());
    EXPECT_TRUE (strip.isNoiseMuted());
    EXPECT_NEAR (strip.noiseFrame.getAlpha(), 0.42f, 0.005f);
    EXPECT_EQ (strip.subFrame.getAlpha(), 1.0f);
    test::setParameter (p, "subLevel", -120.0f);
    test::setParameter (p, "noiseLevel", -6.0f);
    settle();
    EXPECT_TRUE (strip.isSubMuted());
    EXPECT_FALSE (strip.isNoiseMuted());
    EXPECT_NEAR (strip.subLevelField.getAlpha(), 0.42f, 0.005f);
    EXPECT_EQ (strip.subLevelKnob.formattedValue(), minusInfinityDb);
    EXPECT_EQ (strip.noiseLevelKnob.formattedValue(), minus + "6.0 dB");
}

TEST (DriveThumbnail, CurveIsTheShapersAtSamplePoints)
{
    for (int mode = 0; mode < 3; ++mode)
        for (float db : { 3.0f, 12.0f, 24.0f })
        {
            const float g = std::pow (10.0f, db / 20.0f);
            for (float u : { -1.0f, -0.4f, 0.1f, 0.7f })
            {
                float engine = DriveShaper::shape (mode, u, u, g);
                if (mode == DriveShaper::soft)
                    engine *= g / std::tanh (g);
                EXPECT_NEAR (driveThumbnailCurve (mode, u, g), juce::jlimit (-1.0f, 1.0f, engine), 1e-5f) << mode << " " << db << " " << u;
            }
        }
    // At no drive: the diagonal for soft, a plain sine for fold.
    EXPECT_NEAR (driveThumbnailCurve (0, 0.6f, 1.0f), 0.6f, 1e-6f);
    EXPECT_NEAR (driveThumbnailCurve (2, 0.6f, 1.0f), std::sin (0.6f) * 0.7f, 1e-4f);
}

TEST (DriveThumbnail, DrawsTheCurveInEmber)
{
    MorvaneAudioProcessor p;
    DriveThumbnail thumb (p.getParameterTree());
    thumb.setBounds (0, 0, 172, 126);
    test::setParameter (p, "driveMode", 2.0f);
    test::setParameter (p, "drive", 9.0f);
    const auto image = render (thumb);
    const auto ember = ui::token (ui::Token::accentEmber);
    auto distance = [&ember] (juce::Colour c)
    { return std::abs (c.getRed() - ember.getRed()) + std::abs (c.getGreen() - ember.getGreen()) + std::abs (c.getBlue() - ember.getBlue()); };
    int hits = 0;
    // Vertices of the drawn polyline: the stroke passes through them.
    for (int i : { 5, 20, 35, 47 }) // left of the value pill
    {
        const auto pt = thumb.curvePoint (2.0f * (float) i / 95.0f - 1.0f).roundToInt();
        int best = 1000;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                best = std::min (best, distance (image.getPixelAt (pt.x + dx, pt.y + dy)));
        hits += best < 40;
    }
    // Far from the curve the well shows, not the curve's colour.
    EXPECT_GT (distance (image.getPixelAt (20, 120)), 100);
    EXPECT_EQ (hits, 4);
}

// The drag's gesture and its clamp at the top are a row of CanvasPanels.EachControlReachesItsEnds.
TEST (DriveThumbnail, VerticalDragAndTypedDecibels)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    DriveThumbnail thumb (s);
    thumb.setBounds (0, 0, 172, 126);
    auto* drive = param (p, "drive");
    test::setParameter (p, "drive", 0.0f);
    HostView host (drive);
    drag (thumb, { 50, 100 }, { { 50, 90 }, { 50, 50 } });
    EXPECT_NEAR (drive->getValue(), 50.0f / 200.0f, 1e-5f);

    const std::pair<const char*, float> typed[] = { { "7.5", 7.5f }, { "99", 24.0f }, { "-3", 0.0f }, { "loud", 0.0f }, { "12", 12.0f } };
    for (auto [text, db] : typed)
    {
        thumb.openValueEditor();
        ASSERT_NE (thumb.getValueEditor(), nullptr);
        thumb.getValueEditor()->setText (text);
        thumb.commitValueEditor();
        EXPECT_EQ (thumb.getValueEditor(), nullptr);
        EXPECT_NEAR (real (s, "drive"), db, 1e-4f) << text;
    }
    const int before = host.changes;
    thumb.openValueEditor();
    thumb.getValueEditor()->setText ("20");
    thumb.cancelValueEditor();
    settle();
    EXPECT_EQ (host.changes, before);
    EXPECT_NEAR (real (s, "drive"), 12.0f, 1e-4f);
}

TEST (CanvasPanels, FollowAPresetLoad)
{
    Panels f;
    auto& [p, s, lfo, strip, drive, amp] = f;
    OscCard card (p, 1);
    VoiceFilterPanel filter (s, p);
    DetuneBar bar (s);
    p.applyPresetXml (presetXml ({ { "lfo1Depth", 0.8 }, { "lfo1Shape", 2 }, { "subMode", 1 }, { "subWave", 5 }, { "noiseLevel", -12 },
                                   { "noiseRouting", 1 }, { "osc1Wave", 6 }, { "osc1DcwDepth", 0.25 }, { "osc1Level", -12 },
                                   { "osc1Semitone", -7 }, { "filterCutoff", 440 }, { "filterModel", 3 }, { "filterEnabled", 0 },
                                   { "oscDrift", 0.4 } }));
    settle();
    filter.updatePhaserControls();
    EXPECT_NEAR (lfo.depthKnob.getValue(), 0.8, 1e-6);
    EXPECT_EQ (lfo.shapeChoice.getComboBox().getSelectedItemIndex(), 2);
    EXPECT_EQ (strip.waveChoice.getSelectedId(), 7);
    EXPECT_NEAR (strip.noiseLevelKnob.getValue(), -12.0, 1e-4);
    EXPECT_FALSE (strip.isNoiseMuted());
    EXPECT_TRUE (strip.noiseRouteSegments()->getCell (1)->getToggleState());
    EXPECT_TRUE (card.getWaveCell (6).getToggleState());
    EXPECT_FALSE (card.getWaveCell (0).getToggleState());
    EXPECT_NEAR (card.getDcwKnob().getValue(), 0.25, 1e-4);
    EXPECT_NEAR (card.getLevelKnob().getValue(), -12.0, 1e-4);
    EXPECT_EQ (card.getSemitoneChip().getValue(), -7.0);
    EXPECT_NEAR (filter.getCutoffKnob().getValue(), 440.0, 0.5);
    EXPECT_FALSE (filter.getEnableButton().getToggleState());
    EXPECT_FALSE (filter.isActive());
    EXPECT_TRUE (filter.arePhaserControlsShown());
    EXPECT_NEAR (bar.getDriftKnob().getValue(), 0.4, 1e-4);
}

TEST (SourceChip, ClickAndKeysOpenTheChoiceAndTheLookFollowsTheSource)
{
    SourceChip chip ("lfo1", "LFO");
    EXPECT_EQ (chip.getColour(), ui::token (ui::Token::sourceLfo));
    int clicks = 0;
    chip.setOnClick ([&clicks] { ++clicks; });
    chip.mouseDown (mouseAt (chip, { 20, 10 }));
    chip.mouseUp (mouseAt (chip, { 20, 10 }));
    EXPECT_EQ (clicks, 1);
    EXPECT_TRUE (chip.keyPressed (juce::KeyPress (juce::KeyPress::returnKey)));
    EXPECT_TRUE (chip.keyPressed (juce::KeyPress (juce::KeyPress::spaceKey)));
    EXPECT_FALSE (chip.keyPressed (juce::KeyPress ('a')));
    EXPECT_EQ (clicks, 3);
    chip.setDraggable (false);
    EXPECT_EQ (chip.getHelpText(), "Choose a modulation source.");
    chip.setSource ("dcw1Env", "DCW 1", false);
    EXPECT_EQ (chip.getColour(), ui::token (ui::Token::sourceDcw1));
    EXPECT_EQ (chip.getTitle(), "DCW 1");
}

TEST (AmpEnvelopePanel, HandleDragIsOneGestureOnTheAmpEnvelope)
{
    MorvaneAudioProcessor p;
    AmpEnvelopePanel panel (p.getParameterTree());
    panel.setBounds (540, 324, 312, 312);
    EXPECT_EQ (panel.editor.getBounds(), juce::Rectangle<int> (16, 62, 280, 234));
    auto& row = panel.editor.getCurveRow();
    row.refresh();
    auto* release = param (p, "ampRelease");
    const float before = release->getValue();
    HostView host (release);
    const auto handle = row.handlePositions()[3].roundToInt();
    const float width = row.curveBox().getWidth();
    drag (row, handle, { handle.translated (-10, 0), handle.translated (-30, 0) });
    EXPECT_EQ (host.gestures(), "1/1");
    EXPECT_NEAR (release->getValue(), juce::jlimit (0.0f, 1.0f, before - 30.0f / width), 1e-4f);
}

TEST (DriveCard, SwitchDimsTheCardAndKnobsFollowTheHost)
{
    MorvaneAudioProcessor p;
    DriveCard card (p.getParameterTree(), p);
    card.setBounds (864, 324, 204, 312);
    EXPECT_EQ (card.thumbnail.getBounds(), juce::Rectangle<int> (16, 62, 172, 126));
    EXPECT_TRUE (card.isActive());
    EXPECT_FALSE (card.mixKnob.isVisible());
    card.enableButton.triggerClick();
    settle();
    EXPECT_FALSE (card.isActive());
    EXPECT_LT (card.thumbnail.getAlpha(), 0.5f);
    test::setParameter (p, "drive", 13.0f);
    test::setParameter (p, "feedbackAmount", 0.25f);
    settle();
    EXPECT_EQ (card.amountKnob.formattedValue(), "13.0 dB");
    EXPECT_EQ (card.feedbackKnob.formattedValue(), "25 %");
}

// The pictures that are also controls: a long drag each way reaches their parameters' ends in one
// gesture, and no other parameter moves. The knobs, switches and lists of every view are walked by
// Editor.EveryParameterHasAVisibleControlThatReachesBothEndsAlone.
TEST (CanvasPanels, EachControlReachesItsEndsAndNothingElseMoves)
{
    Panels f;
    auto& [p, state, lfo, strip, drive, amp] = f;

    struct Control
    {
        juce::Component& component;
        std::vector<const char*> ids;
        juce::Point<int> up, down; // drag offsets that raise and lower
    };
    const Control controls[] = {
        { lfo.preview, { "lfo1Rate", "lfo1Depth" }, { 2000, -2000 }, { -2000, 2000 } },
        { drive.thumbnail, { "drive" }, { 0, -2000 }, { 0, 2000 } },
    };
    for (const auto& c : controls)
    {
        const auto name = c.component.getTitle() + " " + c.ids.front();
        for (const bool raise : { true, false })
        {
            std::map<juce::String, float> before;
            for (auto* q : p.getParameters())
                if (auto* r = dynamic_cast<juce::RangedAudioParameter*> (q))
                    before[r->getParameterID()] = r->getValue();
            std::vector<std::unique_ptr<HostView>> hosts;
            for (auto* id : c.ids)
                hosts.push_back (std::make_unique<HostView> (state.getParameter (id)));

            const juce::Point<int> centre (c.component.getWidth() / 2, c.component.getHeight() / 3);
            const auto offset = raise ? c.up : c.down;
            drag (c.component, centre, { centre + offset / 100, centre + offset / 10, centre + offset });

            for (auto& h : hosts)
            {
                EXPECT_EQ (h->parameters.front()->getValue(), raise ? 1.0f : 0.0f) << name;
                EXPECT_EQ (h->gestures(), "1/1") << name;
            }
            for (auto& [id, value] : before)
                if (std::find_if (c.ids.begin(), c.ids.end(), [&id] (const char* x) { return id == x; }) == c.ids.end())
                {
                    EXPECT_EQ (state.getParameter (id)->getValue(), value) << name << " moved " << id;
                }
        }
    }
}

// A control whose parameter does nothing in the present state is dimmed, and lights when it matters.
TEST (CanvasPanels, ControlsThatDoNothingNowAreDimmed)
{
    Panels f;
    OscCard osc (f.p, 1);
    DetuneBar link (f.state);
    struct Row { const char* id; float idle, heard; juce::Component& control; };
    const Row rows[] = {
        { "osc1Wave", 0.0f, 8.0f, osc.getPulseWidthKnob() },
        { "subMode", 0.0f, 1.0f, f.strip.subDcwField },
        { "feedbackAmount", 0.0f, 0.3f, f.drive.toneKnob },
        { "feedbackAmount", 0.0f, 0.3f, f.drive.feedbackPositionField },
        { "monoLowEnabled", 0.0f, 1.0f, link.monoFreqKnob },
    };
    for (const auto& row : rows)
        for (const bool heard : { false, true })
        {
            test::setParameter (f.p, row.id, heard ? row.heard : row.idle);
            settle();
            osc.updateDimming();
            EXPECT_FLOAT_EQ (row.control.getAlpha(), heard ? 1.0f : 0.4f) << row.id << " " << heard;
        }
}

// Hosts may automate from the audio thread: the panels' listeners only post, without allocating.
TEST (CanvasPanels, ParameterChangesFromAnotherThreadAllocateNothing)
{
    Panels f;
    const char* const ids[] = { "drive", "driveMode", "subLevel", "noiseLevel", "subMode", "subWave", "noiseRouting",
                                "noiseColour", "subRouting", "lfo1Rate", "lfo1Sync", "ampAttack", "driveMix", "feedbackAmount" };
    std::vector<juce::RangedAudioParameter*> parameters;
    for (auto* id : ids)
        parameters.push_back (f.state.getParameter (id));
    long allocations = -1;
    std::thread audio ([&]
    {
        test::AllocationCounter counter;
        for (int round = 0; round < 3; ++round)
            for (auto* q : parameters)
                q->setValueNotifyingHost (round == 1 ? 1.0f : 0.25f);
        allocations = counter.allocations();
    });
    audio.join();
    EXPECT_EQ (allocations, 0);
    settle();
    EXPECT_EQ (f.strip.waveChoice.getSelectedId(), f.strip.waveIdFromParameters());
    EXPECT_TRUE (f.strip.noiseRouteSegments()->getCell (0)->getToggleState()) << "0.25 reads as the first end";
}
