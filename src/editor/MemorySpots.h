// The editor's ten memory spots: a grid to click (store the sliders into a
// spot), a mark on each spot in use (click: recall it), a numbered button per
// spot (store, then recall) and the delete button, which arms the next click
// on a spot to clear it. The slider values live in the record's presets.
#pragma once

#include <QObject>
#include <array>

#include "filter/FFFilter.h"

class QLabel;
class QPushButton;
class QWidget;

namespace trel {

class SliderBank;

class MemorySpots : public QObject {
  Q_OBJECT
 public:
  MemorySpots(QWidget* window, FFFilter* filter, SliderBank& sliders);

  void Build();

  // The sliders into spot s, which shows its mark.
  void Store(int s);
  // Spot s into the sliders, quietly.
  void Recall(int s);
  bool Marked(int s) const;
  // A mark set by a reader of a source that names its spots.
  void Mark(int s);
  void ClearAll();
  // The delete button: the next click on a spot clears it.
  void ArmDelete();

 signals:
  void recallRequested(int s);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ButtonClicked(int s);
  void Disarm();

  QWidget* window_;
  FFFilter* filter_;
  SliderBank& sliders_;
  QLabel* grid_ = nullptr;
  std::array<QLabel*, 10> marks_{};
  std::array<QPushButton*, 10> buttons_{};
  QPushButton* delete_ = nullptr;
  bool deletePending_ = false;
};

}  // namespace trel
