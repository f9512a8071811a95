#include "editor/EditorAccessible.h"

#include <QAccessibleWidget>
#include <QKeyEvent>

#include "editor/ClickLabel.h"

namespace trel {

namespace {

class AccessibleClickLabel : public QAccessibleWidget {
 public:
  explicit AccessibleClickLabel(ClickLabel* label) : QAccessibleWidget(label, QAccessible::Button) {}
  ClickLabel* label() const { return static_cast<ClickLabel*>(widget()); }

  QString text(QAccessible::Text t) const override {
    switch (t) {
      case QAccessible::Name: {
        const QString name = label()->accessibleName();
        return name.isEmpty() ? label()->text() : name;
      }
      case QAccessible::Value:
      case QAccessible::Description:
        // The purpose is the name; what the field holds now is the value.
        return label()->accessibleName().isEmpty() ? QString() : label()->spokenValue();
      case QAccessible::Help:
        return label()->toolTip();
      default:
        return QAccessibleWidget::text(t);
    }
  }

  QAccessible::State state() const override {
    QAccessible::State s = QAccessibleWidget::state();
    if (label()->checkable()) {
      s.checkable = true;
      s.checked = label()->font().bold();
    }
    return s;
  }

  QStringList actionNames() const override {
    return QStringList(pressAction()) + QAccessibleWidget::actionNames();
  }
  void doAction(const QString& action) override {
    if (action == pressAction() && label()->isEnabled()) {
      emit label()->clicked();
      return;
    }
    QAccessibleWidget::doAction(action);
  }
};

class AccessibleSliderPicture : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleSliderPicture(SliderPicture* track) : QAccessibleWidget(track, QAccessible::Slider) {}
  SliderPicture* track() const { return static_cast<SliderPicture*>(widget()); }

  void* interface_cast(QAccessible::InterfaceType t) override {
    if (t == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(t);
  }
  QString text(QAccessible::Text t) const override {
    switch (t) {
      case QAccessible::Name:
        if (track()->spokenName) return track()->spokenName();
        return track()->accessibleName();
      case QAccessible::Value:
        return QString::number(currentValue().toInt());
      default:
        return QAccessibleWidget::text(t);
    }
  }
  QVariant currentValue() const override { return track()->value ? track()->value() : 0; }
  void setCurrentValue(const QVariant& v) override {
    if (track()->setValue) track()->setValue(std::clamp(v.toInt(), 0, 255));
  }
  QVariant maximumValue() const override { return 255; }
  QVariant minimumValue() const override { return 0; }
  QVariant minimumStepSize() const override { return 1; }
};

QAccessibleInterface* EditorFactory(const QString& className, QObject* object) {
  if (className == QLatin1String("trel::ClickLabel"))
    return new AccessibleClickLabel(static_cast<ClickLabel*>(object));
  if (className == QLatin1String("trel::SliderPicture"))
    return new AccessibleSliderPicture(static_cast<SliderPicture*>(object));
  return nullptr;
}

}  // namespace

void InstallEditorAccessibility() {
  static const bool installed = [] {
    QAccessible::installFactory(EditorFactory);
    return true;
  }();
  (void)installed;
}

SliderPicture::SliderPicture(QWidget* parent) : QLabel(parent) {
  InstallEditorAccessibility();
  // A picture slider is a slider for the keyboard too: Tab reaches it, the
  // arrows move it by one, Page keys by ten, Home and End to the ends.
  setFocusPolicy(Qt::TabFocus);
}

void SliderPicture::keyPressEvent(QKeyEvent* event) {
  if (!value || !setValue) return QLabel::keyPressEvent(event);
  int v = value();
  switch (event->key()) {
    case Qt::Key_Left: case Qt::Key_Down: v -= 1; break;
    case Qt::Key_Right: case Qt::Key_Up: v += 1; break;
    case Qt::Key_PageDown: v -= 10; break;
    case Qt::Key_PageUp: v += 10; break;
    case Qt::Key_Home: v = 0; break;
    case Qt::Key_End: v = 255; break;
    default: return QLabel::keyPressEvent(event);
  }
  event->accept();
  setValue(std::clamp(v, 0, 255));
}

}  // namespace trel
