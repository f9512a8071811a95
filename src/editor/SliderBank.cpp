#include "editor/SliderBank.h"

#include <QCheckBox>
#include <QDateTime>
#include <QMouseEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "editor/ClickLabel.h"
#include "editor/EditorAccessible.h"
#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorMod.h"
#include "editor/SkinArt.h"

namespace trel {

using namespace layout;

SliderBank::SliderBank(QWidget* window) : window_(window) {
  repeat_.setInterval(95);
  connect(&repeat_, &QTimer::timeout, this, [this] {
    if (repeatSlider_ < 0) return repeat_.stop();
    const int v = Value(repeatSlider_) + repeatStep_;
    if (v < 0 || v > 255) return repeat_.stop();
    Set(repeatSlider_, v);
  });
}

void SliderBank::Build() {
  for (int n = 0; n < 8; ++n) {
    auto* name = Named(new ClickLabel(QString("Slider %1").arg(n + 1), window_), "Label7", n);
    name->setGeometry(SliderName(n));
    name->setAccessibleName(QString("Name of slider %1").arg(n + 1));
    connect(name, &ClickLabel::clicked, this, [this, n] { emit editRequested(names_[size_t(n)], 0); });
    connect(name, &ClickLabel::rightClicked, this, [this, n](QPoint at) {
      lockTarget_ = n;
      emit lockMenuRequested(at);
    });
    names_[size_t(n)] = name;
    auto* value = Named(new ClickLabel("0", window_), "Label1", n);
    value->setGeometry(layout::SliderValue(n));
    value->setAccessibleName(QString("Value of slider %1").arg(n + 1));
    connect(value, &ClickLabel::clicked, this, [this, n] { emit editRequested(values_[size_t(n)], 8); });
    values_[size_t(n)] = value;
    auto* bar = Named(new QScrollBar(Qt::Horizontal, window_), "HScroll1", n);
    bar->setRange(0, 255);
    bar->setPageStep(10);
    bar->setGeometry(SliderTrack(n));
    bar->setAccessibleName(QString("Slider %1").arg(n + 1));
    connect(bar, &QScrollBar::valueChanged, this, [this, n](int v) {
      values_[size_t(n)]->setText(QString::number(v));
      emit moved(bars_[size_t(n)]->isSliderDown() ? SliderMove::Dragging : SliderMove::Settled);
    });
    connect(bar, &QScrollBar::sliderReleased, this, [this] { emit moved(SliderMove::Settled); });
    bars_[size_t(n)] = bar;
    auto* track = Named(new SliderPicture(window_), "Picture2", n);
    track->setGeometry(SliderTrack(n));
    track->installEventFilter(this);
    track->value = [this, n] { return Value(n); };
    track->setValue = [this, n](int v) { Set(n, v); };
    track->spokenName = [this, n] { return SpokenName(n); };
    tracks_[size_t(n)] = track;
    auto* knob = Named(new QLabel(window_), "Picture3", n);
    knob->setAccessibleName(QString("Knob of slider %1").arg(n + 1));
    knob->setGeometry(PlaceKnob(0, SliderTrack(n).left(), SliderTrack(n).width(), kKnobWidth),
                      SliderTrack(n).top(), kKnobWidth, SliderTrack(n).height());
    knob->installEventFilter(this);
    knobs_[size_t(n)] = knob;
  }
  for (int m = 0; m < 4; ++m) {
    auto* c = Named(new QCheckBox(QString("Activate Map %1").arg(m + 1), window_), "Check1", m);
    c->setGeometry(layout::MapSwitch(m));
    c->setStyleSheet("QCheckBox{color:white;font-size:10px;spacing:2px}");
    connect(c, &QCheckBox::toggled, this, [this, m] {
      SwitchMap(m);
      emit moved(SliderMove::Settled);
    });
    maps_[size_t(m)] = c;
  }
}

// --- values and places ------------------------------------------------------------------

int SliderBank::Value(int n) const {
  return graphSliders_ ? knobValue_[size_t(n)] : bars_[size_t(n)]->value();
}

void SliderBank::Place(int n, int value) {
  value = std::clamp(value, 0, 255);
  knobValue_[size_t(n)] = value;
  {
    const QSignalBlocker quiet(bars_[size_t(n)]);
    bars_[size_t(n)]->setValue(value);
  }
  const QRect t = SliderTrack(n);
  knobs_[size_t(n)]->move(PlaceKnob(value, t.left(), t.width(), kKnobWidth), t.top());
  values_[size_t(n)]->setText(QString::number(value));
}

void SliderBank::Set(int n, int value) {
  value = std::clamp(value, 0, 255);
  const bool changed = value != Value(n);
  Place(n, value);
  values_[size_t(n)]->repaint();
  if (changed) emit moved(SliderMove::Settled);
}

void SliderBank::Show(int n, bool visible) {
  shown_[size_t(n)] = visible;
  bars_[size_t(n)]->setVisible(visible && !graphSliders_);
  tracks_[size_t(n)]->setVisible(visible && graphSliders_);
  knobs_[size_t(n)]->setVisible(visible && graphSliders_);
  if (visible && graphSliders_) knobs_[size_t(n)]->raise();
  values_[size_t(n)]->setVisible(visible);
  bars_[size_t(n)]->setAccessibleName(SpokenName(n));
}

QString SliderBank::SpokenName(int n) const {
  const QString shown = !names_[size_t(n)]->isHidden()
                            ? names_[size_t(n)]->text()
                            : names_[size_t(n & ~1)]->text();  // a map's second slider
  return shown.isEmpty() ? QString("Slider %1").arg(n + 1) : shown;
}

void SliderBank::SwitchMap(int m) {
  const size_t a = size_t(2 * m), b = size_t(2 * m + 1);
  if (maps_[size_t(m)]->isChecked()) {
    names_[b]->hide();
    names_[a]->show();
    names_[a]->setEnabled(false);
    Show(int(a), true);
    Show(int(b), true);
  } else {
    names_[a]->setEnabled(true);
    names_[a]->show();
    names_[b]->show();
    for (size_t n : {a, b}) Show(int(n), !names_[n]->text().isEmpty());
  }
}

// A locked slider keeps its value on "Randomize"; its name is struck out.
void SliderBank::SetLocked(int n, bool locked) {
  QFont f = names_[size_t(n)]->font();
  f.setStrikeOut(locked);
  names_[size_t(n)]->setFont(f);
}

bool SliderBank::Locked(int n) const { return names_[size_t(n)]->font().strikeOut(); }

void SliderBank::Randomize() {
  QRandomGenerator random(static_cast<quint32>(QDateTime::currentMSecsSinceEpoch()));
  for (int n = 0; n < 8; ++n) {
    const bool named = !names_[size_t(n)]->text().isEmpty() || maps_[size_t(n / 2)]->isChecked();
    if (!named || Locked(n)) continue;
    Place(n, static_cast<int>(std::nearbyint(255.0 * random.generateDouble())));
  }
}

// --- the record -----------------------------------------------------------------------

void SliderBank::Fill(const FFFilter& f) {
  for (int m = 0; m < 4; ++m) {
    const bool map = !f.mapName[m + 1].empty();
    {
      const QSignalBlocker quiet(maps_[size_t(m)]);
      maps_[size_t(m)]->setChecked(map);
    }
    for (int k = 0; k < 2; ++k) {
      const int n = 2 * m + k;
      names_[size_t(n)]->setText(Latin1(map && k == 0 ? f.mapName[m + 1] : f.ctlName[n + 1]));
      Place(n, f.ctlValue[n + 1]);
    }
    SwitchMap(m);
  }
}

void SliderBank::Read(FFFilter& f) const {
  for (int m = 0; m < 4; ++m) {
    if (!maps_[size_t(m)]->isChecked()) {
      f.mapName[m + 1].clear();
      f.ctlName[2 * m + 1] = Latin1(names_[size_t(2 * m)]->text());
      f.ctlName[2 * m + 2] = Latin1(names_[size_t(2 * m + 1)]->text());
    } else {
      f.mapName[m + 1] = Latin1(names_[size_t(2 * m)]->text());
      f.ctlName[2 * m + 1].clear();
      f.ctlName[2 * m + 2].clear();
    }
  }
  for (int n = 0; n < 8; ++n)
    f.ctlValue[n + 1] = static_cast<uint8_t>(NormalizeSliderValue(Latin1(values_[size_t(n)]->text())));
}

void SliderBank::Reset() {
  for (int m = 0; m < 4; ++m) {
    const QSignalBlocker quiet(maps_[size_t(m)]);
    maps_[size_t(m)]->setChecked(false);
    names_[size_t(2 * m)]->setEnabled(true);
  }
  for (int n = 0; n < 8; ++n) {
    Place(n, 0);
    names_[size_t(n)]->setText(QString());
    names_[size_t(n)]->show();
    Show(n, false);
  }
}

void SliderBank::ApplySkin(bool graphSliders, int tileSet) {
  graphSliders_ = graphSliders;
  for (int n = 0; n < 8; ++n) {
    const QRect t = SliderTrack(n);
    tracks_[size_t(n)]->setPixmap(QPixmap::fromImage(TrackTile(tileSet, t.width(), t.height())));
    knobs_[size_t(n)]->setPixmap(QPixmap::fromImage(KnobTile(tileSet, t.height())));
    Show(n, shown_[size_t(n)]);
    Place(n, Value(n));
  }
}

bool SliderBank::TakeTyped(QLabel* label, const QString& typed) {
  for (int n = 0; n < 8; ++n) {
    if (label == values_[size_t(n)]) {
      const int v = NormalizeSliderValue(Latin1(typed));
      label->setText(QString::number(v));
      Set(n, v);
      return true;
    }
    if (label == names_[size_t(n)]) {
      label->setText(typed);
      const int m = MapOfSlider(n);
      if (maps_[size_t(m)]->isChecked()) {
        Show(2 * m, !typed.isEmpty());
        Show(2 * m + 1, !typed.isEmpty());
      } else {
        Show(n, !typed.isEmpty());
      }
      return true;
    }
  }
  return false;
}

// --- the picture sliders' mouse -------------------------------------------------------------

void SliderBank::TrackPress(int n, int x) {
  const QRect t = SliderTrack(n);
  if (x <= 15 || x > t.width() - 15) {
    repeatSlider_ = n;
    repeatStep_ = x <= 15 ? -1 : 1;
    const int v = Value(n) + repeatStep_;
    if (v >= 0 && v <= 255) Set(n, v);
    repeat_.start();
    return;
  }
  const int left = KnobLeftForPress(x, t.left(), t.width(), kKnobWidth);
  const int v = left >= t.left() + t.width() - 1 - kKnobWidth ? 255 : KnobValue(left, t.left(), t.width(), kKnobWidth);
  Set(n, v);
}

void SliderBank::KnobDrag(int n, int xInWindow) {
  const QRect t = SliderTrack(n);
  const int left = KnobLeftForPress(xInWindow - t.left(), t.left(), t.width(), kKnobWidth);
  const int v = left >= t.left() + t.width() - 1 - kKnobWidth ? 255 : KnobValue(left, t.left(), t.width(), kKnobWidth);
  knobValue_[size_t(n)] = v;
  knobs_[size_t(n)]->move(left, t.top());
  values_[size_t(n)]->setText(QString::number(v));
  emit moved(SliderMove::Dragging);
}

bool SliderBank::eventFilter(QObject* watched, QEvent* event) {
  const auto type = event->type();
  if (type != QEvent::MouseButtonPress && type != QEvent::MouseMove && type != QEvent::MouseButtonRelease)
    return QObject::eventFilter(watched, event);
  auto* me = static_cast<QMouseEvent*>(event);
  for (int n = 0; n < 8; ++n) {
    if (watched == tracks_[size_t(n)]) {
      if (type == QEvent::MouseButtonPress && me->button() == Qt::LeftButton) TrackPress(n, int(me->position().x()));
      if (type == QEvent::MouseButtonRelease) repeat_.stop(), repeatSlider_ = -1;
      return true;
    }
    if (watched == knobs_[size_t(n)]) {
      const int x = int(window_->mapFromGlobal(me->globalPosition().toPoint()).x());
      if (type == QEvent::MouseButtonPress && me->button() == Qt::LeftButton) knobGrab_ = n;
      else if (type == QEvent::MouseMove && knobGrab_ == n) KnobDrag(n, x);
      else if (type == QEvent::MouseButtonRelease && knobGrab_ == n) {
        knobGrab_ = -1;
        emit moved(SliderMove::Settled);
      }
      return true;
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace trel
