#pragma once

#include "WidgetStyle.h"

#include <array>

namespace ostrel::widgets
{

// One step of an audition phrase; note -1 is a rest.
struct PhraseStep
{
    int note = -1;
    bool tied = false;
    bool accent = false;
    float velocity = 0.72f;

    bool operator==(const PhraseStep& o) const
    {
        return note == o.note && tied == o.tied && accent == o.accent && velocity == o.velocity;
    }
};

// Piano-roll editor of a short monophonic phrase. It keeps the phrase and draws it; the play
// overlay owns the clock, reads the steps and moves the playhead.
class StepPhraseGrid : public juce::Component
{
public:
    static constexpr int maxSteps = 16;
    static constexpr int maxRows = 36;
    enum EditMode { drawMode = 0, tieMode = 1, accentMode = 2, eraseMode = 3 };

    StepPhraseGrid();
    ~StepPhraseGrid() override;

    std::function<void(int step, PhraseStep record)> onStepChanged;

    void setNoteRange(int lowest, int rows);
    void setStepCount(int count);
    void setStepsPerBeat(int n);
    void setBeatsPerBar(int n);
    void setPlayheadStep(int step);
    void setScale(int root, int mask);
    void setRulerVisible(bool visible);
    void setNoteNamesVisible(bool visible);
    void setSquareCells(bool square);
    void setEditMode(int mode);
    void clearSteps();
    // The one write path: clamps the note into the rows and the velocity into 0.05..1.
    void setStep(int step, PhraseStep record);
    PhraseStep getStep(int step) const;

    int getLowestNote() const noexcept { return lowestNote; }
    int getRowCount() const noexcept { return rowCount; }
    int getStepCount() const noexcept { return stepCount; }
    int getPlayheadStep() const noexcept { return playheadStep; }
    int getEditMode() const noexcept { return editMode; }
    int getScaleRoot() const noexcept { return scaleRoot; }
    int getScaleMask() const noexcept { return scaleMask; }
    int getHoverStep() const noexcept { return hoverStep; }
    int getHoverRow() const noexcept { return hoverRow; }

    struct Layout
    {
        juce::Rectangle<float> ruler, rail, grid;
        float cell = 0.0f;
    };
    Layout layout() const;
    int stepAt(float x) const;
    int rowAt(float y) const;
    int rowOfNote(int note) const { return rowCount - 1 - (note - lowestNote); }

    void mouseMove(const juce::MouseEvent&) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseDown(const juce::MouseEvent&) override;
    void mouseDrag(const juce::MouseEvent&) override;
    void paint(juce::Graphics&) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    void editAt(const juce::MouseEvent& e, bool isPress);
    void updateHover(float x, float y);
    void paintRows(juce::Graphics&, const Layout&) const;
    void paintLines(juce::Graphics&, const Layout&) const;
    void paintNotes(juce::Graphics&, const Layout&) const;
    void paintHover(juce::Graphics&, const Layout&) const;

    int lowestNote = 36, rowCount = 13, stepCount = 16, stepsPerBeat = 4, beatsPerBar = 4;
    int playheadStep = -1, lastEditStep = -1, dragStep = -1, hoverStep = -1, hoverRow = -1;
    int scaleRoot = 0, scaleMask = 0xFFF;
    bool rulerVisible = true, noteNamesVisible = true, squareCells = true;
    int editMode = drawMode;
    juce::Point<int> pressPosition;
    float pressVelocity = 0.72f;
    std::array<PhraseStep, maxSteps> steps {};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(StepPhraseGrid)
};

} // namespace ostrel::widgets
