#include "WidgetStyle.h"
#include "WidgetTheme.h"

namespace ostrel::widgets
{
namespace
{
struct RoleStyle
{
    float height;
    bool bold;
    bool upper;
};

RoleStyle roleStyle(TextRole role)
{
    switch (role)
    {
        case 0: return { 20.0f, true, false };
        case 1: return { 18.0f, true, false };
        case 2: return { 13.0f, true, true };
        case 3: return { 14.0f, false, false };
        case 4: return { 11.0f, false, false };
        case 5: return { 11.0f, false, false };
        case 6: return { 10.0f, true, true };
        default: return { 14.0f, false, false };
    }
}
} // namespace

juce::Font roleFont(TextRole role)
{
    const auto style = roleStyle(role);
    const auto& theme = WidgetTheme::current();
    if (auto face = style.bold ? theme.boldFace : theme.regularFace)
        return juce::Font(face).withHeight(style.height);
    return juce::Font(style.height, style.bold ? juce::Font::bold : juce::Font::plain);
}

juce::String roleText(TextRole role, const juce::String& text)
{
    return roleStyle(role).upper ? text.toUpperCase() : text;
}

void drawRoleText(juce::Graphics& g, TextRole role, const juce::String& text,
                  juce::Rectangle<int> area, juce::Colour colour, int justification)
{
    if (area.isEmpty() || text.isEmpty())
        return;
    g.setColour(colour);
    g.setFont(roleFont(role));
    g.drawFittedText(roleText(role, text), area, juce::Justification(justification), 1);
}

int roleTextWidth(TextRole role, const juce::String& text)
{
    return (int) std::ceil(roleFont(role).getStringWidthFloat(roleText(role, text)));
}

int spacingStep(int step)
{
    static constexpr int steps[] = { 0, 4, 8, 12, 16, 24, 8, 12 };
    return step >= 0 && step < 8 ? steps[step] : 0;
}

KnobGeometry knobGeometry(KnobSize size)
{
    switch (size)
    {
        case KnobSize::Mini: return { 44.0f, 36.0f, 28.0f, 42.0f, 44, 96 };
        case KnobSize::Medium: return { 56.0f, 48.0f, 38.0f, 54.0f, 96, 108 };
        case KnobSize::Large: return { 80.0f, 70.0f, 58.0f, 78.0f, 96, 132 };
        case KnobSize::Small:
        default: return { 48.0f, 40.0f, 30.0f, 46.0f, 96, 100 };
    }
}

juce::String pitchClassName(int note)
{
    static const char* names[] = { "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B" };
    return names[((note % 12) + 12) % 12];
}

juce::String noteNameWithOctave(int note)
{
    return pitchClassName(note) + juce::String(note / 12 - 1);
}

bool isBlackKey(int note)
{
    switch (((note % 12) + 12) % 12)
    {
        case 1: case 3: case 6: case 8: case 10: return true;
        default: return false;
    }
}

bool isOutOfScale(int note, int scaleRoot, int scaleMask)
{
    if ((scaleMask & 0xFFF) == 0xFFF)
        return false;
    const int degree = (((note - scaleRoot) % 12) + 12) % 12;
    return (scaleMask & (1 << degree)) == 0;
}

} // namespace ostrel::widgets
