#include "picture/PicView.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QScreen>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScrollArea>
#include <QUrl>
#include <cmath>

#include "host/ImageWrappers.h"
#include "picture/Module2.h"
#include "picture/PictureOps.h"

namespace trel {

namespace {

constexpr const char* kNoScanner = "There's no scanning device available.";

QString Filters(bool save) {
  QStringList patterns;
  const QList<QByteArray> formats =
      save ? QImageWriter::supportedImageFormats() : QImageReader::supportedImageFormats();
  for (const QByteArray& f : formats) patterns << "*." + QString::fromLatin1(f);
  return "Pictures (" + patterns.join(' ') + ");;All files (*)";
}

}  // namespace

PicView::PicView(QWidget* parent, UserMessages* shell) : QMainWindow(parent), shell_(shell) {
  setObjectName("PicView");
  setAttribute(Qt::WA_DeleteOnClose, false);
  scroll_ = new QScrollArea(this);
  scroll_->setObjectName("PictureScroll");
  scroll_->setAlignment(Qt::AlignCenter);
  picture1_ = new QLabel;
  picture1_->setObjectName("Picture1");
  picture1_->setAccessibleName("Picture");
  picture1_->setAlignment(Qt::AlignCenter);
  scroll_->setWidget(picture1_);
  scroll_->setWidgetResizable(true);
  setCentralWidget(scroll_);
  BuildMenus();
  Titlebar();
  EnableByPicture();
  resize(480, 360);
}

QAction* PicView::Add(QMenu* menu, const QString& objectName, const QString& caption) {
  QAction* a = menu->addAction(caption);
  a->setObjectName(objectName);
  return a;
}

QAction* PicView::action(const QString& objectName) const { return findChild<QAction*>(objectName); }

void PicView::BuildMenus() {
  QMenuBar* bar = menuBar();
  QMenu* file = bar->addMenu("&File");
  file->setObjectName("mnuFile");
  QAction* open = Add(file, "mnuOpen", "Open...");
  open->setShortcut(QKeySequence::Open);
  connect(open, &QAction::triggered, this, &PicView::mnuOpen_Click);
  QAction* save = Add(file, "mnuSaveAs_0", "Save");
  save->setShortcut(QKeySequence::Save);
  connect(save, &QAction::triggered, this, [this] { mnuSaveAs_Click(0); });
  QAction* saveAs = Add(file, "mnuSaveAs_1", "Save As...");
  saveAs->setShortcut(QKeySequence("Ctrl+Shift+S"));
  connect(saveAs, &QAction::triggered, this, [this] { mnuSaveAs_Click(1); });
  file->addSeparator();
  connect(Add(file, "mnuFileSelectSource", "Select Source..."), &QAction::triggered, this,
          &PicView::mnuFileSelectSource_Click);
  connect(Add(file, "mnuFileAcquire", "Acquire Image..."), &QAction::triggered, this,
          &PicView::mnuFileSelectSource_Click);
  file->addSeparator();
  connect(Add(file, "mnuFilePrintSetup", "Print Setup..."), &QAction::triggered, this, [this] {
    QPrinter printer;
    QPageSetupDialog(&printer, this).exec();
  });
  QMenu* print = file->addMenu("Print");
  print->setObjectName("mnuFilePrintMenu");
  QAction* actual = Add(print, "mnuFilePrint_0", "Actual Size...");
  actual->setShortcut(QKeySequence::Print);
  connect(actual, &QAction::triggered, this, [this] { mnuFilePrint_Click(0); });
  connect(Add(print, "mnuFilePrint_1", "Fit to Page..."), &QAction::triggered, this,
          [this] { mnuFilePrint_Click(1); });
  connect(Add(file, "mnuPrintPreview", "Print Preview..."), &QAction::triggered, this,
          &PicView::mnuPrintPreview_Click);
  file->addSeparator();
  QAction* exit = Add(file, "mnuExit", "Exit");
  exit->setShortcut(QKeySequence("Ctrl+W"));
  connect(exit, &QAction::triggered, this, &QWidget::close);

  QMenu* edit = bar->addMenu("&Edit");
  edit->setObjectName("mnuEdit");
  QAction* undo = Add(edit, "mnuUndo", "Undo");
  undo->setShortcut(QKeySequence::Undo);
  connect(undo, &QAction::triggered, this, &PicView::mnuUndo_Click);
  edit->addSeparator();
  QAction* copy = Add(edit, "mnuCopy", "Copy");
  copy->setShortcut(QKeySequence::Copy);
  connect(copy, &QAction::triggered, this, &PicView::mnuCopy_Click);
  QAction* paste = Add(edit, "mnuPaste", "Paste");
  paste->setShortcut(QKeySequence::Paste);
  connect(paste, &QAction::triggered, this, &PicView::mnuPaste_Click);
  edit->addSeparator();
  connect(Add(edit, "mnuResize", "Resize Image..."), &QAction::triggered, this, [this] {
    if (picture_.isNull()) return;
    bool ok = false;
    const int percent = QInputDialog::getInt(this, "Resize Image", "Size in percent:", 100, 1, 1000, 1, &ok);
    if (ok)
      ResizeImage(std::max(1, picture_.width() * percent / 100), std::max(1, picture_.height() * percent / 100));
  });

  // Operations by caption; separators as the menus show them.
  auto addOps = [this](QMenu* menu, const QString& stem, const QStringList& captions) {
    int i = 0;
    for (const QString& caption : captions) {
      if (caption == "-") {
        menu->addSeparator();
        continue;
      }
      QAction* a = Add(menu, QString("%1_%2").arg(stem).arg(i++), caption);
      connect(a, &QAction::triggered, this, [this, caption] { ApplyOperation(caption); });
    }
  };
  QMenu* fx = bar->addMenu("Fil&ters");
  fx->setObjectName("mnuFilter");
  QAction* apply = Add(fx, "mnuApplyFilter", "Apply (Filter)");
  apply->setShortcut(QKeySequence("Ctrl+F"));
  connect(apply, &QAction::triggered, this, &PicView::mnuApplyFilter_Click);
  connect(Add(fx, "mnuSelectPluginFolder", "External Plugins ..."), &QAction::triggered, this, [this] {
    Message("Plugins are run from the main window: select one and choose Invoke Plugin.", MsgButtons::Ok,
            MsgIcon::Information);
  });
  fx->addSeparator();
  addOps(fx, "mnuFX",
         {"Invert", "Auto Contrast", "Contrast...", "Brightness...", "Gamma Increase...",
          "Gamma Decrease...", "-", "Blur", "Sharpen", "Despeckle", "Edge Detect", "Edge Detect II",
          "LaPlacian Sharpen", "Emboss", "-", "Horizontal Mirror", "Vertical Mirror", "Rotate 90",
          "Rotate 270", "Rotate Any Angle..."});
  QMenu* colors = bar->addMenu("&Colors");
  colors->setObjectName("mnuColors");
  addOps(colors, "mnuColorFX",
         {"2 Colors", "2 Colors Ditherd", "16 Colors", "16 Colors Dithered", "256 Colors",
          "256 Colors Dithered", "Greyscale", "16 Million Colors"});
  connect(colors, &QMenu::aboutToShow, this, [this, colors] {
    // A picture can only go down to fewer colours, or back up to 16 million.
    const int bits = PictureBitCount(picture_);
    for (QAction* a : colors->actions()) {
      const bool up = a->text() == "16 Million Colors";
      a->setEnabled(!picture_.isNull() && (up ? bits < 24 : true));
    }
  });

  QMenu* tools = bar->addMenu("&Tools");
  tools->setObjectName("mnuTools");
  connect(Add(tools, "mnuCursor", "Cursor"), &QAction::triggered, this, [this] { unsetCursor(); });
  connect(Add(tools, "mnuSelection", "Selection"), &QAction::triggered, this,
          [this] { setCursor(Qt::CrossCursor); });
  QAction* zoom = Add(tools, "mnuZoom", "Zoom");
  zoom->setShortcut(QKeySequence("Ctrl+0"));
  connect(zoom, &QAction::triggered, this, [this] { SetZoomFit(!zoomFit_); });
  QAction* fit = Add(tools, "mnuZoomFit", "Zoom to Fit");
  fit->setCheckable(true);
  fit->setChecked(true);
  fit->setShortcut(QKeySequence("Ctrl+9"));
  connect(fit, &QAction::triggered, this, [this] { SetZoomFit(true); });
  QAction* one = Add(tools, "mnuZoom1to1", "Zoom 1:1");
  one->setCheckable(true);
  one->setShortcut(QKeySequence("Ctrl+1"));
  connect(one, &QAction::triggered, this, [this] { SetZoomFit(false); });

  QMenu* sel = bar->addMenu("&Selections");
  sel->setObjectName("mnuSelections");
  connect(Add(sel, "mnuSelectNone", "Select None"), &QAction::triggered, this, [this] { unsetCursor(); });

  QMenu* filters = bar->addMenu("&Filters");
  filters->setObjectName("mnuFilters");
  addOps(filters, "mnuEffects",
         {"Color Tuner", "Channel Swap", "Greyscale", "Inverse", "Random Noise", "YUV Intensify"});

  QMenu* help = bar->addMenu("Help");
  help->setObjectName("mnuHelpMenu");
  QAction* helpEntry = Add(help, "mnuHelp", "Help");
  helpEntry->setShortcut(QKeySequence::HelpContents);
  connect(helpEntry, &QAction::triggered, this, [this] {
    QDesktopServices::openUrl(QUrl::fromLocalFile(helpFolder_ + "pictureeditor.htm"));
  });

  for (QMenu* m : {file, edit, fx, filters})
    connect(m, &QMenu::aboutToShow, this, &PicView::EnableByPicture);
}

void PicView::EnableByPicture() {
  const bool has = !picture_.isNull();
  for (const char* name : {"mnuSaveAs_0", "mnuSaveAs_1", "mnuFilePrint_0", "mnuFilePrint_1",
                           "mnuPrintPreview", "mnuCopy", "mnuResize", "mnuApplyFilter"})
    if (QAction* a = action(name)) a->setEnabled(has);
  if (QAction* a = action("mnuUndo")) a->setEnabled(!undo_.isNull());
  for (QAction* a : findChildren<QAction*>())
    if (a->objectName().startsWith("mnuFX_") || a->objectName().startsWith("mnuEffects_")) a->setEnabled(has);
}

MsgResult PicView::Message(const std::string& text, MsgButtons buttons, MsgIcon icon) {
  if (!shell_) return buttons == MsgButtons::YesNo ? MsgResult::No : MsgResult::Ok;
  return shell_->MsgBox(text, buttons, icon, "Picture Editor");
}

void PicView::Titlebar() {
  if (picture_.isNull()) {
    setWindowTitle("Picture Editor");
    return;
  }
  QString name = captionName_;
  if (name.isEmpty())
    name = pictureFile_.isEmpty() ? "Untitled"
                                  : QString::fromStdString(FileNameOf(QDir::toNativeSeparators(pictureFile_).toStdString()));
  const int bits = PictureBitCount(picture_);
  const QString colours = bits >= 24 ? "16 Milion" : QString::number(1LL << bits);
  setWindowTitle(QString("Picture Editor - %1 - %2x%3, %4 Colors (%5bit)")
                     .arg(name)
                     .arg(picture_.width())
                     .arg(picture_.height())
                     .arg(colours)
                     .arg(bits));
}

void PicView::Show() {
  if (picture_.isNull()) {
    picture1_->clear();
    return;
  }
  QPixmap pix = QPixmap::fromImage(picture_);
  if (zoomFit_) {
    const QSize room = scroll_->viewport()->size();
    if (pix.width() > room.width() || pix.height() > room.height())
      pix = pix.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  }
  picture1_->setPixmap(pix);
}

void PicView::SetZoomFit(bool fit) {
  zoomFit_ = fit;
  scroll_->setWidgetResizable(fit);
  if (QAction* a = action("mnuZoomFit")) a->setChecked(fit);
  if (QAction* a = action("mnuZoom1to1")) a->setChecked(!fit);
  Show();
  if (!fit) picture1_->adjustSize();
}

void PicView::AdjustWindow() {
  if (picture_.isNull()) return;
  // The window fits the picture, as far as the screen allows.
  const int frameW = width() - scroll_->viewport()->width();
  const int frameH = height() - scroll_->viewport()->height();
  QSize want(picture_.width() + frameW, picture_.height() + frameH);
  if (QWidget* w = window(); w && w->screen())
    want = want.boundedTo(w->screen()->availableSize() * 9 / 10);
  resize(want.expandedTo(QSize(240, 160)));
}

void PicView::Replace(const QImage& picture, bool changed) {
  picture_ = picture;
  pictureChanged_ = changed;
  Show();
  AdjustWindow();
  Titlebar();
  EnableByPicture();
}

void PicView::SetPicture(const QImage& picture, const QString& caption) {
  CreateUndo();
  captionName_ = caption;
  Replace(picture, true);
}

void PicView::CreateUndo() {
  undo_ = picture_;
  EnableByPicture();
}

bool PicView::OpenFile(const QString& path) {
  QImageReader reader(path);
  QImage img = reader.read();
  if (img.isNull()) {
    // The reason goes under the name: a missing file, one we may not read, a
    // kind of picture we don't know, or broken picture data.
    const QFileInfo info(path);
    QString reason;
    if (!info.exists()) reason = "The file doesn't exist.";
    else if (info.isDir()) reason = "It is a folder.";
    else if (!info.isReadable()) reason = "The file can't be read (no permission).";
    else if (reader.error() == QImageReader::UnsupportedFormatError)
      reason = "It isn't a picture of a kind this program reads.";
    else reason = "The picture data is damaged or incomplete (" + reader.errorString() + ").";
    Message("Couldn't open " + QDir::toNativeSeparators(path).toStdString() + "\n" + reason.toStdString(),
            MsgButtons::Ok, MsgIcon::Exclamation);
    return false;
  }
  undo_ = QImage();
  pictureFile_ = path;
  captionName_.clear();
  Replace(img, false);
  emit pictureOpened(path);
  return true;
}

void PicView::mnuOpen_Click() {
  const QString path = chooseFile_ ? chooseFile_(false, pictureFile_)
                                   : QFileDialog::getOpenFileName(this, "Open", pictureFile_, Filters(false));
  if (!path.isEmpty()) OpenFile(path);
}

bool PicView::SaveFile(const QString& path) {
  if (picture_.isNull()) return false;
  const QByteArray format = QFileInfo(path).suffix().toLower().toLatin1();
  if (!QImageWriter::supportedImageFormats().contains(format)) {
    Message("Can't save pictures of the type \"" + format.toStdString() + "\". Please choose another extension.",
            MsgButtons::Ok, MsgIcon::Exclamation);
    return false;
  }
  // The file that stood there is only replaced by a complete one.
  if (!SaveImageSafely(picture_, QFile::encodeName(path).toStdString(), format)) {
    Message("Couldn't save " + QDir::toNativeSeparators(path).toStdString(), MsgButtons::Ok,
            MsgIcon::Exclamation);
    return false;
  }
  pictureFile_ = path;
  captionName_.clear();
  pictureChanged_ = false;
  Titlebar();
  return true;
}

void PicView::mnuSaveAs_Click(int index) {
  if (picture_.isNull()) return;
  // A GIF is never overwritten in silence: it always goes through the dialog.
  if (index == 0 && !pictureFile_.isEmpty() && !pictureFile_.toLower().endsWith(".gif")) {
    SaveFile(pictureFile_);
    return;
  }
  const QString path = chooseFile_ ? chooseFile_(true, pictureFile_)
                                   : QFileDialog::getSaveFileName(this, "Save As", pictureFile_, Filters(true));
  if (path.isEmpty()) return;  // cancelled: no message
  SaveFile(path);
}

void PicView::mnuPaste_Click() {
  const QImage img = QApplication::clipboard()->image();
  if (img.isNull()) return;
  CreateUndo();
  pictureFile_.clear();
  captionName_.clear();
  Replace(img, true);
}

void PicView::mnuCopy_Click() {
  if (!picture_.isNull()) QApplication::clipboard()->setImage(picture_);
}

void PicView::mnuUndo_Click() {
  if (undo_.isNull()) return;
  QImage former = undo_;
  undo_ = QImage();
  Replace(former, true);
}

bool PicView::ApplyOperation(const QString& caption, double value) {
  if (picture_.isNull()) return false;
  if (value == 0 && PictureOpTakesValue(caption) && shell_ && isVisible()) {
    bool ok = false;
    value = QInputDialog::getDouble(this, caption.chopped(3), "Amount:", PictureOpDefaultValue(caption),
                                    -1000, 1000, 2, &ok);
    if (!ok) return false;
  }
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QImage result = ApplyPictureOp(picture_, caption, value);
  QApplication::restoreOverrideCursor();
  if (result.isNull()) return false;
  CreateUndo();
  Replace(result, true);
  return true;
}

bool PicView::ResizeImage(int width, int height) {
  const QImage result = ResizePicture(picture_, width, height);
  if (result.isNull()) return false;
  CreateUndo();
  Replace(result, true);
  return true;
}

bool PicView::mnuApplyFilter_Click() {
  if (picture_.isNull() || !applyFilter_) return false;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QImage result = applyFilter_(picture_);
  QApplication::restoreOverrideCursor();
  if (result.isNull()) return false;
  CreateUndo();
  Replace(result, true);
  return true;
}

void PicView::mnuFileSelectSource_Click() {
  // There is no scanner interface on this platform.
  Message(kNoScanner, MsgButtons::Ok, MsgIcon::Exclamation);
}

void PicView::PrintTo(QPrinter& printer, int mode) {
  if (picture_.isNull()) return;
  QPainter painter(&printer);
  const QRect page = painter.viewport();
  QSize size = picture_.size();
  if (mode == 1) {
    // Scale by the side that limits.
    size.scale(page.size(), Qt::KeepAspectRatio);
  } else {
    // The picture's own size: its pixels at the screen's density on paper.
    const double f = printer.resolution() / 96.0;
    size = QSize(int(std::lround(size.width() * f)), int(std::lround(size.height() * f)));
  }
  painter.drawImage(QRect(page.topLeft(), size), picture_);
}

void PicView::mnuFilePrint_Click(int mode) {
  if (picture_.isNull()) return;
  QPrinter printer(QPrinter::HighResolution);
  QPrintDialog dialog(&printer, this);
  if (dialog.exec() == QDialog::Accepted) PrintTo(printer, mode);
}

void PicView::mnuPrintPreview_Click() {
  if (picture_.isNull()) return;
  QPrinter printer(QPrinter::HighResolution);
  QPrintPreviewDialog dialog(&printer, this);
  connect(&dialog, &QPrintPreviewDialog::paintRequested, this, [this](QPrinter* p) { PrintTo(*p, 1); });
  dialog.exec();
}

void PicView::closeEvent(QCloseEvent* event) {
  if (pictureChanged_ && !picture_.isNull() &&
      Message("Do you want to save the image?", MsgButtons::YesNo, MsgIcon::Question) == MsgResult::Yes)
    mnuSaveAs_Click(0);
  pictureChanged_ = false;
  event->accept();
}

void PicView::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  if (zoomFit_) Show();
}

}  // namespace trel
