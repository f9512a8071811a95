// The template plugins that the plugin compiler patches, made from this
// readable description rather than shipped as binaries.
#pragma once

#include <string>
#include <vector>

namespace trel::gen {

enum class TemplateKind { Photo30, Photo304, PhotoMac, PremiereFF, PremiereTF };

struct TemplateFile {
  std::string name;  // file name in the program folder
  TemplateKind kind;
};

const std::vector<TemplateFile>& AllTemplates();
std::string BuildTemplate(TemplateKind kind);
// Trel's 64-bit template around `codeDll`, the plugin code built by mingw-w64
// (src/plughost/ffplugin); the layout is photo30.dll's moved by kShift64.
std::string BuildPhoto64(const std::string& codeDll);
// photo30.dll or photo304.dll around `codeDll`, the 32-bit plugin code of
// src/plughost/ffmini: the file size and every resource position are those of
// BuildTemplate's form. Throws std::runtime_error when the code does not fit.
std::string BuildPhotoshopTemplate(TemplateKind kind, const std::string& codeDll);

}  // namespace trel::gen
