// Which plugin a file is, told by its name alone. A host loads a plugin only
// when the file carries the right extension, so the name is also where the
// enable state lives: a disabled plugin is the same file under a name the host
// passes over. Every part of the program that recognises plugin files asks here.
//
// Names are compared case-blind on their last four characters:
//
//   kind             active   disabled (written)   disabled (also read)
//   Photoshop        .8bf     ._bf                 _8bf
//   Premiere         .prm     _prm                 ._rm
//   After Effects    .aex     _aex                 ._ex
//   Mac FF plugin    .bin     (none)
//
// The Photoshop kind differs on purpose: its disabled form keeps the point and
// spoils the extension, where the other two drop the point.
// The user's own plugin kinds (rows of the type table) are known by an
// extension of any length with a point (active) or an underscore (disabled)
// before it.
#pragma once

#include <string_view>

namespace trel {

enum class PluginKind { None, Photoshop, Premiere, AfterEffects, MacFilterFactory, UserType };

struct PluginName {
  PluginKind kind = PluginKind::None;
  bool disabled = false;
  // `_8bf`, `_prm`, `_aex` and `_ext`: no point is left, so the file has no
  // extension at all; a host may take it for anything.
  bool withoutExtension = false;

  explicit operator bool() const { return kind != PluginKind::None; }
  bool operator==(const PluginName&) const = default;
};

// The kind of a file name (or a whole path) by the table above.
PluginName ClassifyPluginName(std::string_view name);

// A plugin of the user's table with extension `extension` (no point, any
// length); kind None when the name doesn't end in it after a point or an
// underscore.
PluginName ClassifyTypedName(std::string_view name, std::string_view extension);

// Photoshop, Premiere or After Effects, in any of the forms above.
bool IsAdobePluginName(std::string_view name);
// A Photoshop filter in any form: what the plugin host runs.
bool IsPhotoshopFilterName(std::string_view name);
// A plugin that the Filter Factory readers may hold: Photoshop, Premiere or the
// Macintosh form.
bool IsFilterFactoryPluginName(std::string_view name);
// A Filter Factory source text: `.afs`, `.pff`, `.txt`, `.ffx`.
bool IsFilterSourceName(std::string_view name);

// The suffix the host loads, and the one a disabling rename writes; empty for
// kinds without one.
std::string_view ActiveSuffix(PluginKind kind);
std::string_view DisablingSuffix(PluginKind kind);

}  // namespace trel
