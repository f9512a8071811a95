// JSON output helpers of the command line.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "filter/FFFilter.h"

namespace trel::cli {

// Filter texts are single bytes; bytes above 127 are shown as their Latin-1
// characters, so the JSON stays valid UTF-8 whatever a file holds.
std::string Latin1ToUtf8(const std::string& bytes);

nlohmann::ordered_json FilterToJson(const FFFilter& f);

}  // namespace trel::cli
