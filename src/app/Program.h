// The window program's run, with the dialogs it asks through chosen by the
// caller. The whole command line is one path, which opens as a double click in
// the left pane would. Unattended runs are steered by the environment:
//   TREL_QUIT_AFTER_MS=N   the window closes normally N ms after it is shown
//   TREL_SCREENSHOT=FILE   just before that close, the window is saved as PNG
//   TREL_REPORT_STARTUP=1  prints "startup-ms: N" once the window is visible
//   TREL_START_VIEW=plugin the left pane starts in Plugin View, its first filter
//                          previewed (scripts/run.sh on the demo collection)
#pragma once

#include <memory>

#include "shell/dialogs/Dialogs.h"

namespace trel {

int RunProgram(int argc, char** argv, std::unique_ptr<Dialogs> dialogs);

}  // namespace trel
