#include "KnobRow.h"

namespace ostrel::widgets
{

KnobRow::KnobRow(KnobSize size) : sizeClass(size) {}

KnobRow::~KnobRow() = default;

void KnobRow::setKnobs(const std::vector<Knob*>& newKnobs)
{
    for (int i = 0; i < count; ++i)
        if (knobs[(size_t) i] != nullptr)
            removeChildComponent(knobs[(size_t) i]);

    count = 0;
    for (auto* knob : newKnobs)
    {
        if (count == maxKnobs)
            break;
        if (knob == nullptr)
            continue;
        knobs[(size_t) count++] = knob;
        addAndMakeVisible(knob);
    }
    resized();
}

void KnobRow::setGapStep(int step)
{
    gap = spacingStep(step);
    resized();
}

void KnobRow::resized()
{
    if (count == 0)
        return;
    const auto geo = knobGeometry(sizeClass);
    const int cellWidth = std::max(0, (getWidth() - (count - 1) * gap) / count);
    int x = 0;
    for (int i = 0; i < count; ++i)
    {
        const bool last = i == count - 1;
        const int w = last ? std::max(0, getWidth() - x) : cellWidth;
        const auto cell = juce::Rectangle<int>(x, 0, w, getHeight());
        knobs[(size_t) i]->setBounds(cell.withSizeKeepingCentre(std::min(w, geo.width), std::min(getHeight(), geo.height)));
        x += cellWidth + gap;
    }
}

} // namespace ostrel::widgets
