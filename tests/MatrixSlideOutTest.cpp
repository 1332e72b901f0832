#include "TestHelpers.h"

#include "ui/Editor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/MatrixSlideOut.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui;

TEST (RoutingRow, FollowsItsSlotAndWritesOnlyIt)
{
    MorvaneAudioProcessor p;
    auto raw = [&p] (const char* id) { return p.getParameterTree().getRawParameterValue (id)->load(); };
    test::setParameter (p, "mod3Source", 0.0f);
    test::setParameter (p, "mod3Dest", 4.0f);
    widgets::RoutingRow row (p.getParameterTree(), 3);
    row.setBounds (0, 0, 620, 88);
    settle (30);
    EXPECT_EQ (row.getSourceChip().getText(), "OFF");
    EXPECT_TRUE (row.getSourceChip().hasOffLook());
    EXPECT_FALSE (row.getAmountBar().isVisible());

    row.chooseSource (5);
    settle (30);
    EXPECT_EQ (raw ("mod3Source"), 5.0f);
    EXPECT_FALSE (row.getSourceChip().hasOffLook());
    EXPECT_TRUE (row.getAmountBar().isVisible());
    EXPECT_EQ (row.getSourceChip().getSourceId(), "lfo1");

    test::setParameter (p, "mod3Amount", -0.4f);
    settle (30);
    EXPECT_NEAR (row.getAmountBar().getValue(), -0.4f, 1e-4f) << "the bar follows the parameter";
    // The signed percentage stays at every width, with its room beside the bar.
    for (int width : { 620, 560, 520 })
    {
        row.setBounds (0, 0, width, 88);
        const auto& bar = row.getAmountBar();
        EXPECT_TRUE (bar.isValueTextVisible()) << width;
        EXPECT_GE (bar.getWidth() - bar.getBarWidth(), 52) << width;
    }

    row.clear();
    settle (30);
    EXPECT_EQ (raw ("mod3Source"), 0.0f);
    EXPECT_EQ (raw ("mod3Amount"), 0.0f);
    EXPECT_EQ (raw ("mod3Dest"), 4.0f) << "the destination stays";
    EXPECT_NE (row.getCurveControl(), nullptr);
}

TEST (MatrixSlideOut, RowsOnTheGridTheCloseButtonAndTheJumpFromAKnob)
{
    MorvaneAudioProcessor p;
    const auto dir = morvane::test::uniqueTempFile ("morvane-matrix");
    dir.createDirectory();
    test::setParameter (p, "mod2Source", 5.0f);
    test::setParameter (p, "mod2Dest", 1.0f);
    {
        Editor editor (p, dir.getChildFile ("s.settings"));
        editor.setActiveView (Editor::matrixView);
        auto& panel = dynamic_cast<widgets::MatrixSlideOut&> (editor.getViewPanel (Editor::matrixView));
        EXPECT_EQ (panel.getRow (1).getBounds(), juce::Rectangle<int> (16, 68, 620, 88));
        EXPECT_EQ (panel.getRow (8).getBounds(), juce::Rectangle<int> (648, 356, 620, 88));
        panel.getCloseButton().triggerClick();
        settle (30);
        EXPECT_EQ (editor.getActiveView(), 0);

        // A knob's "jump to matrix" opens view 3.
        auto& reveal = matrix::wiringOf (p).revealInMatrix;
        ASSERT_TRUE (reveal != nullptr);
        const int destination = panel.getRow (2).destinationIndex();
        ASSERT_EQ (destination, 1);
        reveal (destination);
        EXPECT_EQ (editor.getActiveView(), (int) Editor::matrixView);
        EXPECT_TRUE (panel.getRow (2).isMarked());
        editor.setActiveView (0);
        EXPECT_FALSE (panel.getRow (2).isMarked());
    }
    EXPECT_EQ (matrix::wiringOf (p).revealInMatrix, nullptr) << "the editor clears its hooks";
    matrix::forgetWiring (p);
    dir.deleteRecursively();
}
