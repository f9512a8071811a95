#include "filter/BatchConvert.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include "filter/Dispatch.h"
#include "filter/LabelShortening.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"
#include "filter/PluginCompiler.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

// A fresh scratch folder inside `folder`, so that moving its files into
// `folder` is a rename on one file system.
bool MakeStage(const std::string& folder, std::string& stage) {
  thread_local std::mt19937 random{std::random_device{}()};
  for (int attempt = 0; attempt < 16; ++attempt) {
    stage = folder + ".trel-stage-" + std::to_string(random() % 1000000000u) + kPathSeparator;
    std::error_code ec;
    if (fs::create_directory(stage, ec)) return true;
  }
  return false;
}

// The AFS and PFF writers don't truncate an existing file: a shorter filter
// leaves the old file's tail behind it. The stage starts from the old file so
// that this stays true.
std::string UntruncatedTarget(const FFFilter& f, OutputFormat format) {
  const std::string ext = format == OutputFormat::AFS ? ".afs" : ".pff";
  std::string name = f.filename;
  if (name.find('.') == std::string::npos) name += ext;
  return name.substr(0, name.size() - std::min<size_t>(4, name.size())) + ext;
}

}  // namespace

std::string UnusableFolder(const std::string& folder) {
  return folder + ": nothing can be written into this folder";
}

namespace {

void ShowCount(Progress& progress, size_t index, size_t count) {
  progress.StatusDisplay(std::to_string(index) + " of " + std::to_string(count));
}

}  // namespace

OverwriteAnswer SkipExistingTargets::OverwriteCheck(const std::string&, const std::string& targetPath) {
  if (targetPath.empty()) return OverwriteAnswer::Write;
  std::error_code ec;
  return fs::exists(targetPath, ec) ? OverwriteAnswer::Skip : OverwriteAnswer::Write;
}

std::string ConfinedFilename(const std::string& filename) {
  std::string name = filename;
  std::replace(name.begin(), name.end(), kPathSeparator, '_');
  return name;
}

void ApplyNameRule(FFFilter& f, const FilterOptions& options) {
  if (options.useFilterNameAsFileName) f.filename = RemoveChars(f.title);
}

bool MakeFolder(const std::string& folder) {
  std::error_code ec;
  fs::create_directories(folder, ec);
  return fs::is_directory(folder, ec);
}

TargetWriter::TargetWriter(const std::string& folder, const FilterEnv& env, ConvertReport* report)
    : folder_(WithTrailingSeparator(folder)), env_(env), report_(report) {}

TargetWriter::~TargetWriter() {
  std::error_code ec;
  if (!stage_.empty()) fs::remove_all(stage_, ec);
}

WriteOutcome TargetWriter::Fail(WriteOutcome outcome) {
  if (report_) ++report_->failed;
  return outcome;
}

WriteOutcome TargetWriter::Write(FFFilter& f, OutputFormat format) {
  if (!FormatAtConvertIndex(static_cast<int>(format))) return Fail(WriteOutcome::WriterFailed);
  if (stage_.empty() && !MakeStage(folder_, stage_)) {
    stage_.clear();
    return Fail(WriteOutcome::FolderFailed);
  }
  std::error_code ec;
  f.filename = ConfinedFilename(f.filename);
  if (format == OutputFormat::AFS || format == OutputFormat::PFF) {
    const std::string name = UntruncatedTarget(f, format);
    if (fs::is_regular_file(folder_ + name, ec)) fs::copy_file(folder_ + name, stage_ + name, ec);
  }

  Expected<void> written;
  switch (format) {
    case OutputFormat::Plugin8bf: written = Make8bf(f, stage_, false, false, env_); break;
    case OutputFormat::PremierePlugin: written = MakePRM(f, stage_, env_); break;
    case OutputFormat::TransitionPlugin: written = MakeTF(f, stage_, env_); break;
    case OutputFormat::AFS: Writeafspff(f, stage_, 0, env_); break;
    case OutputFormat::PFF: Writeafspff(f, stage_, 1, env_); break;
    case OutputFormat::TXT: WriteTXT(f, stage_, false, env_); break;
  }
  if (!written) env_.hooks().Report(written.error());

  // Whatever the writer left is moved into place, or dropped after an error,
  // so the stage is empty for the next record.
  std::vector<std::string> made;
  for (const auto& entry : fs::directory_iterator(stage_, ec)) made.push_back(entry.path().filename().string());
  std::sort(made.begin(), made.end());
  bool moved = false;
  for (const auto& name : made) {
    if (!written || IsTempBesideName(name)) {
      fs::remove_all(stage_ + name, ec);
      continue;
    }
    fs::rename(stage_ + name, folder_ + name, ec);
    if (ec) {
      env_.hooks().Report(Error::Fault(folder_ + name + ": " + ec.message(), folder_ + name));
      fs::remove_all(stage_ + name, ec);
      continue;
    }
    moved = true;
    if (report_) report_->written.push_back(folder_ + name);
  }
  return moved ? WriteOutcome::Written : Fail(WriteOutcome::WriterFailed);
}

WriteOutcome WriteByFormat(FFFilter& f, const std::string& folder, OutputFormat format,
                           const FilterEnv& env, ConvertReport* report) {
  return TargetWriter(folder, env, report).Write(f, format);
}

ConvertReport cmd_Convert(FFFilter& f, const ConvertRequest& request, OverwriteChecker& check,
                          const FilterEnv& env) {
  ConvertReport report;
  ShellHooks& shell = env.hooks();
  const OutputFormat format = request.format;

  if (!request.useClipboard && request.activeView == 3) {
    if (request.library) {
      const Expected<void> done = cmd_Extract(f, *request.library, request.selectedEntries, format,
                                              request.targetFolder, check, env, report);
      if (!done) shell.Report(done.error());
    }
    return report;
  }

  if (request.useClipboard) {
    report.clipboardOptionOn = true;
    if (!request.clipboardText) return report;  // no text: nothing happens, the box stays on
    const std::string programFolder = WithTrailingSeparator(
        env.options.programFolder.empty() ? std::string(".") : env.options.programFolder);
    const std::string temp = programFolder + "Temp.txt";
    {
      std::ofstream out(temp, std::ios::binary | std::ios::trunc);
      out << *request.clipboardText << "\r\n";
      if (!out) {
        shell.Report(Error::Fault(temp + ": can't be written", temp));
        return report;
      }
    }
    check.OverwriteCheck("", "");
    if (ReadTXT(f, programFolder, "Temp.txt", false, false, env)) {
      ++report.read;
      const std::string folder = WithTrailingSeparator(request.targetFolder);
      const OverwriteAnswer answer = check.OverwriteCheck("", folder + GetFilname(format, f.filename,
                                                                      env.options));
      if (answer == OverwriteAnswer::Stop) {
        // Cancelled at the question: Temp.txt stays behind, as does the box.
        report.stopped = true;
        check.OverwriteCheck("", "");
        return report;
      }
      if (answer == OverwriteAnswer::Write) {
        ApplyNameRule(f, env.options);
        if (WriteByFormat(f, folder, format, env, &report) == WriteOutcome::FolderFailed)
          shell.Report(Error::Fault(UnusableFolder(folder), folder));
      } else {
        ++report.skipped;
      }
    } else {
      ++report.unreadable;
    }
    std::error_code ec;
    fs::remove(temp, ec);
    report.clipboardOptionOn = false;
    check.OverwriteCheck("", "");
    return report;
  }

  if (request.activeView >= 3 || request.selection.empty()) return report;
  std::string folder = WithTrailingSeparator(request.targetFolder);
  auto writer = std::make_unique<TargetWriter>(folder, env, &report);
  check.OverwriteCheck("", "");
  const size_t count = request.selection.size();
  for (size_t i = 0; i < count && !report.stopped; ++i) {
    if (shell.EscapePressed()) {
      report.stopped = true;
      break;
    }
    const std::string& source = request.selection[i];
    std::string sourceFolder, name;
    SplitPath(source, sourceFolder, name);
    if (LastFour(name) == ".ffl") {
      // The sub folder replaces the target for the rest of the run, so a second
      // library lands inside the first one's folder.
      if (request.createSubFolders) {
        folder = WithTrailingSeparator(folder + name.substr(0, name.size() - 4));
        writer = std::make_unique<TargetWriter>(folder, env, &report);
      }
      const Expected<void> done =
          Convertffl(f, source, folder, format, env, &report, &check, request.askForLibraryEntries);
      if (!done) shell.Report(done.error());
    } else if (ReadFFfile(f, source, env)) {
      ++report.read;
      // The question sees the name from before the name rule: it may ask about
      // another file than the one then written.
      const OverwriteAnswer answer = check.OverwriteCheck(source, folder + GetFilname(format, f.filename,
                                                                          env.options));
      if (answer == OverwriteAnswer::Stop) {
        report.stopped = true;
        break;
      }
      if (answer == OverwriteAnswer::Write) {
        ApplyNameRule(f, env.options);
        if (writer->Write(f, format) == WriteOutcome::FolderFailed &&
            !shell.ContinueAfter(Error::Fault(UnusableFolder(folder), folder))) {
          report.stopped = true;
        }
      } else {
        ++report.skipped;
      }
    } else {
      ++report.unreadable;
    }
    ShowCount(shell, i + 1, count);
  }
  check.OverwriteCheck("", "");
  shell.StatusDisplay("");
  return report;
}

}  // namespace trel
