// PicView, the Picture Editor: one picture, its menus, and plugins applied to it.
#pragma once

#include <QImage>
#include <QMainWindow>
#include <QString>
#include <functional>

#include "front/UserMessages.h"

class QAction;
class QLabel;
class QMenu;
class QPrinter;
class QScrollArea;

namespace trel {

class PicView : public QMainWindow {
  Q_OBJECT
 public:
  // Messages go through `shell`; without one the editor keeps quiet.
  explicit PicView(QWidget* parent = nullptr, UserMessages* shell = nullptr);

  // The picture shown; an "Apply (Filter)" result arrives through SetPicture.
  // A caption replaces the file name of the title bar.
  void SetPicture(const QImage& picture, const QString& caption = {});
  const QImage& Picture() const { return picture_; }
  const QImage& UndoPicture() const { return undo_; }
  const QString& PictureFile() const { return pictureFile_; }
  bool PictureChanged() const { return pictureChanged_; }

  // --- the commands, callable without their dialogs
  bool OpenFile(const QString& path);    // false (and a message) if it isn't a picture
  bool SaveFile(const QString& path);    // the extension decides the format
  void mnuSaveAs_Click(int index);       // 0 Save, 1 Save As...
  void mnuOpen_Click();
  void mnuPaste_Click();
  void mnuCopy_Click();
  void mnuUndo_Click();
  void CreateUndo();
  // A menu operation by its caption; `value` 0 asks the user for the entries
  // that take one ("Contrast...") or takes their default when quiet.
  bool ApplyOperation(const QString& caption, double value = 0);
  bool ResizeImage(int width, int height);
  void mnuFileSelectSource_Click();
  void PrintTo(QPrinter& printer, int mode);  // mode 0 actual size, 1 fit to page
  void mnuFilePrint_Click(int mode);
  void mnuPrintPreview_Click();
  // Zoom: fit the picture to the window, or show it pixel for pixel.
  void SetZoomFit(bool fit);
  bool ZoomFit() const { return zoomFit_; }
  void Titlebar();
  void AdjustWindow();

  // "Apply (Filter)": runs the current filter of the main window over the
  // picture; the program installs what runs it (a changed picture or null).
  void SetApplyFilter(std::function<QImage(const QImage&)> apply) { applyFilter_ = std::move(apply); }
  bool mnuApplyFilter_Click();
  // Where the help pages are (a folder ending in a separator).
  void SetHelpFolder(const QString& folder) { helpFolder_ = folder; }
  // Dialogs that tests replace: the file to open or save to ("" cancels).
  void SetFileChooser(std::function<QString(bool save, const QString& current)> chooser) {
    chooseFile_ = std::move(chooser);
  }
  // Asked on closing a changed picture (tests answer here).
  QAction* action(const QString& objectName) const;

 signals:
  void pictureOpened(const QString& path);  // a file was opened

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildMenus();
  void EnableByPicture();
  void Show();
  void Replace(const QImage& picture, bool changed);
  MsgResult Message(const std::string& text, MsgButtons buttons, MsgIcon icon);
  QAction* Add(QMenu* menu, const QString& objectName, const QString& caption);

  UserMessages* shell_ = nullptr;
  QImage picture_;
  QImage undo_;
  QString pictureFile_;
  QString captionName_;
  bool pictureChanged_ = false;
  bool zoomFit_ = true;
  QLabel* picture1_ = nullptr;
  QScrollArea* scroll_ = nullptr;
  QString helpFolder_;
  std::function<QImage(const QImage&)> applyFilter_;
  std::function<QString(bool, const QString&)> chooseFile_;
};

}  // namespace trel
