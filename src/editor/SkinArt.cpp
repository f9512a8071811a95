#include "editor/SkinArt.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include "editor/EditorLayout.h"

namespace trel {

namespace {

struct Palette {
  QColor top, bottom, panel, line, accent;
};

Palette PaletteOf(int style) {
  switch (style) {
    case 5: return {QColor(212, 212, 206), QColor(182, 182, 176), QColor(236, 236, 232),
                    QColor(140, 140, 134), QColor(90, 110, 150)};
    case 6: return {QColor(40, 78, 92), QColor(22, 36, 58), QColor(210, 226, 226),
                    QColor(90, 160, 170), QColor(240, 170, 70)};
    default: return {QColor(74, 92, 122), QColor(36, 44, 64), QColor(214, 220, 232),
                     QColor(120, 140, 180), QColor(230, 120, 60)};
  }
}

void Panel(QPainter& p, const QRect& r, const Palette& c, int pad = 4) {
  const QRectF box = QRectF(r).adjusted(-pad, -pad, pad, pad);
  QPainterPath path;
  path.addRoundedRect(box, 5, 5);
  p.fillPath(path, QColor(c.panel.red(), c.panel.green(), c.panel.blue(), 70));
  p.setPen(QPen(c.line, 1));
  p.drawPath(path);
}

}  // namespace

QImage PaintSkinBackground(int style) {
  using namespace layout;
  const Palette c = PaletteOf(style);
  QImage img(kWidth, kHeight, QImage::Format_RGB32);
  QPainter p(&img);
  p.setRenderHint(QPainter::Antialiasing, true);
  QLinearGradient g(0, 0, 0, kHeight);
  g.setColorAt(0, c.top);
  g.setColorAt(1, c.bottom);
  p.fillRect(img.rect(), g);
  if (style == 6) {
    // Soft rings behind the preview: the "orbit" look.
    QRadialGradient rg(QPointF(110, 228), 220);
    rg.setColorAt(0, QColor(255, 255, 255, 40));
    rg.setColorAt(1, QColor(255, 255, 255, 0));
    p.fillRect(img.rect(), rg);
    p.setPen(QPen(QColor(255, 255, 255, 30), 2));
    for (int r = 60; r < 400; r += 40) p.drawEllipse(QPointF(110, 228), r, r);
  }
  // The title strip, which the window's title text and buttons sit on.
  p.fillRect(QRect(0, 0, kWidth, 30), QColor(0, 0, 0, style == 5 ? 30 : 60));
  p.fillRect(QRect(0, 30, kWidth, 2), c.accent);
  // Panels behind the groups of controls; the places themselves stay free.
  Panel(p, QRect(NameField(0).topLeft(), NameField(4).bottomRight()), c);
  Panel(p, kPreview, c, 3);
  Panel(p, QRect(kSpotGrid.topLeft(), SpotButton(9).bottomRight()), c);
  Panel(p, QRect(ToolLabel(0).topLeft(), kSaveButton.bottomRight()), c);
  Panel(p, QRect(SliderName(0).topLeft(), SliderValue(7).bottomRight()), c);
  Panel(p, QRect(MapSwitch(0).topLeft(), MapSwitch(3).bottomRight()), c, 3);
  Panel(p, QRect(CodeSwitch(0).topLeft(), kSnippetList.bottomRight()), c, 3);
  // Row marks: the sliders stand 24 pixels apart.
  p.setPen(QPen(QColor(c.line.red(), c.line.green(), c.line.blue(), 90), 1));
  for (int n = 0; n < 8; ++n) {
    const QRect t = SliderTrack(n);
    p.drawLine(t.left(), t.bottom() + 3, t.right(), t.bottom() + 3);
  }
  // Corner ornaments in the accent colour.
  p.setPen(QPen(c.accent, 2));
  p.drawLine(kWidth - 80, kHeight - 8, kWidth - 16, kHeight - 8);
  p.drawLine(16, kHeight - 8, 80, kHeight - 8);
  return img;
}

QImage TrackTile(int set, int width, int height) {
  QImage img(std::max(width, 1), std::max(height, 1), QImage::Format_ARGB32_Premultiplied);
  img.fill(Qt::transparent);
  QPainter p(&img);
  p.setRenderHint(QPainter::Antialiasing, true);
  const QRectF r(0.5, 0.5, img.width() - 1.0, img.height() - 1.0);
  const double mid = img.height() / 2.0;
  switch (set % 3) {
    case 1: {  // a groove with tick marks
      p.fillRect(QRectF(2, mid - 2, img.width() - 4, 4), QColor(40, 40, 48));
      p.setPen(QColor(160, 170, 190));
      for (int x = 2; x < img.width() - 2; x += 16) p.drawLine(x, int(mid) + 4, x, img.height() - 2);
      p.drawLine(2, int(mid) + 2, img.width() - 3, int(mid) + 2);
      break;
    }
    case 2: {  // a colour ramp: the value as light
      QLinearGradient g(0, 0, img.width(), 0);
      g.setColorAt(0, QColor(20, 20, 30));
      g.setColorAt(1, QColor(250, 240, 210));
      QPainterPath path;
      path.addRoundedRect(r.adjusted(0, 3, 0, -3), 4, 4);
      p.fillPath(path, g);
      p.setPen(QColor(0, 0, 0, 120));
      p.drawPath(path);
      break;
    }
    default: {  // a sunken bar
      QLinearGradient g(0, 0, 0, img.height());
      g.setColorAt(0, QColor(70, 70, 80));
      g.setColorAt(1, QColor(200, 200, 210));
      QPainterPath path;
      path.addRoundedRect(r.adjusted(0, 4, 0, -4), 3, 3);
      p.fillPath(path, g);
      break;
    }
  }
  // The two arrow ends (15 pixels each) that step by one while held.
  p.setPen(Qt::NoPen);
  p.setBrush(QColor(255, 255, 255, 150));
  const QPolygonF left{QPointF(3, mid), QPointF(10, mid - 4), QPointF(10, mid + 4)};
  const QPolygonF right{QPointF(img.width() - 3, mid), QPointF(img.width() - 10, mid - 4),
                        QPointF(img.width() - 10, mid + 4)};
  p.drawPolygon(left);
  p.drawPolygon(right);
  return img;
}

QImage KnobTile(int set, int height) {
  QImage img(kKnobWidth, std::max(height, 1), QImage::Format_ARGB32_Premultiplied);
  img.fill(Qt::transparent);
  QPainter p(&img);
  p.setRenderHint(QPainter::Antialiasing, true);
  const QRectF r(0.5, 0.5, img.width() - 1.0, img.height() - 1.0);
  QPainterPath path;
  switch (set % 3) {
    case 1: path.addEllipse(r.adjusted(0, (r.height() - r.width()) / 2, 0, -(r.height() - r.width()) / 2)); break;
    case 2: {
      path.moveTo(r.center().x(), r.bottom());
      path.lineTo(r.left(), r.top() + 4);
      path.lineTo(r.right(), r.top() + 4);
      path.closeSubpath();
      break;
    }
    default: path.addRoundedRect(r, 3, 3); break;
  }
  QLinearGradient g(0, 0, img.width(), 0);
  const QColor hi = set % 3 == 2 ? QColor(255, 200, 90) : QColor(245, 245, 250);
  const QColor lo = set % 3 == 2 ? QColor(200, 110, 30) : QColor(150, 155, 170);
  g.setColorAt(0, hi);
  g.setColorAt(1, lo);
  p.fillPath(path, g);
  p.setPen(QPen(QColor(30, 30, 40), 1));
  p.drawPath(path);
  return img;
}

}  // namespace trel
