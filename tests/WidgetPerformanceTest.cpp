#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

namespace
{
struct KeyboardFixture : ::testing::Test
{
    KeyboardFixture()
    {
        keys.onNoteOn = [this](int n, float v) { events.add("on " + juce::String(n)); velocities.push_back(v); };
        keys.onNoteOff = [this](int n) { events.add("off " + juce::String(n)); };
    }
    // Centre of a key, low on white keys so that black keys don't catch it.
    juce::Point<float> at(int note, float yFraction = 0.85f)
    {
        const auto b = keys.keyBounds(note);
        return { b.getCentreX(), b.getY() + b.getHeight() * yFraction };
    }
    PianoKeyboard keys;
    Mouse mouse { keys };
    juce::StringArray events;
    std::vector<float> velocities;
};
} // namespace

TEST_F(KeyboardFixture, KeyGeometryAndHits)
{
    EXPECT_EQ(keys.getWidth(), 616);
    // 36..59: 14 white keys, 44 pixels each.
    EXPECT_EQ(keys.keyBounds(36), juce::Rectangle<float>(0, 0, 44, 96));
    EXPECT_FLOAT_EQ(keys.keyBounds(37).getCentreX(), 44.0f);
    const struct { float x, y; int note; } rows[] = {
        { 44, 10, 37 }, { 44, 0.62f * 96, 38 }, { 10, 90, 36 }, { 615, 50, 59 }, { 616, 50, -1 }, { 10, -1, -1 },
    };
    for (const auto& r : rows)
        EXPECT_EQ(keys.noteAt(r.x, r.y), r.note) << r.x << "," << r.y;

    keys.setKeyRange(200, 0);
    EXPECT_EQ(std::make_pair(keys.getFirstNote(), keys.getNoteCount()), std::make_pair(127, 1));
    keys.setKeyRange(120, 24);
    EXPECT_EQ(keys.getNoteCount(), 8);
}

TEST_F(KeyboardFixture, PressReleaseAndGlissando)
{
    mouse.down(at(36, 0.0f));
    EXPECT_FLOAT_EQ(velocities.back(), 1.0f) << "top edge";
    mouse.drag(at(38));
    mouse.drag(at(38, 0.9f));
    mouse.drag(at(40));
    mouse.up(at(40));
    EXPECT_EQ(events, juce::StringArray({ "on 36", "off 36", "on 38", "off 38", "on 40", "off 40" }));
    EXPECT_EQ(keys.getHeldNote(), -1);
    EXPECT_FALSE(keys.isNotePressed(40));
    EXPECT_TRUE(keys.isGlowing());
    EXPECT_NEAR(velocities[1], (1.0f - at(38).y / 95.0f) * 0.8f + 0.2f, 1e-6);
}

TEST_F(KeyboardFixture, LeavingTheKeysReleasesAndNothingSticks)
{
    mouse.down(at(45));
    mouse.drag({ 300.0f, 140.0f }); // below the component
    EXPECT_EQ(events, juce::StringArray({ "on 45", "off 45" }));
    mouse.drag(at(47));
    mouse.up({ 700.0f, 140.0f });
    mouse.exit({ 700.0f, 140.0f });
    EXPECT_EQ(events, juce::StringArray({ "on 45", "off 45", "on 47", "off 47" }));
    for (int n = 0; n < 128; ++n)
        EXPECT_FALSE(keys.isNotePressed(n)) << n;
}

TEST_F(KeyboardFixture, DisplayedNotesAndClear)
{
    keys.setNoteDisplayed(48, true);
    EXPECT_TRUE(keys.isNotePressed(48));
    EXPECT_TRUE(events.isEmpty());
    mouse.down(at(48));
    EXPECT_EQ(events, juce::StringArray({ "on 48" })) << "a lit key still plays";
    keys.setKeyMarked(50, true);
    keys.setKeyMarked(200, true);
    keys.clearNotes();
    EXPECT_FALSE(keys.isNotePressed(48));
    EXPECT_FALSE(keys.isKeyMarked(50));
    EXPECT_EQ(keys.getHeldNote(), -1);
    EXPECT_FALSE(keys.isGlowing());
    EXPECT_EQ(events.size(), 1) << "no callbacks from clearNotes";
}

TEST(WidgetPerformanceControls, WheelSpringsBackAndSliderStays)
{
    PerformanceWheel wheel;
    PerformanceSlider slider;
    PressurePad pad;
    std::vector<float> wheelValues;
    int starts = 0, ends = 0;
    wheel.onValueChanged = [&](float v) { wheelValues.push_back(v); };
    wheel.onGestureStart = [&] { ++starts; };
    wheel.onGestureEnd = [&] { ++ends; };

    Mouse w { wheel };
    w.down({ 22, 0 });
    EXPECT_FLOAT_EQ(wheel.getValue(), 1.0f);
    EXPECT_EQ(wheel.valueText(), "+100");
    w.drag({ 22, 95 });
    EXPECT_FLOAT_EQ(wheel.getValue(), -1.0f);
    w.drag({ 22, 47.5f });
    EXPECT_NEAR(wheel.getValue(), 0.0f, 1e-6);
    w.drag({ 22, 20 });
    w.up({ 22, 20 });
    EXPECT_FLOAT_EQ(wheel.getValue(), 0.0f) << "spring return";
    EXPECT_FLOAT_EQ(wheelValues.back(), 0.0f);
    EXPECT_EQ(std::make_pair(starts, ends), std::make_pair(1, 1));
    EXPECT_FALSE(wheel.isActive());

    wheel.setReturnOnRelease(false);
    w.click({ 22, 20 });
    EXPECT_NEAR(wheel.getValue(), 1.0f - 40.0f / 95.0f, 1e-6);
    w.doubleClick({ 22, 20 });
    EXPECT_FLOAT_EQ(wheel.getValue(), 0.0f) << "the double click recentres, whatever the press did";

    Mouse s { slider };
    s.click({ 22, 19 });
    EXPECT_NEAR(slider.getValue(), 0.8f, 1e-6);
    EXPECT_TRUE(slider.keyPressed(juce::KeyPress(juce::KeyPress::upKey)));
    EXPECT_NEAR(slider.getValue(), 0.85f, 1e-6);
    EXPECT_TRUE(slider.keyPressed(juce::KeyPress(juce::KeyPress::spaceKey)));
    EXPECT_FLOAT_EQ(slider.getValue(), 0.0f);
    EXPECT_FALSE(slider.keyPressed(juce::KeyPress('m')));

    std::vector<float> pressure;
    pad.onValueChanged = [&](float v) { pressure.push_back(v); };
    Mouse p { pad };
    p.down({ 48, 95 });
    p.drag({ 48, 47.5f });
    p.drag({ 48, -20 });
    p.up({ 48, -20 });
    EXPECT_EQ(pressure, std::vector<float>({ 0.5f, 1.0f, 0.0f })) << "the first press at the bottom is no change";
    EXPECT_EQ(pad.getWidth(), 96);
    EXPECT_EQ(pad.createAccessibilityHandler()->getValueInterface()->getCurrentValue(), 0.0);
}
