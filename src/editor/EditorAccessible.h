// What a screen reader learns of the editor's drawn controls: the click labels
// say their purpose as name and what they show as value and description; the
// picture sliders are sliders with a value that can also be set.
#pragma once

#include <QLabel>
#include <functional>

namespace trel {

// Installs the accessibility factory for ClickLabel and SliderPicture (once).
void InstallEditorAccessibility();

// The track of a picture slider. The window keeps the value; the track asks it.
class SliderPicture : public QLabel {
  Q_OBJECT
 public:
  explicit SliderPicture(QWidget* parent = nullptr);
  std::function<int()> value;             // 0 to 255
  std::function<void(int)> setValue;      // as a user moving the knob
  std::function<QString()> spokenName;    // the slider's name as shown

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace trel
