#include "ui/widgets/SettingsPanel.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane::ui::widgets;
using morvane::test::settle;

TEST (SettingsPanel, TabsAndTheThemeBoxShowWhatTheSettersSay)
{
    SettingsPanel panel;
    panel.setBounds (0, 0, 420, 636);
    panel.setScale (1.25f);
    const bool expected[] = { false, false, true, false };
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ (panel.scaleTabs[(size_t) i].getToggleState(), expected[i]) << i;
    panel.setTooltips (false);
    EXPECT_FALSE (panel.tooltipsOn.getToggleState());
    EXPECT_TRUE (panel.tooltipsOff.getToggleState());

    EXPECT_EQ (panel.themeBox.getNumItems(), 18);
    panel.setThemeName ("untitled");
    EXPECT_EQ (panel.themeBox.getText(), "Velvet Reactor");
    panel.setThemeName ("custom");
    EXPECT_EQ (panel.themeBox.getText(), "Custom");
    EXPECT_EQ (panel.themeBox.getSelectedId(), 0);

    // Geometry of the column: the theme buttons split two to one.
    EXPECT_EQ (panel.importThemeButton.getWidth(), 256);
    EXPECT_EQ (panel.themeFolderButton.getWidth(), 128);
    EXPECT_EQ (panel.frameworkLabel.getBottom(), 636 - 16);
}

TEST (SettingsPanel, ControlsCallBack)
{
    SettingsPanel panel;
    float scale = 0;
    juce::String theme = "none";
    juce::File dropped;
    int tooltips = -1;
    panel.onDisplayScale = [&] (float s) { scale = s; };
    panel.onThemeChosen = [&] (const juce::String& id) { theme = id; };
    panel.onThemeFileDropped = [&] (const juce::File& f) { dropped = f; };
    panel.onTooltips = [&] (bool b) { tooltips = b ? 1 : 0; };

    panel.scaleTabs[3].triggerClick();
    panel.tooltipsOff.triggerClick();
    settle();
    EXPECT_EQ (scale, 1.5f);
    EXPECT_FALSE (panel.scaleTabs[3].getToggleState()) << "the tab turns on only by the editor's answer";
    EXPECT_EQ (tooltips, 0);

    panel.setThemeName ("dark");
    panel.themeBox.setSelectedId (7);
    settle();
    EXPECT_EQ (theme, "halogenMint");
    theme = "none";
    panel.themeBox.setSelectedId (7);
    settle();
    EXPECT_EQ (theme, "none") << "the item already selected calls nothing";

    EXPECT_FALSE (panel.isInterestedInFileDrag ({ "/a/b.txt" }));
    EXPECT_TRUE (panel.isInterestedInFileDrag ({ "/a/b.txt", "/a/c.JSON" }));
    panel.filesDropped ({ "/a/b.txt", "/a/c.json", "/a/d.json" }, 0, 0);
    EXPECT_EQ (dropped.getFullPathName(), "/a/c.json");
}
