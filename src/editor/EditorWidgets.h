// Small helpers the editor's units share when they make their controls.
#pragma once

#include <QString>
#include <string>

#include "settings/Latin1.h"

namespace trel {

inline constexpr const char* kEditorCaption = "Filter Factory Editor";
// What the five name fields show when the record leaves them empty.
inline constexpr const char* kNameRest[5] = {"Filename", "Category", "Filtername", "Author", "Copyright"};

// Shown text back into the record's single-byte form.
inline std::string Latin1(const QString& s) { return s.toLatin1().toStdString(); }

// Names a control as tests and screen readers know it: "name" or "name_index".
template <typename W>
W* Named(W* w, const QString& name, int index = -1) {
  w->setObjectName(index < 0 ? name : name + "_" + QString::number(index));
  return w;
}

}  // namespace trel
