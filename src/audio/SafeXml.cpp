#include "audio/SafeXml.h"

#include <cstring>

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

bool isWellFormedUtf8 (const char* data, int size) noexcept
{
    const auto* p = reinterpret_cast<const unsigned char*> (data);
    for (int i = 0; i < size;)
    {
        const unsigned lead = p[i];
        if (lead < 0x80)
        {
            ++i;
            continue;
        }
        // The continuation count, and the narrower range the second byte must fall in where the
        // lead alone would allow an overlong form, a surrogate or a code point past U+10FFFF.
        int extra = 0;
        unsigned low = 0x80, high = 0xbf;
        if (lead >= 0xc2 && lead <= 0xdf)
            extra = 1;
        else if (lead >= 0xe0 && lead <= 0xef)
        {
            extra = 2;
            if (lead == 0xe0)
                low = 0xa0;
            else if (lead == 0xed)
                high = 0x9f;
        }
        else if (lead >= 0xf0 && lead <= 0xf4)
        {
            extra = 3;
            if (lead == 0xf0)
                low = 0x90;
            else if (lead == 0xf4)
                high = 0x8f;
        }
        else
            return false;

        if (size - i <= extra || p[i + 1] < low || p[i + 1] > high)
            return false;
        for (int k = 2; k <= extra; ++k)
            if ((p[i + k] & 0xc0) != 0x80)
                return false;
        i += extra + 1;
    }
    return true;
}

std::optional<juce::String> readWellFormedTextFile (const juce::File& file)
{
    juce::MemoryBlock bytes;
    if (! file.existsAsFile() || ! file.loadFileAsData (bytes))
        return std::nullopt;
    auto* data = static_cast<const char*> (bytes.getData());
    int size = (int) bytes.getSize();
    if (size >= 3 && (unsigned char) data[0] == 0xef && (unsigned char) data[1] == 0xbb && (unsigned char) data[2] == 0xbf)
    {
        data += 3;
        size -= 3;
    }
    if (size > 0 && (std::memchr (data, 0, (size_t) size) != nullptr || ! isWellFormedUtf8 (data, size)))
        return std::nullopt;
    return size > 0 ? juce::String::fromUTF8 (data, size) : juce::String();
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
    if (length == 0 || ! isWellFormedUtf8 (data, length))
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
