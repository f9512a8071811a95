#include "host/ImageLibrary.h"

#include <QByteArray>
#include <QClipboard>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>

#include "filter/CompiledReaders.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"
#include "host/PlugHostClient.h"
#include "host/ImageWrappers.h"
#include "hostprotocol/HostProtocol.h"

namespace trel {

namespace {

QString FromLocal(const std::string& s) { return QString::fromLocal8Bit(s.data(), qsizetype(s.size())); }

int16_t BitCountOf(const QImage& img) {
  switch (img.format()) {
    case QImage::Format_RGB888:
    case QImage::Format_BGR888:
      return 24;
    default:
      return static_cast<int16_t>(img.depth());
  }
}

bool RectInside(const ImgRect& r, const QImage& img) {
  return r.left >= 0 && r.top >= 0 && r.left <= r.right && r.top <= r.bottom &&
         r.right < img.width() && r.bottom < img.height();
}

QRect ToQRect(const ImgRect& r) { return QRect(QPoint(r.left, r.top), QPoint(r.right, r.bottom)); }

// Puts a filtered rectangle back into the picture in the picture's own format
// (a paletted picture becomes a true-colour one).
void PasteBack(QImage& img, const QImage& result, const ImgRect& rect, QImage::Format original) {
  const bool paletted = original == QImage::Format_Indexed8 || original == QImage::Format_Mono ||
                        original == QImage::Format_MonoLSB;
  const bool alpha = result.hasAlphaChannel();
  QImage back = result.convertToFormat(
      paletted ? (alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32) : original);
  if (rect.left == 0 && rect.top == 0 && rect.right == img.width() - 1 && rect.bottom == img.height() - 1) {
    img = back;
  } else {
    if (img.format() != back.format()) img = img.convertToFormat(back.format());
    QPainter painter(&img);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPoint(rect.left, rect.top), back);
  }
}

}  // namespace

std::string ImgStatusText(int32_t status) {
  switch (status) {
    case IMG_OK: return "No error.";
    case IMG_ERR_BAD_HANDLE: return "Invalid image handle.";
    case IMG_ERR_FILE_OPEN: return "The image file could not be opened or read.";
    case IMG_ERR_FILE_WRITE: return "The image file could not be written.";
    case IMG_ERR_BAD_FORMAT: return "Unsupported image format.";
    case IMG_ERR_BAD_RECT: return "The rectangle lies outside the image.";
    case IMG_ERR_NO_MEMORY: return "Not enough memory for the image.";
    case IMG_ERR_NO_HOST: return "The plugin host is not loaded.";
    case IMG_ERR_HOST_FOLDER: return "The plugin host folder does not exist.";
    case IMG_ERR_PLUGIN_OPEN: return "The plugin file could not be found.";
    case IMG_ERR_NOT_SUPPORTED: return "This plugin cannot be run by the plugin host.";
    case IMG_ERR_PLUGIN_CODE: return "The plugin's filter code contains an error.";
    case IMG_ERR_NO_PLUGIN: return "No plugin is loaded.";
    case IMG_ERR_CANCELLED: return "The plugin was cancelled.";
    case IMG_ERR_NO_WINE: return "Windows plugins cannot be run here.";
    case IMG_ERR_PLUGIN_CRASHED: return "The plugin crashed.";
    case IMG_ERR_PLUGIN_TIMEOUT: return "The plugin took too long and was stopped.";
    case IMG_ERR_PLUGIN_FAILED: return "The plugin reported an error.";
    case IMG_ERR_PLUGIN_OVERRUN: return "The plugin wrote outside its image buffers.";
    case IMG_ERR_NO_ENTRY: return "The file is no filter plugin: it has no plugin entry point.";
    case IMG_ERR_HOST_SERVICE: return "The plugin needs a service the plugin host does not offer.";
    case IMG_ERR_NO_SCANNER: return "There's no scanning device available.";
    case IMG_ERR_NO_CLIPBOARD: return "The clipboard holds no picture.";
    default: return "Unknown image library error " + std::to_string(status) + ".";
  }
}

ImageLibrary::ImageLibrary(ShellHooks& shell) : shell_(shell) {}

ImageLibrary::~ImageLibrary() = default;

QImage ImageLibrary::RunPlugInOnce(const std::string& hostFolder, const std::string& plugin, const QImage& picture,
                                   WindowHandle window, int32_t* status, std::string* why) {
  const ImgHandle h = Adopt(picture);
  if (h == 0) return {};
  QImage result;
  // The host's own steps, so that the reason of a failure survives the unload.
  int32_t st = ImgPlugInHostLoad(hostFolder);
  if (st == IMG_OK) st = ImgPlugInLoad(plugin);
  if (st == IMG_OK) st = ImgPlugInInvoke(h, window, {0, 0, picture.width() - 1, picture.height() - 1});
  if (st == IMG_OK) result = *image(h);
  if (why) {
    *why = st == IMG_OK ? std::string() : ImgErrString();
    for (char& c : *why)
      if (c == '\n') c = ' ';
  }
  ImgPlugInHostUnload();
  ImgClose(h);
  if (status) *status = st;
  return result;
}

std::string ImageLibrary::ImgErrString() const {
  std::string text = ImgStatusText(status_);
  if (!detail_.empty()) text += "\n" + detail_;
  return text;
}

QImage* ImageLibrary::image(ImgHandle handle) {
  auto it = images_.find(handle);
  return it == images_.end() ? nullptr : &it->second;
}

ImgHandle ImageLibrary::Adopt(QImage img) {
  if (img.isNull()) return Fail(IMG_ERR_NO_MEMORY), 0;
  // Handles are never reused within a run, so a stale handle cannot reach a new picture.
  ImgHandle h = nextHandle_++;
  images_.emplace(h, std::move(img));
  status_ = IMG_OK;
  return h;
}

ImgHandle ImageLibrary::ImgOpenSolo(const std::string& path, const std::string& options) {
  (void)options;
  QImageReader reader(FromLocal(path));
  QImage img = reader.read();
  if (img.isNull()) return Fail(IMG_ERR_FILE_OPEN), 0;
  // Qt widens 24-bit files to 32 bits without alpha; the callers expect the
  // bit count of a true-colour picture without alpha to be 24.
  if (img.format() == QImage::Format_RGB32) img = img.convertToFormat(QImage::Format_RGB888);
  return Adopt(std::move(img));
}

int32_t ImageLibrary::ImgClose(ImgHandle image) {
  if (images_.erase(image) == 0) return Fail(IMG_ERR_BAD_HANDLE);
  return status_ = IMG_OK;
}

int32_t ImageLibrary::ImgGetInfoStruct(ImgHandle image, ImgInfo& info, int32_t* further) {
  const QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE);
  info.width = img->width();
  info.height = img->height();
  info.bitCount = BitCountOf(*img);
  if (further) *further = 0;
  return status_ = IMG_OK;
}

ImgHandle ImageLibrary::ImgCopy(ImgHandle image, int32_t left, int32_t top, int32_t right,
                                int32_t bottom, int32_t further) {
  (void)further;
  const QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE), 0;
  ImgRect r{left, top, right, bottom};
  if (!RectInside(r, *img)) return Fail(IMG_ERR_BAD_RECT), 0;
  return Adopt(img->copy(ToQRect(r)));
}

ImgHandle ImageLibrary::ImgIncreaseColors(ImgHandle image, int32_t bits) {
  const QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE), 0;
  QImage::Format format;
  if (bits == 24) format = QImage::Format_RGB888;
  else if (bits == 32) format = QImage::Format_ARGB32;
  else return Fail(IMG_ERR_BAD_FORMAT), 0;
  return Adopt(img->convertToFormat(format));
}

int32_t ImageLibrary::ImgDrawImage(ImgHandle image, QPaintDevice* device, const ImgRect& target,
                                   const ImgRect& source) {
  const QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE);
  if (!device) return Fail(IMG_ERR_BAD_RECT);
  QPainter painter(device);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(ToQRect(target), *img, ToQRect(source));
  return status_ = IMG_OK;
}

int32_t ImageLibrary::ImgPrintImage(ImgHandle image, QPaintDevice* device, const ImgRect& target,
                                    const ImgRect& source) {
  // A printer is a paint device like any other.
  return ImgDrawImage(image, device, target, source);
}

int32_t ImageLibrary::ImgXWriteImage(const std::string& path, const std::string& options,
                                     ImgHandle image, WindowHandle window) {
  (void)options;
  (void)window;
  const QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE);
  QString qpath = FromLocal(path);
  QByteArray format = QFileInfo(qpath).suffix().toLower().toLatin1();
  if (format == "jpeg") format = "jpg";
  QByteArray bytes;
  if (!EncodeImage(*img, format, -1, bytes)) return Fail(format.isEmpty() ? IMG_ERR_BAD_FORMAT : IMG_ERR_FILE_WRITE);
  if (!WriteWholeFile(path, std::string(bytes.constData(), static_cast<size_t>(bytes.size()))))
    return Fail(IMG_ERR_FILE_WRITE);
  return status_ = IMG_OK;
}

ImgHandle ImageLibrary::ImgFromClipboard() {
  // Without a GUI application (the command line, tests) there is no clipboard.
  if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
    return Fail(IMG_ERR_NO_CLIPBOARD), 0;
  QImage img = QGuiApplication::clipboard()->image();
  if (img.isNull()) return Fail(IMG_ERR_NO_CLIPBOARD), 0;
  return Adopt(std::move(img));
}

ImgHandle ImageLibrary::ImgOpenDialog(std::string& chosenFile, int32_t flags) {
  (void)flags;
  if (!openDialog_) return 0;
  std::string path = openDialog_();
  if (path.empty()) return 0;
  ImgHandle h = ImgOpenSolo(path, "");
  if (h != 0) chosenFile = path;
  return h;
}

int32_t ImageLibrary::ImgErrBox(WindowHandle window) {
  (void)window;
  shell_.Report(Error::Warning(ImgErrString(), "Image Library"));
  return IMG_OK;
}

int32_t ImageLibrary::ScanSelectSource(WindowHandle window) {
  (void)window;
  Fail(IMG_ERR_NO_SCANNER);
  return 0;
}

// --- plugin host -------------------------------------------------------------

int32_t ImageLibrary::ImgPlugInHostLoad(const std::string& folder) {
  if (!folder.empty() && !QFileInfo(FromLocal(folder)).isDir()) return Fail(IMG_ERR_HOST_FOLDER);
  hostLoaded_ = true;
  hostFolder_ = folder.empty() ? std::string() : WithTrailingSeparator(folder);
  pluginLoaded_ = false;
  return status_ = IMG_OK;
}

int32_t ImageLibrary::ImgPlugInHostUnload() {
  hostLoaded_ = false;
  pluginLoaded_ = false;
  compiled_ = {};
  return status_ = IMG_OK;
}

std::string ImageLibrary::ResolvePlugin(const std::string& pluginPath) const {
  // A bare name such as "temp.dll" is looked for in the host's folder first.
  if (!hostFolder_.empty() && !QFileInfo(FromLocal(pluginPath)).isAbsolute() &&
      FileExists(hostFolder_ + pluginPath))
    return hostFolder_ + pluginPath;
  return pluginPath;
}

bool ImageLibrary::ReadPlugin(const std::string& path, FFFilter& f) {
  if (!FileExists(path)) return Fail(IMG_ERR_PLUGIN_OPEN), false;
  std::string folder, name;
  SplitPath(path, folder, name);
  FilterEnv env;
  env.shell = &shell_;
  if (!Read8bf(f, folder, name, false, false, env)) return Fail(IMG_ERR_NOT_SUPPORTED), false;
  return true;
}

void ImageLibrary::setPluginTimeout(int ms) {
  pluginTimeoutMs_ = ms;
  if (host64_) host64_->setTimeout(ms);
  if (host32_) host32_->setTimeout(ms);
}

PlugHostClient& ImageLibrary::hostClient(bool is32bit) {
  std::unique_ptr<PlugHostClient>& host = is32bit ? host32_ : host64_;
  if (!host) {
    host = std::make_unique<PlugHostClient>(is32bit);
    if (pluginTimeoutMs_ > 0) host->setTimeout(pluginTimeoutMs_);
    // Through the member, so that a later setCancel counts too.
    host->setCancel([this] { return cancel_ && cancel_(); });
    host->setWhileWaiting([this] {
      if (whileWaiting_) whileWaiting_();
    });
  }
  return *host;
}

namespace {

int32_t StatusOf(const HostAnswer& a) {
  using hostprotocol::HostError;
  switch (a.kind) {
    case HostAnswer::Kind::Ok: return IMG_OK;
    case HostAnswer::Kind::Unavailable: return IMG_ERR_NO_WINE;
    case HostAnswer::Kind::Crashed: return IMG_ERR_PLUGIN_CRASHED;
    case HostAnswer::Kind::TimedOut: return IMG_ERR_PLUGIN_TIMEOUT;
    case HostAnswer::Kind::Cancelled: return IMG_ERR_CANCELLED;
    case HostAnswer::Kind::Failed: break;
  }
  switch (static_cast<HostError>(a.code)) {
    case HostError::LoadFailed:
    case HostError::MissingDll: return IMG_ERR_NOT_SUPPORTED;
    case HostError::NoEntryPoint: return IMG_ERR_NO_ENTRY;
    case HostError::Cancelled: return IMG_ERR_CANCELLED;
    case HostError::OutsideBuffers: return IMG_ERR_PLUGIN_OVERRUN;
    case HostError::Crashed: return IMG_ERR_PLUGIN_CRASHED;
    case HostError::BadPicture: return IMG_ERR_NO_MEMORY;
    case HostError::Unsupported: return IMG_ERR_HOST_SERVICE;
    default: return IMG_ERR_PLUGIN_FAILED;
  }
}

}  // namespace

int32_t ImageLibrary::LoadWindowsPlugin(const std::string& path) {
  const PluginMachine machine = PluginMachineOf(path);
  if (machine == PluginMachine::NotWindows) return Fail(IMG_ERR_NOT_SUPPORTED, "The file is no Windows DLL.");
  if (machine == PluginMachine::Other)
    return Fail(IMG_ERR_NOT_SUPPORTED, "The plugin is built for a processor the host does not run.");
  const bool is32 = machine == PluginMachine::X86;
  PlugHostClient& host = hostClient(is32);
  const std::string why = host.Unavailable();
  if (!why.empty()) return Fail(IMG_ERR_NO_WINE, why);
  const HostAnswer a = host.Probe(path);
  if (!a.ok()) return Fail(StatusOf(a), a.message);
  windowsPlugin_ = true;
  windowsPlugin32_ = is32;
  windowsPluginPath_ = path;
  pluginLoaded_ = true;
  return status_ = IMG_OK;
}

int32_t ImageLibrary::ImgPlugInLoad(const std::string& pluginPath) {
  if (!hostLoaded_) return Fail(IMG_ERR_NO_HOST);
  pluginLoaded_ = false;
  windowsPlugin_ = false;
  compileError_ = {};
  const std::string path = ResolvePlugin(pluginPath);
  if (!FileExists(path)) return Fail(IMG_ERR_PLUGIN_OPEN);
  FFFilter f;
  if (!ReadPlugin(path, f)) return LoadWindowsPlugin(path);
  filter_ = f;
  if (outOfProcess_) return LoadWindowsPlugin(path);
  ff::CompiledFilter compiled =
      ff::CompileFilter({f.codeR, f.codeG, f.codeB, f.codeA}, &compileError_);
  if (!compiled.valid()) return Fail(IMG_ERR_PLUGIN_CODE);
  compiled_ = std::move(compiled);
  pluginLoaded_ = true;
  return status_ = IMG_OK;
}

std::string ImageLibrary::ParametersFile() const {
  if (controls_) return {};  // written for the run, see InvokeWindowsPlugin
  if (hostFolder_.empty()) return {};
  // One file per plugin path, in the program folder's cache.
  const QString folder = FromLocal(hostFolder_) + "cache/plugparams";
  if (!QDir().mkpath(folder)) return {};
  const QByteArray key =
      QCryptographicHash::hash(FromLocal(windowsPluginPath_).toUtf8(), QCryptographicHash::Md5).toHex();
  return (folder + "/" + QString::fromLatin1(key) + ".bin").toLocal8Bit().toStdString();
}

int32_t ImageLibrary::InvokeWindowsPlugin(QImage& img, const ImgRect& rect, bool dialog) {
  PlugHostClient& host = hostClient(windowsPlugin32_);
  const QImage::Format original = img.format();
  const bool alpha = img.hasAlphaChannel();
  QImage work = img.copy(ToQRect(rect)).convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
  if (work.isNull()) return Fail(IMG_ERR_NO_MEMORY);
  std::string params = ParametersFile();
  std::unique_ptr<QTemporaryDir> controlDir;
  if (controls_) {
    // The Filter Factory templates take their control values from a
    // parameter block of this form when the host hands one in.
    controlDir = std::make_unique<QTemporaryDir>();
    QFile file(controlDir->filePath("controls.bin"));
    QByteArray bytes("TRFF", 4);
    for (uint8_t v : *controls_) bytes.append(static_cast<char>(v));
    if (!controlDir->isValid() || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
      return Fail(IMG_ERR_FILE_WRITE);
    file.close();
    params = file.fileName().toLocal8Bit().toStdString();
  }
  const HostAnswer a = host.Run(windowsPluginPath_, work, params, dialog);
  if (!a.ok()) return Fail(StatusOf(a), a.message);
  PasteBack(img, work, rect, original);
  return status_ = IMG_OK;
}

int32_t ImageLibrary::ImgPlugInInvoke(ImgHandle image, WindowHandle window, const ImgRect& rect) {
  if (!hostLoaded_) return Fail(IMG_ERR_NO_HOST);
  if (!pluginLoaded_) return Fail(IMG_ERR_NO_PLUGIN);
  QImage* img = this->image(image);
  if (!img) return Fail(IMG_ERR_BAD_HANDLE);
  if (!RectInside(rect, *img)) return Fail(IMG_ERR_BAD_RECT);
  // A Windows plugin shows its dialog only when run from the window; a
  // Filter Factory plugin runs with its stored values and no dialog.
  if (windowsPlugin_) return InvokeWindowsPlugin(*img, rect, pluginDialogs_ && window != 0);

  ff::Controls ctl{};
  for (int i = 0; i < 8; ++i) ctl[size_t(i)] = controls_ ? (*controls_)[size_t(i)] : filter_.ctlValue[i + 1];
  int32_t st = RunFilterOnPicture(compiled_, ctl, *img, rect, cancel_);
  if (st != IMG_OK) return Fail(st);
  return status_ = IMG_OK;
}

int32_t RunFilterOnPicture(const ff::CompiledFilter& filter, const ff::Controls& controls,
                           QImage& picture, const ImgRect& rect, const std::function<bool()>& cancel) {
  QImage* img = &picture;
  if (!RectInside(rect, *img)) return IMG_ERR_BAD_RECT;
  // The engine works on R, G, B, A bytes; the picture keeps its own format.
  const QImage::Format original = img->format();
  const bool alpha = img->hasAlphaChannel();
  QImage work = img->copy(ToQRect(rect))
                    .convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
  if (work.isNull()) return IMG_ERR_NO_MEMORY;
  QImage result(work.size(), work.format());
  if (result.isNull()) return IMG_ERR_NO_MEMORY;
  ff::ConstImageView src{work.constBits(), work.width(), work.height(), work.bytesPerLine(), alpha};
  ff::ImageView dst{result.bits(), result.width(), result.height(), result.bytesPerLine(), alpha};
  ff::RenderOptions options;
  options.cancel = cancel;
  ff::RenderStatus st = ff::RenderFilter(filter, controls, src, dst, options);
  if (st == ff::RenderStatus::Cancelled) return IMG_ERR_CANCELLED;
  if (st != ff::RenderStatus::Done) return IMG_ERR_NO_MEMORY;

  PasteBack(*img, result, rect, original);
  return IMG_OK;
}

int32_t ImageLibrary::ImgPlugInAbout(WindowHandle window, const std::string& pluginPath) {
  (void)window;
  if (!hostLoaded_) return Fail(IMG_ERR_NO_HOST);
  const std::string path = ResolvePlugin(pluginPath);
  if (!FileExists(path)) return Fail(IMG_ERR_PLUGIN_OPEN);
  FFFilter f;
  if (!ReadPlugin(path, f)) {
    // Any other plugin shows its own about box, in the Windows host.
    if (LoadWindowsPlugin(path) != IMG_OK) return status_;
    const HostAnswer a = hostClient(windowsPlugin32_).About(path);
    if (!a.ok()) return Fail(StatusOf(a), a.message);
    return status_ = IMG_OK;
  }
  std::string text = f.title;
  if (!f.copyright.empty()) text += "\n\n" + f.copyright;
  if (!f.author.empty()) text += "\n" + f.author;
  shell_.Report(Error::Information(text, "About " + f.title));
  return status_ = IMG_OK;
}

}  // namespace trel
