// Pictures and compiled Filter Factory plugins for the host's tests, made by
// the tests themselves.
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <QImage>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "filter/PluginCompiler.h"
#include "host/ImageWrappers.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel::test {

// Whether `text` holds `part`; a failure shows the whole text.
inline ::testing::AssertionResult Has(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no \"" << part << "\" in: " << text;
}

// Pixels that all differ.
inline QImage PatternPicture(int width, int height, bool alpha) {
  QImage img(width, height, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      img.setPixelColor(x, y, QColor(10 * x % 256, (200 + 7 * y) % 256, (3 * x * y) % 256,
                                     alpha ? 255 - 5 * x % 200 : 255));
  return img;
}

inline FFFilter SampleFilter(const std::string& rgbCode) {
  FFFilter f;
  f.filename = "sample.afs";
  f.title = "Sample Filter";
  f.category = "Tests";
  f.copyright = "(c) 2026 The Tests";
  f.author = "A. Tester";
  f.ctlName[1] = "Amount";
  for (int i = 1; i <= 8; ++i) f.ctlValue[i] = static_cast<uint8_t>(20 * i);
  f.codeR = f.codeG = f.codeB = rgbCode;
  f.codeA = "a";
  return f;
}

// Compiles `f` into dir/out/ with the project's 16-bit template, or with the
// template at `templatePath`, under the given options; "" (and a failure) if
// nothing was written.
inline std::string CompilePlugin(const TempDir& dir, FFFilter f, const std::string& templatePath = "",
                                 const CompileOptions& options = {}) {
  namespace fs = std::filesystem;
  const std::string prog = dir.path() + "prog/", out = dir.path() + "out/";
  fs::create_directories(prog);
  fs::create_directories(out);
  if (!fs::exists(prog + "photo30.dll"))
    fs::copy_file(std::string(TREL_TEMPLATE_DIR) + "/photo30.dll", prog + "photo30.dll");
  RecordingShell shell;
  FilterEnv env;
  env.shell = &shell;
  env.options.programFolder = prog;
  env.options.compile = options;
  if (!templatePath.empty()) {
    env.options.compile.templateChoice = CompileTemplate::CustomPath;
    env.options.compile.templatePath = templatePath;
  }
  Write8bf(f, out, false, false, env);
  const std::string name = out + f.filename.substr(0, f.filename.rfind('.')) + ".8bf";
  if (FileExists(name)) return name;
  ADD_FAILURE() << "no plugin was compiled from " << f.filename;
  return {};
}

// A picture box backed by a QImage of the given colour, as a window's box would be.
class ImageBox : public PictureBox {
 public:
  ImageBox(int w, int h, Qt::GlobalColor fill = Qt::white) : colour(fill) { resize(w, h); }
  int width() const override { return img.width(); }
  int height() const override { return img.height(); }
  void resize(int w, int h) override {
    img = QImage(w, h, QImage::Format_RGB32);
    img.fill(colour);
  }
  QPaintDevice* device() override { return &img; }
  Qt::GlobalColor colour;
  QImage img;
};

}  // namespace trel::test
