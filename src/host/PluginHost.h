// Driving the plugin host: running a plugin on the preview picture, showing a
// plugin's about box, and the two small process starters.
#pragma once

#include <optional>
#include <string>

#include "filter/ShellHooks.h"
#include "host/ImageLibrary.h"

class QPaintDevice;

namespace trel {

// The pictures the program's windows share and the main window; the
// application object owns one.
struct HostState {
  ImgHandle PreviewImage = 0;  // the current preview picture
  ImgHandle PictureImage = 0;  // the Picture Editor's picture
  WindowHandle mainWindow = 0;
};

// Runs `pluginFile` on the whole preview picture (which it changes) and, when
// `draw`, draws the result onto `target`. parentWindow 0 takes the main window
// and is written back. The host is loaded for the run and always unloaded.
// `failure`, if given, receives why the plugin did not load or run, for the
// caller to show where it shows the result.
struct PluginFailure {
  int32_t status = IMG_OK;  // the library's status; IMG_ERR_CANCELLED is the user's choice
  std::string text;         // the library's sentence and the cause, on one line
};
void PluginInvoke(ImageLibrary& lib, HostState& state, ShellHooks& shell,
                  const std::string& hostFolder, const std::string& pluginFile,
                  QPaintDevice* target, bool draw, WindowHandle& parentWindow, bool& result,
                  PluginFailure* failure = nullptr);

// What the about command must settle with the user first: a refusal to show,
// or a question (text and title, asked Yes/No) whose Yes lets it run.
struct AboutCheck {
  std::optional<Error> refusal;
  std::optional<Error> question;
};
// `selectedFile` is the full path of the active pane's single selected file,
// empty when there is none.
AboutCheck CheckAboutTarget(const std::string& selectedFile);
// The about box of the selected plugin, once CheckAboutTarget refused nothing
// and its question, if any, was answered Yes. A file it refuses is left alone.
void cmd_AboutDialog(ImageLibrary& lib, HostState& state, ShellHooks& shell,
                     const std::string& selectedFile);

// Runs `plugin` on all of `image`; true if the picture was changed.
bool ApplyFilter(ImageLibrary& lib, ImgHandle image, const std::string& plugin,
                 WindowHandle parentWindow);

// The open-with fallback: "shell32.dll,OpenAs_RunDLL PATH" opens PATH with the
// desktop's choice of program. Does not wait. False if nothing was started.
bool RunDLL(const std::string& arguments);
// Starts a command line and waits, without a time-out, until it ends; its exit
// code, or -1 if it could not start.
int ShellAndWait(const std::string& commandLine);

}  // namespace trel
