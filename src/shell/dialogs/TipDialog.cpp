#include "shell/dialogs/TipDialog.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

#include "settings/Conversions.h"
#include "settings/SettingsStore.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

TipDialog::TipDialog(SettingsStore& store, const std::string& tipFile, QWidget* parent)
    : QDialog(parent), store_(store) {
  setObjectName("frmTip");
  setWindowTitle("Tip of the Day");
  auto* layout = new QVBoxLayout(this);
  auto* heading = new QLabel("<b>Did you know...</b>", this);
  layout->addWidget(heading);
  text_ = new QLabel(this);
  text_->setObjectName("lblTipText");
  text_->setWordWrap(true);
  text_->setMinimumSize(360, 100);
  text_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  layout->addWidget(text_, 1);
  auto* row = new QHBoxLayout;
  check_ = new QCheckBox("Show Tips at Startup", this);
  check_->setObjectName("chkLoadTipsAtStartup");
  counter_ = new QLabel(this);
  counter_->setObjectName("lblCounter");
  auto* next = new QPushButton("&Next Tip", this);
  next->setObjectName("cmdNextTip");
  auto* ok = new QPushButton("OK", this);
  ok->setObjectName("cmdOK");
  ok->setDefault(true);
  row->addWidget(check_);
  row->addStretch(1);
  row->addWidget(counter_);
  row->addWidget(next);
  row->addWidget(ok);
  layout->addLayout(row);

  // Form_Load: the box from the store (default 1), then the tips.
  check_->setChecked(CheckValue(store_.Get(kSectionOptions, "Show Tips at Startup", "1")).value_or(1) == 1);
  if (tips_.LoadTips(tipFile, QRandomGenerator::global()->generateDouble())) {
    DisplayCurrentTip();
  } else {
    text_->setText(kTipFileMissing);
  }
  connect(next, &QPushButton::clicked, this, &TipDialog::cmdNextTip_Click);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(check_, &QCheckBox::clicked, this, &TipDialog::chkLoadTipsAtStartup_Click);
}

void TipDialog::cmdNextTip_Click() {
  if (tips_.count() == 0) return;
  tips_.NextTip();
  DisplayCurrentTip();
}

void TipDialog::chkLoadTipsAtStartup_Click() {
  // Written at once: the choice holds even if the program ends abnormally.
  store_.Save(kSectionOptions, "Show Tips at Startup", check_->isChecked() ? "1" : "0");
  store_.Flush();
}

QString TipDialog::tipText() const { return text_->text(); }

void TipDialog::DisplayCurrentTip() {
  text_->setText(QString::fromLatin1(tips_.CurrentTip().c_str()));
  counter_->setText(QString::fromStdString(tips_.Counter()));
}

int TipDialog::ShowModal() { return TheDialogs().Exec(*this, QDialog::Accepted); }

}  // namespace trel
