#include "shell/FflViewPage.h"

namespace trel {

FflViewPage::FflViewPage(int pane, QWidget* parent) : QWidget(parent), pane_(pane) {
  setObjectName(QString("FFLViewPage_%1").arg(pane));
}

void FflViewPage::SelectAllEntries(bool all) { (void)all; }

}  // namespace trel
