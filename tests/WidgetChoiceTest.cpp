#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

TEST(WidgetChoiceDropdown, FollowsAChoiceParameter)
{
    ParameterHost host;
    ChoiceDropdown dropdown(host.state, "mode", "Wave");
    auto& box = dropdown.getComboBox();
    ASSERT_EQ(box.getNumItems(), 3);
    EXPECT_EQ(box.getItemText(1), "SQUARE");
    EXPECT_EQ(box.getTitle(), "Wave");
    EXPECT_EQ(box.getHelpText(), "Choose wave.");
    EXPECT_TRUE(dropdown.isAttached());
    EXPECT_EQ(dropdown.getSelectedId(), 1);

    dropdown.setSelectedId(3, juce::sendNotificationSync);
    EXPECT_EQ(host.mode().getIndex(), 2);

    ChoiceDropdown notAChoice(host.state, "cutoff", "Cutoff");
    EXPECT_EQ(notAChoice.getComboBox().getNumItems(), 0);
    EXPECT_FALSE(notAChoice.isAttached());
    ChoiceDropdown missing(host.state, "nothing", "Nothing");
    EXPECT_FALSE(missing.isAttached());
}

TEST(WidgetChoiceDropdown, PreferredWidthHasAFloor)
{
    ChoiceDropdown normal("A");
    normal.addItem("X", 1);
    EXPECT_EQ(normal.preferredWidth(), 88);
    HeaderChoice compact("B");
    compact.addItem("X", 1);
    EXPECT_TRUE(compact.isCompact());
    EXPECT_TRUE((bool) compact.getComboBox().getProperties()["morvane.compactChoice"]);
    EXPECT_EQ(compact.preferredWidth(), 56);
    const juce::String longName("A RATHER LONG CHOICE NAME");
    normal.addItem(longName, 2);
    EXPECT_EQ(normal.preferredWidth(), (int) std::ceil(roleFont(5).getStringWidthFloat(longName)) + 42);
}

TEST(WidgetSegmentedControl, ClicksWriteOnceAndCellsFollowTheParameter)
{
    ParameterHost host;
    SegmentedControl control(host.mode(), { "Saw", "Square", "Pulse" });
    std::vector<int> changes;
    control.onChanged = [&](int i) { changes.push_back(i); };
    ASSERT_EQ(control.getNumCells(), 3);
    EXPECT_TRUE(control.getCell(0)->getToggleState());
    EXPECT_EQ(control.getWidth(), control.getTotalWidth());
    EXPECT_EQ(control.getCell(5), nullptr);

    const auto clickCell = [&](int i) { control.getCell(i)->triggerClick(); pump(30); };
    clickCell(2);
    EXPECT_EQ(host.mode().getIndex(), 2);
    EXPECT_TRUE(control.getCell(2)->getToggleState());
    EXPECT_FALSE(control.getCell(0)->getToggleState());
    clickCell(2);
    EXPECT_EQ(changes, std::vector<int>({ 2 })) << "the cell already on writes nothing";
    EXPECT_TRUE(control.getCell(2)->getToggleState());

    host.mode().setValueNotifyingHost(host.mode().convertTo0to1(1.0f));
    pump(30);
    EXPECT_TRUE(control.getCell(1)->getToggleState());
    EXPECT_FALSE(control.getCell(2)->getToggleState());
    EXPECT_EQ(changes.size(), 1u) << "following the parameter calls nothing";
}

TEST(WidgetSegmentedControl, LayoutSharesTheWidth)
{
    ParameterHost host;
    SegmentedControl control(host.mode(), { "A", "B", "C" });
    control.setSize(100, 44);
    EXPECT_EQ(control.getCell(0)->getWidth(), 34);
    EXPECT_EQ(control.getCell(1)->getWidth(), 33);
    EXPECT_EQ(control.getCell(2)->getX(), 67);

    const int natural = control.getTotalWidth();
    control.setGapStep(2);
    EXPECT_EQ(control.getTotalWidth(), natural + 16);
    EXPECT_EQ(control.getWidth(), natural + 16);
    EXPECT_EQ(control.getCell(0)->naturalWidth(), 44) << "a short label keeps the floor";

    SegmentField field("Wave", &control);
    EXPECT_EQ(field.getContent(), &control);
}
