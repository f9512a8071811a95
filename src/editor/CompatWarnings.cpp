#include "editor/CompatWarnings.h"

#include <QLabel>
#include <QPlainTextEdit>

#include "editor/CodeHighlighter.h"

namespace trel {

QString CompatWarningText(const std::vector<ff::CompatWarning>& warnings) {
  if (warnings.empty()) return {};
  static const char* const kChannel[4] = {"R", "G", "B", "A"};
  const ff::CompatWarning& w = warnings.front();
  QString text = QString("Warning: %1: position %2: %3")
                     .arg(kChannel[w.channel & 3])
                     .arg(w.position + 1)
                     .arg(QString::fromLatin1(w.message.data(), qsizetype(w.message.size())));
  if (warnings.size() > 1) text += QString(" (and %1 more)").arg(warnings.size() - 1);
  return text;
}

void ShowCompatWarnings(QWidget* editor, const QLabel* under, const std::array<QPlainTextEdit*, 4>& boxes,
                        bool oneBox, const std::vector<ff::CompatWarning>& all) {
  std::vector<ff::CompatWarning> warnings;
  for (const ff::CompatWarning& w : all)
    if (!(oneBox && (w.channel == 1 || w.channel == 2))) warnings.push_back(w);

  std::array<std::vector<std::pair<int, int>>, 4> marks;
  for (const ff::CompatWarning& w : warnings)
    marks[size_t(w.channel & 3)].emplace_back(int(w.position), int(w.length));
  for (size_t ch = 0; ch < 4; ++ch) {
    if (!boxes[ch]) continue;
    if (auto* h = boxes[ch]->document()->findChild<CodeHighlighter*>()) h->SetMarks(marks[ch]);
  }

  auto* label = editor->findChild<QLabel*>("CompatWarning", Qt::FindDirectChildrenOnly);
  if (!label) {
    if (warnings.empty()) return;
    label = new QLabel(editor);
    label->setObjectName("CompatWarning");
    label->setAccessibleName("Compatibility warning");
    label->setStyleSheet("QLabel{color:rgb(255,170,40);font-weight:bold}");
    label->setWordWrap(true);
  }
  const QString text = CompatWarningText(warnings);
  label->setText(text);
  label->setAccessibleDescription(text);
  label->setToolTip(text);
  if (text.isEmpty()) {
    label->hide();
    return;
  }
  if (under) label->setGeometry(under->geometry());
  label->show();
  label->raise();
}

}  // namespace trel
