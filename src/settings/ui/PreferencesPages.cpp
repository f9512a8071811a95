#include "settings/ui/PreferencesPages.h"

#include <QCheckBox>
#include <QFontMetrics>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>

namespace trel {

QCheckBox* MakeCheck(QWidget* parent, const QString& name, const QString& caption, const QString& tip) {
  auto* box = new QCheckBox(caption, parent);
  box->setObjectName(name);
  box->setToolTip(tip);
  box->setAccessibleName(caption);
  return box;
}

QPushButton* MakeButton(QWidget* parent, const QString& name, const QString& caption, const QString& tip) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(name);
  button->setToolTip(tip);
  button->setAccessibleName(caption.isEmpty() ? tip : caption);
  button->setAutoDefault(false);
  return button;
}

int CheckOf(const QCheckBox* box) {
  switch (box->checkState()) {
    case Qt::Checked: return 1;
    case Qt::PartiallyChecked: return 2;
    default: return 0;
  }
}

void SetCheck(QCheckBox* box, int value) {
  box->setCheckState(value == 2 ? Qt::PartiallyChecked : value == 1 ? Qt::Checked : Qt::Unchecked);
}

void AdaptListWidth(QListWidget* box) {
  const QFontMetrics metrics(box->font());
  int widest = 0;
  for (int i = 0; i < box->count(); ++i)
    widest = std::max(widest, metrics.horizontalAdvance(box->item(i)->text() + "  "));
  box->setProperty("scrollExtent", widest);
  box->horizontalScrollBar()->setRange(0, std::max(0, widest - box->viewport()->width()));
}

}  // namespace trel
