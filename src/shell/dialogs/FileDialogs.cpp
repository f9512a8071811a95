// The three small dialogs of the file commands: Overwrite, SelectFolder and
// Form3, the input box of the rename and create commands.
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/Paths.h"
#include "shell/commander/FileCommander.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

namespace {

class OverwriteDialog : public QDialog {
 public:
  explicit OverwriteDialog(QWidget* owner) : QDialog(owner) {
    setObjectName("Overwrite");
    setWindowTitle("Overwrite");
    auto* column = new QVBoxLayout(this);
    auto* title = new QLabel("Overwrite", this);
    title->setObjectName("Label3");
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    column->addWidget(title);
    first_ = new QLabel(this);
    first_->setObjectName("Label1");
    with_ = new QLabel("With:", this);
    with_->setObjectName("Label4");
    second_ = new QLabel(this);
    second_->setObjectName("Label2");
    for (QLabel* l : {first_, with_, second_}) {
      l->setTextInteractionFlags(Qt::TextSelectableByMouse);
      column->addWidget(l);
    }
    auto* row = new QHBoxLayout;
    const char* captions[5] = {"Overwrite", "Ignore", "Overwrite All", "Ignore All", "Cancel"};
    for (int i = 0; i < 5; ++i) {
      auto* button = new QPushButton(captions[i], this);
      button->setObjectName(QString("Command1_%1").arg(i));
      button->setAccessibleName(captions[i]);
      connect(button, &QPushButton::clicked, this, [this, i] { done(kFirstAnswer + i); });
      row->addWidget(button);
    }
    column->addLayout(row);
  }
  OverwriteButton Ask(const QString& target, const QString& source) {
    first_->setText(target);
    second_->setText(source);
    with_->setVisible(!source.isEmpty());
    second_->setVisible(!source.isEmpty());
    // The result code is the button's number after kFirstAnswer; closing the
    // window is Cancel. Nobody at the screen overwrites.
    const int code = TheDialogs().Exec(*this, kFirstAnswer);
    return code >= kFirstAnswer && code <= kFirstAnswer + 4 ? static_cast<OverwriteButton>(code - kFirstAnswer)
                                                            : OverwriteButton::Cancel;
  }

 private:
  static constexpr int kFirstAnswer = 10;  // above Accepted and Rejected
  QLabel* first_;
  QLabel* with_;
  QLabel* second_;
};

class SelectFolderDialog : public QDialog {
 public:
  SelectFolderDialog(QWidget* owner, const QStringList& entries, const std::function<bool(QString&)>& accept,
                     bool* subFolders)
      : QDialog(owner), check_(accept) {
    setObjectName("SelectFolder");
    setWindowTitle("Select Folder");
    auto* column = new QVBoxLayout(this);
    combo_ = new QComboBox(this);
    combo_->setObjectName("Combo1");
    combo_->setEditable(true);
    combo_->setAccessibleName("Target folder");
    combo_->addItems(entries);
    combo_->setCurrentIndex(0);
    column->addWidget(combo_);
    subFolders_ = new QCheckBox("Automatically create sub folder(s)", this);
    subFolders_->setObjectName("Check1");
    subFolders_->setVisible(subFolders != nullptr);
    if (subFolders) subFolders_->setChecked(*subFolders);
    column->addWidget(subFolders_);
    auto* row = new QHBoxLayout;
    auto* browse = new QPushButton("Select Folder", this);
    browse->setObjectName("Command1");
    auto* ok = new QPushButton("OK", this);
    ok->setObjectName("Command2");
    ok->setDefault(true);
    auto* cancel = new QPushButton("Cancel", this);
    cancel->setObjectName("Command3");
    row->addWidget(browse);
    row->addStretch(1);
    row->addWidget(ok);
    row->addWidget(cancel);
    column->addLayout(row);
    connect(browse, &QPushButton::clicked, this, [this] {
      const QString chosen = QFileDialog::getExistingDirectory(this, "Please select a folder ...", combo_->currentText());
      if (chosen.isEmpty()) return;
      const QString entry = QString::fromStdString(WithTrailingSeparator(chosen.toStdString()));
      combo_->insertItem(0, entry);
      combo_->setCurrentIndex(0);
    });
    connect(ok, &QPushButton::clicked, this, [this] {
      if (TakeCurrent()) QDialog::accept();  // else the dialog stays open
    });
    connect(cancel, &QPushButton::clicked, this, [this] {
      combo_->setEditText({});
      QDialog::reject();
    });
    resize(480, sizeHint().height());
  }
  // OK: the entry shown, if the caller takes it.
  bool TakeCurrent() {
    QString text = combo_->currentText();
    if (!check_(text)) return false;
    result_ = text;
    return true;
  }
  QString result_;
  bool subFoldersChecked() const { return subFolders_->isChecked(); }

 private:
  std::function<bool(QString&)> check_;
  QComboBox* combo_;
  QCheckBox* subFolders_;
};

class InputDialog : public QDialog {
 public:
  InputDialog(QWidget* owner, const QString& caption, const QString& text) : QDialog(owner) {
    setObjectName("Form3");
    setWindowTitle(caption);
    auto* column = new QVBoxLayout(this);
    auto* label = new QLabel(caption, this);
    column->addWidget(label);
    edit_ = new QLineEdit(text, this);
    edit_->setObjectName("Text1");
    edit_->setAccessibleName(caption);
    edit_->selectAll();
    column->addWidget(edit_);
    auto* row = new QHBoxLayout;
    auto* ok = new QPushButton("OK", this);
    ok->setDefault(true);
    auto* cancel = new QPushButton("Cancel", this);
    row->addStretch(1);
    row->addWidget(ok);
    row->addWidget(cancel);
    column->addLayout(row);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    resize(420, sizeHint().height());
  }
  QString text() const { return edit_->text(); }

 private:
  QLineEdit* edit_;
};

// What the Select Folder dialog answers when nobody is there to ask.
constexpr int kTakeShown = 2;  // above Accepted and Rejected

class ProgramDialogs : public FileDialogs {
 public:
  explicit ProgramDialogs(QWidget* owner) : owner_(owner) {}

  OverwriteButton Overwrite(const QString& target, const QString& source) override {
    OverwriteDialog dialog(owner_);
    return dialog.Ask(target, source);
  }
  QString SelectFolder(const QStringList& entries, const std::function<bool(QString&)>& accept,
                       bool* subFolders) override {
    SelectFolderDialog dialog(owner_, entries, accept, subFolders);
    // Nobody at the screen takes the first entry, as OK would.
    if (TheDialogs().Exec(dialog, kTakeShown) == kTakeShown) dialog.TakeCurrent();
    if (subFolders) *subFolders = dialog.subFoldersChecked();
    return dialog.result_;
  }
  std::optional<QString> Input(const QString& caption, const QString& text) override {
    InputDialog dialog(owner_, caption, text);
    if (TheDialogs().Exec(dialog, QDialog::Accepted) != QDialog::Accepted) return std::nullopt;
    return dialog.text();
  }

 private:
  QWidget* owner_;
};

}  // namespace

std::unique_ptr<FileDialogs> MakeFileDialogs(QWidget* owner) { return std::make_unique<ProgramDialogs>(owner); }

}  // namespace trel
