#include "audio/SafeXml.h"
#include "render/RenderOptions.h"
#include "render/RenderSession.h"

#include <juce_events/juce_events.h>

#include <cstring>
#include <iostream>

int main (int argc, char* argv[])
{
    juce::StringArray args;
    for (int i = 1; i < argc; ++i)
    {
        if (! morvane::isWellFormedUtf8 (argv[i], (int) std::strlen (argv[i])))
        {
            std::cerr << "morvane-render: argument " << i << " is not valid UTF-8" << std::endl;
            return morvane::render::exitBadInput;
        }
        args.add (juce::String::fromUTF8 (argv[i]));
    }

    const auto parsed = morvane::render::parseRenderOptions (args);
    if (parsed.options.help)
    {
        std::cout << morvane::render::usageText();
        return morvane::render::exitOk;
    }
    if (parsed.options.version)
    {
        std::cout << "morvane-render " << MORVANE_VERSION << std::endl;
        return morvane::render::exitOk;
    }
    if (parsed.error.isNotEmpty())
    {
        std::cerr << "morvane-render: " << parsed.error << std::endl;
        return morvane::render::exitBadInput;
    }

    juce::ScopedJuceInitialiser_GUI juce;
    const auto& o = parsed.options;
    if (o.listFactory)
        return morvane::render::listFactory();
    if (o.listParameters)
        return morvane::render::listParameters();
    if (o.audition)
        return morvane::render::runAudition (*o.audition, o.rate, o.block);
    return morvane::render::runRender (o);
}
