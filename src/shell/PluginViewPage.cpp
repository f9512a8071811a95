#include "shell/PluginViewPage.h"

namespace trel {

PluginViewPage::PluginViewPage(int pane, QWidget* parent) : QWidget(parent), pane_(pane) {
  setObjectName(QString("PluginViewPage_%1").arg(pane));
}

std::vector<std::string> PluginViewPage::SelectedPaths() const { return {}; }
std::string PluginViewPage::CurrentPath() const { return {}; }
void PluginViewPage::SelectAllFilters(bool all) { (void)all; }

}  // namespace trel
