// The preferences as they reach the window: the list options and fonts applied
// to the panes, and the controller that owns the preferences dialog, the link
// lists window and the desktop services of the menus.
#pragma once

#include <QObject>
#include <QPointer>

#include "settings/Preferences.h"
#include "settings/ui/PreferencesPages.h"

namespace trel {

class FilePane;
class Form2;
class FrmDownload;
class MainWindow;

// The six list options (hover selection, flat scroll bar, gridlines, full row
// selection, hot tracking, auto column width) and the list box font on the
// lists of one pane.
void ApplyPaneOptions(FilePane& pane, const Preferences& prefs);
// The other font on the window's labels, mask boxes and command buttons.
void ApplyOtherFont(MainWindow& window, const Preferences& prefs);

class PreferencesController : public QObject {
  Q_OBJECT
 public:
  explicit PreferencesController(MainWindow& window);

  Form2* form2() const { return form2_; }
  FrmDownload* download();  // made on first use
  // Opens the preferences modally on a page; true for OK.
  bool Open(int page);
  // The window's settings given to the dialog as the copy it edits.
  void SyncToDialog();
  // A whole set the dialog handed back taken into the window: options, lists,
  // menus, panes.
  void Take(const PreferenceSet& set);
  void ApplyToPanes();
  void RunApp(int index);
  void ChoosePicture(int index);
  void ShowHelpPage(const QString& page);
  // The window builds the entries of the Pictures and Apps menus; this gives
  // them their commands.
  void WireMenuEntries();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // The window follows a change of its settings: panes and menus are redone
  // where what they show changed.
  void Follow(const Preferences& now);

  MainWindow& window_;
  bool shown_ = false;
  Preferences followed_;  // the settings the panes and menus last showed
  Form2* form2_ = nullptr;
  QPointer<FrmDownload> download_;
  bool interfacesListed_ = false;
};

// The controller the window was given, or null.
PreferencesController* FindPreferencesController(MainWindow& window);

}  // namespace trel
