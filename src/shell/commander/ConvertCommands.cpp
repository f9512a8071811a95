// The Convert dialog and the batch conversion it starts, with the window's
// progress, Esc and overwrite question.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "filter/BatchConvert.h"
#include "base/Paths.h"
#include "shell/window/CommandGroups.h"
#include "shell/fflview/FflViewController.h"
#include "shell/dialogs/ConvertDialog.h"
#include "shell/commander/ConvertJob.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/pane/Selection.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

namespace {

constexpr int kCompileOptionsPage = 1;  // "FF/TF"

const char* kFormats[6] = {"Photoshop FF Plugin", "Premiere FF Plugin", "Premiere TF Plugin",
                           "AFS File",            "PFF File",           "Text File"};

// The messages of a conversion, answered by the window; the job asks them
// on the window's thread.
class WindowHooks : public UserMessages {
 public:
  WindowHooks(MainWindow& window, UserMessages& messages) : window_(window), messages_(messages) {}
  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon, const std::string& title) override {
    return messages_.MsgBox(text, buttons, icon, title);
  }
  void ErrorMessage(const std::string& description) override { messages_.ErrorMessage(description); }
  bool ErrorMessage2(const std::string& description) override { return messages_.ErrorMessage2(description); }
  void RefreshActivePane() override { window_.RefreshFile1(window_.ActivePane()); }

 private:
  MainWindow& window_;
  UserMessages& messages_;
};

}  // namespace

ConvertDialog::ConvertDialog(QWidget* parent) : QDialog(parent) {
  setObjectName("Convert");
  setWindowTitle("Convert");
  auto* grid = new QGridLayout(this);
  check2_ = new QCheckBox("Use Filter Name as File Name", this);
  check2_->setObjectName("Check2");
  check2_->setToolTip("Activate, if you dislike 8+3 file names");
  check1_ = new QCheckBox("Use Clipboard as Source", this);
  check1_->setObjectName("Check1");
  check1_->setToolTip("Ignore the selected files and read FF source code from the clipboard instead");
  check3_ = new QCheckBox("Mac FF Adaption", this);
  check3_->setObjectName("Check3");
  check3_->setToolTip("Does some corrections for using the FF code on the Macintosh");
  auto* label = new QLabel("Output Format", this);
  combo1_ = new QComboBox(this);
  combo1_->setObjectName("Combo1");
  combo1_->setAccessibleName("Output Format");
  for (const char* f : kFormats) combo1_->addItem(f);
  label->setBuddy(combo1_);
  command3_ = new QPushButton("Output Settings", this);
  command3_->setObjectName("Command3");
  command3_->setToolTip("Shows Preferences for selecting a plugin format");
  command1_ = new QPushButton("Convert", this);
  command1_->setObjectName("Command1");
  command1_->setToolTip("Start conversion process");
  command1_->setDefault(true);
  command2_ = new QPushButton("Cancel", this);
  command2_->setObjectName("Command2");
  grid->addWidget(label, 0, 0);
  grid->addWidget(combo1_, 0, 1);
  grid->addWidget(command3_, 0, 2);
  grid->addWidget(check2_, 1, 0, 1, 3);
  grid->addWidget(check1_, 2, 0, 1, 3);
  grid->addWidget(check3_, 3, 0, 1, 3);
  auto* row = new QHBoxLayout;
  row->addStretch(1);
  row->addWidget(command1_);
  row->addWidget(command2_);
  grid->addLayout(row, 4, 0, 1, 3);
  for (QWidget* w : std::initializer_list<QWidget*>{check1_, check2_, check3_, command1_, command2_, command3_})
    w->setAccessibleName(w->property("text").toString());
  connect(combo1_, &QComboBox::currentIndexChanged, this, &ConvertDialog::Combo1_Click);
  connect(command1_, &QPushButton::clicked, this, &QDialog::accept);
  connect(command2_, &QPushButton::clicked, this, &QDialog::reject);
  connect(command3_, &QPushButton::clicked, this, &ConvertDialog::outputSettingsRequested);
  SetFormat(OutputFormat::Plugin8bf);
  Combo1_Click(ConvertListIndex(OutputFormat::Plugin8bf));
}

void ConvertDialog::Combo1_Click(int index) {
  // Plugin formats take their settings from the preferences; source formats
  // can be adapted for the Macintosh.
  const bool plugin = index >= ConvertListIndex(OutputFormat::Plugin8bf) &&
                      index <= ConvertListIndex(OutputFormat::TransitionPlugin);
  command3_->setEnabled(plugin);
  check3_->setEnabled(!plugin);
}

OutputFormat ConvertDialog::format() const {
  return FormatAtConvertIndex(combo1_->currentIndex()).value_or(OutputFormat::Plugin8bf);
}
void ConvertDialog::SetFormat(OutputFormat format) { combo1_->setCurrentIndex(ConvertListIndex(format)); }
bool ConvertDialog::nameFromTitle() const { return check2_->isChecked(); }
bool ConvertDialog::useClipboard() const { return check1_->isChecked(); }
void ConvertDialog::SetUseClipboard(bool on) { check1_->setChecked(on); }
bool ConvertDialog::macAdaption() const { return check3_->isChecked(); }

namespace {

// Runs the conversion the dialog describes; the dialog's clipboard box shows
// what the run leaves.
void RunConvert(MainWindow& window, ConvertDialog& dialog) {
  if (!window.IsCommandAllowed("cmdConvert")) return;  // a conversion is running
  FileCommander* files = FileCommander::Of(window);
  const int active = window.ActivePane();
  FilePane* p = window.pane(active);
  ConvertRequest request;
  request.format = dialog.format();
  request.useClipboard = dialog.useClipboard();
  request.activeView = p->paneView();
  if (request.useClipboard) {
    const QString text = QApplication::clipboard()->text();
    if (!text.isEmpty()) request.clipboardText = text.toLatin1().toStdString();
  } else {
    if (request.activeView == FilePane::kFFLView) {
      // The library's entries are converted by the library commands.
      if (FflController* ffl = FflController::Of(window)) ffl->Extract(active, request.format);
      return;
    }
    const SelectedItems selection = GetSelectedItems(*p);
    if (!selection.HasSelectionFlag) return;
    for (const std::string& item : selection.items)
      request.selection.push_back(request.activeView == FilePane::kPluginView ? item : selection.folder + item);
  }
  if (window.prefs().passivePaneFolder != 1) {
    bool subFolders = false;
    const QString chosen = files->SelectFolderDialog({}, false, request.useClipboard ? nullptr : &subFolders);
    if (chosen.isEmpty()) return;
    request.createSubFolders = subFolders;
  }
  const int passive = active ^ 1;
  request.targetFolder = WithTrailingSeparator(window.pane(passive)->folder());
  FilterOptions options;
  options.noFFOptimize = window.prefs().noFFOptimize == 1;
  options.writeFFL10 = window.prefs().ffl10 == 1;
  options.macFFAdaption = dialog.macAdaption();
  options.useFilterNameAsFileName = dialog.nameFromTitle();
  options.programFolder = window.programFolder();
  window.EscapeFlag() = false;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  files->OverwriteCheck("", "");
  // The hooks live as long as the job's connection to its end.
  auto hooks = std::make_shared<WindowHooks>(window, files->messages());
  auto* job = new ConvertJob(window.filter(), std::move(request), options, *hooks, *files, window.EscapeFlag(),
                             &dialog);
  window.SetCommandAvailable("cmdConvert", false);  // one conversion at a time
  QObject::connect(job, &ConvertJob::statusChanged, &window,
                   [&window](const QString& text) { window.label3()->setText(text); });
  QObject::connect(job, &ConvertJob::finished, &window, [&window, &dialog, files, job, hooks, active, passive] {
    job->deleteLater();
    window.filter() = std::move(job->filter());
    files->OverwriteCheck("", "");
    QApplication::restoreOverrideCursor();
    window.SetCommandAvailable("cmdConvert", true);
    dialog.SetUseClipboard(job->report().clipboardOptionOn);
    window.RefreshFile1C(active);
    window.StatusDisplayClear();
    if (window.pane(passive)->paneView() == FilePane::kPluginView) {
      window.ClearPluginViewFresh(passive);
      window.SSTab1_Click(passive);
    }
  });
  job->Start();
}

}  // namespace

void InstallConvertCommands(MainWindow& window) {
  auto* dialog = new ConvertDialog(&window);
  QObject::connect(dialog, &ConvertDialog::outputSettingsRequested, &window,
                   [&window] { window.ShowPreferences(kCompileOptionsPage); });
  QObject::connect(dialog, &QDialog::accepted, &window, [&window, dialog] { RunConvert(window, *dialog); });
  // The command row's "Convert" opens the dialog; an action stands for it so
  // that the row and tests reach it by name.
  auto* open = new QAction("Convert...", &window);
  open->setObjectName("cmdConvertDialog");
  window.addAction(open);
  window.AddToCommands(open);
  QObject::connect(open, &QAction::triggered, &window, [dialog] { TheDialogs().Open(*dialog); });
  window.SetCommandAvailable("cmdConvertDialog", true);
  window.SetCommandAvailable("cmdConvert", true);
}

}  // namespace trel
