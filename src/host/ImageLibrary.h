// The image library every picture of the program goes through: pictures are
// 32-bit handles (0 is none) into a table of QImage owned by one ImageLibrary,
// with the operations the program calls under their names. It is also the
// plugin host: a Filter Factory plugin, recognised by its file, runs through
// our own engine with the control values stored in it and no dialog; any
// other Windows plugin runs in the Windows host under Wine (PlugHostClient),
// and whatever goes wrong there comes back as an error code, so callers show
// their message.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <QImage>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "host/ff/FFEngine.h"

class QPaintDevice;

namespace trel {

using ImgHandle = int32_t;        // 0: no image
using WindowHandle = uintptr_t;   // opaque; 0: none

// Results other than 1. ImgGetStatus gives the last one, ImgErrBox shows it.
enum ImgStatus : int32_t {
  IMG_OK = 1,
  IMG_ERR_BAD_HANDLE = -1,
  IMG_ERR_FILE_OPEN = -2,
  IMG_ERR_FILE_WRITE = -3,
  IMG_ERR_BAD_FORMAT = -4,
  IMG_ERR_BAD_RECT = -5,
  IMG_ERR_NO_MEMORY = -6,
  IMG_ERR_NO_HOST = -10,        // the plugin host is not loaded
  IMG_ERR_HOST_FOLDER = -11,    // the host folder does not exist
  IMG_ERR_PLUGIN_OPEN = -12,    // no such plugin file
  IMG_ERR_NOT_SUPPORTED = -13,  // a plugin this host cannot run
  IMG_ERR_PLUGIN_CODE = -14,    // a Filter Factory plugin whose code does not compile
  IMG_ERR_NO_PLUGIN = -15,      // no plugin loaded
  IMG_ERR_CANCELLED = -16,
  IMG_ERR_NO_WINE = -17,          // the Windows host cannot run here (Wine or the host missing)
  IMG_ERR_PLUGIN_CRASHED = -18,   // the plugin crashed the Windows host
  IMG_ERR_PLUGIN_TIMEOUT = -19,   // the plugin took too long and was stopped
  IMG_ERR_PLUGIN_FAILED = -22,    // the plugin reported an error
  IMG_ERR_PLUGIN_OVERRUN = -23,   // the plugin wrote outside its buffers
  IMG_ERR_NO_ENTRY = -24,         // a DLL without a filter entry point
  IMG_ERR_HOST_SERVICE = -25,     // the plugin needs a service the host does not offer
  IMG_ERR_NO_SCANNER = -20,
  IMG_ERR_NO_CLIPBOARD = -21,
};

// The fields of the information record that are used (a BITMAPINFOHEADER).
struct ImgInfo {
  int32_t width = 0;
  int32_t height = 0;
  int16_t bitCount = 0;
};

// left, top, right, bottom; right and bottom are the last pixel inside.
struct ImgRect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

class PlugHostClient;

class ImageLibrary {
 public:
  explicit ImageLibrary(ShellHooks& shell);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;

  // Pictures.
  ImgHandle ImgOpenSolo(const std::string& path, const std::string& options);
  int32_t ImgClose(ImgHandle image);
  int32_t ImgGetInfoStruct(ImgHandle image, ImgInfo& info, int32_t* further = nullptr);
  ImgHandle ImgCopy(ImgHandle image, int32_t left, int32_t top, int32_t right, int32_t bottom,
                    int32_t further = 0);
  ImgHandle ImgIncreaseColors(ImgHandle image, int32_t bits);
  int32_t ImgDrawImage(ImgHandle image, QPaintDevice* device, const ImgRect& target,
                       const ImgRect& source);
  int32_t ImgPrintImage(ImgHandle image, QPaintDevice* device, const ImgRect& target,
                        const ImgRect& source);
  // Writes in the format of the path's extension; a file that stood there is
  // only replaced once the new one is complete.
  int32_t ImgXWriteImage(const std::string& path, const std::string& options, ImgHandle image,
                         WindowHandle window);
  ImgHandle ImgFromClipboard();
  // The open dialog with preview; the program installs the dialog (see
  // setOpenDialog). Returns the new handle, 0 when nothing was chosen.
  ImgHandle ImgOpenDialog(std::string& chosenFile, int32_t flags);
  int32_t ImgErrBox(WindowHandle window);
  int32_t ImgGetStatus() const { return status_; }
  int32_t ScanIsTWAINAvailable() { return 0; }
  int32_t ScanSelectSource(WindowHandle window);

  // The plugin host.
  int32_t ImgPlugInHostIsEnabled() const { return hostLoaded_ ? 1 : 0; }
  int32_t ImgPlugInHostLoad(const std::string& folder);
  int32_t ImgPlugInHostUnload();
  int32_t ImgPlugInLoad(const std::string& pluginPath);
  int32_t ImgPlugInInvoke(ImgHandle image, WindowHandle window, const ImgRect& rect);
  int32_t ImgPlugInAbout(WindowHandle window, const std::string& pluginPath);
  // One whole run of `plugin` over a copy of `picture` through the steps
  // above (host, plugin, invoke, unload): the result, or a null image with
  // the status and, as one line, the reason.
  QImage RunPlugInOnce(const std::string& hostFolder, const std::string& plugin, const QImage& picture,
                       WindowHandle window, int32_t* status = nullptr, std::string* why = nullptr);

  // For the program's windows: the picture behind a handle (null if none),
  // and taking a picture into the table.
  QImage* image(ImgHandle handle);
  ImgHandle Adopt(QImage image);
  size_t openImages() const { return images_.size(); }

  // The filter of the loaded plugin, and why the last plugin would not load.
  const FFFilter& loadedFilter() const { return filter_; }
  const ff::CompileError& lastCompileError() const { return compileError_; }

  // The status text with what the host said about it, as ImgErrBox shows it.
  std::string ImgErrString() const;

  // Windows plugins. A plugin may show its own dialog only when the user runs
  // it from the window; previews run without, on the last or stored
  // parameters. Out of process, Filter Factory plugins too run in the Windows
  // host, which is how a compiled template is checked against the engine.
  void setPluginDialogs(bool on) { pluginDialogs_ = on; }
  void setOutOfProcess(bool on) { outOfProcess_ = on; }
  void setPluginTimeout(int ms);
  // Control values that replace the stored ones of a Filter Factory plugin,
  // in both paths; nullopt for the stored ones.
  void setControls(std::optional<std::array<uint8_t, 8>> values) { controls_ = values; }
  // The host of one architecture, started on first use and kept for the next.
  PlugHostClient& hostClient(bool is32bit);

  void setOpenDialog(std::function<std::string()> dialog) { openDialog_ = std::move(dialog); }
  // Polled while a plugin runs; true cancels it (Esc in the program).
  void setCancel(std::function<bool()> cancel) { cancel_ = std::move(cancel); }
  // Called while a Windows plugin runs, between short waits (see PlugHostClient).
  void setWhileWaiting(std::function<void()> hook) { whileWaiting_ = std::move(hook); }

 private:
  int32_t Fail(int32_t status) {
    detail_.clear();
    return status_ = status;
  }
  // `detail` is what the host said, shown as a sentence of its own.
  int32_t Fail(int32_t status, std::string detail) {
    status_ = status;
    if (!detail.empty() && detail[0] >= 'a' && detail[0] <= 'z') detail[0] = char(detail[0] - 'a' + 'A');
    if (!detail.empty() && detail.back() != '.') detail += '.';
    detail_ = std::move(detail);
    return status_;
  }
  std::string ResolvePlugin(const std::string& pluginPath) const;
  bool ReadPlugin(const std::string& path, FFFilter& f);
  int32_t LoadWindowsPlugin(const std::string& path);
  int32_t InvokeWindowsPlugin(QImage& img, const ImgRect& rect, bool dialog);
  std::string ParametersFile() const;

  ShellHooks& shell_;
  std::map<ImgHandle, QImage> images_;
  ImgHandle nextHandle_ = 1;
  int32_t status_ = IMG_OK;

  bool hostLoaded_ = false;
  std::string hostFolder_;
  bool pluginLoaded_ = false;
  FFFilter filter_;
  ff::CompiledFilter compiled_;
  ff::CompileError compileError_;

  std::string detail_;              // what the host said about the last failure
  bool windowsPlugin_ = false;      // the loaded plugin runs in the Windows host
  bool windowsPlugin32_ = false;
  std::string windowsPluginPath_;
  bool pluginDialogs_ = false;
  bool outOfProcess_ = false;
  int pluginTimeoutMs_ = 0;         // 0: the client's own
  std::optional<std::array<uint8_t, 8>> controls_;
  std::unique_ptr<PlugHostClient> host64_, host32_;

  std::function<std::string()> openDialog_;
  std::function<bool()> cancel_;
  std::function<void()> whileWaiting_;
};

// Runs a compiled filter over the rectangle of a picture in place, whatever
// its format (the picture keeps it). IMG_OK, IMG_ERR_CANCELLED or an error.
int32_t RunFilterOnPicture(const ff::CompiledFilter& filter, const ff::Controls& controls,
                           QImage& picture, const ImgRect& rect,
                           const std::function<bool()>& cancel = {});

// Status texts as ImgErrBox shows them.
std::string ImgStatusText(int32_t status);

}  // namespace trel
