#include <juce_core/juce_core.h>

#include <gtest/gtest.h>

// The widget library knows no patch: its files include only each other and the framework.
TEST(WidgetBoundary, LibraryIncludesNothingOfTheInstrument)
{
    const auto dir = juce::File(MORVANE_SOURCE_DIR).getChildFile("lib/widgets");
    const auto files = dir.findChildFiles(juce::File::findFiles, false, "*.h;*.cpp");
    ASSERT_GT(files.size(), 10);
    for (const auto& file : files)
    {
        juce::StringArray lines;
        lines.addLines(file.loadFileAsString());
        for (const auto& line : lines)
        {
            if (! line.trimStart().startsWith("#include"))
                continue;
            const auto target = line.fromFirstOccurrenceOf("#include", false, false).trim();
            if (target.startsWith("<"))
                EXPECT_TRUE(target.startsWith("<juce_") || ! target.contains("/")) << file.getFileName() << ": " << line;
            else
                EXPECT_TRUE(dir.getChildFile(target.unquoted()).existsAsFile()) << file.getFileName() << ": " << line;
        }
    }
}
