#include "cli/Json.h"

namespace trel::cli {

std::string Latin1ToUtf8(const std::string& bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char ch : bytes) {
    const auto c = static_cast<unsigned char>(ch);
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

nlohmann::ordered_json FilterToJson(const FFFilter& f) {
  nlohmann::ordered_json maps = nlohmann::ordered_json::array();
  for (const auto& name : f.mapName) maps.push_back(Latin1ToUtf8(name));
  nlohmann::ordered_json controls = nlohmann::ordered_json::array();
  for (const auto& name : f.ctlName) controls.push_back(Latin1ToUtf8(name));
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (const auto value : f.ctlValue) values.push_back(value);
  nlohmann::ordered_json j;
  j["filename"] = Latin1ToUtf8(f.filename);
  j["category"] = Latin1ToUtf8(f.category);
  j["title"] = Latin1ToUtf8(f.title);
  j["copyright"] = Latin1ToUtf8(f.copyright);
  j["author"] = Latin1ToUtf8(f.author);
  j["mapName"] = std::move(maps);
  j["ctlName"] = std::move(controls);
  j["ctlValue"] = std::move(values);
  j["codeR"] = Latin1ToUtf8(f.codeR);
  j["codeG"] = Latin1ToUtf8(f.codeG);
  j["codeB"] = Latin1ToUtf8(f.codeB);
  j["codeA"] = Latin1ToUtf8(f.codeA);
  j["isPhotoshop"] = f.isPhotoshop;
  return j;
}

}  // namespace trel::cli
