// One preview run of the editor, as the window hands it to a worker thread:
// for each pass the filter is compiled into temp.dll of the program folder
// (Write8bf with toTemp) and that plugin is run through the plugin host
// (PluginInvoke) on the working copy of the preview picture.
#pragma once

#include <QImage>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "editor/FFEditorMod.h"
#include "filter/FFFilter.h"
#include "filter/FilterOptions.h"

namespace trel {

struct PreviewJob {
  FFFilter filter;                  // names and values as the editor holds them
  std::vector<PassCodes> passes;    // codes of each run, in order
  FilterOptions options;            // programFolder: where temp.dll and the template are
  QImage picture;                   // the working copy; the result replaces it
  std::shared_ptr<std::atomic<bool>> cancel;  // set when a newer edit supersedes the run
};

struct PreviewOutcome {
  QImage picture;
  bool ok = false;
  bool cancelled = false;
  std::string message;  // why the run failed (the host's or the compiler's words)
};

// Runs the job on the calling thread. Runs of several threads take turns on
// temp.dll.
PreviewOutcome RunPreviewJob(PreviewJob job);

}  // namespace trel
