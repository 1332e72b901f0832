#include "SegmentedControl.h"

#include <atomic>

namespace ostrel::widgets
{
namespace
{
int nextRadioGroup()
{
    static std::atomic<int> counter { 0 };
    return ++counter;
}
} // namespace

SegmentCell::SegmentCell(const juce::String& text) : juce::Button(text)
{
    setClickingTogglesState(true);
    setWantsKeyboardFocus(true);
    setMouseCursor(juce::MouseCursor::PointingHandCursor);
    setSize(naturalWidth(), 44);
}

SegmentCell::~SegmentCell() = default;

int SegmentCell::naturalWidth() const { return std::max(roleTextWidth(2, getButtonText()) + 24, 44); }

void SegmentCell::paintButton(juce::Graphics& g, bool over, bool down)
{
    const bool on = getToggleState();
    const bool focused = hasKeyboardFocus(false);
    const auto bounds = getLocalBounds().toFloat();

    g.setColour(paletteColour(on ? accentSelection : surfaceOverlay));
    g.fillRoundedRectangle(bounds, 2.0f);
    g.setColour(paletteColour(focused ? borderFocus : borderSubtle));
    g.drawRoundedRectangle(bounds.reduced(0.5f), 2.0f, (over || down || focused) ? 2.0f : 1.0f);
    if (on)
    {
        g.setColour(paletteColour(textPrimary));
        g.fillRect(bounds.withHeight(2.0f));
    }
    const int text = ! isEnabled() ? textDisabled : (on || over) ? textPrimary : textMuted;
    drawRoleText(g, 2, getButtonText(), getLocalBounds(), paletteColour(text), 36);
}

// --- SegmentedControl ----------------------------------------------------------------------

SegmentedControl::SegmentedControl(juce::AudioParameterChoice& p, const juce::StringArray& labels)
    : parameter(p), radioGroup(nextRadioGroup())
{
    setTitle(p.getName(64));
    for (int i = 0; i < labels.size(); ++i)
    {
        auto cell = std::make_unique<SegmentCell>(labels[i]);
        cell->setRadioGroupId(radioGroup);
        cell->onClick = [this, i] { choose(i); };
        naturalWidths.push_back(cell->naturalWidth());
        addAndMakeVisible(*cell);
        cells.push_back(std::move(cell));
    }
    parameter.addListener(&listener);
    refreshFromParameter();
    updateTotalWidth();
    setSize(totalWidth, 44);
}

SegmentedControl::~SegmentedControl()
{
    parameter.removeListener(&listener);
    cancelPendingUpdate();
    cells.clear();
}

void SegmentedControl::updateTotalWidth()
{
    totalWidth = 0;
    for (int w : naturalWidths)
        totalWidth += w;
    totalWidth += std::max(0, (int) cells.size() - 1) * gap;
}

void SegmentedControl::setGapStep(int step)
{
    const int newGap = spacingStep(step);
    if (newGap == gap)
        return;
    gap = newGap;
    updateTotalWidth();
    setSize(totalWidth, 44);
    resized();
}

SegmentCell* SegmentedControl::getCell(int index) const
{
    return index >= 0 && index < (int) cells.size() ? cells[(size_t) index].get() : nullptr;
}

void SegmentedControl::choose(int index)
{
    if (parameter.getIndex() == index)
        return;
    if (onChoosing && onChoosing(index))
    {
        if (onChanged)
            onChanged(index);
        return;
    }
    parameter.beginChangeGesture();
    parameter.setValueNotifyingHost(parameter.convertTo0to1((float) index));
    parameter.endChangeGesture();
    if (onChanged)
        onChanged(index);
}

void SegmentedControl::refreshFromParameter()
{
    const int index = parameter.getIndex();
    for (size_t i = 0; i < cells.size(); ++i)
        cells[i]->setToggleState((int) i == index, juce::dontSendNotification);
}

void SegmentedControl::ParamListener::parameterValueChanged(int, float)
{
    // Any thread may call here: post only, through a message that needs no allocation.
    owner.triggerAsyncUpdate();
}

void SegmentedControl::resized()
{
    const int n = (int) cells.size();
    if (n == 0)
        return;
    const int available = std::max(getWidth() - (n - 1) * gap, 0);
    const int base = available / n, extra = available % n;
    int x = 0;
    for (int i = 0; i < n; ++i)
    {
        const int w = base + (i < extra ? 1 : 0);
        cells[(size_t) i]->setBounds(x, 0, w, getHeight());
        x += w + gap;
    }
}

SegmentField::SegmentField(const juce::String& label, juce::Component* content) : FieldBox(label)
{
    setContent(content);
}

} // namespace ostrel::widgets
