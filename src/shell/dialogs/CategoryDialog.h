// Form3: asks for the category that selected filters move to. The combo box
// offers the categories of the list; its text box takes a new one.
#pragma once

#include <QDialog>
#include <optional>
#include <string>
#include <vector>

class QComboBox;
class QLabel;

namespace trel {

class CategoryDialog : public QDialog {
  Q_OBJECT
 public:
  CategoryDialog(const std::vector<std::string>& choices, QWidget* parent = nullptr);

  std::string text() const;
  void setText(const std::string& text);
  QComboBox* combo() const { return combo1_; }

 private:
  QLabel* label1_ = nullptr;
  QComboBox* combo1_ = nullptr;
};

// Opens the dialog modally; nothing when it was cancelled.
std::optional<std::string> AskCategory(const std::vector<std::string>& choices, QWidget* parent);

}  // namespace trel
