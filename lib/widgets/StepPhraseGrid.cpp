#include "StepPhraseGrid.h"
#include "Accessibility.h"

namespace ostrel::widgets
{

StepPhraseGrid::StepPhraseGrid()
{
    setSize(824, 412);
    setMouseCursor(juce::MouseCursor::PointingHandCursor);
    setWantsKeyboardFocus(true);
    setTitle("Step phrase grid");
    setHelpText("Edit a short monophonic audition phrase. Drag up on a placed note to raise its velocity.");
}

StepPhraseGrid::~StepPhraseGrid() = default;

// --- configuration -------------------------------------------------------------------------

void StepPhraseGrid::setNoteRange(int lowest, int rows)
{
    lowestNote = juce::jlimit(0, 127, lowest);
    rowCount = rows < 1 ? 1 : std::min({ rows, maxRows, 128 - lowestNote });
    repaint();
}

void StepPhraseGrid::setStepCount(int count)
{
    stepCount = juce::jlimit(1, maxSteps, count);
    if (playheadStep >= stepCount)
        playheadStep = -1;
    repaint();
}

void StepPhraseGrid::setStepsPerBeat(int n)
{
    stepsPerBeat = std::max(1, n);
    repaint();
}

void StepPhraseGrid::setBeatsPerBar(int n)
{
    beatsPerBar = std::max(1, n);
    repaint();
}

void StepPhraseGrid::setPlayheadStep(int step)
{
    playheadStep = step < 0 ? -1 : std::min(step, stepCount - 1);
    repaint();
}

void StepPhraseGrid::setScale(int root, int mask)
{
    scaleRoot = ((root % 12) + 12) % 12;
    scaleMask = mask & 0xFFF;
    repaint();
}

void StepPhraseGrid::setRulerVisible(bool visible)
{
    rulerVisible = visible;
    repaint();
}

void StepPhraseGrid::setNoteNamesVisible(bool visible)
{
    noteNamesVisible = visible;
    repaint();
}

void StepPhraseGrid::setSquareCells(bool square)
{
    squareCells = square;
    repaint();
}

void StepPhraseGrid::setEditMode(int mode)
{
    editMode = mode;
    setMouseCursor(mode == eraseMode ? juce::MouseCursor::CrosshairCursor : juce::MouseCursor::PointingHandCursor);
    repaint();
}

void StepPhraseGrid::clearSteps()
{
    steps.fill(PhraseStep {});
    playheadStep = -1;
    repaint();
}

void StepPhraseGrid::setStep(int step, PhraseStep record)
{
    if (step < 0 || step >= stepCount)
        return;
    record.note = record.note < 0 ? -1 : juce::jlimit(lowestNote, lowestNote + rowCount - 1, record.note);
    record.velocity = juce::jlimit(0.05f, 1.0f, record.velocity);
    steps[(size_t) step] = record;
    repaint();
    if (onStepChanged)
        onStepChanged(step, record);
}

PhraseStep StepPhraseGrid::getStep(int step) const
{
    return step >= 0 && step < stepCount ? steps[(size_t) step] : PhraseStep {};
}

// --- geometry ------------------------------------------------------------------------------

StepPhraseGrid::Layout StepPhraseGrid::layout() const
{
    Layout l;
    auto rest = getLocalBounds().toFloat();
    if (rulerVisible)
        l.ruler = rest.removeFromTop(std::min(rest.getHeight(), 20.0f));
    l.rail = rest.removeFromLeft(std::min(rest.getWidth(), std::min(rest.getWidth() * 0.18f, 56.0f)));
    l.grid = rest;

    if (rest.isEmpty() || rowCount < 1 || stepCount < 1)
        return l;

    l.cell = std::min(rest.getHeight() / (float) rowCount, rest.getWidth() / (float) stepCount);
    if (squareCells)
    {
        l.grid = rest.withSizeKeepingCentre(l.cell * (float) stepCount, l.cell * (float) rowCount);
        l.rail = l.rail.withY(l.grid.getY()).withHeight(l.grid.getHeight());
        if (rulerVisible)
            l.ruler = l.ruler.withX(l.grid.getX()).withWidth(l.grid.getWidth());
    }
    return l;
}

int StepPhraseGrid::stepAt(float x) const
{
    const auto grid = layout().grid;
    if (grid.getWidth() <= 0.0f || x < grid.getX())
        return -1;
    return std::min((int) ((x - grid.getX()) / grid.getWidth() * (float) stepCount), stepCount - 1);
}

int StepPhraseGrid::rowAt(float y) const
{
    const auto grid = layout().grid;
    if (grid.getHeight() <= 0.0f)
        return 0;
    return juce::jlimit(0, rowCount - 1, (int) ((y - grid.getY()) / grid.getHeight() * (float) rowCount));
}

// --- editing -------------------------------------------------------------------------------

void StepPhraseGrid::editAt(const juce::MouseEvent& e, bool isPress)
{
    const int s = stepAt(e.position.x);
    if (s < 0)
        return;

    if (isPress)
    {
        lastEditStep = -1;
        pressVelocity = steps[(size_t) s].velocity;
        dragStep = steps[(size_t) s].note >= 0 ? s : -1;
        pressPosition = e.getPosition();
    }
    else if (s == dragStep)
    {
        const float dy = (float) (pressPosition.y - e.getPosition().y);
        const float range = std::max(layout().cell * 4.0f, 20.0f);
        if (std::abs(dy) > 3.0f)
        {
            auto record = steps[(size_t) s];
            record.velocity = juce::jlimit(0.05f, 1.0f, pressVelocity + dy / range);
            setStep(s, record);
            return;
        }
    }

    if (s == lastEditStep)
        return;
    lastEditStep = s;
    auto record = steps[(size_t) s];
    const auto& mods = e.mods;

    if (mods.isAltDown() || editMode == eraseMode)
    {
        setStep(s, PhraseStep {});
        dragStep = -1;
        return;
    }
    if ((mods.isShiftDown() || editMode == tieMode) && record.note >= 0)
    {
        record.tied = ! record.tied;
        setStep(s, record);
        return;
    }
    if (mods.isRightButtonDown() || editMode == accentMode)
    {
        record.accent = ! record.accent;
        setStep(s, record);
        return;
    }

    record.note = juce::jlimit(0, 127, lowestNote + rowCount - 1 - rowAt(e.position.y));
    if (record.velocity < 0.1f)
        record.velocity = 0.72f;
    setStep(s, record);
    dragStep = s;
    pressPosition = e.getPosition();
    pressVelocity = steps[(size_t) s].velocity;
}

void StepPhraseGrid::updateHover(float x, float y)
{
    const int step = stepAt(x), row = rowAt(y);
    if (step == hoverStep && row == hoverRow)
        return;
    hoverStep = step;
    hoverRow = row;
    repaint();
}

void StepPhraseGrid::mouseMove(const juce::MouseEvent& e) { updateHover(e.position.x, e.position.y); }

void StepPhraseGrid::mouseExit(const juce::MouseEvent&)
{
    hoverStep = hoverRow = -1;
    repaint();
}

void StepPhraseGrid::mouseDown(const juce::MouseEvent& e) { editAt(e, true); }

void StepPhraseGrid::mouseDrag(const juce::MouseEvent& e)
{
    editAt(e, false);
    updateHover(e.position.x, e.position.y);
}

// --- paint ---------------------------------------------------------------------------------

void StepPhraseGrid::paint(juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    g.setColour(paletteColour(surfacePanel));
    g.fillRoundedRectangle(bounds, 2.0f);

    const auto l = layout();
    if (! l.grid.isEmpty())
    {
        paintRows(g, l);
        paintLines(g, l);
        if (playheadStep >= 0)
        {
            const float stepW = l.grid.getWidth() / (float) stepCount;
            const auto column = l.grid.withX(l.grid.getX() + stepW * (float) playheadStep).withWidth(stepW);
            g.setColour(paletteColour(accentLive).withAlpha(0.16f));
            g.fillRect(column);
            g.setColour(paletteColour(accentLive));
            g.fillRect(column.withWidth(2.0f));
        }
        paintHover(g, l);
        paintNotes(g, l);
    }

    g.setColour(paletteColour(borderSubtle));
    g.drawRoundedRectangle(bounds.reduced(0.5f), 2.0f, 1.0f);
}

void StepPhraseGrid::paintRows(juce::Graphics& g, const Layout& l) const
{
    const float rowH = l.grid.getHeight() / (float) rowCount;
    for (int row = 0; row < rowCount; ++row)
    {
        const int note = lowestNote + rowCount - 1 - row;
        const auto band = l.grid.withY(l.grid.getY() + rowH * (float) row).withHeight(rowH);
        if (isOutOfScale(note, scaleRoot, scaleMask))
        {
            g.setColour(paletteColour(surfaceBase).withAlpha(0.55f));
            g.fillRect(band);
        }
        else if (isBlackKey(note))
        {
            g.setColour(paletteColour(surfaceBase).withAlpha(0.32f));
            g.fillRect(band);
        }
        else if (note % 12 == 0)
        {
            g.setColour(paletteColour(accentPrimary).withAlpha(0.14f));
            g.fillRect(band);
            g.setColour(paletteColour(accentPrimary).withAlpha(0.55f));
            g.fillRect(band.withHeight(1.0f));
        }
        if (note % 12 == 0)
        {
            const auto label = l.rail.withY(band.getY()).withHeight(rowH).toNearestInt();
            drawRoleText(g, 6, noteNameWithOctave(note), label, paletteColour(textPrimary), 36);
        }
    }

    g.setColour(paletteColour(borderSubtle).withAlpha(0.6f));
    g.fillRect(juce::Rectangle<float>(l.rail.getRight() - 1.0f, l.rail.getY(), 1.0f, l.rail.getHeight()));

    if (rulerVisible && ! l.ruler.isEmpty())
    {
        const float stepW = l.grid.getWidth() / (float) stepCount;
        for (int step = 0; step < stepCount; step += stepsPerBeat)
        {
            const auto area = juce::Rectangle<float>(l.grid.getX() + stepW * (float) step, l.ruler.getY(),
                                                     stepW * (float) stepsPerBeat, l.ruler.getHeight());
            drawRoleText(g, 6, juce::String((step / stepsPerBeat) % beatsPerBar + 1), area.toNearestInt(),
                         paletteColour(textMuted), 36);
        }
    }
}

void StepPhraseGrid::paintLines(juce::Graphics& g, const Layout& l) const
{
    const float rowH = l.grid.getHeight() / (float) rowCount;
    g.setColour(paletteColour(borderSubtle).withAlpha(0.18f));
    for (int row = 1; row < rowCount; ++row)
        g.fillRect(juce::Rectangle<float>(l.grid.getX(), l.grid.getY() + rowH * (float) row - 0.5f, l.grid.getWidth(), 1.0f));

    const float stepW = l.grid.getWidth() / (float) stepCount;
    const auto border = paletteColour(borderSubtle);
    for (int step = 0; step <= stepCount; ++step)
    {
        float width = 1.0f, alpha = 0.18f;
        if (step % (stepsPerBeat * beatsPerBar) == 0)
            width = 2.5f, alpha = 0.85f;
        else if (step % stepsPerBeat == 0)
            width = 1.4f, alpha = 0.55f;
        const float x = l.grid.getX() + stepW * (float) step;
        g.setColour(border.withAlpha(alpha));
        g.fillRect(juce::Rectangle<float>(x - width * 0.5f, l.grid.getY(), width, l.grid.getHeight()));
    }
}

void StepPhraseGrid::paintHover(juce::Graphics& g, const Layout& l) const
{
    if (hoverStep < 0 || hoverRow < 0)
        return;
    const float stepW = l.grid.getWidth() / (float) stepCount, rowH = l.grid.getHeight() / (float) rowCount;
    const auto box = juce::Rectangle<float>(l.grid.getX() + stepW * (float) hoverStep + 2.0f,
                                            l.grid.getY() + rowH * (float) hoverRow + 1.5f,
                                            std::max(stepW - 4.0f, 0.0f), std::max(rowH - 3.0f, 0.0f));
    const float len = 0.35f * std::min(box.getWidth(), box.getHeight());
    g.setColour(paletteColour(editMode == eraseMode ? semanticError : borderFocus).withAlpha(0.7f));
    const float x0 = box.getX(), x1 = box.getRight(), y0 = box.getY(), y1 = box.getBottom();
    g.fillRect(x0, y0, len, 1.0f);
    g.fillRect(x0, y0, 1.0f, len);
    g.fillRect(x1 - len, y0, len, 1.0f);
    g.fillRect(x1 - 1.0f, y0, 1.0f, len);
    g.fillRect(x0, y1 - 1.0f, len, 1.0f);
    g.fillRect(x0, y1 - len, 1.0f, len);
    g.fillRect(x1 - len, y1 - 1.0f, len, 1.0f);
    g.fillRect(x1 - 1.0f, y1 - len, 1.0f, len);
}

void StepPhraseGrid::paintNotes(juce::Graphics& g, const Layout& l) const
{
    const float stepW = l.grid.getWidth() / (float) stepCount, rowH = l.grid.getHeight() / (float) rowCount;
    for (int step = 0; step < stepCount; ++step)
    {
        const auto& s = steps[(size_t) step];
        if (s.note < 0)
            continue;
        // A tied step that continues the same note is part of its predecessor's block.
        if (s.tied && step > 0 && steps[(size_t) step - 1].note == s.note)
            continue;

        int length = 1;
        while (step + length < stepCount && steps[(size_t) (step + length)].tied && steps[(size_t) (step + length)].note == s.note)
            ++length;

        const float strength = s.accent ? 1.0f : juce::jlimit(0.2f, 1.0f, s.velocity);
        const float fullH = juce::jlimit(0.45f, 1.0f, 0.45f + strength * 0.55f) * rowH;
        const float height = std::max(0.0f, fullH - 3.0f);
        const float width = std::max(0.0f, (float) length * stepW - 4.0f);
        const int row = juce::jlimit(0, rowCount - 1, rowOfNote(s.note));
        const float rowCentre = l.grid.getY() + rowH * ((float) row + 0.5f);
        const auto block = juce::Rectangle<float>(l.grid.getX() + stepW * (float) step + 2.0f, rowCentre - fullH * 0.5f + 1.5f, width, height);

        g.setColour(paletteColour(accentPrimary));
        g.fillRoundedRectangle(block, 2.0f);
        if (s.accent)
        {
            g.setColour(paletteColour(accentLive));
            g.fillRect(block.withHeight(std::min(3.0f, block.getHeight())));
        }
        if (noteNamesVisible && block.getHeight() >= 14.0f && block.getWidth() >= 24.0f)
        {
            const auto name = block.getWidth() >= 36.0f ? noteNameWithOctave(s.note) : pitchClassName(s.note);
            drawRoleText(g, 6, name, block.toNearestInt().reduced(4, 0), paletteColour(surfaceBase), 36);
        }
    }
}

std::unique_ptr<juce::AccessibilityHandler> StepPhraseGrid::createAccessibilityHandler()
{
    AccessibleValue access;
    access.get = [this] {
        int notes = 0;
        for (int i = 0; i < stepCount; ++i)
            notes += steps[(size_t) i].note >= 0 ? 1 : 0;
        return (double) notes;
    };
    access.text = [this] {
        juce::StringArray parts;
        for (int i = 0; i < stepCount; ++i)
        {
            const auto& s = steps[(size_t) i];
            parts.add(s.note < 0 ? juce::String("rest") : noteNameWithOctave(s.note) + (s.tied ? " tied" : "") + (s.accent ? " accent" : ""));
        }
        return parts.joinIntoString(", ");
    };
    access.maximum = maxSteps;
    access.step = 1.0;
    return makeValueAccessibility(*this, juce::AccessibilityRole::group, std::move(access));
}

} // namespace ostrel::widgets
