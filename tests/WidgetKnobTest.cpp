#include "WidgetTestSupport.h"

#include <optional>

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

namespace
{
struct KnobFixture : ::testing::Test
{
    // Before the knob: a knob attached to one of its parameters lets go of it when destroyed.
    std::optional<ParameterHost> host;
    Knob knob { KnobSize::Small };
    Mouse mouse { knob };
    juce::Point<float> centre() const { return { knob.geometry().cx, knob.geometry().cy }; }
    juce::Point<float> onRing() const { return { knob.geometry().cx, knob.geometry().cy - knob.geometry().haloD * 0.5f }; }
};
} // namespace

TEST_F(KnobFixture, ConstructionFollowsTheSizeTable)
{
    const struct { KnobSize size; int w, h; } rows[] = {
        { KnobSize::Mini, 44, 96 }, { KnobSize::Small, 96, 100 }, { KnobSize::Medium, 96, 108 }, { KnobSize::Large, 96, 132 },
    };
    for (const auto& r : rows)
    {
        Knob k(r.size);
        SCOPED_TRACE((int) r.size);
        EXPECT_EQ(k.getLocalBounds(), juce::Rectangle<int>(r.w, r.h));
        EXPECT_TRUE(k.getWantsKeyboardFocus());
        EXPECT_EQ(k.getSliderStyle(), juce::Slider::RotaryHorizontalVerticalDrag);
    }
    Knob tiny(KnobSize::Large);
    tiny.setSize(30, 30);
    const auto geo = tiny.geometry();
    EXPECT_FLOAT_EQ(geo.size, 30.0f);
    EXPECT_FLOAT_EQ(geo.bodyD, 58.0f * 30.0f / 80.0f);
    EXPECT_FLOAT_EQ(geo.haloD, 78.0f * 30.0f / 80.0f);
}

TEST_F(KnobFixture, DragDistanceSetsTheValueCoarseAndFine)
{
    // Up and right both raise; Shift gives a tenth of the rate, also when pressed mid-drag.
    const struct { float dx, dy; juce::ModifierKeys mods; double expected; } rows[] = {
        { 0, -50, {}, 0.7 }, { 0, 50, {}, 0.3 }, { 25, 0, {}, 0.6 }, { 0, -50, shift, 0.52 },
        { 0, -500, {}, 1.0 }, { 0, 500, {}, 0.0 }, { -100, 0, shift, 0.46 },
    };
    for (const auto& r : rows)
    {
        knob.setValue(0.5, juce::dontSendNotification);
        const auto start = centre();
        mouse.down(start, left.withFlags(r.mods.getRawFlags()));
        mouse.drag(start + juce::Point<float>(r.dx * 0.5f, r.dy * 0.5f), r.mods);
        mouse.drag(start + juce::Point<float>(r.dx, r.dy), r.mods);
        mouse.up(start + juce::Point<float>(r.dx, r.dy));
        EXPECT_NEAR(knob.getValue(), r.expected, 1e-6) << r.dx << "," << r.dy;
    }

    knob.setValue(0.5, juce::dontSendNotification);
    mouse.down(centre());
    mouse.drag(centre() + juce::Point<float>(0, -25));          // +0.1
    mouse.drag(centre() + juce::Point<float>(0, -75), shift);   // +0.02, no jump
    mouse.up(centre());
    EXPECT_NEAR(knob.getValue(), 0.62, 1e-6);
}

TEST_F(KnobFixture, DragIsOneGestureOfTheAttachedParameter)
{
    host.emplace();
    int starts = 0, ends = 0;
    knob.onDragStart = [&] { ++starts; };
    knob.onDragEnd = [&] { ++ends; };
    knob.attachToParameter(host->state, "amount");
    EXPECT_NEAR(knob.getValue(), 0.25, 1e-6);
    mouse.down(centre());
    mouse.drag(centre() + juce::Point<float>(0, -25)); // a tenth of -1..1
    mouse.up(centre());
    EXPECT_EQ(std::make_pair(starts, ends), std::make_pair(1, 1));
    EXPECT_NEAR(host->raw("amount"), 0.45, 1e-5);

    mouse.doubleClick(centre());
    EXPECT_NEAR(host->raw("amount"), 0.25, 1e-5) << "double click returns to the parameter's default";
}

TEST_F(KnobFixture, DoubleClickAltClickWheelAndKeys)
{
    knob.setDoubleClickReturnValue(true, 0.3);
    const auto key = [&](juce::KeyPress k) { return [this, k] { EXPECT_TRUE(knob.keyPressed(k)); }; };
    // Tolerance 0: exactly the return value.
    const struct { const char* what; double from; std::function<void()> act; double expected, tolerance; } rows[] = {
        { "double click", 0.9, [&] { mouse.doubleClick(centre()); }, 0.3, 0 },
        { "alt click", 0.9, [&] { mouse.click(centre(), left.withFlags(alt.getRawFlags())); }, 0.3, 0 },
        { "wheel", 0.5, [&] { mouse.wheel(centre(), 0.5f); }, 0.575, 1e-6 },
        { "shift wheel", 0.575, [&] { mouse.wheel(centre(), -0.5f, shift); }, 0.5675, 1e-6 },
        { "up", 0.5, key(juce::KeyPress(juce::KeyPress::upKey)), 0.51, 1e-9 },
        { "left", 0.5, key(juce::KeyPress(juce::KeyPress::leftKey)), 0.49, 1e-9 },
        { "shift up", 0.5, key(juce::KeyPress(juce::KeyPress::upKey, juce::ModifierKeys::shiftModifier, 0)), 0.501, 1e-9 },
        { "delete", 0.5, key(juce::KeyPress(juce::KeyPress::deleteKey)), 0.3, 1e-9 },
    };
    for (const auto& r : rows)
    {
        SCOPED_TRACE(r.what);
        knob.setValue(r.from);
        r.act();
        if (r.tolerance == 0)
            EXPECT_DOUBLE_EQ(knob.getValue(), r.expected);
        else
            EXPECT_NEAR(knob.getValue(), r.expected, r.tolerance);
    }
    EXPECT_FALSE(knob.keyPressed(juce::KeyPress('x')));
}

TEST_F(KnobFixture, TypedValuesAreRefusedOrClamped)
{
    knob.setRange(-12.0, 12.0, 0.0);
    const struct { const char* text; bool accepted; double expected; } rows[] = {
        { "3.5", true, 3.5 }, { " -2 ", true, -2.0 }, { "40", true, 12.0 }, { "-1e9", true, -12.0 }, { "1.00", true, 1.0 },
        { "-2 dB", false, 1.0 }, // no unit on show, so none is understood
        { "abc", false, 1.0 }, { "", false, 1.0 }, { "nan", false, 1.0 }, { "inf", false, 1.0 },
        { "5 apples and pears", false, 1.0 }, { "--3", false, 1.0 },
    };
    for (const auto& r : rows)
    {
        knob.setValue(1.0);
        EXPECT_EQ(knob.applyTypedValue(r.text), r.accepted) << r.text;
        EXPECT_DOUBLE_EQ(knob.getValue(), r.expected) << r.text;
    }
    EXPECT_DOUBLE_EQ(knob.getValueFromText("junk"), 1.0);

    // A double-click on the value text opens the entry instead of resetting.
    knob.setDoubleClickReturnValue(true, 0.0);
    knob.setValue(1.0);
    mouse.doubleClick({ 48.0f, 80.0f });
    EXPECT_TRUE(knob.isEditingValue());
    EXPECT_DOUBLE_EQ(knob.getValue(), 1.0);
    knob.mouseDown(mouse.event(centre(), {}));
    knob.mouseUp(mouse.event(centre(), {}));

    // Return opens the entry; an unshown knob keeps it hidden from focus but it still edits.
    EXPECT_TRUE(knob.keyPressed(juce::KeyPress(juce::KeyPress::returnKey)));
    EXPECT_TRUE(knob.isEditingValue());
}

TEST_F(KnobFixture, RingDragChangesOnlyTheDepth)
{
    float depth = 0.2f;
    std::vector<float> reported;
    int starts = 0, ends = 0, valueChanges = 0;
    knob.setModulated(true);
    knob.setDepthCallbacks([&] { return depth; }, [&] { ++starts; }, [&](float d) { reported.push_back(d); depth = d; },
                           [&] { ++ends; });
    knob.onValueChange = [&] { ++valueChanges; };
    knob.setValue(0.5, juce::dontSendNotification);

    const auto ring = onRing() + juce::Point<float>(0.0f, 4.0f); // inside the 5-pixel band
    mouse.down(ring);
    EXPECT_TRUE(knob.isDraggingDepth());
    mouse.drag(ring + juce::Point<float>(0, -30));
    mouse.drag(ring + juce::Point<float>(0, -40), shift);
    mouse.up(ring);

    EXPECT_EQ(std::make_pair(starts, ends), std::make_pair(1, 1));
    ASSERT_EQ(reported.size(), 2u);
    EXPECT_NEAR(reported[0], 0.5f, 1e-6);
    EXPECT_NEAR(reported[1], 0.3f, 1e-6);
    EXPECT_EQ(valueChanges, 0);
    EXPECT_DOUBLE_EQ(knob.getValue(), 0.5);

    // Outside the band, unmodulated, or with Alt held the ring is not grabbed.
    for (auto setup : { 0, 1, 2 })
    {
        knob.setModulated(setup != 1);
        const auto at = setup == 0 ? centre() : ring;
        mouse.down(at, setup == 2 ? left.withFlags(alt.getRawFlags()) : left);
        EXPECT_FALSE(knob.isDraggingDepth()) << setup;
        mouse.up(at);
    }
    EXPECT_EQ(starts, 1);
}

TEST_F(KnobFixture, DroppedSourceDescriptionsReachTheHandler)
{
    std::vector<int> dropped;
    knob.setSourceDropHandler([&](int index) {
        dropped.push_back(index);
        return true;
    });
    juce::Component source;
    const struct { juce::var description; bool accepted; int index; } rows[] = {
        { "lfo1", true, 5 }, { "velocity", true, 1 }, { "dcw2Env", true, 7 }, { 3, true, 3 },
        { 8, false, 0 }, { "pitch", false, 0 }, { juce::var(1.5), false, 0 },
    };

    knob.setModulationEnabled(false);
    EXPECT_FALSE(knob.isInterestedInDragSource({ "lfo1", &source, {} }));

    knob.setModulationEnabled(true);
    for (const auto& r : rows)
    {
        dropped.clear();
        knob.setModulated(false);
        juce::DragAndDropTarget::SourceDetails details { r.description, &source, {} };
        EXPECT_EQ(knob.isInterestedInDragSource(details), r.accepted) << r.description.toString();
        if (! r.accepted)
            continue;
        knob.itemDragEnter(details);
        EXPECT_TRUE(knob.isSourceDragOver());
        knob.itemDropped(details);
        EXPECT_FALSE(knob.isSourceDragOver());
        EXPECT_EQ(dropped, std::vector<int>({ r.index }));
        EXPECT_TRUE(knob.isModulated());
    }
}

TEST_F(KnobFixture, MenuEntriesFollowTheInstalledCallbacks)
{
    const juce::String typeValue(juce::CharPointer_UTF8("Type a value\xe2\x80\xa6"));
    EXPECT_EQ(menuTexts(knob.buildContextMenu()), juce::StringArray("Reset to default", "Copy value", "Paste value", typeValue));
    knob.handleMenuResult(Knob::menuTypeValue);
    EXPECT_TRUE(knob.isEditingValue());

    int chosen = 0, learns = 0, reveals = 0, removes = 0, extras = 0;
    juce::String status;
    knob.setModulationSources({ "Velocity", "LFO" }, [&](int i) { chosen = i; });
    knob.setMidiLearnHandler([&] { ++learns; });
    EXPECT_EQ(menuTexts(knob.buildContextMenu()),
              juce::StringArray("Modulate from", "Velocity", "LFO", "MIDI learn", "Reset to default", "Copy value", "Paste value", typeValue));

    knob.setModulationStatus([&] { return status; }, [&] { ++removes; });
    knob.setRevealHandler([&] { ++reveals; });
    knob.setExtraMenuBuilder([&](juce::PopupMenu& m) { m.addItem(900, "Extra"); ++extras; });
    knob.setMidiLearnPending(true);
    status = "LFO 40 %";
    EXPECT_EQ(menuTexts(knob.buildContextMenu()),
              juce::StringArray("LFO 40 %", "Modulate from", "Velocity", "LFO", "Remove modulation", "--",
                                "Cancel MIDI learn", "Reset to default", "Copy value", "Paste value", typeValue, "--",
                                "Reveal in matrix", "--", "Extra"));
    EXPECT_TRUE(knob.isAnimating()) << "learn pulses the arc";
    knob.setMidiLearnPending(false);
    EXPECT_FALSE(knob.isAnimating());

    knob.handleMenuResult(102);
    EXPECT_EQ(chosen, 2);
    EXPECT_TRUE(knob.isModulated());
    for (int id : { (int) Knob::menuMidiLearn, (int) Knob::menuReveal, (int) Knob::menuRemoveModulation, 900 })
        knob.handleMenuResult(id);
    EXPECT_EQ(std::make_tuple(learns, reveals, removes), std::make_tuple(1, 1, 1));
    EXPECT_FALSE(knob.isModulated());
}

TEST_F(KnobFixture, CopyThenPasteAValueThroughTheClipboard)
{
    juce::String board;
    clipboard::setHandlers([&](const juce::String& t) { board = t; }, [&] { return board; });
    knob.setRange(20.0, 20000.0, 0.0);

    knob.setValue(440.5);
    knob.handleMenuResult(Knob::menuCopy);
    EXPECT_EQ(board, "440.5");
    knob.setValue(1000.0);
    knob.handleMenuResult(Knob::menuPaste);
    EXPECT_DOUBLE_EQ(knob.getValue(), 440.5);

    const struct { const char* text; double expected; } rows[] = { { "99999", 20000.0 }, { "hello", 20.0 }, { "-5", 20.0 } };
    for (const auto& r : rows)
    {
        board = r.text;
        knob.handleMenuResult(Knob::menuPaste);
        EXPECT_DOUBLE_EQ(knob.getValue(), r.expected) << r.text;
    }
    clipboard::setHandlers({}, {});
}

TEST_F(KnobFixture, CentreDetentSnapsOnlyWhileDragging)
{
    knob.setRange(-1.0, 1.0, 0.0);
    knob.setCentreDetent(true, 0.05);
    EXPECT_DOUBLE_EQ(knob.snapValue(0.04, juce::Slider::absoluteDrag), 0.0);
    EXPECT_DOUBLE_EQ(knob.snapValue(0.06, juce::Slider::absoluteDrag), 0.06);
    EXPECT_DOUBLE_EQ(knob.snapValue(0.04, juce::Slider::notDragging), 0.04);
}
