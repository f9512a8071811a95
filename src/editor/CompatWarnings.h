// Tells the user where a genuine Filter Factory host would refuse code that
// Trel runs (its kept extensions): one line under the code boxes, and a wavy
// underline at each place in the boxes. A warning, never a refusal.
#pragma once

#include <array>
#include <vector>

#include <QString>

#include "host/ff/FFEngine.h"

class QLabel;
class QPlainTextEdit;
class QWidget;

namespace trel {

// The line under the code boxes: the first warning with its channel and
// 1-based position, and how many more there are; empty without warnings.
QString CompatWarningText(const std::vector<ff::CompatWarning>& warnings);

// Shows `warnings` in `editor`: a label named "CompatWarning" in the place of
// `under` (the fault line, which never shows at the same time) and the marks
// in `boxes`, the code boxes by channel R, G, B, A. With `oneBox` the G and B
// codes are copies of R and their warnings are not repeated. No warnings
// hide the label and remove the marks.
void ShowCompatWarnings(QWidget* editor, const QLabel* under, const std::array<QPlainTextEdit*, 4>& boxes,
                        bool oneBox, const std::vector<ff::CompatWarning>& warnings);

}  // namespace trel
