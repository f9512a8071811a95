// The formats a filter record is written in. The values are the entries of
// the Convert dialog's list, in order; the editor's save list orders them its
// own way and maps its entries onto these.
#pragma once

#include <array>
#include <optional>

namespace trel {

enum class OutputFormat : int {
  Plugin8bf = 0,         // "Photoshop FF Plugin"
  PremierePlugin = 1,    // "Premiere FF Plugin"
  TransitionPlugin = 2,  // "Premiere TF Plugin"
  AFS = 3,               // "AFS File"
  PFF = 4,               // "PFF File"
  TXT = 5,               // "Text File"
};

inline constexpr std::array<OutputFormat, 6> kOutputFormats{
    OutputFormat::Plugin8bf, OutputFormat::PremierePlugin, OutputFormat::TransitionPlugin,
    OutputFormat::AFS,       OutputFormat::PFF,            OutputFormat::TXT};

// The Convert dialog's list entry of a format, and the format of an entry
// (nullopt outside the list).
inline int ConvertListIndex(OutputFormat format) { return static_cast<int>(format); }
inline std::optional<OutputFormat> FormatAtConvertIndex(int index) {
  if (index < 0 || index >= static_cast<int>(kOutputFormats.size())) return std::nullopt;
  return kOutputFormats[static_cast<size_t>(index)];
}

}  // namespace trel
