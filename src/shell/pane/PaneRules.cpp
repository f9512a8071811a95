#include "shell/pane/PaneRules.h"

#include <cmath>

#include "base/Paths.h"
#include "base/PluginKinds.h"

namespace trel {

const std::array<const char*, kMaskEntryCount> kMaskEntries = {
    "All Files (*.*)",
    "Adobe Plugins (*.8bf;*.prm;*.aex)",
    "Image Files (*.jpg;*.gif;*.bmp;*.wmf;*.png;*.tga;*.pcx;*.tif;*.eps)",
    "Defined Plugins (see Preferences)",
    "FF Source Files (*.ffl;*.txt;*.afs;*.pff;*.ffx)",
    "Zip Files (*.zip)",
};

int IconOfFile(const std::string& name) {
  // Only the active name of a plugin has its kind's icon.
  const PluginName plugin = ClassifyPluginName(name);
  if (!plugin.disabled) {
    if (plugin.kind == PluginKind::Photoshop) return kIcon8bf;
    if (plugin.kind == PluginKind::Premiere) return kIconPrm;
    if (plugin.kind == PluginKind::AfterEffects) return kIconAex;
  }
  const std::string ext = LastFour(name);
  if (ext == ".ffl") return kIconFfl;
  if (ext == ".zip") return kIconZip;
  for (const char* paint : {".tub", ".psp", ".msk", ".pat", ".tex", ".jsl", ".jbr", ".pfr", ".jgd", ".sld"})
    if (ext == paint) return kIconPaint;
  // ".wmf;" is five characters and can never equal a four-character ending, so a
  // metafile keeps the plain icon; the list has always shown it so.
  for (const char* image : {".jpg", ".gif", ".bmp", ".wmf;", ".png", ".tga", ".pcx"})
    if (ext == image) return kIconImage;
  return kIconFile;
}

std::string MaskPattern(int entry, const std::string& pluginTypePattern) {
  switch (entry) {
    case 1: return "*.8b?;*._bf;*_8bf;*.prm;*.pr-;*._rm;*_prm;*.aex;*.ae-;*_aex";
    case 2: return "*.jpg;*.gif;*.bmp;*.wmf;*.png;*.tga;*.pcx;*.tif;*.eps";
    case 3: return pluginTypePattern;
    case 4: return "*.ffl;*.txt;*.afs;*.pff;*.ffx";
    case 5: return "*.zip";
    default: return "*.*";
  }
}

std::string FormatSize(int64_t length) {
  if (length <= 0) return {};
  std::string digits = std::to_string(length);
  std::string out;
  const int n = static_cast<int>(digits.size());
  for (int i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

int64_t AddKilobytes(int64_t totalK, int64_t length) {
  // Rounding half to even, as the original arithmetic did.
  return static_cast<int64_t>(std::nearbyint(static_cast<double>(totalK) + length / 1024.0));
}

DblClickRoute RouteOfFile(const std::string& name, const std::vector<std::string>& pluginTypeExtensions,
                          bool skipTxt) {
  const std::string ext = LastFour(name);
  if (ext == ".bmp" || ext == ".jpg") return DblClickRoute::PicView;
  if (ext == ".ffl") return DblClickRoute::ConvertFFL;
  // A text file may be a filter source or anything else; it is tried apart.
  if (IsFilterFactoryPluginName(name) || (IsFilterSourceName(name) && ext != ".txt")) return DblClickRoute::FFEditor;
  if (ext == ".txt" && !skipTxt) return DblClickRoute::TxtSource;
  for (const std::string& rowExt : pluginTypeExtensions)
    if (ClassifyTypedName(name, rowExt)) return DblClickRoute::PluginInformation;
  return DblClickRoute::Shell;
}

const char* RouteName(DblClickRoute route) {
  switch (route) {
    case DblClickRoute::PicView: return "LoadintoPicView";
    case DblClickRoute::ConvertFFL: return "Convert";
    case DblClickRoute::FFEditor: return "LoadintoFFEditor";
    case DblClickRoute::TxtSource: return "ReadTXT";
    case DblClickRoute::PluginInformation: return "cmd_PlugInInformation";
    case DblClickRoute::Shell: return "ShellOpen";
  }
  return "";
}

std::string ProgramTitle(int major, int minor) {
  std::string minorText = std::to_string(minor);
  if (minorText.size() == 1) minorText = "0" + minorText;
  return "Trellium " + std::to_string(major) + "." + minorText;
}

std::string WelcomeText() {
  return "Welcome to Trel!\n\n"
         "I hope you will like and enjoy this tool.\n\n"
         "If you shouldn't understand something,\n"
         "please run the help file by pressing F1.\n\n"
         "The Trel team\n"
         "trel@example.org";
}

bool PositionOnScreen(int x, int y, int screenWidth, int screenHeight) {
  return x >= 0 && y >= 0 && x < screenWidth && y < screenHeight;
}

}  // namespace trel
