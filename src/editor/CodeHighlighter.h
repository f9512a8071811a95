// Colours in the code boxes: functions, variables, numbers, comments, and the
// bracket that matches the one at the caret.
#pragma once

#include <QSyntaxHighlighter>

#include <utility>
#include <vector>

class QPlainTextEdit;

namespace trel {

class CodeHighlighter : public QSyntaxHighlighter {
  Q_OBJECT
 public:
  explicit CodeHighlighter(QTextDocument* document);
  // Places (position in the document, length) underlined as refused by a
  // genuine Filter Factory host; replaces the earlier marks.
  void SetMarks(std::vector<std::pair<int, int>> marks);

 protected:
  void highlightBlock(const QString& text) override;

 private:
  void Colour(const QString& text);
  std::vector<std::pair<int, int>> marks_;
};

// The position of the bracket matching the one at `pos` (or just before it),
// -1 when there is none.
int MatchingBracket(const QString& text, int pos);
// Marks the bracket pair at the caret of `box` (and removes old marks).
void MarkBrackets(QPlainTextEdit* box);

}  // namespace trel
