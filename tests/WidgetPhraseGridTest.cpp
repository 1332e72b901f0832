#include "WidgetTestSupport.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

namespace
{
// 536 x 410 gives cells of exactly 30 pixels: rail 56 wide, ruler 20 high, 16 x 13 cells.
struct GridFixture : ::testing::Test
{
    GridFixture()
    {
        grid.setSize(536, 410);
        grid.onStepChanged = [this](int step, PhraseStep record) { changes.push_back({ step, record }); };
    }
    static juce::Point<float> cell(int step, int row) { return { 56.0f + 30.0f * step + 15.0f, 20.0f + 30.0f * row + 15.0f }; }
    static int noteOfRow(int row) { return 36 + 12 - row; }

    StepPhraseGrid grid;
    Mouse mouse { grid };
    std::vector<std::pair<int, PhraseStep>> changes;
};
} // namespace

TEST_F(GridFixture, LayoutAndHitTesting)
{
    const auto l = grid.layout();
    EXPECT_FLOAT_EQ(l.cell, 30.0f);
    EXPECT_EQ(l.grid, juce::Rectangle<float>(56, 20, 480, 390));
    const struct { float x; int step; } steps[] = { { 10, -1 }, { 56, 0 }, { 85.9f, 0 }, { 86, 1 }, { 535, 15 }, { 900, 15 } };
    for (const auto& s : steps)
        EXPECT_EQ(grid.stepAt(s.x), s.step) << s.x;
    const struct { float y; int row; } rows[] = { { 0, 0 }, { 20, 0 }, { 50, 1 }, { 409, 12 }, { 2000, 12 } };
    for (const auto& r : rows)
        EXPECT_EQ(grid.rowAt(r.y), r.row) << r.y;
}

TEST_F(GridFixture, PlaceMoveDeleteAndRest)
{
    mouse.click(cell(0, 12));
    EXPECT_EQ(grid.getStep(0).note, 36);
    EXPECT_FLOAT_EQ(grid.getStep(0).velocity, 0.72f);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].first, 0);

    mouse.click(cell(0, 5)); // pressing a placed step at another row moves it
    EXPECT_EQ(grid.getStep(0).note, noteOfRow(5));

    mouse.click(cell(0, 5), left.withFlags(alt.getRawFlags()));
    EXPECT_EQ(grid.getStep(0).note, -1);

    mouse.click(cell(3, 2));
    grid.setEditMode(StepPhraseGrid::eraseMode);
    mouse.click(cell(3, 9));
    EXPECT_EQ(grid.getStep(3), PhraseStep {});
    EXPECT_EQ(changes.size(), 5u);

    // Accent with the right button, also on a rest; tie mode on a rest draws.
    grid.setEditMode(StepPhraseGrid::drawMode);
    mouse.click(cell(6, 1), right);
    EXPECT_TRUE(grid.getStep(6).accent);
    EXPECT_EQ(grid.getStep(6).note, -1);
    grid.setEditMode(StepPhraseGrid::tieMode);
    mouse.click(cell(8, 4));
    EXPECT_EQ(grid.getStep(8).note, noteOfRow(4));
    EXPECT_FALSE(grid.getStep(8).tied);
    mouse.click(cell(8, 4));
    EXPECT_TRUE(grid.getStep(8).tied);
}

TEST_F(GridFixture, DragLaysNotesThenRaisesTheLastVelocity)
{
    mouse.down(cell(2, 6));
    mouse.drag(cell(3, 6));
    mouse.drag(cell(4, 3));
    mouse.drag(cell(4, 3) + juce::Point<float>(0, 1)); // within 3 pixels: nothing
    EXPECT_EQ(grid.getStep(2).note, noteOfRow(6));
    EXPECT_EQ(grid.getStep(3).note, noteOfRow(6));
    EXPECT_EQ(grid.getStep(4).note, noteOfRow(3));
    EXPECT_FLOAT_EQ(grid.getStep(4).velocity, 0.72f);

    const struct { float dy; float expected; } rows[] = { { -3, 0.72f }, { -4, 0.72f + 4.0f / 120.0f }, { -40, 1.0f }, { 200, 0.05f } };
    for (const auto& r : rows)
    {
        mouse.drag(cell(4, 3) + juce::Point<float>(0, r.dy));
        EXPECT_NEAR(grid.getStep(4).velocity, r.expected, 1e-6) << r.dy;
    }
    mouse.up(cell(4, 3));
    EXPECT_EQ(grid.getStep(4).note, noteOfRow(3)) << "a velocity drag keeps the pitch";
}

TEST_F(GridFixture, ShiftTiesAndTheWritePathClamps)
{
    mouse.click(cell(0, 4));
    mouse.click(cell(1, 4));
    mouse.click(cell(1, 4), left.withFlags(shift.getRawFlags()));
    EXPECT_TRUE(grid.getStep(1).tied);
    mouse.click(cell(2, 0), left.withFlags(shift.getRawFlags()));
    EXPECT_EQ(grid.getStep(2).note, noteOfRow(0)) << "Shift on a rest draws";

    grid.setStep(5, { 100, false, false, -1.0f });
    EXPECT_EQ(grid.getStep(5).note, 48);
    EXPECT_FLOAT_EQ(grid.getStep(5).velocity, 0.05f);
    grid.setStep(5, { -7, false, false, 3.0f });
    EXPECT_EQ(grid.getStep(5).note, -1);
    EXPECT_FLOAT_EQ(grid.getStep(5).velocity, 1.0f);
}

TEST_F(GridFixture, StepAndRowLimits)
{
    const struct { int asked, steps; } stepRows[] = { { 20, 16 }, { 0, 1 }, { 8, 8 }, { 16, 16 } };
    for (const auto& r : stepRows)
    {
        grid.setStepCount(r.asked);
        EXPECT_EQ(grid.getStepCount(), r.steps) << r.asked;
    }
    const size_t before = changes.size();
    grid.setStep(16, { 40, false, false, 0.5f });
    EXPECT_EQ(changes.size(), before);
    EXPECT_EQ(grid.getStep(16), PhraseStep {});

    const struct { int lowest, rows, expectLowest, expectRows; } ranges[] = {
        { 36, 13, 36, 13 }, { 0, 50, 0, 36 }, { 120, 13, 120, 8 }, { -5, 0, 0, 1 }, { 300, 4, 127, 1 },
    };
    for (const auto& r : ranges)
    {
        grid.setNoteRange(r.lowest, r.rows);
        EXPECT_EQ(std::make_pair(grid.getLowestNote(), grid.getRowCount()), std::make_pair(r.expectLowest, r.expectRows))
            << r.lowest << "," << r.rows;
    }

    grid.setPlayheadStep(40);
    EXPECT_EQ(grid.getPlayheadStep(), 15);
    grid.setStepCount(4);
    EXPECT_EQ(grid.getPlayheadStep(), -1);
    grid.setScale(-1, 0x1AB5);
    EXPECT_EQ(grid.getScaleRoot(), 11);
    EXPECT_EQ(grid.getScaleMask(), 0xAB5);
}

TEST_F(GridFixture, HoverAndClear)
{
    mouse.move(cell(5, 2));
    EXPECT_EQ(std::make_pair(grid.getHoverStep(), grid.getHoverRow()), std::make_pair(5, 2));
    mouse.exit(cell(5, 2));
    EXPECT_EQ(grid.getHoverStep(), -1);

    mouse.click(cell(1, 1));
    grid.setPlayheadStep(3);
    const size_t before = changes.size();
    grid.clearSteps();
    EXPECT_EQ(grid.getStep(1), PhraseStep {});
    EXPECT_EQ(grid.getPlayheadStep(), -1);
    EXPECT_EQ(changes.size(), before);
}
