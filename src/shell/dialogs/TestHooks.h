// Switches for unattended runs of the program (tests, screenshots), read from
// the environment because the command line of the program is one path:
//   TREL_AUTO_ACCEPT=1     message boxes and the tip of the day close at once
//                          with their default answer, and each is reported on
//                          stdout as "auto-accepted: <title>"
//   TREL_QUIT_AFTER_MS=N   the window closes normally N ms after it is shown
//   TREL_SCREENSHOT=FILE   just before that close, the window is saved as PNG
//   TREL_REPORT_STARTUP=1  prints "startup-ms: N" once the window is visible
//   TREL_START_VIEW=plugin the left pane starts in Plugin View, its first filter
//                          previewed (scripts/run.sh on the demo collection)
#pragma once

#include <QString>

namespace trel {

bool AutoAcceptDialogs();
void ReportAutoAccepted(const QString& title);

}  // namespace trel
