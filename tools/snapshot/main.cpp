#include "render/RenderSession.h"
#include "snapshot/Snapshot.h"

#include <iostream>

int main (int argc, char** argv)
{
    juce::StringArray args;
    for (int i = 1; i < argc; ++i)
        args.add (juce::String::fromUTF8 (argv[i]));

    const auto parsed = morvane::snapshot::parseSnapshotOptions (args);
    if (parsed.options.version)
    {
        std::cout << "morvane-snapshot " << MORVANE_VERSION << std::endl;
        return 0;
    }
    juce::ScopedJuceInitialiser_GUI gui;
    morvane::render::setToolName ("morvane-snapshot");
    if (parsed.options.help)
    {
        std::cout << morvane::snapshot::usageText();
        return 0;
    }
    if (parsed.error.isNotEmpty())
    {
        std::cerr << "morvane-snapshot: " << parsed.error << " (see --help)" << std::endl;
        return 2;
    }
    return morvane::snapshot::runSnapshot (parsed.options);
}
