// The one edit box of the editor: it opens over a clicked label (a name field,
// a slider's name or value), takes the text, and hands it back on Return or
// when the focus leaves; Esc drops it. What the text means is the window's
// business: it gets (label, text) through `onCommit`.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

class QLabel;
class QLineEdit;
class QWidget;

namespace trel {

class FieldEditor : public QObject {
  Q_OBJECT
 public:
  explicit FieldEditor(QWidget* window);

  void Build();
  std::function<void(QLabel* label, const QString& typed)> onCommit;

  bool open() const;
  // Opens the box over `label`, `extraWidth` pixels wider, with its text selected.
  void Start(QLabel* label, int extraWidth);
  // Hands the text to `onCommit` and closes; the keys go back to the label
  // when the box had them.
  void Commit();
  void CommitIfOpen() {
    if (open()) Commit();
  }
  // Esc: closes without a change, the keys back on the label.
  void Cancel();
  // Closes without a change and leaves the focus alone.
  void Drop();
  QLineEdit* box() const { return box_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* window_;
  QLineEdit* box_ = nullptr;
  QLabel* label_ = nullptr;  // null: nothing is being edited
};

}  // namespace trel
