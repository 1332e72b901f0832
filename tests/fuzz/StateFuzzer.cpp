// libFuzzer target: bytes a host hands back as the plug-in's saved state.
#include "FuzzHarness.h"

extern "C" int LLVMFuzzerTestOneInput (const uint8_t* data, size_t size)
{
    auto& h = morvane::fuzz::Harness::get();
    h.processor.setStateInformation (data, (int) size);
    h.checkStillPlays();
    return 0;
}
