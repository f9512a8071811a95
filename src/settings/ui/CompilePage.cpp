#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

#include "settings/ui/PreferencesPages.h"

namespace trel {

CompilePage::CompilePage(const PageContext& context, QWidget* parent) : PreferencesPage(context, parent) {
  setObjectName("Frame1_1");
  auto* column = new QVBoxLayout(this);
  auto* ps = new QGroupBox("Photoshop FF Compilation", this);
  ps->setObjectName("FramePhotoshopFF");
  auto* grid = new QGridLayout(ps);
  const char* templates[4] = {"Filter Factory 3.0", "Filter Factory 3.04 (needs plugin.dll from Adobe)",
                              "Template:", "Macintosh FF (Mac Binary)"};
  auto* group = new QButtonGroup(ps);
  for (int i = 0; i < 4; ++i) {
    auto* radio = new QRadioButton(templates[i], ps);
    radio->setObjectName(QString("Option4_%1").arg(i));
    radio->setAccessibleName(templates[i]);
    group->addButton(radio, i);
    option4_[static_cast<size_t>(i)] = radio;
  }
  combo2_ = new QComboBox(ps);
  combo2_->setObjectName("Combo2");
  combo2_->setEditable(true);
  combo2_->setAccessibleName("Template file");
  combo2_->setToolTip("A Filter Factory plugin of 49152, 49664 or 57344 bytes to use as the template");
  // The third option is usable only with a template entered.
  auto templateUsable = [this] {
    const bool has = !combo2_->currentText().trimmed().isEmpty();
    option4_[2]->setEnabled(has);
    if (!has && option4_[2]->isChecked()) option4_[0]->setChecked(true);
  };
  connect(combo2_, &QComboBox::currentTextChanged, this, templateUsable);
  grid->addWidget(option4_[0], 0, 0, 1, 2);
  grid->addWidget(option4_[1], 1, 0, 1, 2);
  grid->addWidget(option4_[2], 2, 0);
  grid->addWidget(combo2_, 2, 1);
  grid->addWidget(option4_[3], 3, 0, 1, 2);
  allModes_ = MakeCheck(ps, "Check9", "All Modes", "The plugin works in every colour mode, not only RGB");
  check5_ = MakeCheck(ps, "Check5", "Editor Plugin", "The plugin shows the code editor of the Filter Factory");
  check6_ = MakeCheck(ps, "Check6", "Demo Plugin", "Deactivate the OK-Button and makes the plugin undecompilable");
  bigPreview_ = MakeCheck(ps, "Check11", "Big Preview", "A larger preview in the plugin's dialog");
  megaPreview_ = MakeCheck(ps, "Check13", "Mega Preview", "The largest preview in the plugin's dialog");
  encrypted_ = MakeCheck(ps, "Check14", "Encrypted", "Makes the plugin's code unreadable for other programs");
  connect(check5_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) check6_->setChecked(false);
  });
  connect(check6_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) check5_->setChecked(false);
  });
  auto* options = new QGridLayout;
  options->addWidget(allModes_, 0, 0);
  options->addWidget(check5_, 0, 1);
  options->addWidget(check6_, 0, 2);
  options->addWidget(bigPreview_, 1, 0);
  options->addWidget(megaPreview_, 1, 1);
  options->addWidget(encrypted_, 1, 2);
  grid->addLayout(options, 4, 0, 1, 2);
  column->addWidget(ps);

  auto* pr = new QGroupBox("Premiere FF Compilation", this);
  pr->setObjectName("FramePremiereFF");
  auto* prGrid = new QGridLayout(pr);
  premiereFF_ = new QLineEdit(pr);
  premiereFF_->setObjectName("Text2");
  premiereFF_->setAccessibleName("Premiere FF template");
  premiereFF_->setToolTip("Select fl-fact.prm from your Adobe Premiere Plugin folder");
  premiereTF_ = new QLineEdit(pr);
  premiereTF_->setObjectName("Text3");
  premiereTF_->setAccessibleName("Premiere TF template");
  premiereTF_->setToolTip("Select fx-fact.prm from your Adobe Premiere Plugin folder");
  prGrid->addWidget(new QLabel("Filter template:", pr), 0, 0);
  prGrid->addWidget(premiereFF_, 0, 1);
  prGrid->addWidget(new QLabel("Transition template:", pr), 1, 0);
  prGrid->addWidget(premiereTF_, 1, 1);
  column->addWidget(pr);
  column->addStretch(1);
}

void CompilePage::Load(const PreferenceSet& set) {
  const CompileOptions& c = set.prefs.compile;
  combo2_->setEditText(QString::fromStdString(c.templatePath));
  option4_[2]->setEnabled(!combo2_->currentText().trimmed().isEmpty());
  const size_t choice = static_cast<size_t>(c.templateChoice);
  option4_[choice < 4 ? choice : 0]->setChecked(true);
  if (!option4_[2]->isEnabled() && option4_[2]->isChecked()) option4_[0]->setChecked(true);
  allModes_->setChecked(c.allModes);
  check5_->setChecked(c.editorPlugin);
  check6_->setChecked(c.demoPlugin && !c.editorPlugin);
  bigPreview_->setChecked(c.bigPreview);
  megaPreview_->setChecked(c.megaPreview);
  encrypted_->setChecked(c.encrypted);
  premiereFF_->setText(QString::fromStdString(c.premiereFFTemplate));
  premiereTF_->setText(QString::fromStdString(c.premiereTFTemplate));
}

void CompilePage::Store(PreferenceSet& set) const {
  Preferences& p = set.prefs;
  for (int i = 0; i < 4; ++i)
    if (option4_[static_cast<size_t>(i)]->isChecked()) p.compile.templateChoice = static_cast<CompileTemplate>(i);
  p.usedFF = static_cast<int>(p.compile.templateChoice);
  p.compile.templatePath = combo2_->currentText().trimmed().toStdString();
  p.compile.allModes = allModes_->isChecked();
  p.compile.editorPlugin = check5_->isChecked();
  p.compile.demoPlugin = check6_->isChecked();
  p.compile.bigPreview = bigPreview_->isChecked();
  p.compile.megaPreview = megaPreview_->isChecked();
  p.compile.encrypted = encrypted_->isChecked();
  p.compile.premiereFFTemplate = premiereFF_->text().toStdString();
  p.compile.premiereTFTemplate = premiereTF_->text().toStdString();
  p.encrypt[0] = p.compile.encrypted ? 1 : 0;
  p.editorPlugin[0] = p.compile.editorPlugin ? 1 : 0;
}

}  // namespace trel
