#include "picture/PictureOps.h"

#include <QColor>
#include <QPainter>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace trel {

namespace {

// The pixel operations work on 32-bit pixels; alpha survives them.
QImage Work(const QImage& picture) {
  return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32
                                                           : QImage::Format_RGB32);
}

int Clamp(double v) { return std::clamp(static_cast<int>(std::lround(v)), 0, 255); }

template <typename F>
QImage PerPixel(const QImage& picture, F f) {
  QImage img = Work(picture);
  for (int y = 0; y < img.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
    for (int x = 0; x < img.width(); ++x) line[x] = f(line[x]);
  }
  return img;
}

// A 3x3 kernel, weights in row order, divided by `divisor`, plus `bias`.
QImage Convolve(const QImage& picture, const std::array<int, 9>& k, int divisor, int bias) {
  const QImage src = Work(picture);
  QImage dst = src;
  const int w = src.width(), h = src.height();
  for (int y = 0; y < h; ++y) {
    auto* out = reinterpret_cast<QRgb*>(dst.scanLine(y));
    for (int x = 0; x < w; ++x) {
      int r = 0, g = 0, b = 0;
      for (int j = -1; j <= 1; ++j) {
        const auto* in = reinterpret_cast<const QRgb*>(src.constScanLine(std::clamp(y + j, 0, h - 1)));
        for (int i = -1; i <= 1; ++i) {
          const QRgb p = in[std::clamp(x + i, 0, w - 1)];
          const int weight = k[size_t((j + 1) * 3 + i + 1)];
          r += weight * qRed(p);
          g += weight * qGreen(p);
          b += weight * qBlue(p);
        }
      }
      out[x] = qRgba(Clamp(double(r) / divisor + bias), Clamp(double(g) / divisor + bias),
                     Clamp(double(b) / divisor + bias), qAlpha(out[x]));
    }
  }
  return dst;
}

QImage Despeckle(const QImage& picture) {
  const QImage src = Work(picture);
  QImage dst = src;
  const int w = src.width(), h = src.height();
  std::array<int, 9> r{}, g{}, b{};
  for (int y = 0; y < h; ++y) {
    auto* out = reinterpret_cast<QRgb*>(dst.scanLine(y));
    for (int x = 0; x < w; ++x) {
      size_t n = 0;
      for (int j = -1; j <= 1; ++j) {
        const auto* in = reinterpret_cast<const QRgb*>(src.constScanLine(std::clamp(y + j, 0, h - 1)));
        for (int i = -1; i <= 1; ++i, ++n) {
          const QRgb p = in[std::clamp(x + i, 0, w - 1)];
          r[n] = qRed(p);
          g[n] = qGreen(p);
          b[n] = qBlue(p);
        }
      }
      std::nth_element(r.begin(), r.begin() + 4, r.end());
      std::nth_element(g.begin(), g.begin() + 4, g.end());
      std::nth_element(b.begin(), b.begin() + 4, b.end());
      out[x] = qRgba(r[4], g[4], b[4], qAlpha(out[x]));
    }
  }
  return dst;
}

QImage AutoContrast(const QImage& picture) {
  const QImage src = Work(picture);
  int lo[3] = {255, 255, 255}, hi[3] = {0, 0, 0};
  for (int y = 0; y < src.height(); ++y) {
    const auto* in = reinterpret_cast<const QRgb*>(src.constScanLine(y));
    for (int x = 0; x < src.width(); ++x) {
      const int c[3] = {qRed(in[x]), qGreen(in[x]), qBlue(in[x])};
      for (int i = 0; i < 3; ++i) {
        lo[i] = std::min(lo[i], c[i]);
        hi[i] = std::max(hi[i], c[i]);
      }
    }
  }
  auto stretch = [&](int v, int i) {
    return hi[i] > lo[i] ? Clamp(255.0 * (v - lo[i]) / (hi[i] - lo[i])) : v;
  };
  return PerPixel(src, [&](QRgb p) {
    return qRgba(stretch(qRed(p), 0), stretch(qGreen(p), 1), stretch(qBlue(p), 2), qAlpha(p));
  });
}

QImage Gamma(const QImage& picture, double gamma) {
  if (gamma <= 0) gamma = 1;
  std::array<int, 256> table{};
  for (int i = 0; i < 256; ++i) table[size_t(i)] = Clamp(255.0 * std::pow(i / 255.0, 1.0 / gamma));
  return PerPixel(picture, [&](QRgb p) {
    return qRgba(table[size_t(qRed(p))], table[size_t(qGreen(p))], table[size_t(qBlue(p))], qAlpha(p));
  });
}

QImage Reduce(const QImage& picture, int colours, bool dither) {
  const Qt::ImageConversionFlags flags =
      (dither ? Qt::DiffuseDither : Qt::ThresholdDither) | Qt::ColorOnly | Qt::PreferDither;
  if (colours == 2) {
    const Qt::ImageConversionFlags mono = (dither ? Qt::DiffuseDither : Qt::ThresholdDither) | Qt::MonoOnly;
    return picture.convertToFormat(QImage::Format_Mono, mono);
  }
  if (colours == 16) {
    // The sixteen colours of the classic palette.
    static const QList<QRgb> palette = {
        qRgb(0, 0, 0),       qRgb(128, 0, 0),   qRgb(0, 128, 0),   qRgb(128, 128, 0),
        qRgb(0, 0, 128),     qRgb(128, 0, 128), qRgb(0, 128, 128), qRgb(192, 192, 192),
        qRgb(128, 128, 128), qRgb(255, 0, 0),   qRgb(0, 255, 0),   qRgb(255, 255, 0),
        qRgb(0, 0, 255),     qRgb(255, 0, 255), qRgb(0, 255, 255), qRgb(255, 255, 255)};
    return Work(picture).convertToFormat(QImage::Format_Indexed8, palette, flags);
  }
  return Work(picture).convertToFormat(QImage::Format_Indexed8, flags);
}

QImage RandomNoise(const QImage& picture, double amount) {
  std::mt19937 random(12345u);  // the same picture gets the same noise
  std::uniform_int_distribution<int> noise(-int(amount), int(amount));
  return PerPixel(picture, [&](QRgb p) {
    return qRgba(Clamp(qRed(p) + noise(random)), Clamp(qGreen(p) + noise(random)),
                 Clamp(qBlue(p) + noise(random)), qAlpha(p));
  });
}

QImage YuvIntensify(const QImage& picture, double factor) {
  return PerPixel(picture, [&](QRgb p) {
    const double r = qRed(p), g = qGreen(p), b = qBlue(p);
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    const double u = (b - y) * factor, v = (r - y) * factor;
    // Luma stays; both colour differences grow.
    return qRgba(Clamp(y + v), Clamp(y - (0.299 * v + 0.114 * u) / 0.587), Clamp(y + u), qAlpha(p));
  });
}

QImage HueShift(const QImage& picture, double degrees) {
  return PerPixel(picture, [&](QRgb p) {
    QColor c = QColor::fromRgba(p).toHsv();
    if (c.hsvHue() < 0) return p;  // greys have no hue
    const int hue = (c.hsvHue() + int(std::lround(degrees)) % 360 + 360) % 360;
    c.setHsv(hue, c.hsvSaturation(), c.value(), c.alpha());
    return c.rgba();
  });
}

QImage Rotate(const QImage& picture, double degrees) {
  QTransform t;
  t.rotate(degrees);
  return picture.transformed(t, Qt::SmoothTransformation);
}

}  // namespace

bool PictureOpTakesValue(const QString& caption) { return caption.endsWith("..."); }

double PictureOpDefaultValue(const QString& caption) {
  if (caption == "Contrast...") return 20;
  if (caption == "Brightness...") return 20;
  if (caption.startsWith("Gamma")) return 1.5;
  if (caption == "Rotate Any Angle...") return 45;
  if (caption == "Random Noise") return 32;
  if (caption == "Color Tuner") return 30;
  if (caption == "YUV Intensify") return 1.5;
  return 0;
}

QStringList PictureOpCaptions() {
  return {"Invert", "Auto Contrast", "Contrast...", "Brightness...", "Gamma Increase...",
          "Gamma Decrease...", "Blur", "Sharpen", "Despeckle", "Edge Detect", "Edge Detect II",
          "LaPlacian Sharpen", "Emboss", "Horizontal Mirror", "Vertical Mirror", "Rotate 90",
          "Rotate 270", "Rotate Any Angle...", "2 Colors", "2 Colors Ditherd", "16 Colors",
          "16 Colors Dithered", "256 Colors", "256 Colors Dithered", "Greyscale",
          "16 Million Colors", "Color Tuner", "Channel Swap", "Inverse", "Random Noise",
          "YUV Intensify"};
}

QImage ApplyPictureOp(const QImage& picture, const QString& caption, double value) {
  if (picture.isNull()) return {};
  if (value == 0) value = PictureOpDefaultValue(caption);
  if (caption == "Invert" || caption == "Inverse") {
    QImage img = Work(picture);
    img.invertPixels(QImage::InvertRgb);
    return img;
  }
  if (caption == "Auto Contrast") return AutoContrast(picture);
  if (caption == "Contrast...") {
    const double f = (100.0 + value) / 100.0;
    return PerPixel(picture, [f](QRgb p) {
      return qRgba(Clamp((qRed(p) - 128) * f + 128), Clamp((qGreen(p) - 128) * f + 128),
                   Clamp((qBlue(p) - 128) * f + 128), qAlpha(p));
    });
  }
  if (caption == "Brightness...") {
    const double d = 255.0 * value / 100.0;
    return PerPixel(picture, [d](QRgb p) {
      return qRgba(Clamp(qRed(p) + d), Clamp(qGreen(p) + d), Clamp(qBlue(p) + d), qAlpha(p));
    });
  }
  if (caption == "Gamma Increase...") return Gamma(picture, value);
  if (caption == "Gamma Decrease...") return Gamma(picture, 1.0 / value);
  if (caption == "Blur") return Convolve(picture, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 16, 0);
  if (caption == "Sharpen") return Convolve(picture, {0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, 0);
  if (caption == "Despeckle") return Despeckle(picture);
  if (caption == "Edge Detect") return Convolve(picture, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, 1, 0);
  if (caption == "Edge Detect II") return Convolve(picture, {-1, 0, 1, -2, 0, 2, -1, 0, 1}, 1, 128);
  if (caption == "LaPlacian Sharpen") return Convolve(picture, {-1, -1, -1, -1, 9, -1, -1, -1, -1}, 1, 0);
  if (caption == "Emboss") return Convolve(picture, {-2, -1, 0, -1, 1, 1, 0, 1, 2}, 1, 0);
  if (caption == "Horizontal Mirror") return picture.mirrored(true, false);
  if (caption == "Vertical Mirror") return picture.mirrored(false, true);
  if (caption == "Rotate 90") return Rotate(picture, 90);
  if (caption == "Rotate 270") return Rotate(picture, 270);
  if (caption == "Rotate Any Angle...") return Rotate(picture, value);
  if (caption == "2 Colors") return Reduce(picture, 2, false);
  if (caption == "2 Colors Ditherd") return Reduce(picture, 2, true);
  if (caption == "16 Colors") return Reduce(picture, 16, false);
  if (caption == "16 Colors Dithered") return Reduce(picture, 16, true);
  if (caption == "256 Colors") return Reduce(picture, 256, false);
  if (caption == "256 Colors Dithered") return Reduce(picture, 256, true);
  if (caption == "Greyscale") return picture.convertToFormat(QImage::Format_Grayscale8);
  if (caption == "16 Million Colors") return picture.convertToFormat(QImage::Format_RGB888);
  if (caption == "Color Tuner") return HueShift(picture, value);
  if (caption == "Channel Swap")
    return PerPixel(picture, [](QRgb p) { return qRgba(qGreen(p), qBlue(p), qRed(p), qAlpha(p)); });
  if (caption == "Random Noise") return RandomNoise(picture, value);
  if (caption == "YUV Intensify") return YuvIntensify(picture, value);
  return {};
}

int PictureBitCount(const QImage& picture) {
  switch (picture.format()) {
    case QImage::Format_Invalid: return 0;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB: return 1;
    case QImage::Format_Indexed8: return picture.colorCount() <= 16 ? 4 : 8;
    case QImage::Format_Grayscale8: return 8;
    default: return picture.hasAlphaChannel() ? 32 : 24;
  }
}

QImage ResizePicture(const QImage& picture, int width, int height) {
  if (picture.isNull() || width < 1 || height < 1) return {};
  return picture.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace trel
