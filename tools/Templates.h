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

}  // namespace trel::gen
