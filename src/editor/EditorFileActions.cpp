// What the editor does with files and the world outside: the filter through
// the clipboard, on paper, saved in a format or added to a library, and the
// preview's source picture opened, applied in full and saved.
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrinter>
#include <QTemporaryDir>

#include "editor/ClickLabel.h"
#include "editor/CodeBoxes.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorType1.h"
#include "editor/LivePreview.h"
#include "filter/FFL.h"
#include "filter/PluginCompiler.h"
#include "filter/TextFormats.h"

namespace trel {

// --- the preview's picture ------------------------------------------------------------------

void FFEditorType1::ApplyFilterToPicture() {
  if (BatchRefuses()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  setWindowTitle("Calculating ...");
  const QImage full = preview_->FullSource();
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  codes_->ApplyMode(f);
  PreviewJob job{f, {PassCodes{f.codeR, f.codeG, f.codeB, f.codeA}}, Options(), full, nullptr};
  PreviewOutcome out = RunPreviewJob(std::move(job));
  inPluginCompile_ = true;
  QApplication::restoreOverrideCursor();
  setWindowTitle(kEditorCaption);
  if (!out.ok) {
    Message(out.message, MsgIcon::Critical, "Trel");
    return;
  }
  preview_->ShowInPicView(out.picture, Latin1(f.title));
}

void FFEditorType1::OpenPreviewPicture() {
  if (BatchRefuses()) return;
  const QString file = QFileDialog::getOpenFileName(this, "Open Picture", QString(),
                                                    "Pictures (*.bmp *.png *.jpg *.jpeg *.gif *.ppm *.xpm)");
  if (file.isEmpty()) return;
  const QImage picture(file);
  if (picture.isNull()) {
    Message("The picture could not be read.", MsgIcon::Exclamation, "Trel");
    return;
  }
  preview_->SetSourceFile(file.toStdString(), picture);
  UpdatePreview();
}

void FFEditorType1::SavePreviewPicture() {
  if (BatchRefuses()) return;
  const QString file = QFileDialog::getSaveFileName(this, "Save Picture", QString(), "Pictures (*.bmp *.png *.jpg)");
  if (file.isEmpty()) return;
  if (!preview_->Shown().save(file)) Message("The picture could not be written.", MsgIcon::Exclamation, "Trel");
}

// --- clipboard and print ---------------------------------------------------------------

void FFEditorType1::CopyFilterToClipboard() {
  EditorToFilter();
  QGuiApplication::clipboard()->clear();
  QGuiApplication::clipboard()->setText(Latin1(FilterClipboardText(*ctx_.filter)));
}

void FFEditorType1::PasteFilterFromClipboard() {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (!data || !data->hasText()) return;
  const std::string text = Latin1(data->text());
  QApplication::setOverrideCursor(Qt::WaitCursor);
  NewFilter();  // a "Cancel" here does not stop the paste
  const std::string folder = ctx_.programFolder;
  {
    QFile tmp(QString::fromStdString(folder) + "Temp.tmp");
    if (tmp.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
      tmp.write(text.data(), qint64(text.size()));
      tmp.close();
    }
  }
  FilterEnv env;
  env.options = Options();
  env.shell = &readerShell();
  if (ReadTXT(*ctx_.filter, folder, "Temp.tmp", false, true, env)) FilterToEditor();
  QFile::remove(QString::fromStdString(folder) + "Temp.tmp");
  UpdatePreview();
  QApplication::restoreOverrideCursor();
}

void FFEditorType1::PrinterSetup() {
  if (!printer_) printer_ = std::make_unique<QPrinter>();
  QPageSetupDialog dialog(printer_.get(), this);
  dialog.exec();
}

void FFEditorType1::PrintFilter(QPrinter& printer) {
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  codes_->ApplyMode(f);
  QPainter p;
  if (!p.begin(&printer)) return;
  QFont font("Monospace", 10);
  font.setStyleHint(QFont::TypeWriter);
  p.setFont(font);
  const QFontMetrics fm(p.font(), &printer);
  const QRect page = printer.pageLayout().paintRectPixels(printer.resolution());
  const int width = page.width() - 2 * fm.horizontalAdvance(' ');
  int y = fm.ascent();
  auto emitLine = [&](const QString& line) {
    if (y + fm.descent() > page.height()) {
      printer.newPage();
      y = fm.ascent();
    }
    p.drawText(0, y, line);
    y += fm.lineSpacing();
  };
  for (const std::string& raw : FilterPrintLines(f)) {
    // Code lines wrap at the page's width; continuation lines are indented.
    QString rest = Latin1(raw);
    rest.replace('\r', QString()).replace('\n', ' ');
    bool first = true;
    while (!rest.isEmpty()) {
      const QString indent = first ? QString() : QString(7, ' ');
      int take = int(rest.size());
      while (take > 1 && fm.horizontalAdvance(indent + rest.left(take)) > width) --take;
      emitLine(indent + rest.left(take));
      rest = rest.mid(take);
      first = false;
    }
  }
  p.end();
}

// --- save ------------------------------------------------------------------------------

bool FFEditorType1::FilenameGiven() {
  const QString label = label6_[0]->text();
  if (label != "Filename" && !label.isEmpty()) return true;
  (ctx_.shell ? *ctx_.shell : NoMessages())
      .MsgBox("Filename isn't specified!", MsgButtons::Ok, MsgIcon::Exclamation, "Error");
  return false;
}

std::string FFEditorType1::SaveFolder() const {
  std::string folder;
  if (ctx_.batchFile && !ctx_.batchFile().empty()) {
    folder = QFileInfo(QString::fromStdString(ctx_.batchFile())).absolutePath().toStdString();
  } else {
    folder = ctx_.targetFolder ? ctx_.targetFolder() : ctx_.programFolder;
  }
  if (!folder.empty() && folder.back() != '/') folder += '/';
  return folder;
}

void FFEditorType1::SaveEntry(int entry) {
  if (entry < 0 || entry >= int(std::size(kSaveEntries))) return;
  if (const auto format = kSaveEntries[size_t(entry)].format) return SaveFilterAs(*format);
  if (FilenameGiven() && !SaveFolder().empty()) AddToLibrary();
}

void FFEditorType1::SaveFilterAs(OutputFormat format) {
  if (!FilenameGiven()) return;
  const std::string folder = SaveFolder();
  if (folder.empty()) return;
  EditorToFilter();
  FFFilter out = *ctx_.filter;
  codes_->ApplyMode(out);
  out.filename = SaveTargetName(Latin1(label6_[0]->text()), format);
  if (QFileInfo::exists(QString::fromStdString(folder + out.filename)) && ctx_.overwriteCheck &&
      !ctx_.overwriteCheck(folder + out.filename))
    return;
  FilterEnv env;
  env.options = Options();
  env.shell = &readerShell();  // the TXT writer asks which memory spots are taken
  switch (format) {
    case OutputFormat::Plugin8bf: Write8bf(out, folder, false, false, env); break;
    case OutputFormat::PremierePlugin: WritePRM(out, folder, env); break;
    case OutputFormat::TransitionPlugin: WriteTF(out, folder, env); break;
    case OutputFormat::AFS: Writeafspff(out, folder, 0, env); break;
    case OutputFormat::PFF: Writeafspff(out, folder, 1, env); break;
    case OutputFormat::TXT: WriteTXT(out, folder, true, env); break;
    default: return;
  }
  if (ctx_.refreshPanes) ctx_.refreshPanes();
  if (ctx_.batchFile && !ctx_.batchFile().empty()) emit unloadRequested();
}

void FFEditorType1::AddToLibrary() {
  std::string library;
  if (ctx_.chooseLibrary) {
    library = ctx_.chooseLibrary();
  } else {
    library = QFileDialog::getSaveFileName(this, "Add to FFL Library", QString(), "FFL Libraries (*.ffl)",
                                           nullptr, QFileDialog::DontConfirmOverwrite)
                  .toStdString();
  }
  if (library.empty()) return;
  EditorToFilter();
  FFFilter out = *ctx_.filter;
  codes_->ApplyMode(out);
  // The library takes filters from files: the filter goes through a TXT of its own.
  QTemporaryDir scratch;
  if (!scratch.isValid()) return;
  const std::string folder = scratch.path().toStdString() + "/";
  out.filename = SaveTargetName(Latin1(label6_[0]->text()), OutputFormat::TXT);
  FilterEnv env;
  env.options = Options();
  env.shell = ctx_.shell;
  WriteTXT(out, folder, false, env);
  const std::vector<std::string> sources{folder + out.filename};
  const FFLAddResult result = QFileInfo::exists(QString::fromStdString(library))
                                  ? cmd_Add2FFL(library, sources, env)
                                  : cmd_CreateFFL(library, sources, env);
  if (result.error) env.hooks().Report(*result.error);
  if (!result.ok) Message("The filter could not be added to " + library + ".", MsgIcon::Exclamation, "Trel");
  if (ctx_.refreshPanes) ctx_.refreshPanes();
}

}  // namespace trel
