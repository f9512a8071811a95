#include "app/Program.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "settings/ProgramFolderSetup.h"
#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"

namespace trel {

int RunProgram(int argc, char** argv, std::unique_ptr<Dialogs> dialogs) {
  QElapsedTimer clock;
  clock.start();
  QApplication app(argc, argv);
  QApplication::setApplicationName("Trel");
  UseDialogs(std::move(dialogs));

  QStringList words;
  for (int i = 1; i < argc; ++i) words.append(QString::fromLocal8Bit(argv[i]));
  const QString commandLine = words.join(' ');

  const std::string programFolder = PrepareProgramFolder();
  SettingsStore store;
  MainWindow window(store, programFolder);
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

}  // namespace trel
