#pragma once

#include "Knob.h"

#include <array>
#include <vector>

namespace ostrel::widgets
{

// Lays up to eight knobs out in equal cells; the knobs belong to the caller.
class KnobRow : public juce::Component
{
public:
    static constexpr int maxKnobs = 8;

    explicit KnobRow(KnobSize sizeClass = KnobSize::Small);
    ~KnobRow() override;

    void setKnobs(const std::vector<Knob*>& knobs);
    void setGapStep(int step);
    int getKnobCount() const noexcept { return count; }
    Knob* getKnob(int index) const { return index >= 0 && index < count ? knobs[(size_t) index] : nullptr; }
    int getGap() const noexcept { return gap; }

    void resized() override;

private:
    KnobSize sizeClass;
    std::array<Knob*, maxKnobs> knobs {};
    int count = 0;
    int gap = 12;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(KnobRow)
};

} // namespace ostrel::widgets
