#include "editor/MemorySpots.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorMod.h"
#include "editor/SliderBank.h"

namespace trel {

using namespace layout;

namespace {

void SetBold(QWidget* w, bool bold) {
  QFont f = w->font();
  f.setBold(bold);
  w->setFont(f);
}

}  // namespace

MemorySpots::MemorySpots(QWidget* window, FFFilter* filter, SliderBank& sliders)
    : window_(window), filter_(filter), sliders_(sliders) {}

void MemorySpots::Build() {
  grid_ = Named(new QLabel(window_), "Picture6");
  grid_->setGeometry(kSpotGrid);
  grid_->setToolTip("Memory Spots: click to store the sliders");
  grid_->setAccessibleName("Memory Spots");
  grid_->installEventFilter(this);
  {
    QImage grid(kSpotGrid.size(), QImage::Format_ARGB32_Premultiplied);
    grid.fill(QColor(255, 255, 255, 150));
    QPainter p(&grid);
    p.setPen(QColor(60, 60, 70));
    for (int c = 0; c <= 5; ++c) p.drawLine(c * (grid.width() - 1) / 5, 0, c * (grid.width() - 1) / 5, grid.height());
    for (int r = 0; r <= 2; ++r) p.drawLine(0, r * (grid.height() - 1) / 2, grid.width(), r * (grid.height() - 1) / 2);
    grid_->setPixmap(QPixmap::fromImage(grid));
  }
  for (int s = 0; s < 10; ++s) {
    auto* mark = Named(new QLabel(QString::number(s + 1), grid_), "Picture7", s);
    const int cw = kSpotGrid.width() / 5, ch = kSpotGrid.height() / 2;
    mark->setGeometry((s % 5) * cw + 3, (s / 5) * ch + 2, cw - 6, ch - 4);
    mark->setAlignment(Qt::AlignCenter);
    mark->setStyleSheet("QLabel{background:rgb(230,120,60);color:white;border-radius:3px}");
    mark->installEventFilter(this);
    mark->hide();
    marks_[size_t(s)] = mark;
    auto* b = Named(new QPushButton(QString::number(s + 1), window_), "Command7", s);
    b->setGeometry(SpotButton(s));
    b->setAccessibleName(QString("Memory Spot %1").arg(s + 1));
    b->setStyleSheet("QPushButton{padding:0px;font-size:8pt}");
    connect(b, &QPushButton::clicked, this, [this, s] { ButtonClicked(s); });
    buttons_[size_t(s)] = b;
  }
  delete_ = Named(new QPushButton("-", window_), "Command8");
  delete_->setGeometry(kDeleteSpot);
  delete_->setToolTip("Click, then select a Spot to delete");
  delete_->setAccessibleName("Delete");
  connect(delete_, &QPushButton::clicked, this, [this] {
    deletePending_ = true;
    delete_->setEnabled(false);
    window_->setCursor(Qt::PointingHandCursor);
  });
}

void MemorySpots::Store(int s) {
  for (int n = 0; n < 8; ++n) filter_->presets[size_t(n)][size_t(s)] = int16_t(sliders_.Value(n));
  marks_[size_t(s)]->show();
}

void MemorySpots::Recall(int s) {
  for (int n = 0; n < 8; ++n) sliders_.Place(n, filter_->presets[size_t(n)][size_t(s)]);
}

bool MemorySpots::Marked(int s) const {
  return !marks_[size_t(s)]->isHidden() || buttons_[size_t(s)]->font().bold();
}

void MemorySpots::Mark(int s) {
  if (s >= 0 && s < 10) marks_[size_t(s)]->show();
}

void MemorySpots::ClearAll() {
  for (int s = 0; s < 10; ++s) {
    for (int n = 0; n < 8; ++n) filter_->presets[size_t(n)][size_t(s)] = 0;
    SetBold(buttons_[size_t(s)], false);
    marks_[size_t(s)]->hide();
  }
}

void MemorySpots::ArmDelete() { delete_->click(); }

void MemorySpots::Disarm() {
  deletePending_ = false;
  delete_->setEnabled(true);
  window_->unsetCursor();
}

// A button in bold holds its spot: a click recalls it. With delete armed the
// click takes the bold away instead.
void MemorySpots::ButtonClicked(int s) {
  QPushButton* b = buttons_[size_t(s)];
  if (deletePending_) {
    SetBold(b, false);
    Disarm();
  } else if (b->font().bold()) {
    emit recallRequested(s);
  } else {
    Store(s);
    SetBold(b, true);
  }
}

bool MemorySpots::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::MouseButtonPress || static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
    return QObject::eventFilter(watched, event);
  const auto* me = static_cast<QMouseEvent*>(event);
  if (watched == grid_) {
    const QPoint at = me->position().toPoint();
    if (!deletePending_) Store(SpotAt(at.x(), at.y(), grid_->width(), grid_->height()));
    return true;
  }
  for (int s = 0; s < 10; ++s) {
    if (watched != marks_[size_t(s)]) continue;
    if (deletePending_) {
      marks_[size_t(s)]->hide();
      Disarm();
    } else {
      emit recallRequested(s);
    }
    return true;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace trel
