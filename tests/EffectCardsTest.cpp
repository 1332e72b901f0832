#include "EditorTestSupport.h"
#include "TestHelpers.h"

#include "audio/PluginProcessor.h"
#include "ui/Editor.h"
#include "ui/widgets/EffectCardSupport.h"
#include "ui/widgets/FxSlideOut.h"

#include <gtest/gtest.h>

#include <thread>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui::widgets;

namespace
{
struct Fixture
{
    MorvaneAudioProcessor processor;
    FxSlideOut panel { processor };
    Fixture() { panel.setBounds (0, 0, 1284, 626); }

    juce::RangedAudioParameter& param (const char* id) { return *processor.getParameterTree().getParameter (id); }
    float raw (const char* id) { return processor.getParameterTree().getRawParameterValue (id)->load(); }
};

struct KnobRow
{
    const char* name;
    ostrel::widgets::Knob& (*knob) (FxSlideOut&);
    const char* parameter;
    double value;
    const char* text;
    bool bipolar;
};

#define KNOB(card, member) [] (FxSlideOut& p) -> ostrel::widgets::Knob& { return p.get##card().member; }

const KnobRow knobRows[] = {
    { "mbd low", KNOB (MultibandDriveCard, lowKnob), "mbdLowAmount", 6.0, "6.0 dB", false },
    { "mbd mid", KNOB (MultibandDriveCard, midKnob), "mbdMidAmount", 12.5, "12.5 dB", false },
    { "mbd high", KNOB (MultibandDriveCard, highKnob), "mbdHighAmount", 3.0, "3.0 dB", false },
    { "mbd x-low", KNOB (MultibandDriveCard, lowCrossKnob), "mbdLowCross", 150.0, "150 Hz", false },
    { "mbd x-hi", KNOB (MultibandDriveCard, highCrossKnob), "mbdHighCross", 3000.0, "3000 Hz", false },
    { "mbd mix", KNOB (MultibandDriveCard, mixKnob), "mbdMix", 0.42, "42 %", false },
    { "modfx rate", KNOB (ModFxCard, rateKnob), "modFxRate", 1.25, "1.25 Hz", false },
    { "modfx depth", KNOB (ModFxCard, depthKnob), "modFxDepth", 0.7, "70 %", false },
    { "modfx fdbk", KNOB (ModFxCard, feedbackKnob), "modFxFeedback", 0.3, "30 %", false },
    { "modfx mix", KNOB (ModFxCard, mixKnob), "modFxMix", 0.8, "80 %", false },
    { "eq tilt", KNOB (PostEqCard, tiltKnob), "postEqTilt", -3.5, "-3.5 dB", true },
    { "eq notch", KNOB (PostEqCard, notchKnob), "postEqNotchHz", 1200.0, "1200 Hz", false },
    { "eq depth", KNOB (PostEqCard, depthKnob), "postEqNotchDepth", 0.55, "55 %", false },
    { "delay time", KNOB (DelayCard, timeKnob), "delayTimeMs", 99.0, "99 ms", false },
    { "delay fdbk", KNOB (DelayCard, feedbackKnob), "delayFeedback", 0.6, "60 %", false },
    { "delay tone", KNOB (DelayCard, toneKnob), "delayTone", 950.0, "950 Hz", false },
    { "delay mix", KNOB (DelayCard, mixKnob), "delayMix", 0.1, "10 %", false },
    { "reverb pre", KNOB (ReverbCard, predelayKnob), "reverbPredelayMs", 42.0, "42 ms", false },
    { "reverb bw", KNOB (ReverbCard, bandwidthKnob), "reverbBandwidth", 0.35, "35 %", false },
    { "reverb decay", KNOB (ReverbCard, decayKnob), "reverbDecay", 0.9, "90 %", false },
    { "reverb damp", KNOB (ReverbCard, dampingKnob), "reverbDamping", 0.2, "20 %", false },
    { "reverb mix", KNOB (ReverbCard, mixKnob), "reverbMix", 0.66, "66 %", false },
    { "crush bits", KNOB (BitCrushCard, bitsKnob), "crushBits", 7.3, "7.3 b", false },
    { "crush rate", KNOB (BitCrushCard, rateKnob), "crushRateHz", 8000.0, "8.0 kHz", false },
    { "crush jitter", KNOB (BitCrushCard, jitterKnob), "crushJitter", 0.25, "25 %", false },
    { "crush mix", KNOB (BitCrushCard, mixKnob), "crushMix", 0.75, "75 %", false },
};

struct CardRow
{
    const char* name;
    ostrel::widgets::BypassablePanel& (*card) (FxSlideOut&);
    PanelEnableButton& (*enable) (FxSlideOut&);
    const char* parameter;
};

// The card and its switch.
#define CARD(card) [] (FxSlideOut& p) -> ostrel::widgets::BypassablePanel& { return p.get##card(); }, \
                   [] (FxSlideOut& p) -> PanelEnableButton& { return p.get##card().enableButton; }

const CardRow cardRows[] = {
    { "MULTIBAND DRIVE", CARD (MultibandDriveCard), "mbdEnable" },
    { "MOD FX", CARD (ModFxCard), "modFxEnable" },
    { "POST EQ", CARD (PostEqCard), "postEqEnable" },
    { "DELAY", CARD (DelayCard), "delayEnable" },
    { "REVERB", CARD (ReverbCard), "reverbEnable" },
    { "BIT CRUSH", CARD (BitCrushCard), "crushEnable" },
};
}

TEST (EffectCards, EveryKnobDragsInOneGestureReachesItsParameterAndReadsItsValueText)
{
    Fixture f;
    for (const auto& row : knobRows)
    {
        auto& knob = row.knob (f.panel);
        {
            HostView counter (&f.param (row.parameter));
            const auto start = f.raw (row.parameter);
            // Down from wherever it can go down, else up, in four steps.
            const auto c = knob.getLocalBounds().getCentre();
            const int d = start > (float) knob.getMinimum() ? 6 : -6;
            drag (knob, c, { c.translated (0, d), c.translated (0, 2 * d), c.translated (0, 3 * d), c.translated (0, 4 * d) });
            EXPECT_EQ (counter.gestures(), "1/1") << row.name;
            EXPECT_GT (counter.changes, 0) << row.name;
            EXPECT_NE (f.raw (row.parameter), start) << row.name;
        }
        EXPECT_EQ (knob.getSizeClass(), ostrel::widgets::KnobSize::Mini) << row.name;
        EXPECT_EQ (knob.isBipolarArc(), row.bipolar) << row.name;
        knob.setValue (row.value, juce::sendNotificationSync);
        EXPECT_NEAR (f.raw (row.parameter), row.value, std::abs (row.value) * 1.0e-4 + 1.0e-5) << row.name;
        EXPECT_EQ (knob.getTextFromValue (knob.getValue()), row.text) << row.name;
    }
}

TEST (EffectCards, ValueTextsSwitchUnitsAtTheirThresholds)
{
    const std::pair<double, const char*> times[] = { { 99.0, "99 ms" }, { 99.4, "99 ms" }, { 100.0, "0.10 s" }, { 1500.0, "1.50 s" } };
    for (auto [v, text] : times)
        EXPECT_EQ (fxcard::timeText (v), text) << v;
    const std::pair<double, const char*> freqs[] = { { 200.0, "200 Hz" }, { 999.0, "999 Hz" }, { 1000.0, "1.0 kHz" }, { 20000.0, "20.0 kHz" } };
    for (auto [v, text] : freqs)
        EXPECT_EQ (fxcard::frequencyText (v), text) << v;
    EXPECT_EQ (fxcard::decibelText (-12.0), "-12.0 dB");
    EXPECT_EQ (fxcard::decibelText (12.0), "12.0 dB");
    EXPECT_EQ (fxcard::percentText (0.005), "1 %");
}

TEST (EffectCards, DropdownsReachTheirChoices)
{
    Fixture f;
    const std::tuple<ostrel::widgets::ChoiceDropdown*, const char*, int> rows[] = {
        { &f.panel.getMultibandDriveCard().lowModeChoice, "mbdLowMode", 2 },
        { &f.panel.getMultibandDriveCard().midModeChoice, "mbdMidMode", 3 },
        { &f.panel.getMultibandDriveCard().highModeChoice, "mbdHighMode", 1 },
        { &f.panel.getModFxCard().modeChoice, "modFxMode", 2 },
        { &f.panel.getDelayCard().modeChoice, "delayPingPong", 1 },
        { &f.panel.getBitCrushCard().ditherChoice, "crushDither", 1 },
    };
    for (auto [choice, id, index] : rows)
    {
        choice->setSelectedId (index + 1, juce::sendNotificationSync);
        EXPECT_EQ ((int) f.raw (id), index) << id;
    }
}

TEST (EffectCards, EnableSwitchesWriteOneGestureAndBypassTheCard)
{
    Fixture f;
    for (const auto& row : cardRows)
    {
        auto& card = row.card (f.panel);
        auto& button = row.enable (f.panel);
        EXPECT_EQ (card.juce::Component::getTitle(), juce::String (row.name));
        const bool before = f.raw (row.parameter) > 0.5f;
        EXPECT_EQ (card.isActive(), before) << row.name;
        HostView counter (&f.param (row.parameter));
        button.triggerClick();
        settle();
        EXPECT_EQ (f.raw (row.parameter) > 0.5f, ! before) << row.name;
        EXPECT_EQ (button.getToggleState(), ! before) << row.name;
        EXPECT_EQ (card.isActive(), ! before) << row.name;
        EXPECT_EQ (counter.gestures(), "1/1") << row.name;
    }
}

TEST (EffectCards, ABypassedCardStaysOperableAndFollowsAnotherThread)
{
    Fixture f;
    auto& delay = f.panel.getDelayCard();
    f.param ("delayEnable").setValueNotifyingHost (1.0f);
    settle();
    ASSERT_TRUE (delay.isActive());
    std::thread writer ([&f] {
        auto& p = f.param ("delayEnable");
        p.beginChangeGesture();
        p.setValueNotifyingHost (0.0f);
        p.endChangeGesture();
    });
    writer.join();
    settle();
    EXPECT_FALSE (delay.isActive());
    EXPECT_FALSE (delay.enableButton.getToggleState());
    EXPECT_LT (delay.timeKnob.getAlpha(), 1.0f);
    delay.timeKnob.setValue (333.0, juce::sendNotificationSync);
    EXPECT_NEAR (f.raw ("delayTimeMs"), 333.0f, 0.05f);
}

TEST (EffectCards, CardsFollowAPresetLoad)
{
    Fixture f;
    f.processor.applyPresetXml (presetXml ({ { "delayEnable", 1.0 }, { "delayTimeMs", 480.0 }, { "delayPingPong", 1.0 },
                                             { "crushEnable", 1.0 }, { "crushBits", 6.5 }, { "mbdEnable", 1.0 },
                                             { "mbdMidMode", 2.0 }, { "postEqTilt", -4.0 }, { "reverbMix", 0.4 } }));
    settle();
    EXPECT_TRUE (f.panel.getDelayCard().isActive());
    EXPECT_TRUE (f.panel.getDelayCard().enableButton.getToggleState());
    EXPECT_NEAR (f.panel.getDelayCard().timeKnob.getValue(), 480.0, 0.05);
    EXPECT_EQ (f.panel.getDelayCard().modeChoice.getSelectedId(), 2);
    EXPECT_TRUE (f.panel.getBitCrushCard().isActive());
    EXPECT_NEAR (f.panel.getBitCrushCard().bitsKnob.getValue(), 6.5, 1.0e-4);
    EXPECT_TRUE (f.panel.getMultibandDriveCard().isActive());
    EXPECT_EQ (f.panel.getMultibandDriveCard().midModeChoice.getSelectedId(), 3);
    EXPECT_NEAR (f.panel.getPostEqCard().tiltKnob.getValue(), -4.0, 1.0e-4);
    EXPECT_NEAR (f.panel.getReverbCard().mixKnob.getValue(), 0.4, 1.0e-4);
}

TEST (EffectCards, LayoutStandsFieldsOverTheirBandsAndShrinksNarrowStrips)
{
    Fixture f;
    auto& mbd = f.panel.getMultibandDriveCard();
    EXPECT_EQ (mbd.getBounds(), juce::Rectangle<int> (16, 98, 412, 248));
    const std::pair<juce::Component*, juce::Component*> pairs[] = { { &mbd.lowModeField, &mbd.lowKnob },
                                                                   { &mbd.midModeField, &mbd.midKnob },
                                                                   { &mbd.highModeField, &mbd.highKnob } };
    // Each mode box is a third of the knob strip, wide enough for "FOLLOW", and the three in a row.
    int x = mbd.lowKnob.getX();
    for (auto [field, knob] : pairs)
    {
        EXPECT_EQ (field->getX(), x);
        EXPECT_EQ (field->getWidth(), 96);
        EXPECT_EQ (field->getBottom() + 16, knob->getY());
        x += 96 + 8;
    }
    EXPECT_EQ (mbd.highModeField.getRight(), mbd.mixKnob.getRight());
    EXPECT_EQ (mbd.lowKnob.getX(), (412 - 304) / 2);
    EXPECT_EQ (mbd.mixKnob.getBottom(), 248 - 16);

    for (auto* card : { (juce::Component*) &mbd, (juce::Component*) &f.panel.getModFxCard(), (juce::Component*) &f.panel.getPostEqCard(),
                        (juce::Component*) &f.panel.getDelayCard(), (juce::Component*) &f.panel.getReverbCard(),
                        (juce::Component*) &f.panel.getBitCrushCard() })
    {
        EXPECT_TRUE (f.panel.getLocalBounds().reduced (8).contains (card->getBounds())) << card->getTitle();
        for (auto* child : card->getChildren())
            EXPECT_TRUE (card->getLocalBounds().contains (child->getBounds())) << card->getTitle() << " " << child->getTitle();
    }

    auto& crush = f.panel.getBitCrushCard();
    EXPECT_EQ (crush.ditherField.getBounds(), juce::Rectangle<int> (16, 54, crush.getWidth() - 32, 66));
    crush.setSize (120, 248);
    EXPECT_EQ (crush.bitsKnob.getWidth(), 44);
    EXPECT_EQ (crush.rateKnob.getWidth(), 120 - 32 - 44 - 8);
    EXPECT_EQ (crush.jitterKnob.getWidth(), 0);
    EXPECT_EQ (crush.mixKnob.getWidth(), 0);
}

// Escape out of any view, and the panels' bounds, are the Editor tests'.
TEST (EffectCards, CloseButtonReturnsTheEditorToTheCanvas)
{
    MorvaneAudioProcessor processor;
    ui::Editor editor (processor, juce::File());
    auto& fx = dynamic_cast<FxSlideOut&> (editor.getViewPanel (ui::Editor::fxView));
    EXPECT_EQ (fx.getCloseButton().getTooltip(), "Close FX panel");

    editor.setActiveView (ui::Editor::fxView);
    EXPECT_TRUE (fx.isVisible());
    fx.getCloseButton().triggerClick();
    settle();
    EXPECT_EQ (editor.getActiveView(), 0);
    EXPECT_FALSE (fx.isVisible());
}
