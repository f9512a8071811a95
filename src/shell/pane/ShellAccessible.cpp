#include "shell/pane/ShellAccessible.h"

#include <QAccessibleWidget>
#include <QFocusFrame>
#include <QLabel>
#include <QMenu>
#include <QWidget>

namespace trel {

namespace {

class ShownChildrenOnly : public QAccessibleWidget {
 public:
  explicit ShownChildrenOnly(QWidget* w) : QAccessibleWidget(w, QAccessible::Grouping) {}

  int childCount() const override { return int(Shown().size()); }
  QAccessibleInterface* child(int index) const override {
    const QList<QWidget*> shown = Shown();
    return index >= 0 && index < shown.size() ? QAccessible::queryAccessibleInterface(shown[index]) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child ? int(Shown().indexOf(qobject_cast<QWidget*>(child->object()))) : -1;
  }

 private:
  QList<QWidget*> Shown() const {
    QList<QWidget*> out;
    for (QObject* o : widget()->children()) {
      auto* w = qobject_cast<QWidget*>(o);
      if (!w || w->isWindow() || w->isHidden() || qobject_cast<QMenu*>(w) || qobject_cast<QFocusFrame*>(w))
        continue;
      out.append(w);
    }
    return out;
  }
};

// The path line: its purpose is the name, the path it shows the value.
class LabelWithPurpose : public QAccessibleWidget {
 public:
  explicit LabelWithPurpose(QLabel* label) : QAccessibleWidget(label, QAccessible::StaticText) {}
  QString text(QAccessible::Text t) const override {
    const auto* label = static_cast<const QLabel*>(widget());
    switch (t) {
      case QAccessible::Name: return label->accessibleName();
      case QAccessible::Value:
      case QAccessible::Description: return label->text();
      case QAccessible::Help: return label->toolTip();
      default: return QAccessibleWidget::text(t);
    }
  }
};

QAccessibleInterface* ShellFactory(const QString& className, QObject* object) {
  auto* w = qobject_cast<QWidget*>(object);
  if (!w) return nullptr;
  // The list in its four looks, and the File View page with its classic list.
  if (className == QLatin1String("trel::FileListView") ||
      (className == QLatin1String("QWidget") && w->objectName().startsWith(QLatin1String("FileViewPage_"))))
    return new ShownChildrenOnly(w);
  if (className == QLatin1String("QLabel") && w->objectName().startsWith(QLatin1String("Label6_")) &&
      !w->accessibleName().isEmpty() && w->parentWidget() && w->parentWidget()->objectName().startsWith(QLatin1String("FileViewPage_")))
    return new LabelWithPurpose(static_cast<QLabel*>(w));
  return nullptr;
}

}  // namespace

void InstallShellAccessibility() {
  static const bool installed = [] {
    QAccessible::installFactory(ShellFactory);
    return true;
  }();
  (void)installed;
}

}  // namespace trel
