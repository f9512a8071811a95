// The editor's four code boxes (0 A, 1 R, 2 G, 3 B) with their switches, the
// one-box mode, the code aids (function list, snippets, expression menu, font)
// and the fault line under the boxes. The widgets are children of the window at
// its fixed places; this object keeps their state, and at most one box shows.
#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "editor/FFEditorMod.h"
#include "filter/FFFilter.h"
#include "host/ff/FFEngine.h"

class QComboBox;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QRect;
class QWidget;

namespace trel {

class ClickLabel;

// Where the red, green and blue codes are typed: a box each, or one box whose
// code runs on all three colours.
enum class CodeMode { ThreeBoxes, OneBox };

// "Find / Replace Next" replaces the selection when it is the text sought and
// selects the next one; "Replace All" replaces every one as one undo step.
enum class ReplaceScope { Next, All };

class CodeBoxes : public QObject {
  Q_OBJECT
 public:
  explicit CodeBoxes(QWidget* window);

  // Makes the switches, boxes, the mode and font buttons and the two lists, in
  // this order, which is their order for Tab.
  void BuildBoxes();
  // The fault line is made later, with the controls that come after the lists.
  void BuildFaultLine();

  QPlainTextEdit* box(int i) const { return boxes_[size_t(i)]; }
  // The box that shows, or -1.
  int Visible() const;
  // A switch's click: shows box i and hides the others, or hides box i when it shows.
  void Toggle(int i);
  // A click on the window's body: every box closes.
  void CloseAll();
  void FocusVisible(Qt::FocusReason reason);

  CodeMode mode() const { return mode_; }
  void SwitchMode();
  // The codes as they run: in one-box mode green and blue are copies of red.
  void ApplyMode(FFFilter& f) const;

  void Fill(const FFFilter& f);
  void Read(FFFilter& f) const;
  // Every box back to its channel's own letter.
  void Reset();
  // Empty boxes get their channel's letter back, quietly.
  void FillEmpty();
  // Moves the boxes to `area` (when given) and the fault line under them.
  void Place(std::optional<QRect> area);

  // The aids, on the box that shows.
  void Insert(const QString& text);
  void InsertFunction(const QString& entry);
  void InsertSnippet(int index);
  // How many places were replaced.
  int FindAndReplace(const QString& find, const QString& replace, ReplaceScope scope);
  void ShowFindReplace();
  void ChooseFont();
  void LoadSnippets(const std::string& programFolder);
  const std::vector<Snippet>& snippets() const { return snippets_; }
  QMenu* expressionMenu() const { return expressions_; }
  QMenu* snippetMenu() const { return snippetMenu_; }

  // A compile fault of channel 0..3 (R G B A) at `position` (0-based): said
  // on the fault line, with the caret put there in the box that holds it.
  void ShowFault(int channel, size_t position, const std::string& message);
  // A fault of the run itself, said as the runner put it.
  void ShowRunFault(const QString& message);
  void ClearFault();
  QString fault() const;
  void ShowWarnings(const std::vector<ff::CompatWarning>& warnings);

 signals:
  void switchPressed();  // before a switch acts: a field being edited is committed
  void typed();          // any change of a box's text
  void inserted();       // an aid put text into a box

 private:
  QWidget* window_;
  CodeMode mode_ = CodeMode::ThreeBoxes;
  std::array<ClickLabel*, 4> switches_{};
  std::array<QPlainTextEdit*, 4> boxes_{};
  QPushButton* modeButton_ = nullptr;
  QPushButton* fontButton_ = nullptr;
  QComboBox* functions_ = nullptr;
  QComboBox* snippetList_ = nullptr;
  QMenu* expressions_ = nullptr;
  QMenu* snippetMenu_ = nullptr;
  QLabel* fault_ = nullptr;
  std::vector<Snippet> snippets_;
};

}  // namespace trel
