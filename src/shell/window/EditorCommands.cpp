#include <QApplication>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

#include "editor/DesReader.h"
#include "editor/FFEditorMod.h"
#include "editor/FFEditorType1.h"
#include "editor/PreviewRunner.h"
#include "filter/Dispatch.h"
#include "picture/PicView.h"
#include "settings/SettingsStore.h"
#include "shell/window/CommandGroups.h"
#include "shell/fflview/FflViewController.h"
#include "shell/window/MainWindow.h"

namespace trel {

namespace {

FilterOptions EditorOptions(MainWindow& window) {
  FilterOptions o;
  o.noFFOptimize = window.prefs().noFFOptimize == 1;
  o.writeFFL10 = window.prefs().ffl10 == 1;
  o.programFolder = window.programFolder();
  return o;
}

bool EditorOff(MainWindow& window) { return window.prefs().interfaceFile == "OFF"; }

}  // namespace

// The one editor window: made on first use (or at start with "Load all
// components on startup"), kept when hidden, dropped by "Unload FF Editor
// from Memory".
FFEditorType1* MainWindow::FFEditor(bool create) {
  if (ffEditor_ || !create) return ffEditor_;
  EditorContext ctx;
  ctx.filter = &filter_;
  ctx.programFolder = programFolder_;
  ctx.store = &store_;
  ctx.shell = &messages_;
  ctx.options = [this] { return EditorOptions(*this); };
  ctx.interfaceFile = [this] {
    return interfaceFile_.empty() ? prefs().interfaceFile : interfaceFile_;
  };
  ctx.targetFolder = [this] { return pane(ActivePane())->folder(); };
  ctx.refreshPanes = [this] { RefreshBoth(); };
  ctx.overwriteCheck = [this](const std::string& path) {
    // The question belongs to the editor: owned by the main window it would
    // bring that window up on closing, over the editor.
    QWidget* editor = ffEditor_;
    if (editor) messages_.setOwner(editor);
    const bool yes = messages_.MsgBox("The file " + path + " exists.\nDo you want to replace it?",
                                      MsgButtons::YesNo, MsgIcon::Question, "Overwrite") == MsgResult::Yes;
    messages_.setOwner(this);
    if (editor) {
      editor->raise();
      editor->activateWindow();
    }
    return yes;
  };
  ffEditor_ = new FFEditorType1(std::move(ctx), this);
  connect(ffEditor_, &FFEditorType1::unloadRequested, this, [this] {
    if (ffEditor_) ffEditor_->deleteLater();
    ffEditor_ = nullptr;
  });
  return ffEditor_;
}

void InstallEditorCommands(MainWindow& window) {
  // The editor has no menu bar of its own; the main window's View menu brings it back.
  window.SetCommandAvailable("mnuFFE", true);
  QObject::connect(window.command("mnuFFE"), &QAction::triggered, &window, [&window] {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    FFEditorType1* editor = window.FFEditor(false);
    if (editor && editor->isVisible()) {
      editor->hide();
    } else if (!EditorOff(window)) {
      editor = window.FFEditor(true);
      editor->show();
      editor->raise();
      editor->activateWindow();
    }
    QApplication::restoreOverrideCursor();
  });
  // An FFL entry opened in its view is already in the record: the editor shows it.
  if (FflController* ffl = FflController::Of(window))
    ffl->SetEntryHandler([&window](int) { window.LoadintoFFEditor(QString()); });
}

// The one door into the editor. An empty path means that the record already
// holds the filter (an FFL entry read by its view).
void MainWindow::LoadintoFFEditor(const QString& path) {
  emit routeTaken("LoadintoFFEditor", path);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const bool off = EditorOff(*this);
  FFEditorType1* editor = off ? nullptr : FFEditor(true);
  if (!path.isEmpty()) {
    const QFileInfo info(path);
    FilterEnv env;
    env.options = EditorOptions(*this);
    env.shell = editor ? &editor->readerShell() : static_cast<UserMessages*>(&messages_);
    const std::string folder = info.absolutePath().toStdString() + "/";
    if (!LoadItFile(filter_, folder, info.fileName().toStdString(), env)) {
      QApplication::restoreOverrideCursor();
      return;
    }
  }
  if (off) {
    // Without the editor the filter goes straight onto the preview picture
    // in the Picture Editor.
    std::string picture = store_.Get(kSectionSettings, "PreviewPic");
    QImage image(QString::fromStdString(picture));
    if (image.isNull()) image = QImage(QString::fromStdString(programFolder_ + "Test.bmp"));
    if (!image.isNull()) {
      PreviewJob job{filter_, {PassCodes{filter_.codeR, filter_.codeG, filter_.codeB, filter_.codeA}},
                     EditorOptions(*this), image, nullptr};
      PreviewOutcome out = RunPreviewJob(std::move(job));
      if (out.ok) {
        auto* view = new PicView(this);
        view->setAttribute(Qt::WA_DeleteOnClose);
        view->SetPicture(out.picture, QString::fromLatin1(filter_.title.c_str()));
        view->show();
      } else {
        messages_.ErrorMessage(out.message);
      }
    }
    QApplication::restoreOverrideCursor();
    return;
  }
  editor->FilterToEditor();
  editor->setEnabled(true);
  editor->UpdatePreview();
  if (editor->isHidden()) {
    // The first time it stands over the middle of the main window.
    if (!editor->property("placed").toBool()) {
      editor->move(geometry().center() - QPoint(editor->width() / 2, editor->height() / 2));
      editor->setProperty("placed", true);
    }
    editor->show();
  }
  if (editor->isMinimized()) editor->showNormal();
  editor->raise();
  editor->activateWindow();
  QApplication::restoreOverrideCursor();
}

// The FF Editor's steps of the start, in their place in the order.
void MainWindow::LookforInterface() {
  const InterfaceListing listing = LookforInterfaceFiles(programFolder_);
  interfaceEntries_ = listing.entries;
  if (listing.folderName.empty())
    messages_.MsgBox("Can't find FF Editor interface files.\nThe FF Editor won't be usable.",
                     MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
}

void MainWindow::SelectInterfaceEntry() {
  // Entry 0 of the preferences' list is the original editor ("OFF"); the
  // first entry whose last 12 characters name the file becomes the choice.
  interfaceEntry_ = 0;
  if (interfaceFile_ == "OFF") return;
  QString want = QString::fromStdString(interfaceFile_).toLower();
  for (size_t i = 0; i < interfaceEntries_.size(); ++i) {
    if (QString::fromStdString(InterfaceFileOfEntry(interfaceEntries_[i])).toLower() == want) {
      interfaceEntry_ = int(i) + 1;
      break;
    }
  }
}

void MainWindow::ToggleFFUI(const std::string& tempDll) { ToggleFFUIFile(tempDll, false); }

void MainWindow::LoadFFEditorHidden() {
  if (!EditorOff(*this)) FFEditor(true);
}

}  // namespace trel
