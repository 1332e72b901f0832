#pragma once

#include <juce_core/juce_core.h>

#include <memory>

namespace morvane
{
// The framework's XML parser never returns on a processing instruction followed by text inside an
// element (as in "<P><??>M"), and reads past the end of its text on a hexadecimal character
// reference left open at the end (as in "<P>&#x0"). Outside data passes through here: text with a
// processing instruction anywhere but the leading declaration, or with a numeric character
// reference not closed by ';' within its digits, is refused, and nothing else is changed.
std::unique_ptr<juce::XmlElement> parseXmlSafely (const juce::String& text);

// Raw bytes from outside: anything that is not valid UTF-8 is refused before it becomes a string,
// since the framework's string code trusts its input to be well formed.
std::unique_ptr<juce::XmlElement> parseXmlSafely (const char* data, int sizeInBytes);

// The framework's state wrapping (magic, length, UTF-8 text), unwrapped and parsed as above.
std::unique_ptr<juce::XmlElement> xmlFromStateBlob (const void* data, int sizeInBytes);
}
