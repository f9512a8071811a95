// The editor's menus: the project menu (a right click on the body, and the
// keys of its entries) and the lock menu of the slider names. The code boxes
// make their own expression and snippet menus.
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QMenu>
#include <QPrinter>

#include "editor/CodeBoxes.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorType1.h"
#include "editor/LivePreview.h"
#include "editor/SliderBank.h"

namespace trel {

void FFEditorType1::BuildMenus() {
  auto add = [this](QMenu* menu, const char* name, const QString& caption, auto slot,
                    QKeySequence key = {}) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(name);
    if (!key.isEmpty()) {
      a->setShortcut(key);
      a->setShortcutContext(Qt::WindowShortcut);
      addAction(a);
    }
    connect(a, &QAction::triggered, this, slot);
    return a;
  };
  mnuFfeFunctions_ = Named(new QMenu("&Project", this), "mnuFfeFunctions_FFE");
  QMenu* m = mnuFfeFunctions_;
  add(m, "mnuCopyFilter2Clip_FFE", "Copy Filter to Clipboard", [this] { CopyFilterToClipboard(); },
      QKeySequence("Ctrl+Shift+C"));
  add(m, "mnuPasteFilter_FFE", "Paste Filter from Clipboard", [this] { PasteFilterFromClipboard(); },
      QKeySequence("Ctrl+Shift+V"));
  add(m, "mnuFindReplace_FFE", "Find and Replace", [this] { ShowFindReplace(); },
      QKeySequence("Ctrl+H"));
  mnuAlphaChannel_ = add(m, "mnuAlphaChannel", "Alpha Channel Display", [this] { UpdatePreview(); });
  mnuAlphaChannel_->setCheckable(true);
  add(m, "mnuUpdatePreview_FFE", "Update Preview", [this] { UpdatePreview(); }, QKeySequence("F5"));
  add(m, "mnuApplyFilter_FFE", "Apply (Filter)", [this] { ApplyFilterToPicture(); },
      QKeySequence("Ctrl+Return"));
  m->addSeparator();
  add(m, "mnuRandomize_FFE", "Randomize", [this] { RandomizeSliders(); }, QKeySequence("Ctrl+R"));
  add(m, "mnuFfeReset_FFE", "Reset", [this] { NewFilter(); }, QKeySequence("Ctrl+N"));
  m->addSeparator();
  add(m, "mnuOpenPicture_FFE", "Open Picture...", [this] { OpenPreviewPicture(); },
      QKeySequence("Ctrl+O"));
  add(m, "mnuSavePicture_FFE", "Save Picture...", [this] { SavePreviewPicture(); });
  QMenu* saveAs = Named(m->addMenu("Save (Filter) As"), "mnuSaveAs_FFE");
  for (int i = 0; i < int(std::size(kSaveEntries)); ++i) {
    QAction* a = saveAs->addAction(kSaveEntries[size_t(i)].menuCaption);
    a->setObjectName(QString("mnuSaveFilterAs_FFE_%1").arg(i));
    connect(a, &QAction::triggered, this, [this, i] { SaveEntry(i); });
  }
  QAction* save = new QAction(this);
  save->setShortcut(QKeySequence("Ctrl+S"));
  connect(save, &QAction::triggered, this, [this] { SaveEntry(combo2_->currentIndex()); });
  addAction(save);
  add(m, "mnuCopyPreview_FFE", "Copy Preview to Clipboard", [this] {
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->setImage(preview_->result());
  });
  m->addSeparator();
  add(m, "mnuPrinterSetup_FFE", "Print Setup...", [this] { PrinterSetup(); });
  add(m, "mnuPrintFilter_FFE", "Print Filter...", [this] {
    if (!printer_) printer_ = std::make_unique<QPrinter>();
    PrintFilter(*printer_);
  }, QKeySequence("Ctrl+P"));

  mnuSliderSwitch_ = Named(new QMenu("SliderSwitch", this), "mnuSliderSwitch_FFE");
  add(mnuSliderSwitch_, "mnuDeactivate_FFE", "Lock for Randomize",
      [this] { SetLocked(sliders_->lockTarget(), true); });
  add(mnuSliderSwitch_, "mnuActivate_FFE", "Unlock for Randomize",
      [this] { SetLocked(sliders_->lockTarget(), false); });
}

}  // namespace trel
