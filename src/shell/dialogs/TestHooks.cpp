#include "shell/dialogs/TestHooks.h"

#include <cstdio>
#include <cstdlib>

namespace trel {

bool AutoAcceptDialogs() {
  const char* value = std::getenv("TREL_AUTO_ACCEPT");
  return value && *value && *value != '0';
}

void ReportAutoAccepted(const QString& title) {
  std::printf("auto-accepted: %s\n", title.toLocal8Bit().constData());
  std::fflush(stdout);
}

}  // namespace trel
