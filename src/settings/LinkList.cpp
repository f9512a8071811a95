#include "settings/LinkList.h"

#include <fstream>
#include <sstream>

#include "base/SafeTarget.h"

namespace trel {

namespace {

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  const size_t last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

}  // namespace

bool LoadLinks(const std::string& path, LinkList& list) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  list.names.clear();
  list.urls.clear();
  std::string line;
  std::string name;  // survives a line with an empty name, as the reader always did
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t semicolon = line.find(';');
    std::string url;
    if (semicolon == std::string::npos) {
      name = Trim(line);
    } else {
      if (semicolon > 0) name = Trim(line.substr(0, semicolon));
      url = Trim(line.substr(semicolon + 1));
    }
    list.names.push_back(name);
    list.urls.push_back(url);
  }
  list.changed = false;
  return true;
}

std::string LinksText(const LinkList& list) {
  std::string text;
  for (size_t i = 0; i < list.size(); ++i) {
    if (list.names[i].empty() && list.urls[i].empty()) continue;
    text += list.urls[i].empty() ? list.names[i] : list.names[i] + ";" + list.urls[i];
    text += "\n";
  }
  return text;
}

bool SaveLinks(const std::string& path, LinkList& list) {
  if (!WriteWholeFile(path, LinksText(list))) return false;
  list.changed = false;
  return true;
}

bool MoveLink(LinkList& list, size_t row, int direction) {
  if (row >= list.size()) return false;
  if (direction < 0 && row == 0) return false;
  if (direction > 0 && row + 1 >= list.size()) return false;
  const size_t other = direction < 0 ? row - 1 : row + 1;
  std::swap(list.names[row], list.names[other]);
  std::swap(list.urls[row], list.urls[other]);
  list.changed = true;
  return true;
}

void AddLink(LinkList& list, const std::string& name, const std::string& url) {
  list.names.push_back(name);
  list.urls.push_back(url);
  list.changed = true;
}

bool DeleteLink(LinkList& list, size_t row) {
  if (row >= list.size()) return false;
  list.names.erase(list.names.begin() + static_cast<long>(row));
  list.urls.erase(list.urls.begin() + static_cast<long>(row));
  list.changed = true;
  return true;
}

}  // namespace trel
