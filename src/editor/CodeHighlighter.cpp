#include "editor/CodeHighlighter.h"

#include <algorithm>

#include <QPlainTextEdit>
#include <QSet>
#include <QTextEdit>

namespace trel {

namespace {

const QSet<QString>& Functions() {
  static const QSet<QString> set{"abs", "add", "c2d", "c2m", "cnv", "cos", "ctl", "dif", "get",
                                 "map", "max", "min", "mix", "put", "r2x", "r2y", "rad", "rnd",
                                 "rst", "scl", "sin", "sqr", "sqrt", "src", "sub", "tan", "val"};
  return set;
}

bool IsVariable(const QString& w) {
  static const QSet<QString> plain{"r", "g", "b", "a", "c", "i", "u", "v", "x", "y", "z", "p",
                                   "d", "m", "t", "R", "G", "B", "A", "C", "I", "U", "V", "X",
                                   "Y", "Z", "D", "M", "total"};
  if (plain.contains(w)) return true;
  for (const char* suffix : {"min", "max", "0", "1"})
    if (w.size() > 1 && w.endsWith(QLatin1String(suffix)) &&
        plain.contains(w.left(w.size() - int(qstrlen(suffix)))))
      return true;
  return false;
}

QTextCharFormat Format(const QColor& colour, bool bold = false, bool italic = false) {
  QTextCharFormat f;
  f.setForeground(colour);
  if (bold) f.setFontWeight(QFont::Bold);
  f.setFontItalic(italic);
  return f;
}

}  // namespace

CodeHighlighter::CodeHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {}

void CodeHighlighter::SetMarks(std::vector<std::pair<int, int>> marks) {
  if (marks == marks_) return;
  marks_ = std::move(marks);
  rehighlight();
}

void CodeHighlighter::highlightBlock(const QString& text) {
  Colour(text);
  const int start = currentBlock().position(), n = int(text.size());
  for (const auto& [pos, len] : marks_) {
    const int from = std::max(pos - start, 0), to = std::min(pos + len - start, n);
    for (int i = from; i < to; ++i) {
      QTextCharFormat f = format(i);
      f.setUnderlineStyle(QTextCharFormat::WaveUnderline);
      f.setUnderlineColor(QColor(230, 140, 0));
      setFormat(i, 1, f);
    }
  }
}

void CodeHighlighter::Colour(const QString& text) {
  static const QTextCharFormat function = Format(QColor(0, 70, 170), true);
  static const QTextCharFormat variable = Format(QColor(140, 20, 110));
  static const QTextCharFormat number = Format(QColor(0, 120, 40));
  static const QTextCharFormat comment = Format(QColor(120, 120, 120), false, true);
  static const QTextCharFormat unknown = Format(QColor(190, 0, 0));
  int i = 0;
  const int n = int(text.size());
  while (i < n) {
    const QChar c = text[i];
    if (c == '/' && i + 1 < n && text[i + 1] == '/') {
      setFormat(i, n - i, comment);
      return;
    }
    if (c.isDigit()) {
      int j = i + 1;
      while (j < n && (text[j].isLetterOrNumber())) ++j;
      setFormat(i, j - i, number);
      i = j;
      continue;
    }
    if (c.isLetter() || c == '_') {
      int j = i + 1;
      while (j < n && (text[j].isLetterOrNumber() || text[j] == '_')) ++j;
      const QString word = text.mid(i, j - i);
      if (Functions().contains(word))
        setFormat(i, j - i, function);
      else if (IsVariable(word))
        setFormat(i, j - i, variable);
      else
        setFormat(i, j - i, unknown);
      i = j;
      continue;
    }
    ++i;
  }
}

int MatchingBracket(const QString& text, int pos) {
  auto at = [&](int p) { return p >= 0 && p < text.size() ? text[p] : QChar(); };
  int start = -1;
  if (at(pos) == '(' || at(pos) == ')') start = pos;
  else if (at(pos - 1) == '(' || at(pos - 1) == ')') start = pos - 1;
  if (start < 0) return -1;
  const bool forward = text[start] == '(';
  int depth = 0;
  for (int p = start; p >= 0 && p < text.size(); p += forward ? 1 : -1) {
    if (text[p] == '(') depth += forward ? 1 : -1;
    else if (text[p] == ')') depth += forward ? -1 : 1;
    if (depth == 0) return p;
  }
  return -1;
}

void MarkBrackets(QPlainTextEdit* box) {
  QList<QTextEdit::ExtraSelection> marks;
  const QString text = box->toPlainText();
  const int pos = box->textCursor().position();
  const int match = MatchingBracket(text, pos);
  if (match >= 0) {
    const int self = (pos < text.size() && (text[pos] == '(' || text[pos] == ')')) ? pos : pos - 1;
    for (int p : {self, match}) {
      QTextEdit::ExtraSelection s;
      s.format.setBackground(QColor(255, 230, 120));
      s.cursor = QTextCursor(box->document());
      s.cursor.setPosition(p);
      s.cursor.setPosition(p + 1, QTextCursor::KeepAnchor);
      marks.append(s);
    }
  }
  box->setExtraSelections(marks);
}

}  // namespace trel
