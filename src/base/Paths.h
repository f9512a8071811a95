// Folder and file-name helpers of the filter core. Folder texts end in the
// platform separator; names are compared lower-cased.
#pragma once

#include <cstdint>
#include <string>

namespace trel {

constexpr char kPathSeparator = '/';

std::string WithTrailingSeparator(std::string folder);
bool FileExists(const std::string& path);            // a regular file
int64_t FileLength(const std::string& path);         // -1 when missing or not a file
std::string ToLower(std::string text);
std::string LastFour(const std::string& name);       // last four characters, lower-cased
void SplitPath(const std::string& path, std::string& folder, std::string& name);
std::string Trim(const std::string& text);           // blanks at both ends

}  // namespace trel
