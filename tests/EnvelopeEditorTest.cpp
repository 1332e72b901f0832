#include "TestHelpers.h"

#include "ui/widgets/AdsrEnvelopeEditor.h"
#include "ui/widgets/ValueFormat.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui::widgets;

namespace
{
const juce::StringArray filterIds { "filterAttack", "filterDecay", "filterSustain", "filterRelease" };

void setNormalised (juce::AudioProcessorValueTreeState& s, const char* id, float v)
{
    s.getParameter (id)->setValueNotifyingHost (v);
}
}

TEST (EnvelopeEditor, SecondsTextSwitchesOnTheValue)
{
    const std::pair<double, const char*> cases[] = { { 0.0004, "0ms" }, { 0.9996, "1000ms" }, { 1.0, "1.0s" }, { 3.96, "4.0s" } };
    for (auto [v, text] : cases)
        EXPECT_EQ (formatSeconds (v), text) << v;
}

TEST (EnvelopeEditor, CurveBoxFollowsTheRowHeight)
{
    MorvaneAudioProcessor p;
    AdsrRow row (p.getParameterTree(), filterIds);
    row.setBounds (0, 0, 280, 30);
    EXPECT_EQ (row.curveBox(), juce::Rectangle<float> (8, 4, 264, 22));
    EXPECT_FALSE (row.getKnobRow().isVisible());
    row.setBounds (0, 0, 280, 100);
    EXPECT_TRUE (row.curveBox().isEmpty());
    EXPECT_TRUE (row.getKnobRow().isVisible());
    row.setBounds (0, 0, 280, 200);
    EXPECT_EQ (row.curveBox(), juce::Rectangle<float> (8, 8, 264, 72));
}

TEST (EnvelopeEditor, ZeroTimesPutTheFirstHandlesLeftAndTheTieGoesLater)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    for (auto* id : { "filterAttack", "filterDecay", "filterRelease" })
        setNormalised (s, id, 0.0f);
    setNormalised (s, "filterSustain", 1.0f);
    AdsrRow row (s, filterIds);
    row.setCurveOnly (true);
    row.setBounds (0, 0, 280, 120);
    const auto h = row.handlePositions();
    EXPECT_FLOAT_EQ (h[0].x, 8.0f);
    EXPECT_FLOAT_EQ (h[1].x, 8.0f);
    EXPECT_FLOAT_EQ (h[3].x, 272.0f);
    row.mouseDown (mouseAt (row, h[0]));
    EXPECT_EQ (row.getDragHandle(), 2);
    row.mouseUp (mouseAt (row, h[0]));
}

TEST (EnvelopeEditor, HandleDragsMapToNormalisedValuesInOneGesture)
{
    MorvaneAudioProcessor p;
    auto& s = p.getParameterTree();
    const float start[] = { 0.2f, 0.2f, 0.5f, 0.2f };
    for (int i = 0; i < 4; ++i)
        setNormalised (s, filterIds[i].toRawUTF8(), start[i]);
    AdsrRow row (s, filterIds);
    row.setCurveOnly (true);
    row.setBounds (0, 0, 280, 120);
    const auto box = row.curveBox();

    struct Case { int handle; juce::Point<float> move; float expected[4]; };
    const float dx = 0.1f * box.getWidth(), dy = 0.2f * box.getHeight();
    const Case cases[] = {
        { 1, { dx, 0 }, { 0.3f, 0.2f, 0.5f, 0.2f } },
        { 2, { dx, -dy }, { 0.2f, 0.3f, 0.7f, 0.2f } },
        { 3, { 0, dy }, { 0.2f, 0.2f, 0.3f, 0.2f } },
        { 4, { dx, 0 }, { 0.2f, 0.2f, 0.5f, 0.3f } },
    };
    for (const auto& c : cases)
    {
        for (int i = 0; i < 4; ++i)
            setNormalised (s, filterIds[i].toRawUTF8(), start[i]);
        row.refresh();
        HostView counter (s, filterIds);
        const auto from = row.handlePositions()[(size_t) c.handle - 1];
        row.mouseDown (mouseAt (row, from));
        ASSERT_EQ (row.getDragHandle(), c.handle);
        row.mouseDrag (mouseAt (row, from + c.move * 0.5f));
        row.mouseDrag (mouseAt (row, from + c.move));
        row.mouseUp (mouseAt (row, from + c.move));
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR (s.getParameter (filterIds[i])->getValue(), c.expected[i], 0.002f) << c.handle << " " << i;
        EXPECT_EQ (counter.gestures(), c.handle == 2 ? "2/2" : "1/1") << c.handle;
    }
}

TEST (EnvelopeEditor, EditorStacksCurveOverKnobsWithTheExtraKnobAtTheLeft)
{
    MorvaneAudioProcessor p;
    AdsrEnvelopeEditor editor (p.getParameterTree(), filterIds);
    ostrel::widgets::Knob extra (ostrel::widgets::KnobSize::Mini);
    editor.setExtraKnob (&extra);
    editor.setBounds (0, 0, 280, 234);
    EXPECT_EQ (editor.getCurveRow().getBounds(), juce::Rectangle<int> (0, 0, 280, 130));
    EXPECT_EQ (extra.getBounds(), juce::Rectangle<int> (0, 138, 44, 96));
    EXPECT_EQ (editor.getKnobsRow().getBounds(), juce::Rectangle<int> (52, 138, 228, 96));
    EXPECT_EQ (editor.getKnobsRow().getKnob (0).getLabel(), "A");
    EXPECT_EQ (editor.getKnobsRow().getKnob (2).getTextFromValue (0.6), "60 %");
}
