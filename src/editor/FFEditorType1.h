// FFEditorType1, the skinned Filter Factory Editor window: five name fields,
// eight sliders with four map switches (SliderBank), four code boxes
// (CodeBoxes), the live preview (LivePreview) and ten memory spots
// (MemorySpots). It edits the program's one filter record: FilterToEditor
// fills the controls from it, EditorToFilter writes them back; in between the
// controls are the truth. The window itself holds the name fields, the tools,
// the save list, the skin and the menus, and ties the parts together.
#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/CodeBoxes.h"
#include "editor/DesReader.h"
#include "editor/FFEditorMod.h"
#include "editor/SliderBank.h"
#include "filter/FFFilter.h"
#include "filter/FilterOptions.h"
#include "front/UserMessages.h"
#include "picture/PicView.h"

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QMenu;
class QPrinter;

namespace trel {

class ClickLabel;
class FieldEditor;
class LivePreview;
class MemorySpots;

class SettingsStore;

// What the editor needs of the program around it.
struct EditorContext {
  FFFilter* filter = nullptr;   // the program's one filter record
  std::string programFolder;    // ends in a separator; temp.dll, Snipets.db, interface/
  SettingsStore* store = nullptr;
  UserMessages* shell = nullptr;  // messages; null answers every question with OK
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
  // Writes the filter into the target folder (the Batch dialog's source
  // folder while run from there), named after the file name field.
  void SaveFilterAs(OutputFormat format);
  // Adds the filter to the FFL library the user chooses, making it when new.
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
  bool GraphSliders() const;
  const std::string& MailAddress() const { return mailAddress_; }
  const QImage& previewSource() const;
  QImage previewResult() const;
  // No preview is running or pending: the picture shows the last edit.
  bool previewIdle() const;
  int previewRuns() const;
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
  const std::vector<Snippet>& Snippets() const;
  // Shows code box i (0 A, 1 R, 2 G, 3 B) as a click on its switch does.
  void Label2_Click(int i);
  // Switches between three colour boxes and one box for all colours.
  void Command10_Click();
  CodeMode codeMode() const;
  int FindAndReplace(const QString& find, const QString& replace, ReplaceScope scope);
  void CopyFilterToClipboard();
  void PasteFilterFromClipboard();
  // Prints on `printer` (tests hand a PDF printer).
  void PrintFilter(QPrinter& printer);
  void PrinterSetup();
  void ShowFindReplace();
  void SetPreviewPicture(const QImage& picture);  // the source, scaled to preview size
  // The picture editor that "Apply (Filter)" fills.
  PicView* picView() const;
  // Memory spot marks set by a reader of TXT files.
  UserMessages& readerShell();
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
  void closeEvent(QCloseEvent* event) override;

 private:
  class ReaderShell;
  void BuildControls();
  void BuildMenus();
  void StartEdit(QLabel* label, int extraWidth);
  void LabelTyped(QLabel* label, const QString& typed);
  void SliderMoved(SliderMove how);
  void PreviewFinished(bool ok, const QString& message);
  bool AutoPreview() const;
  bool ApplyAtOnce() const;
  bool BatchRefuses();
  // An entry of the save list and the "Save (Filter) As" menu, by position.
  void SaveEntry(int entry);
  // False, with a message, while the file name field shows no name.
  bool FilenameGiven();
  std::string SaveFolder() const;
  void OpenPreviewPicture();
  void SavePreviewPicture();
  void Message(const std::string& text, MsgIcon icon, const std::string& title);
  FilterOptions Options() const;

  EditorContext ctx_;
  std::unique_ptr<ReaderShell> readerShell_;
  DesSkin skin_;
  std::string interfaceFolder_ = "interface";
  std::string interfaceFile_ = kDefaultInterfaceFile;
  std::string mailAddress_;
  QImage background_;
  bool inPluginCompile_ = false;

  // The parts of the window, each owning its controls' state.
  std::unique_ptr<SliderBank> sliders_;
  std::unique_ptr<CodeBoxes> codes_;
  std::unique_ptr<LivePreview> preview_;
  std::unique_ptr<MemorySpots> spots_;
  std::unique_ptr<FieldEditor> field_;

  std::array<ClickLabel*, 5> label6_{};
  QCheckBox* check2_ = nullptr;
  QComboBox* combo2_ = nullptr;
  ClickLabel* mailLink_ = nullptr;
  QLabel* title_ = nullptr;
  std::array<QWidget*, 3> windowButtons_{};
  QTimer timer1_;

  QMenu* mnuFfeFunctions_ = nullptr;
  QMenu* mnuSliderSwitch_ = nullptr;
  QAction* mnuAlphaChannel_ = nullptr;

  bool dragging_ = false;
  bool bodyPress_ = false;
  QPoint pressAt_;
  QPoint dragOffset_;
  std::unique_ptr<QPrinter> printer_;
};

}  // namespace trel
