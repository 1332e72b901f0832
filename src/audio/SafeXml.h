#pragma once

#include <juce_core/juce_core.h>

#include <memory>
#include <optional>

namespace morvane
{
// The framework's XML parser never returns on a processing instruction followed by text inside an
// element (as in "<P><??>M"), and reads past the end of its text on a hexadecimal character
// reference left open at the end (as in "<P>&#x0"). Outside data passes through here: text with a
// processing instruction anywhere but the leading declaration, or with a numeric character
// reference not closed by ';' within its digits, is refused, and nothing else is changed.
std::unique_ptr<juce::XmlElement> parseXmlSafely (const juce::String& text);

// Whether the bytes are UTF-8 as the standard defines it: shortest forms only, no surrogates, nothing
// past U+10FFFF. The framework's own check lets overlong forms through, and its string code then
// sizes copies by the shortest form and overruns them; outside text is checked here first.
bool isWellFormedUtf8 (const char* data, int sizeInBytes) noexcept;

// A text file from outside as a string, or nothing if it cannot be read or is not well formed.
std::optional<juce::String> readWellFormedTextFile (const juce::File& file);

// Raw bytes from outside: anything that is not well-formed UTF-8 is refused before it becomes a
// string.
std::unique_ptr<juce::XmlElement> parseXmlSafely (const char* data, int sizeInBytes);

// The framework's state wrapping (magic, length, UTF-8 text), unwrapped and parsed as above.
std::unique_ptr<juce::XmlElement> xmlFromStateBlob (const void* data, int sizeInBytes);
}
