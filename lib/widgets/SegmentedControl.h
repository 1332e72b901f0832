#pragma once

#include "FieldBox.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <vector>

namespace ostrel::widgets
{

// One toggling cell of a segmented control.
class SegmentCell : public juce::Button
{
public:
    explicit SegmentCell(const juce::String& text);
    ~SegmentCell() override;

    int naturalWidth() const;
    void paintButton(juce::Graphics&, bool isMouseOver, bool isButtonDown) override;

private:
    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(SegmentCell)
};

// A row of cells that writes a choice parameter and follows it.
class SegmentedControl : public juce::Component, private juce::AsyncUpdater
{
public:
    SegmentedControl(juce::AudioParameterChoice& parameter, const juce::StringArray& labels);
    ~SegmentedControl() override;

    std::function<void(int)> onChanged;
    // Asked before a click writes its choice; returning true means the host has written it.
    std::function<bool(int)> onChoosing;

    void setGapStep(int step);
    SegmentCell* getCell(int index) const;
    int getNumCells() const noexcept { return (int) cells.size(); }
    int getTotalWidth() const noexcept { return totalWidth; }
    int getGap() const noexcept { return gap; }
    // Brings the cells in line with the parameter now; a parameter change does it asynchronously.
    void refreshFromParameter();

    void resized() override;

private:
    struct ParamListener : juce::AudioProcessorParameter::Listener
    {
        explicit ParamListener(SegmentedControl& o) : owner(o) {}
        void parameterValueChanged(int, float) override;
        void parameterGestureChanged(int, bool) override {}
        SegmentedControl& owner;
    };

    void handleAsyncUpdate() override { refreshFromParameter(); }
    void choose(int index);
    void updateTotalWidth();

    juce::AudioParameterChoice& parameter;
    std::vector<std::unique_ptr<SegmentCell>> cells;
    std::vector<int> naturalWidths;
    int gap = 0;
    int totalWidth = 0;
    int radioGroup;
    ParamListener listener { *this };

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(SegmentedControl)
};

// A segmented control (or any control) under a caption.
class SegmentField : public FieldBox
{
public:
    SegmentField(const juce::String& label, juce::Component* content);
};

} // namespace ostrel::widgets
