#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

TEST(WidgetSectionFrame, FillFollowsThePaletteAndContentThePadding)
{
    SectionFrame frame;
    frame.setSize(200, 100);
    bool self = true, children = false;
    frame.getInterceptsMouseClicks(self, children);
    EXPECT_EQ(std::make_pair(self, children), std::make_pair(false, true));

    EXPECT_TRUE(near(render(frame).getPixelAt(100, 50), paletteColour(surfaceRaised), 1));
    frame.setFillIndex(surfaceBase);
    EXPECT_TRUE(near(render(frame).getPixelAt(100, 50), paletteColour(surfaceBase), 1));
    {
        ScopedTheme light(lightTheme());
        EXPECT_TRUE(near(render(frame).getPixelAt(100, 50), juce::Colour(0xffe5dac0), 1)) << "read at paint time";
        EXPECT_EQ(render(frame).getPixelAt(0, 0).getAlpha(), 0) << "the rounded corner stays clear";
    }

    juce::Component content;
    frame.setPadding(-4);
    EXPECT_EQ(frame.getPadding(), 0);
    frame.setPadding(16);
    frame.setContent(&content);
    EXPECT_EQ(content.getBounds(), juce::Rectangle<int>(16, 16, 168, 68));
    frame.setSize(20, 20);
    EXPECT_EQ(frame.contentBounds(), juce::Rectangle<int>(16, 16, 0, 0));
}

TEST(WidgetBypassablePanel, BypassDimsChildrenAndSaysSo)
{
    BypassablePanel panel("Filter");
    panel.setSize(400, 200);
    EXPECT_EQ(panel.getTitle().getBounds(), juce::Rectangle<int>(20, 8, 360 - 48, 22));
    EXPECT_EQ(panel.headerReservedWidth(), 48);

    auto first = std::make_unique<juce::Component>();
    juce::Component second;
    panel.addDimmedChild(first.get());
    panel.setActive(false);
    EXPECT_EQ(panel.getTitle().getActionText(), "BYPASSED");
    EXPECT_FLOAT_EQ(first->getAlpha(), 0.4f);
    panel.addDimmedChild(&second);
    EXPECT_FLOAT_EQ(second.getAlpha(), 0.4f);
    first.reset(); // a destroyed child is skipped
    panel.setActive(true);
    EXPECT_EQ(panel.getTitle().getActionText(), "");
    EXPECT_FLOAT_EQ(second.getAlpha(), 1.0f);

    juce::Component toggle;
    panel.setHeaderControl(&toggle, 36);
    EXPECT_EQ(panel.headerReservedWidth(), 40);
    EXPECT_EQ(toggle.getBounds(), juce::Rectangle<int>(344, 12, 36, 22));
    EXPECT_EQ(panel.getTitle().getRight(), 340);
}

TEST(WidgetSectionHeader, ActionRunsByMouseAndKeys)
{
    SectionHeader header("Envelopes");
    int actions = 0;
    header.setActionText("Reset");
    header.setActionTooltip("Reset all envelopes.");
    Mouse mouse { header };
    const auto action = header.getActionBounds();
    ASSERT_FALSE(action.isEmpty());
    EXPECT_EQ(action.getRight(), 420);

    mouse.move(action.getCentre().toFloat());
    EXPECT_FALSE(header.isActionHovered()) << "no action installed";
    header.mouseDown(mouse.event(action.getCentre().toFloat(), left));
    EXPECT_EQ(actions, 0);

    header.setOnAction([&] { ++actions; });
    mouse.move(action.getCentre().toFloat());
    EXPECT_TRUE(header.isActionHovered());
    EXPECT_EQ(header.getTooltip(), "Reset all envelopes.");
    mouse.click(action.getCentre().toFloat());
    mouse.click({ 5.0f, 20.0f });
    EXPECT_TRUE(header.keyPressed(juce::KeyPress(juce::KeyPress::returnKey)));
    EXPECT_FALSE(header.keyPressed(juce::KeyPress('q')));
    EXPECT_EQ(actions, 2);
    mouse.exit({ 0, 0 });
    EXPECT_FALSE(header.isActionHovered());

    header.setSize(60, 44);
    header.setActionText("A very long action");
    EXPECT_EQ(header.getActionBounds().getWidth(), 30) << "never more than half the row";

    SectionTitle title("Oscillator");
    title.setStatusText("BYPASSED");
    EXPECT_EQ(title.getTextRole(), 1);
    EXPECT_FALSE(title.hasAction());
}

TEST(WidgetTab, TogglesOnClick)
{
    Tab tab("Keys");
    EXPECT_EQ(tab.getWidth(), 96);
    EXPECT_TRUE(tab.getClickingTogglesState());
    EXPECT_TRUE(tab.getWantsKeyboardFocus());
    tab.triggerClick();
    pump(20);
    EXPECT_TRUE(tab.getToggleState());
}
