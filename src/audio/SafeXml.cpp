#include "audio/SafeXml.h"

namespace morvane
{
namespace
{
    // Every "&#" opens a reference of 1 to 12 decimal digits or an x and 1 to 8 hexadecimal
    // digits, closed by ';', as the framework's writer makes them.
    bool numericReferencesClosed (const juce::String& text)
    {
        for (int at = text.indexOf ("&#"); at >= 0; at = text.indexOf (at + 2, "&#"))
        {
            auto p = text.getCharPointer() + (at + 2);
            const bool hex = *p == 'x' || *p == 'X';
            if (hex)
                ++p;
            int digits = 0;
            while (hex ? juce::CharacterFunctions::getHexDigitValue (*p) >= 0 : juce::CharacterFunctions::isDigit (*p))
            {
                ++p;
                ++digits;
            }
            if (digits < 1 || digits > (hex ? 8 : 12) || *p != ';')
                return false;
        }
        return true;
    }
}

std::unique_ptr<juce::XmlElement> parseXmlSafely (const juce::String& text)
{
    auto body = text.trimStart();
    if (body.startsWithChar ((juce::juce_wchar) 0xfeff))
        body = body.substring (1).trimStart();
    if (body.startsWith ("<?"))
    {
        const int end = body.indexOf ("?>");
        if (end < 0)
            return nullptr;
        body = body.substring (end + 2);
    }
    if (body.contains ("<?") || ! numericReferencesClosed (body))
        return nullptr;
    return juce::XmlDocument::parse (body);
}

std::unique_ptr<juce::XmlElement> parseXmlSafely (const char* data, int sizeInBytes)
{
    if (data == nullptr || sizeInBytes <= 0)
        return nullptr;
    // The text ends at its first zero byte, as the framework's wrapping writes one.
    int length = 0;
    while (length < sizeInBytes && data[length] != 0)
        ++length;
    if (length == 0 || ! juce::CharPointer_UTF8::isValidString (data, length))
        return nullptr;
    return parseXmlSafely (juce::String::fromUTF8 (data, length));
}

std::unique_ptr<juce::XmlElement> xmlFromStateBlob (const void* data, int sizeInBytes)
{
    constexpr juce::uint32 magic = 0x21324356;
    if (data == nullptr || sizeInBytes <= 8 || juce::ByteOrder::littleEndianInt (data) != magic)
        return nullptr;
    const auto length = (int) juce::ByteOrder::littleEndianInt (juce::addBytesToPointer (data, 4));
    if (length <= 0)
        return nullptr;
    return parseXmlSafely (static_cast<const char*> (data) + 8, juce::jmin (sizeInBytes - 8, length));
}
}
