#pragma once

#include "render/RenderOptions.h"

namespace morvane::render
{
// Exit codes of the renderer.
enum ExitCode { exitOk = 0, exitWriteFailed = 1, exitBadInput = 2 };

// Runs one render as a host would: construct, preset, settings, prepare, process, write.
// Messages go to stderr, the bench line to stdout.
int runRender (const RenderOptions& options);
}
