// The option values of the run as one plain object, and the signal that tells
// whoever shows them that they changed. The window holds one; the preferences
// dialog hands a whole new value back on OK, and small changes made while the
// program runs (an app or picture added on the way) go through Change.
#pragma once

#include <QObject>
#include <utility>

#include "settings/Preferences.h"

namespace trel {

class SettingsState : public QObject {
  Q_OBJECT
 public:
  explicit SettingsState(QObject* parent = nullptr) : QObject(parent) {}

  // The address stays the same for the life of the object: parts that only
  // read may keep a pointer.
  const Preferences& values() const { return values_; }

  void Replace(Preferences values) {
    values_ = std::move(values);
    emit changed(values_);
  }
  // Edits in place and tells the listeners once.
  template <typename Edit>
  void Change(Edit&& edit) {
    std::forward<Edit>(edit)(values_);
    emit changed(values_);
  }

 signals:
  void changed(const trel::Preferences& values);

 private:
  Preferences values_;
};

}  // namespace trel
