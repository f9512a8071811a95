// "FX Download": two tab sheets of web addresses, each a LinkList kept in its
// text file of the program folder. A double click opens the address.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "settings/LinkList.h"

class QLabel;
class QListWidget;
class QTabBar;

namespace trel {

class UserMessages;

class FrmDownload : public QDialog {
  Q_OBJECT
 public:
  FrmDownload(std::string programFolder, UserMessages& hooks, QWidget* parent = nullptr);

  int tab() const { return tab_; }  // 0 or 1
  const LinkList& links() const { return links_; }
  QListWidget* list() const { return list1_; }
  QLabel* label2() const { return label2_; }

  void LoadLinks(int tab);
  // Writes the list of `tab`; with `ask`, the user is asked first. False when
  // the file could not be written (the user has been told).
  bool SaveLinks(int tab, bool ask);
  void TabStrip1_Click(int tab);
  void MoveItem(int direction);
  void mnuConnect_Click();
  void mnuCopyURL_Click();
  void mnuAdd_Click();
  void mnuName_Click(int which);  // 0 the name, 1 the address
  void mnuDelete_Click();
  void mnuMove_Click();
  void mnuShareList_Click();
  void mnuSave_Click();
  void List1_Click();

  // How the window asks for text; tests replace it. Returns false for cancel.
  std::function<bool(const QString& title, const QString& prompt, QString& text)> inputBox;

 signals:
  void helpRequested(const QString& page);

 public slots:
  void reject() override;  // Esc and the close button save first

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::string FileOf(int tab) const;
  void ShowList();

  std::string programFolder_;
  UserMessages& hooks_;
  LinkList links_;
  int tab_ = 0;
  QTabBar* tabs_ = nullptr;
  QListWidget* list1_ = nullptr;
  QLabel* label2_ = nullptr;
};

}  // namespace trel
