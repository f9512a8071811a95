#include "settings/ListFiles.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/Paths.h"
#include "base/SafeTarget.h"
#include "settings/Conversions.h"

namespace trel {

namespace {

void SplitLine(const std::string& line, std::vector<std::string>& items) {
  size_t i = 0;
  const size_t n = line.size();
  while (true) {
    while (i < n && (line[i] == ' ' || line[i] == '\t')) ++i;
    std::string item;
    if (i < n && line[i] == '"') {
      const size_t close = line.find('"', i + 1);
      item = line.substr(i + 1, (close == std::string::npos ? n : close) - i - 1);
      i = close == std::string::npos ? n : close + 1;
      const size_t comma = line.find(',', i);
      i = comma == std::string::npos ? n : comma;
    } else {
      const size_t comma = line.find(',', i);
      const size_t end = comma == std::string::npos ? n : comma;
      item = line.substr(i, end - i);
      while (!item.empty() && (item.back() == ' ' || item.back() == '\t')) item.pop_back();
      i = end;
    }
    items.push_back(item);
    if (i >= n) break;
    ++i;  // past the comma
    if (i >= n) {
      items.emplace_back();  // a trailing comma leaves one empty item
      break;
    }
  }
}

}  // namespace

std::vector<std::string> InputItems(const std::string& content) {
  std::vector<std::string> items;
  size_t start = 0;
  while (start < content.size()) {
    size_t end = content.find('\n', start);
    const bool last = end == std::string::npos;
    if (last) end = content.size();
    std::string line = content.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    SplitLine(line, items);
    start = end + 1;
  }
  return items;
}

std::optional<std::vector<ListEntry>> LoadList(const std::string& path, bool withState) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  const std::string content{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (in.bad()) return std::nullopt;
  const std::vector<std::string> items = InputItems(content);
  std::vector<ListEntry> entries;
  for (size_t i = 0; i < items.size(); ++i) {
    ListEntry entry{items[i], false};
    if (withState) {
      // A row whose state is missing at the end of the file is still a row.
      if (i + 1 < items.size()) entry.state = ParseBool(items[++i]).value_or(false);
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

bool SaveList(const std::string& path, const std::vector<ListEntry>& entries, bool withState) {
  std::string text;
  for (const auto& entry : entries) {
    text += entry.text + "\r\n";
    if (withState) text += BoolText(entry.state) + "\r\n";
  }
  return WriteWholeFile(path, text);  // the old file stays unless the new one is complete
}

}  // namespace trel
