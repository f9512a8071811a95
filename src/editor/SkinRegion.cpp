#include "editor/SkinRegion.h"

#include <QPainterPath>
#include <QPolygon>

namespace trel {

std::optional<QRegion> ShapeRegion(const DesShape& s) {
  const QRect box = QRect(QPoint(s.x1, s.y1), QPoint(s.x2 - 1, s.y2 - 1)).normalized();
  switch (s.kind) {
    case ShapeKind::Rect:
      return QRegion(box);
    case ShapeKind::Ellipse:
      return box.isEmpty() ? QRegion() : QRegion(box, QRegion::Ellipse);
    case ShapeKind::RoundRect: {
      if (s.x3 <= 0 || s.y3 <= 0 || box.isEmpty()) return QRegion(box);
      QPainterPath path;
      path.addRoundedRect(QRectF(box.x(), box.y(), box.width(), box.height()), s.x3 / 2.0,
                          s.y3 / 2.0);
      return QRegion(path.toFillPolygon().toPolygon());
    }
    case ShapeKind::Unknown:
      break;
  }
  return std::nullopt;
}

std::optional<QRegion> CombineRegions(const std::optional<QRegion>& a,
                                      const std::optional<QRegion>& b, CombineMode mode) {
  if (!a) return std::nullopt;
  switch (mode) {
    case CombineMode::Copy: return *a;
    case CombineMode::And: if (b) return a->intersected(*b); break;
    case CombineMode::Or: if (b) return a->united(*b); break;
    case CombineMode::Xor: if (b) return a->xored(*b); break;
    case CombineMode::Diff: if (b) return a->subtracted(*b); break;
    case CombineMode::None: break;
  }
  return std::nullopt;
}

QRegion BuildSkinRegion(const DesSkin& skin) {
  const QRegion whole(0, 0, std::max<int>(skin.width, 0), std::max<int>(skin.height, 0));
  std::optional<QRegion> entry0 = whole, entry1 = whole, entry2, entry3;
  CombineMode mode = CombineMode::None;
  const size_t count = skin.shapes.size();
  if (count >= 1) {
    if (auto r = ShapeRegion(skin.shapes[0].shape)) entry2 = r;
  }
  if (count >= 2) {
    if (auto r = ShapeRegion(skin.shapes[1].shape)) entry3 = r;
    // An unknown word leaves the mode as it was.
    if (skin.shapes[1].combine && *skin.shapes[1].combine != CombineMode::None)
      mode = *skin.shapes[1].combine;
    if (auto r = CombineRegions(entry2, entry3, mode)) entry1 = r;
  }
  for (size_t n = 2; n < count; ++n) {
    if (auto r = ShapeRegion(skin.shapes[n].shape)) entry2 = r;
    if (skin.shapes[n].combine && *skin.shapes[n].combine != CombineMode::None)
      mode = *skin.shapes[n].combine;
    if (auto r = CombineRegions(entry1, entry2, mode)) entry0 = r;
    entry1 = entry0;
    entry0 = whole;
  }
  return entry1.value_or(QRegion());
}

}  // namespace trel
