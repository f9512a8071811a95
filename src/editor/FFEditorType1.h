// FFEditorType1, the skinned Filter Factory Editor window: five name fields,
// eight sliders with four map switches, four code boxes, the live preview and
// ten memory spots. It edits the program's one filter record: FilterToEditor
// fills the controls from it, EditorToFilter writes them back; in between the
// controls are the truth.
#pragma once

#include <QImage>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/DesReader.h"
#include "editor/FFEditorMod.h"
#include "filter/FFFilter.h"
#include "filter/FilterOptions.h"
#include "filter/ShellHooks.h"
#include "picture/PicView.h"

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPlainTextEdit;
class QPrinter;
class QPushButton;
class QScrollBar;

namespace trel {

class ClickLabel;

class SettingsStore;

// What the editor needs of the program around it.
struct EditorContext {
  FFFilter* filter = nullptr;   // the program's one filter record
  std::string programFolder;    // ends in a separator; temp.dll, Snipets.db, interface/
  SettingsStore* store = nullptr;
  ShellHooks* shell = nullptr;  // messages; null answers every question with OK
  std::function<FilterOptions()> options;          // the preferences' options, read at each use
  std::function<std::string()> interfaceFile;      // the chosen skin file ("Interfc4.des")
  std::function<std::string()> targetFolder;       // where "Save" writes (the active pane's folder)
  std::function<void()> refreshPanes;              // after a save
  std::function<bool(const std::string&)> overwriteCheck;  // false: do not replace the file
  std::function<bool()> applyAtOnce;               // preview while a slider is dragged
  std::function<std::string()> batchFile;          // not empty while run from the Batch dialog
  std::function<std::string()> chooseLibrary;      // the FFL library "Save" adds to; empty: none
};

class FFEditorType1 : public QWidget {
  Q_OBJECT
 public:
  explicit FFEditorType1(EditorContext context, QWidget* parent = nullptr);
  ~FFEditorType1() override;

  // --- the procedures the program calls
  void FilterToEditor();
  void EditorToFilter();
  // Asks "Delete the current filter?"; true when the editor was reset.
  bool NewFilter();
  void ReadInterface();
  // Starts a preview run; false when none was started (window disabled, no picture,
  // or the code does not compile: the fault is then shown under the code box).
  bool UpdatePreview();
  void CommitLabelEdit();
  // 0 8bf, 1 prm, 2 afs, 3 pff, 4 txt, 5 Transition Factory prm, 6 add to an FFL library.
  void SaveFilterAs(int format);
  void AddToLibrary();
  bool RandomizeSliders();
  void ApplyFilterToPicture();
  void MapSwitch(int m);
  void ChooseCodeFont();

  // --- state for the program and for tests
  bool InPluginCompile() const { return inPluginCompile_; }
  const DesSkin& skin() const { return skin_; }
  const std::string& interfaceFolder() const { return interfaceFolder_; }
  const std::string& interfaceFile() const { return interfaceFile_; }
  bool GraphSliders() const { return graphSliders_; }
  const std::string& MailAddress() const { return mailAddress_; }
  const QImage& previewSource() const { return previewImage_; }
  QImage previewResult() const { return previewResult_; }
  // Waits (running the event loop) until no preview is running or pending.
  bool WaitForPreview(int timeoutMs = 5000);
  int previewRuns() const { return previewRuns_; }
  QString codeError() const;
  // Memory spots: store the sliders into spot s, recall them.
  void StoreSpot(int s);
  void RecallSpot(int s);
  bool SpotMarked(int s) const;
  void ClearAllSpots();
  void SetSliderValue(int n, int value);  // as a user moving the slider
  int SliderValue(int n) const;
  void SetLocked(int n, bool locked);
  bool Locked(int n) const;
  // The code box aids, on the visible box.
  void InsertInCode(const QString& text);
  void InsertFunction(const QString& entry);   // the function list: caret after "("
  void InsertSnippet(int index);
  const std::vector<Snippet>& Snippets() const { return snippets_; }
  // Shows code box i (0 A, 1 R, 2 G, 3 B) as Label2_Click does.
  void Label2_Click(int i);
  void Command10_Click();
  int FindAndReplace(const QString& find, const QString& replace, bool all);
  void CopyFilterToClipboard();
  void PasteFilterFromClipboard();
  // Prints on `printer` (tests hand a PDF printer).
  void PrintFilter(QPrinter& printer);
  void PrinterSetup();
  void ShowFindReplace();
  void SetPreviewPicture(const QImage& picture);  // the source, scaled to preview size
  // The picture editor that "Apply (Filter)" fills.
  PicView* picView() const { return picView_; }
  // Memory spot marks set by a reader of TXT files.
  ShellHooks& readerShell();
  void SetAlphaDisplay(bool on);
  void SetAutoPreview(bool on);
  // Sets the preview's delay after typing (2000 ms by default).
  void SetTypingDelay(int ms);
  // Sets the skin file and reads it.
  void LoadSkin(const std::string& interfaceFile);
  QMenu* functionsMenu() const { return mnuFfeFunctions_; }

 signals:
  void previewFinished(bool ok);
  void unloadRequested();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  class ReaderShell;
  void BuildControls();
  void BuildMenus();
  void LoadSnippets();
  void PreparePreviewPic();
  void ShowSlider(int n, bool visible);
  void PlaceSlider(int n, int value);
  void StartEdit(QLabel* label, int extraWidth);
  void CancelLabelEdit();
  QString SliderSpokenName(int n) const;
  void ShowCodeError(int channel, size_t position, const std::string& message);
  void ClearCodeError();
  void PreviewDone(int job, QImage result, bool ok, QString message, bool alpha);
  void TrackPress(int n, int x);
  void KnobDrag(int n, int globalX);
  int VisibleBox() const;
  bool BatchRefuses();
  void OpenPreviewPicture();
  void SavePreviewPicture();
  void Message(const std::string& text, MsgIcon icon, const std::string& title);
  FilterOptions Options() const;
  void SpotClick(int s);
  void Command7_Click(int s);

  EditorContext ctx_;
  std::unique_ptr<ReaderShell> readerShell_;
  DesSkin skin_;
  std::string interfaceFolder_ = "interface";
  std::string interfaceFile_ = kDefaultInterfaceFile;
  bool graphSliders_ = false;
  int tileSet_ = 0;
  std::string mailAddress_;
  QImage background_;
  QImage previewImage_;    // the source at preview size
  QImage previewResult_;   // the last result shown
  bool inPluginCompile_ = false;
  std::vector<Snippet> snippets_;
  QLabel* editedLabel_ = nullptr;  // null: nothing is being edited
  int lockTarget_ = 0;
  bool deletePending_ = false;

  std::array<ClickLabel*, 5> label6_{};
  std::array<ClickLabel*, 8> label7_{};
  std::array<ClickLabel*, 8> label1_{};
  std::array<QScrollBar*, 8> hScroll1_{};
  std::array<QLabel*, 8> picture2_{};
  std::array<QLabel*, 8> picture3_{};
  std::array<int, 8> knobValue_{};
  std::array<QCheckBox*, 4> check1_{};
  std::array<QPlainTextEdit*, 4> text5_{};
  std::array<ClickLabel*, 4> label2_{};
  std::array<QPushButton*, 10> command7_{};
  std::array<QLabel*, 10> picture7_{};
  std::array<ClickLabel*, 8> label9_{};
  QCheckBox* check2_ = nullptr;
  QLabel* picture1_ = nullptr;
  QLabel* picture6_ = nullptr;
  QComboBox* combo2_ = nullptr;
  std::array<QComboBox*, 2> combo1_{};
  QLineEdit* text10_ = nullptr;
  QPushButton* command8_ = nullptr;
  QPushButton* command10_ = nullptr;
  QPushButton* command14_ = nullptr;
  ClickLabel* mailLink_ = nullptr;
  QLabel* codeError_ = nullptr;
  QLabel* title_ = nullptr;
  QTimer timer1_;

  QMenu* mnuFfeFunctions_ = nullptr;
  QMenu* mnuSliderSwitch_ = nullptr;
  QMenu* mnuCodeSnipet_ = nullptr;
  QMenu* mnuExpression_ = nullptr;
  QAction* mnuAlphaChannel_ = nullptr;

  // The preview runs off the window's thread, one at a time; a new run
  // cancels the one before it.
  QThreadPool pool_;
  std::shared_ptr<std::atomic<bool>> cancel_;
  int jobCounter_ = 0;
  int jobShown_ = 0;
  int previewRuns_ = 0;
  bool dragging_ = false;
  bool bodyPress_ = false;
  QPoint pressAt_;
  QPoint dragOffset_;
  int knobGrab_ = -1;
  QPointer<PicView> picView_;
  std::unique_ptr<QPrinter> printer_;
  std::string previewPath_;
  QTimer repeat_;
  int repeatSlider_ = -1, repeatStep_ = 0;
  std::array<bool, 8> sliderShown_{};
};

}  // namespace trel
