#include "host/PluginHost.h"

#include <exception>

#include <QProcess>
#include <QString>
#include <QStringList>

#include "base/PluginKinds.h"

namespace trel {

namespace {

const char* const kProgramTitle = "Trel";

}  // namespace

void PluginInvoke(ImageLibrary& lib, HostState& state, ShellHooks& shell,
                  const std::string& hostFolder, const std::string& pluginFile,
                  QPaintDevice* target, bool draw, WindowHandle& parentWindow, bool& result,
                  PluginFailure* failure) {
  result = false;
  if (failure) *failure = {};
  // The library's own words, taken before the unload resets its status.
  auto why = [&] {
    if (!failure) return;
    failure->status = lib.ImgGetStatus();
    failure->text = lib.ImgErrString();
    for (char& c : failure->text)
      if (c == '\n') c = ' ';
  };
  if (parentWindow == 0) parentWindow = state.mainWindow;
  if (state.PreviewImage == 0) return;
  try {
    ImgInfo info;
    lib.ImgGetInfoStruct(state.PreviewImage, info);
    const ImgRect rect{0, 0, info.width - 1, info.height - 1};
    // 4 - host load
    if (lib.ImgPlugInHostLoad(hostFolder) != IMG_OK) {
      lib.ImgErrBox(state.mainWindow);
    } else {
      // 5 - plugin load
      if (lib.ImgPlugInLoad(pluginFile) != IMG_OK) {
        why();
        Error notLoaded = Error::Fault(
            "An error occured while loading the plugin!\n"
            "The plugin may be invalid or\n"
            "you may need msvcrt10.dll or plugin.dll\n"
            "in your Windows System folder.",
            pluginFile);
        notLoaded.title = kProgramTitle;
        shell.Report(notLoaded);
      } else if (lib.ImgPlugInInvoke(state.PreviewImage, parentWindow, rect) == IMG_OK) {
        // 6 - Plugin Invoke went through (a cancelled run is no error); 7 - Drawing
        if (draw && target) lib.ImgDrawImage(state.PreviewImage, target, rect, rect);
        result = true;
      } else {
        why();
      }
    }
  } catch (const std::exception& e) {
    shell.Report(Error::Fault(e.what(), pluginFile));
  }
  // 8 - Host Unload, whatever happened above.
  lib.ImgPlugInHostUnload();
}

AboutCheck CheckAboutTarget(const std::string& selectedFile) {
  AboutCheck check;
  if (selectedFile.empty()) {
    check.refusal = Error::Warning("Please select a plugin or other supported file.", kProgramTitle);
    return check;
  }
  const PluginName plugin = ClassifyPluginName(selectedFile);
  if (plugin.kind == PluginKind::Photoshop && plugin.withoutExtension) {
    check.question = Error::Warning(
        "Photoshop-compatible plugins without a file extension can cause a crash\n"
        "when you try to execute them. To avoid this risk please use the En/Disable \n"
        "command to add a .8bf or ._bf extension to the plugin file.\n"
        "\n"
        "Do you want to execute this plugin anyway?",
        "Warning", selectedFile);
  } else if (plugin.kind != PluginKind::Photoshop) {
    check.refusal = Error::Warning(
        "Please select a Photoshop-compatible plugin to execute this function.", kProgramTitle);
  }
  return check;
}

void cmd_AboutDialog(ImageLibrary& lib, HostState& state, ShellHooks& shell,
                     const std::string& selectedFile) {
  if (CheckAboutTarget(selectedFile).refusal) return;
  try {
    // A host left loaded by an earlier failed about box goes first.
    if (lib.ImgPlugInHostIsEnabled() != 0 && lib.ImgPlugInHostUnload() != IMG_OK) return;
    if (lib.ImgPlugInHostLoad("") != IMG_OK) return;
    if (lib.ImgPlugInAbout(state.mainWindow, selectedFile) == IMG_OK) lib.ImgPlugInHostUnload();
  } catch (const std::exception& e) {
    shell.Report(Error::Fault(e.what(), selectedFile));
  }
}

bool ApplyFilter(ImageLibrary& lib, ImgHandle image, const std::string& plugin,
                 WindowHandle parentWindow) {
  ImgInfo info;
  if (lib.ImgGetInfoStruct(image, info) != IMG_OK) return false;
  bool changed = false;
  if (lib.ImgPlugInHostLoad("") == IMG_OK && lib.ImgPlugInLoad(plugin) == IMG_OK)
    changed = lib.ImgPlugInInvoke(image, parentWindow, {0, 0, info.width - 1, info.height - 1}) == IMG_OK;
  lib.ImgPlugInHostUnload();
  return changed;
}

bool RunDLL(const std::string& arguments) {
#ifdef Q_OS_WIN
  return QProcess::startDetached("rundll32.exe", QProcess::splitCommand(QString::fromLocal8Bit(arguments)));
#else
  // The desktop has no open-with dialog to call; its default program stands in.
  const std::string openAs = "shell32.dll,OpenAs_RunDLL ";
  if (arguments.compare(0, openAs.size(), openAs) != 0) return false;
  const QString path = QString::fromLocal8Bit(arguments.substr(openAs.size()));
  return QProcess::startDetached("xdg-open", {path});
#endif
}

int ShellAndWait(const std::string& commandLine) {
  QStringList parts = QProcess::splitCommand(QString::fromLocal8Bit(commandLine));
  if (parts.isEmpty()) return -1;
  QProcess process;
  const QString program = parts.takeFirst();
  process.start(program, parts);
  if (!process.waitForStarted(-1)) return -1;
  process.waitForFinished(-1);
  return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

}  // namespace trel
