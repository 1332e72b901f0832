#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

namespace
{
struct Expectation
{
    juce::String title;
    juce::AccessibilityRole role;
    juce::String value; // empty: no value interface expected
    bool wantsFocus;
};

// Handlers are only handed out on a desktop window; each control builds its own directly.
template <typename Control>
void check(Control& c, const Expectation& e)
{
    const auto handler = c.createAccessibilityHandler();
    ASSERT_NE(handler, nullptr) << e.title;
    EXPECT_EQ(handler->getTitle(), e.title);
    EXPECT_EQ(handler->getRole(), e.role) << e.title;
    EXPECT_EQ(c.getWantsKeyboardFocus(), e.wantsFocus) << e.title;
    if (e.value.isEmpty())
        return;
    ASSERT_NE(handler->getValueInterface(), nullptr) << e.title;
    EXPECT_EQ(handler->getValueInterface()->getCurrentValueAsString(), e.value) << e.title;
}
} // namespace

TEST(WidgetAccessibility, ControlsExposeNameRoleValueAndFocus)
{
    using Role = juce::AccessibilityRole;

    Knob knob;
    knob.setLabel("Resonance");
    knob.setValue(0.5);
    check(knob, { "Resonance", Role::slider, "0.50", true });
    knob.setLabel("Cutoff");
    knob.setValueFormatter([](double v) { return juce::String(juce::roundToInt(v * 100)) + " %"; });
    knob.setValue(0.42);
    check(knob, { "Cutoff", Role::slider, "42 %", true });

    ValueChip chip("Glide");
    chip.setValue(0.25);
    check(chip, { "Glide", Role::slider, "0.25", true });

    BipolarBar bar;
    bar.setDisplayValue(0.35f);
    check(bar, { "Bipolar amount", Role::slider, "+35 %", false });
    bar.setInteractive(true);
    EXPECT_TRUE(bar.getWantsKeyboardFocus());

    PerformanceWheel wheel;
    wheel.setValue(0.6f, false);
    check(wheel, { "Performance wheel", Role::slider, "+60", true });
    PerformanceSlider slider;
    check(slider, { "Performance slider", Role::slider, "0", true });
    PressurePad pad;
    check(pad, { "Pressure pad", Role::slider, "0", true });
    slider.setLabel("Expression");
    EXPECT_EQ(slider.createAccessibilityHandler()->getTitle(), "Expression");

    PianoKeyboard keys;
    check(keys, { "Piano keyboard", Role::group, {}, true });
    EXPECT_EQ(keys.getHelpText(), "Play audition notes.");

    StepPhraseGrid grid;
    grid.setStepCount(3);
    grid.setStep(1, { 36, false, true, 0.8f });
    check(grid, { "Step phrase grid", Role::group, "rest, C2 accent, rest", true });

    SectionHeader header("Envelopes");
    check(header, { "Envelopes", Role::staticText, {}, true });
    header.setOnAction([] {});
    check(header, { "Envelopes", Role::button, {}, true });

    // Buttons and combo boxes bring the framework's own handlers; their titles are ours.
    Tab tab("Keys");
    EXPECT_EQ(tab.getButtonText(), "Keys");
    ParameterHost host;
    SegmentedControl segments(host.mode(), { "Saw", "Square", "Pulse" });
    EXPECT_EQ(segments.getCell(1)->getButtonText(), "Square");
    EXPECT_TRUE(segments.getCell(1)->getWantsKeyboardFocus());
    ChoiceDropdown dropdown(host.state, "mode", "Wave");
    EXPECT_TRUE(dropdown.getComboBox().getWantsKeyboardFocus());
}

TEST(WidgetAccessibility, ValuesSetThroughTheHandlerAreClamped)
{
    BipolarBar bar;
    bar.setInteractive(true);
    float reported = 0.0f;
    bar.onValueChanged = [&](float v) { reported = v; };
    bar.createAccessibilityHandler()->getValueInterface()->setValue(5.0);
    EXPECT_FLOAT_EQ(bar.getValue(), 1.0f);
    EXPECT_FLOAT_EQ(reported, 1.0f);

    Knob knob;
    knob.createAccessibilityHandler()->getValueInterface()->setValue(3.0);
    EXPECT_DOUBLE_EQ(knob.getValue(), 1.0);

    PerformanceWheel wheel;
    wheel.createAccessibilityHandler()->getValueInterface()->setValueAsString("not a number");
    EXPECT_FLOAT_EQ(wheel.getValue(), 0.0f);
    wheel.createAccessibilityHandler()->getValueInterface()->setValueAsString("-0.5");
    EXPECT_FLOAT_EQ(wheel.getValue(), -0.5f);
}
