// The standalone's own entry point: it answers --version and --help on the terminal before the
// framework opens a window or an audio device, then hands over to the framework's application.
#include <juce_gui_basics/juce_gui_basics.h>

#include <cstring>
#include <iostream>

juce::JUCEApplicationBase* juce_CreateApplication();

int main (int argc, char* argv[])
{
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp (argv[i], "--version") == 0)
        {
            std::cout << "morvane " << MORVANE_VERSION << std::endl;
            return 0;
        }
        if (std::strcmp (argv[i], "--help") == 0 || std::strcmp (argv[i], "-h") == 0)
        {
            std::cout << "usage: morvane [--version] [--help]\n"
                         "Opens Morvane, the phase-distortion bass synthesiser, as a desktop application.\n"
                         "Audio and MIDI devices are chosen in its Options menu.\n";
            return 0;
        }
    }
    juce::JUCEApplicationBase::createInstance = &juce_CreateApplication;
    return juce::JUCEApplicationBase::main (argc, (const char**) argv);
}
