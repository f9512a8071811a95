#include "base/PluginKinds.h"

#include <array>
#include <cctype>
#include <string>

namespace trel {
namespace {

struct Form {
  std::string_view suffix;
  PluginKind kind;
  bool disabled;
};

constexpr std::array<Form, 10> kForms = {{
    {".8bf", PluginKind::Photoshop, false},
    {"._bf", PluginKind::Photoshop, true},
    {"_8bf", PluginKind::Photoshop, true},
    {".prm", PluginKind::Premiere, false},
    {"_prm", PluginKind::Premiere, true},
    {"._rm", PluginKind::Premiere, true},
    {".aex", PluginKind::AfterEffects, false},
    {"_aex", PluginKind::AfterEffects, true},
    {"._ex", PluginKind::AfterEffects, true},
    {".bin", PluginKind::MacFilterFactory, false},
}};

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

// Whether `name` ends in `tail`, ignoring case.
bool EndsWith(std::string_view name, std::string_view tail) {
  if (tail.size() > name.size()) return false;
  const std::string_view end = name.substr(name.size() - tail.size());
  for (size_t i = 0; i < tail.size(); ++i)
    if (Lower(end[i]) != Lower(tail[i])) return false;
  return true;
}

}  // namespace

PluginName ClassifyPluginName(std::string_view name) {
  for (const Form& form : kForms) {
    if (EndsWith(name, form.suffix)) return {form.kind, form.disabled, form.suffix.front() == '_'};
  }
  return {};
}

PluginName ClassifyTypedName(std::string_view name, std::string_view extension) {
  if (extension.empty() || name.size() <= extension.size() || !EndsWith(name, extension)) return {};
  const char before = name[name.size() - extension.size() - 1];
  if (before == '.') return {PluginKind::UserType, false, false};
  if (before == '_') return {PluginKind::UserType, true, true};
  return {};
}

bool IsAdobePluginName(std::string_view name) {
  const PluginKind kind = ClassifyPluginName(name).kind;
  return kind == PluginKind::Photoshop || kind == PluginKind::Premiere || kind == PluginKind::AfterEffects;
}

bool IsPhotoshopFilterName(std::string_view name) {
  return ClassifyPluginName(name).kind == PluginKind::Photoshop;
}

bool IsFilterFactoryPluginName(std::string_view name) {
  const PluginKind kind = ClassifyPluginName(name).kind;
  return kind == PluginKind::Photoshop || kind == PluginKind::Premiere || kind == PluginKind::MacFilterFactory;
}

bool IsFilterSourceName(std::string_view name) {
  for (std::string_view source : {".afs", ".pff", ".txt", ".ffx"})
    if (EndsWith(name, source)) return true;
  return false;
}

std::string_view ActiveSuffix(PluginKind kind) {
  for (const Form& form : kForms)
    if (form.kind == kind && !form.disabled) return form.suffix;
  return {};
}

std::string_view DisablingSuffix(PluginKind kind) {
  // The first disabled form of a kind in the table is the one a toggle writes.
  for (const Form& form : kForms)
    if (form.kind == kind && form.disabled) return form.suffix;
  return {};
}

}  // namespace trel
