#include "AllocationCounter.h"
#include "EditorTestSupport.h"
#include "TestHelpers.h"

#include "engine/DriveShaper.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/AmpEnvelopePanel.h"
#include "ui/widgets/DriveCard.h"
#include "ui/widgets/DriveThumbnail.h"
#include "ui/widgets/LfoCard.h"
#include "ui/widgets/SourceChip.h"
#include "ui/widgets/SourceUtilityStrip.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui::widgets;

namespace
{
float real (MorvaneAudioProcessor& p, const char* id) { return p.getParameterTree().getRawParameterValue (id)->load(); }
juce::RangedAudioParameter* param (MorvaneAudioProcessor& p, const char* id) { return p.getParameterTree().getParameter (id); }
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
    EXPECT_EQ (juce::roundToInt (real (p, "mod3Dest")), 18);
    EXPECT_NEAR (real (p, "mod3Amount"), 0.35f, 1e-4f);
    EXPECT_TRUE (assignFromChip (state, 1, 18));
    EXPECT_EQ (juce::roundToInt (real (p, "mod3Source")), 1);
    EXPECT_FALSE (assignFromChip (state, 5, 4)) << "slots 5 to 8 are not the chip's";
    EXPECT_EQ (juce::roundToInt (real (p, "mod5Source")), 0);
}

TEST (LfoCard, PreviewDragIsOneGestureOnRateAndDepth)
{
    MorvaneAudioProcessor p;
    LfoCard card (p.getParameterTree(), p);
    card.setBounds (0, 0, 204, 312);
    EXPECT_EQ (card.preview.getBounds(), juce::Rectangle<int> (16, 62, 172, 126));
    auto* rate = param (p, "lfo1Rate");
    auto* depth = param (p, "lfo1Depth");
    const float rate0 = rate->getValue(), depth0 = depth->getValue();
    HostView r (rate), d (depth);
    drag (card.preview, { 80, 60 }, { { 100, 50 }, { 140, 40 } });
    EXPECT_EQ (r.begins, 1); EXPECT_EQ (r.ends, 1); EXPECT_EQ (d.begins, 1); EXPECT_EQ (d.ends, 1);
    EXPECT_NEAR (rate->getValue(), rate0 + 60.0f / 240.0f, 1e-4f);
    EXPECT_NEAR (depth->getValue(), depth0 + 20.0f / 200.0f, 1e-4f);
    // Far past the ends: held to the range.
    drag (card.preview, { 80, 60 }, { { 2000, -2000 } });
    EXPECT_EQ (rate->getValue(), 1.0f);
    EXPECT_EQ (depth->getValue(), 1.0f);
    drag (card.preview, { 80, 60 }, { { -2000, 2000 } });
    EXPECT_EQ (rate->getValue(), 0.0f);
    EXPECT_EQ (depth->getValue(), 0.0f);
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
    // Wave points at the shapes' corners.
    EXPECT_NEAR (lfoPreviewValue (0, 0.25f), 1.0f, 1e-5f);
    EXPECT_NEAR (lfoPreviewValue (1, 0.0f), 1.0f, 1e-5f);
    EXPECT_NEAR (lfoPreviewValue (1, 0.5f), -1.0f, 1e-5f);
    EXPECT_EQ (lfoPreviewValue (2, 0.49f), 1.0f);
    EXPECT_EQ (lfoPreviewValue (2, 0.51f), -1.0f);
    EXPECT_EQ (lfoPreviewValue (3, 2.1f), lfoPreviewValue (3, 2.9f));
}

TEST (SourceUtilityStrip, FoldedWaveChoiceWritesBothParameters)
{
    MorvaneAudioProcessor p;
    SourceUtilityStrip strip (p);
    strip.setBounds (1080, 0, 204, 312);
    auto* mode = param (p, "subMode");
    auto* wave = param (p, "subWave");
    test::setParameter (p, "subWave", 4.0f);
    HostView m (mode), w (wave);
    strip.waveChoice.setSelectedId (1, juce::sendNotificationSync);
    EXPECT_EQ (juce::roundToInt (real (p, "subMode")), 0);
    EXPECT_EQ (juce::roundToInt (real (p, "subWave")), 4) << "sine leaves the wave";
    EXPECT_EQ (w.changes, 0);
    strip.waveChoice.setSelectedId (2, juce::sendNotificationSync); // SAW
    EXPECT_EQ (juce::roundToInt (real (p, "subMode")), 1);
    EXPECT_EQ (juce::roundToInt (real (p, "subWave")), 0);
    EXPECT_EQ (m.begins, 1); EXPECT_EQ (m.ends, 1); EXPECT_EQ (w.begins, 1); EXPECT_EQ (w.ends, 1);
    strip.waveChoice.setSelectedId (10, juce::sendNotificationSync); // PWM
    EXPECT_EQ (juce::roundToInt (real (p, "subWave")), 8);
    EXPECT_EQ (m.begins, 1) << "the mode was already right";

    // From a preset or the host: the drop-down follows without writing back.
    test::setParameter (p, "subWave", 9.0f); // respulse has no item
    settle();
    EXPECT_EQ (strip.waveChoice.getComboBox().getText(), "");
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
    auto* route = param (p, "noiseRouting");
    HostView host (route);
    test::setParameter (p, "noiseRouting", 0.3f);
    settle();
    segments->getCell (1)->triggerClick();
    settle();
    EXPECT_EQ (real (p, "noiseRouting"), 1.0f);
    segments->getCell (0)->triggerClick();
    settle();
    EXPECT_EQ (real (p, "noiseRouting"), 0.0f);
    EXPECT_EQ (host.begins, 2);
    EXPECT_EQ (host.ends, 2);
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
    EXPECT_EQ (strip.subLevelKnob.formattedValue(), juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92\xe2\x88\x9e dB")));
    EXPECT_EQ (strip.noiseLevelKnob.formattedValue(), juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92")) + "6.0 dB");
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
    juce::Image image (juce::Image::ARGB, 172, 126, true);
    {
        juce::Graphics g (image);
        thumb.paintEntireComponent (g, false);
    }
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

TEST (DriveThumbnail, VerticalDragAndTypedDecibels)
{
    MorvaneAudioProcessor p;
    DriveThumbnail thumb (p.getParameterTree());
    thumb.setBounds (0, 0, 172, 126);
    auto* drive = param (p, "drive");
    test::setParameter (p, "drive", 0.0f);
    HostView host (drive);
    drag (thumb, { 50, 100 }, { { 50, 90 }, { 50, 50 } });
    EXPECT_EQ (host.begins, 1);
    EXPECT_EQ (host.ends, 1);
    EXPECT_NEAR (drive->getValue(), 50.0f / 200.0f, 1e-5f);
    drag (thumb, { 50, 100 }, { { 50, -500 } });
    EXPECT_EQ (drive->getValue(), 1.0f);

    const std::pair<const char*, float> typed[] = { { "7.5", 7.5f }, { "99", 24.0f }, { "-3", 0.0f }, { "loud", 0.0f }, { "12", 12.0f } };
    for (auto [text, db] : typed)
    {
        thumb.openValueEditor();
        ASSERT_NE (thumb.getValueEditor(), nullptr);
        thumb.getValueEditor()->setText (text);
        thumb.commitValueEditor();
        EXPECT_EQ (thumb.getValueEditor(), nullptr);
        EXPECT_NEAR (real (p, "drive"), db, 1e-4f) << text;
    }
    const int before = host.changes;
    thumb.openValueEditor();
    thumb.getValueEditor()->setText ("20");
    thumb.cancelValueEditor();
    settle();
    EXPECT_EQ (host.changes, before);
    EXPECT_NEAR (real (p, "drive"), 12.0f, 1e-4f);
}

TEST (CanvasPanels, FollowAPresetLoad)
{
    MorvaneAudioProcessor p;
    LfoCard lfo (p.getParameterTree(), p);
    SourceUtilityStrip strip (p);
    juce::XmlElement xml ("PARAMS");
    const std::pair<const char*, const char*> values[] = { { "lfo1Depth", "0.8" }, { "lfo1Shape", "2" }, { "subMode", "1" },
                                                           { "subWave", "5" }, { "noiseLevel", "-12" }, { "noiseRouting", "1" } };
    for (auto [id, value] : values)
    {
        auto* e = xml.createNewChildElement ("PARAM");
        e->setAttribute ("id", id);
        e->setAttribute ("value", value);
    }
    p.applyPresetXml (xml);
    settle();
    EXPECT_NEAR (lfo.depthKnob.getValue(), 0.8, 1e-6);
    EXPECT_EQ (lfo.shapeChoice.getComboBox().getSelectedItemIndex(), 2);
    EXPECT_EQ (strip.waveChoice.getSelectedId(), 7);
    EXPECT_NEAR (strip.noiseLevelKnob.getValue(), -12.0, 1e-4);
    EXPECT_FALSE (strip.isNoiseMuted());
    EXPECT_TRUE (strip.noiseRouteSegments()->getCell (1)->getToggleState());
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
    EXPECT_EQ (host.begins, 1);
    EXPECT_EQ (host.ends, 1);
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

// Every dragged control of these panels: a long drag each way reaches its parameter's ends in one
// gesture, and no other parameter moves.
TEST (CanvasPanels, EachControlReachesItsEndsAndNothingElseMoves)
{
    MorvaneAudioProcessor p;
    auto& state = p.getParameterTree();
    LfoCard lfo (state, p);
    SourceUtilityStrip strip (p);
    DriveCard drive (state, p);
    AmpEnvelopePanel amp (state);
    lfo.setBounds (1080, 324, 204, 312);
    strip.setBounds (1080, 0, 204, 312);
    drive.setBounds (864, 324, 204, 312);
    amp.setBounds (540, 324, 312, 312);

    struct Control
    {
        juce::Component& component;
        std::vector<const char*> ids;
        juce::Point<int> up, down; // drag offsets that raise and lower
    };
    auto& ampKnobs = amp.editor.getKnobsRow();
    const Control controls[] = {
        { lfo.rateKnob, { "lfo1Rate" }, { 0, -2000 }, { 0, 2000 } },
        { lfo.depthKnob, { "lfo1Depth" }, { 0, -2000 }, { 0, 2000 } },
        { lfo.preview, { "lfo1Rate", "lfo1Depth" }, { 2000, -2000 }, { -2000, 2000 } },
        { strip.subLevelKnob, { "subLevel" }, { 0, -2000 }, { 0, 2000 } },
        { strip.dirtKnob, { "subDriveSend" }, { 0, -2000 }, { 0, 2000 } },
        { strip.noiseLevelKnob, { "noiseLevel" }, { 0, -2000 }, { 0, 2000 } },
        { drive.amountKnob, { "drive" }, { 0, -2000 }, { 0, 2000 } },
        { drive.thumbnail, { "drive" }, { 0, -2000 }, { 0, 2000 } },
        { ampKnobs.getKnob (0), { "ampAttack" }, { 0, -2000 }, { 0, 2000 } },
        { ampKnobs.getKnob (1), { "ampDecay" }, { 0, -2000 }, { 0, 2000 } },
        { ampKnobs.getKnob (2), { "ampSustain" }, { 0, -2000 }, { 0, 2000 } },
        { ampKnobs.getKnob (3), { "ampRelease" }, { 0, -2000 }, { 0, 2000 } },
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
                EXPECT_EQ (h->begins, 1) << name;
                EXPECT_EQ (h->ends, 1) << name;
            }
            for (auto& [id, value] : before)
                if (std::find_if (c.ids.begin(), c.ids.end(), [&id] (const char* x) { return id == x; }) == c.ids.end())
                    EXPECT_EQ (state.getParameter (id)->getValue(), value) << name << " moved " << id;
        }
    }
}

// Hosts may automate from the audio thread: the panels' listeners only post, without allocating.
TEST (CanvasPanels, ParameterChangesFromAnotherThreadAllocateNothing)
{
    MorvaneAudioProcessor p;
    auto& state = p.getParameterTree();
    LfoCard lfo (state, p);
    SourceUtilityStrip strip (p);
    DriveCard drive (state, p);
    AmpEnvelopePanel amp (state);
    const char* const ids[] = { "drive", "driveMode", "subLevel", "noiseLevel", "subMode", "subWave", "noiseRouting",
                                "noiseColour", "subRouting", "lfo1Rate", "lfo1Sync", "ampAttack", "driveMix", "feedbackAmount" };
    std::vector<juce::RangedAudioParameter*> parameters;
    for (auto* id : ids)
        parameters.push_back (state.getParameter (id));
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
    EXPECT_EQ (strip.waveChoice.getSelectedId(), strip.waveIdFromParameters());
    EXPECT_TRUE (strip.noiseRouteSegments()->getCell (0)->getToggleState()) << "0.25 reads as the first end";
}
