#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

TEST(WidgetVocabulary, SpacingStepsAndTextRoles)
{
    const int expected[] = { 0, 4, 8, 12, 16, 24, 8, 12, 0, 0 };
    for (int step = -1; step < 9; ++step)
        EXPECT_EQ(spacingStep(step), step < 0 ? 0 : expected[step]) << step;

    const struct { TextRole role; float height; bool bold; const char* shown; } roles[] = {
        { 0, 20, true, "Osc" }, { 1, 18, true, "Osc" }, { 2, 13, true, "OSC" }, { 3, 14, false, "Osc" },
        { 4, 11, false, "Osc" }, { 5, 11, false, "Osc" }, { 6, 10, true, "OSC" }, { 42, 14, false, "Osc" },
    };
    for (const auto& r : roles)
    {
        EXPECT_FLOAT_EQ(roleFont(r.role).getHeight(), r.height) << r.role;
        EXPECT_EQ(roleFont(r.role).isBold(), r.bold) << r.role;
        EXPECT_EQ(roleText(r.role, "Osc"), r.shown) << r.role;
    }
}

TEST(WidgetValueChip, TypedValuesDragAndArrows)
{
    ParameterHost host;
    ValueChip chip(host.state, "cutoff", "Cutoff");
    EXPECT_EQ(chip.getWidth(), 96);
    EXPECT_EQ(chip.getTitle(), "Cutoff");
    EXPECT_FALSE(chip.getVelocityBasedMode()) << "an absolute drag";

    const struct { const char* text; bool accepted; float expected; } rows[] = {
        { "440", true, 440.0f }, { "25000", true, 20000.0f }, { "3", true, 20.0f }, { "loud", false, 1000.0f },
        { "25000 Hz", false, 1000.0f }, // the chip shows no unit, so a typed one means nothing to it
    };
    for (const auto& r : rows)
    {
        chip.setValue(1000.0, juce::sendNotificationSync);
        EXPECT_EQ(chip.applyTypedValue(r.text), r.accepted) << r.text;
        EXPECT_NEAR(host.raw("cutoff"), r.expected, 1e-3) << r.text;
    }

    Mouse mouse { chip };
    mouse.move({ 10, 10 });
    chip.mouseEnter(mouse.event({ 10, 10 }, {}));
    EXPECT_TRUE(chip.isHovered());
    mouse.down({ 10, 10 });
    EXPECT_TRUE(chip.isPressed());
    mouse.up({ 10, 10 });
    EXPECT_FALSE(chip.isPressed());
}

TEST(WidgetValueChip, NarrowChipsDrawNoArrows)
{
    // The chevrons stand in the right 12 pixels of the content; a chip under 29 wide has none.
    ValueChip chip("");
    chip.setValueFormatter([](double) { return juce::String(); });
    const auto arrowsDrawn = [&](int width) {
        chip.setSize(width, 44);
        const auto image = render(chip);
        const auto muted = paletteColour(textMuted);
        for (int y = 12; y < 32; ++y)
            for (int x = 8; x < width - 8; ++x)
                if (near(image.getPixelAt(x, y), muted, 40))
                    return true;
        return false;
    };
    EXPECT_TRUE(arrowsDrawn(29));
    EXPECT_FALSE(arrowsDrawn(28));
    chip.setArrowsVisible(false);
    EXPECT_FALSE(arrowsDrawn(96));
}

TEST(WidgetBipolarBar, MappingGesturesKeysAndText)
{
    BipolarBar bar;
    std::vector<float> values;
    int starts = 0, ends = 0;
    bar.onGestureStart = [&] { ++starts; };
    bar.onGestureEnd = [&] { ++ends; };
    bar.onValueChanged = [&](float v) { values.push_back(v); };
    Mouse mouse { bar };

    mouse.click({ 189, 22 });
    EXPECT_TRUE(values.empty()) << "not interactive yet";

    bar.setInteractive(true);
    const struct { float x; float expected; } rows[] = { { 189, 0.5f }, { 0, -1.0f }, { 400, 1.0f }, { 126, 0.0f } };
    for (const auto& r : rows)
    {
        mouse.click({ r.x, 22 });
        EXPECT_NEAR(bar.getValue(), r.expected, 1e-6) << r.x;
    }
    EXPECT_EQ(std::make_pair(starts, ends), std::make_pair(4, 4));

    const struct { int key; float expected; } keys[] = {
        { juce::KeyPress::rightKey, 0.02f }, { juce::KeyPress::upKey, 0.04f }, { juce::KeyPress::downKey, 0.02f },
        { juce::KeyPress::spaceKey, 0.0f },
    };
    for (const auto& k : keys)
    {
        EXPECT_TRUE(bar.keyPressed(juce::KeyPress(k.key)));
        EXPECT_NEAR(bar.getValue(), k.expected, 1e-6) << k.key;
    }
    EXPECT_FALSE(bar.keyPressed(juce::KeyPress('a')));

    values.clear();
    bar.setDisplayValue(-3.0f);
    EXPECT_FLOAT_EQ(bar.getValue(), -1.0f);
    EXPECT_TRUE(values.empty()) << "display values call nothing";
    mouse.doubleClick({ 10, 22 });
    EXPECT_FLOAT_EQ(bar.getValue(), 0.0f);

    const struct { float v; const char* text; } texts[] = { { -0.004f, "0 %" }, { 0.004f, "0 %" }, { 0.5f, "+50 %" }, { -1.0f, "-100 %" } };
    for (const auto& t : texts)
        EXPECT_EQ(BipolarBar::valueText(t.v), t.text) << t.v;
}

TEST(WidgetKnobRow, KeepsEightKnobsInEqualCells)
{
    std::vector<std::unique_ptr<Knob>> owned;
    std::vector<Knob*> knobs;
    for (int i = 0; i < 10; ++i)
    {
        owned.push_back(std::make_unique<Knob>(KnobSize::Small));
        knobs.push_back(owned.back().get());
    }
    KnobRow row(KnobSize::Small);
    row.setSize(8 * 96 + 7 * 12, 100);
    row.setKnobs(knobs);
    EXPECT_EQ(row.getKnobCount(), 8);
    EXPECT_EQ(row.getNumChildComponents(), 8);
    EXPECT_EQ(owned[8]->getParentComponent(), nullptr);
    EXPECT_EQ(owned[3]->getBounds(), juce::Rectangle<int>(3 * 108, 0, 96, 100));

    row.setGapStep(1);
    row.setSize(300, 80);
    EXPECT_EQ(owned[0]->getWidth(), (300 - 7 * 4) / 8);
    EXPECT_EQ(owned[0]->getHeight(), 80);

    row.setKnobs({ knobs[0], knobs[1] });
    EXPECT_EQ(row.getNumChildComponents(), 2);
}

TEST(WidgetFieldBox, ContentBelowTheCaption)
{
    FieldBox box("Mode");
    juce::Component content;
    box.setSize(200, 120);
    box.setContent(&content);
    EXPECT_EQ(content.getBounds(), juce::Rectangle<int>(12, 52, 176, 44));
    box.setCompact(true);
    EXPECT_EQ(content.getBounds(), juce::Rectangle<int>(0, 22, 200, 44));
    box.setSize(10, 30);
    EXPECT_EQ(content.getBounds(), juce::Rectangle<int>(0, 22, 10, 8));
}

TEST(WidgetValueChip, VerticalDragMovesTheValueUpward)
{
    ValueChip chip("Amount");
    chip.setValue(0.5);
    Mouse mouse { chip };
    const auto dragBy = [&](float step) {
        mouse.down({ 48, 22 });
        for (int i = 1; i <= 5; ++i)
            mouse.drag({ 48, 22.0f + step * (float) i });
        mouse.up({ 48, 22.0f + step * 5.0f });
        return chip.getValue();
    };
    // 250 pixels cover the range, a tenth as fast with Shift; a stepped range steps cleanly.
    EXPECT_NEAR(dragBy(-10.0f), 0.7, 1e-9);
    EXPECT_NEAR(dragBy(10.0f), 0.5, 1e-9);
    mouse.down({ 48, 22 });
    mouse.drag({ 48, -28 }, juce::ModifierKeys::shiftModifier);
    mouse.up({ 48, -28 });
    EXPECT_NEAR(chip.getValue(), 0.52, 1e-9);
    chip.setRange(-12.0, 12.0, 1.0);
    chip.setValue(0.0);
    for (int pixels : { 10, 21, 104 })
    {
        chip.setValue(0.0);
        mouse.down({ 48, 200 });
        mouse.drag({ 48, 200.0f - (float) pixels });
        mouse.up({ 48, 200.0f - (float) pixels });
        EXPECT_EQ(chip.getValue(), std::round(pixels * 24.0 / 250.0)) << pixels;
    }
}
