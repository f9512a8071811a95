// The editor's eight sliders and four map switches. A slider is a name label,
// a value label and either a scroll bar or, when the skin asks for picture
// sliders, a drawn track with a knob; a map joins sliders 2m and 2m+1 under
// the first one's name. The widgets are children of the window at its fixed
// places; this object keeps the values, tells when one moved, and leaves the
// decision to preview to the window.
#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <array>

#include "filter/FFFilter.h"

class QCheckBox;
class QLabel;
class QScrollBar;
class QWidget;

namespace trel {

class ClickLabel;

// How a slider's value changed: at rest, or with the knob still held.
enum class SliderMove { Settled, Dragging };

class SliderBank : public QObject {
  Q_OBJECT
 public:
  explicit SliderBank(QWidget* window);

  // Makes the sliders, then the map switches (their order for Tab).
  void Build();

  int Value(int n) const;
  // Puts slider n at `value` (clamped to 0..255) without telling anyone.
  void Place(int n, int value);
  // As a user moving the slider: moved() follows when the value changed.
  void Set(int n, int value);
  void Show(int n, bool visible);
  void SwitchMap(int m);
  QString SpokenName(int n) const;
  void SetLocked(int n, bool locked);
  bool Locked(int n) const;
  // Random values for the sliders that are in use and not locked; quiet.
  void Randomize();

  void Fill(const FFFilter& f);
  void Read(FFFilter& f) const;
  // No names, no maps, all at 0 and hidden.
  void Reset();
  // The skin's choice of scroll bars or picture sliders and its tile set.
  void ApplySkin(bool graphSliders, int tileSet);
  bool graphSliders() const { return graphSliders_; }

  // Text typed into the edit box over one of the sliders' labels; false when
  // `label` is none of them.
  bool TakeTyped(QLabel* label, const QString& typed);
  // The slider whose name label was last right-clicked.
  int lockTarget() const { return lockTarget_; }

 signals:
  void moved(SliderMove how);
  void editRequested(QLabel* label, int extraWidth);  // a click on a name or value label
  void lockMenuRequested(QPoint globalPos);           // a right click on a name label

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void TrackPress(int n, int x);
  void KnobDrag(int n, int xInWindow);

  QWidget* window_;
  std::array<ClickLabel*, 8> names_{};
  std::array<ClickLabel*, 8> values_{};
  std::array<QScrollBar*, 8> bars_{};
  std::array<QLabel*, 8> tracks_{};
  std::array<QLabel*, 8> knobs_{};
  std::array<QCheckBox*, 4> maps_{};
  std::array<int, 8> knobValue_{};
  std::array<bool, 8> shown_{};
  bool graphSliders_ = false;
  int lockTarget_ = 0;
  int knobGrab_ = -1;
  // Holding the mouse on a track's end steps the value until released.
  QTimer repeat_;
  int repeatSlider_ = -1, repeatStep_ = 0;
};

}  // namespace trel
