#include "ui/theme/Typography.h"

#include "BinaryData.h"

#include <array>
#include <mutex>

namespace morvane::ui
{
namespace
{
constexpr std::array<TypeRoleRecord, 10> roles { {
    { 2, "Inter", "Semi Bold", 20.0f, 0.0f, false },
    { 3, "Inter", "Bold", 18.0f, 0.0f, false },
    { 2, "Inter", "Medium", 13.0f, 0.5f, true },
    { 0, "Inter", "Regular", 14.0f, 0.0f, false },
    { 0, "Inter", "Regular", 11.0f, 0.0f, false },
    { 4, "JetBrains Mono", "Regular", 11.0f, 0.0f, false },
    { 5, "JetBrains Mono", "Medium", 10.0f, 1.2f, true },
    { 5, "JetBrains Mono", "Medium", 9.0f, 1.08f, true },
    { 5, "JetBrains Mono", "Medium", 10.0f, 1.2f, true },
    { 5, "Inter", "Bold", 28.0f, 0.0f, false },
} };

// Regular, italic, semibold and bold of a humanist sans; regular and semibold of a wide
// monospaced face for read-outs and small capitals.
constexpr const char* faceResources[6] = {
    "InterRegular_otf", "InterItalic_otf", "InterSemiBold_otf", "InterBold_otf",
    "JetBrainsMonoRegular_ttf", "JetBrainsMonoSemiBold_ttf",
};
}

const TypeRoleRecord& typeRoleRecord (TypeRole role) noexcept
{
    return roles[(size_t) (role >= 0 && role < (int) roles.size() ? role : 3)];
}

juce::Typeface::Ptr embeddedTypeface (int index)
{
    if (index < 0 || index >= 6)
        return nullptr;
    static std::array<juce::Typeface::Ptr, 6> faces;
    static std::array<std::once_flag, 6> made;
    std::call_once (made[(size_t) index], [index]
    {
        int size = 0;
        if (const auto* data = BinaryData::getNamedResource (faceResources[index], size); data != nullptr && size > 0)
            faces[(size_t) index] = juce::Typeface::createSystemTypefaceFor (data, (size_t) size);
    });
    return faces[(size_t) index];
}

juce::Font fontForTypeRole (TypeRole role)
{
    const auto& record = typeRoleRecord (role);
    juce::Font font;
    if (auto face = embeddedTypeface (record.typeface))
    {
        font = juce::Font (face).withHeight (record.height);
    }
    else
    {
        font = juce::Font (record.family, record.height, juce::Font::plain);
        if (juce::String (record.style) != "Regular")
            font.setTypefaceStyle (record.style);
    }
    if (record.tracking != 0.0f && record.height > 0.0f)
        font.setExtraKerningFactor (record.tracking / record.height);
    return font;
}

void drawTypeText (juce::Graphics& g, TypeRole role, const juce::String& text, juce::Rectangle<int> bounds,
                   juce::Colour colour, juce::Justification justification)
{
    drawTypeText (g, role, text, bounds.toFloat(), colour, justification);
}

void drawTypeText (juce::Graphics& g, TypeRole role, const juce::String& text, juce::Rectangle<float> bounds,
                   juce::Colour colour, juce::Justification justification)
{
    g.setFont (fontForTypeRole (role));
    g.setColour (colour);
    g.drawText (typeRoleRecord (role).upperCase ? text.toUpperCase() : text, bounds, justification, true);
}
}
