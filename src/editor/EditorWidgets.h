// Small helpers the editor's units share when they make their controls.
#pragma once

#include <QString>
#include <optional>
#include <string>

#include "filter/OutputFormat.h"

#include "settings/Latin1.h"

namespace trel {

inline constexpr const char* kEditorCaption = "Filter Factory Editor";
// What the five name fields show when the record leaves them empty.
inline constexpr const char* kNameRest[5] = {"Filename", "Category", "Filtername", "Author", "Copyright"};

// The editor's save list and "Save (Filter) As" menu, in their order: the
// formats, then the FFL library the filter is added to.
struct SaveListEntry {
  const char* listCaption;
  const char* menuCaption;
  std::optional<OutputFormat> format;  // none: add to a library
};
inline constexpr SaveListEntry kSaveEntries[] = {
    {"Photoshop Plug", "Photoshop Plugin", OutputFormat::Plugin8bf},
    {"Premiere Plug", "Premiere Filter", OutputFormat::PremierePlugin},
    {"AFS File", "AFS File", OutputFormat::AFS},
    {"PFF File", "PFF File", OutputFormat::PFF},
    {"Text File", "Text File", OutputFormat::TXT},
    {"Transition Plug", "Transition Filter", OutputFormat::TransitionPlugin},
    {"FFL Library", "Add to FFL Library", std::nullopt},
};

// Shown text back into the record's single-byte form.
inline std::string Latin1(const QString& s) { return s.toLatin1().toStdString(); }

// Names a control as tests and screen readers know it: "name" or "name_index".
template <typename W>
W* Named(W* w, const QString& name, int index = -1) {
  w->setObjectName(index < 0 ? name : name + "_" + QString::number(index));
  return w;
}

}  // namespace trel
