// trel: the window program. The whole command line is one path, which opens
// as a double click in the left pane would. Unattended runs are steered by the
// environment (see shell/TestHooks.h).
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "settings/ProgramFolderSetup.h"
#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"

int main(int argc, char** argv) {
  QElapsedTimer clock;
  clock.start();
  QApplication app(argc, argv);
  QApplication::setApplicationName("Trel");

  QStringList words;
  for (int i = 1; i < argc; ++i) words.append(QString::fromLocal8Bit(argv[i]));
  const QString commandLine = words.join(' ');

  const std::string programFolder = trel::PrepareProgramFolder();
  trel::SettingsStore store;
  trel::MainWindow window(store, programFolder);
  window.Form_Initialize();
  window.Form_Load(commandLine);
  if (const char* report = std::getenv("TREL_REPORT_STARTUP"); report && *report) {
    std::printf("startup-ms: %lld\n", static_cast<long long>(clock.elapsed()));
    std::fflush(stdout);
  }

  if (const char* quitAfter = std::getenv("TREL_QUIT_AFTER_MS"); quitAfter && *quitAfter) {
    QTimer::singleShot(std::atoi(quitAfter), &window, [&window] {
      if (const char* shot = std::getenv("TREL_SCREENSHOT"); shot && *shot) window.grab().save(shot, "PNG");
      window.close();
    });
  }
  return app.exec();
}
