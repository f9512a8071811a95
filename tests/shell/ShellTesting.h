// What most shell tests need: the widgets' headers, and a window started as
// the program starts it, over a store and a program folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>
#include <filesystem>
#include <memory>

#include "settings/SettingsStore.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/window/MainWindow.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel::test {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

// The process stands in `folder` while the window starts (as a start from a
// shell would) and goes back when the window is gone. Whatever the window
// would hand the desktop, and the route of each double click, is kept.
class StartedWindow {
 public:
  StartedWindow(const TempDir& home, const std::string& folder, const QString& commandLine = {},
                const std::string& programFolder = {})
      : store(home.file("Trel10.ini")) {
    QDir::setCurrent(QString::fromStdString(folder));
    window = std::make_unique<MainWindow>(store, programFolder.empty() ? home.path() : programFolder);
    window->SetShellOpener([this](const QString& path) { return opened.push_back(path), true; });
    QObject::connect(window.get(), &MainWindow::routeTaken,
                     [this](const QString& route, const QString& path) { routes.push_back(route + " " + path); });
    window->Form_Initialize();
    window->Form_Load(commandLine);
  }
  ~StartedWindow() {
    if (window) window->close();
    window.reset();
    QDir::setCurrent(saved_);
  }
  MainWindow* operator->() const { return window.get(); }
  MainWindow& operator*() const { return *window; }

 private:
  const QString saved_ = QDir::currentPath();  // before the store: set first

 public:
  SettingsStore store;
  std::unique_ptr<MainWindow> window;
  std::vector<QString> routes;
  std::vector<QString> opened;
};

}  // namespace trel::test
