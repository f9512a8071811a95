#include "filter/TemplateLayout.h"

namespace trel::layout {
namespace {

void PutU16(std::string& block, size_t offset, uint16_t value) {
  block[offset] = static_cast<char>(value & 0xFF);
  block[offset + 1] = static_cast<char>(value >> 8);
}

}  // namespace

std::string DialogLayoutBlock(DialogSize size) {
  struct Geometry {
    uint16_t dialogW, dialogH, previewLeft, previewTop, previewW, previewH;
    uint16_t sliderLeft, sliderTop, sliderW, rowH;
  };
  // Dialog units. The bigger previews widen the dialog and move the slider
  // column to the right of the preview; everything else stays.
  static constexpr Geometry kNormal{420, 300, 12, 12, 180, 180, 204, 12, 204, 24};
  static constexpr Geometry kBig{560, 360, 12, 12, 300, 300, 324, 12, 224, 24};
  static constexpr Geometry kMega{760, 500, 12, 12, 440, 440, 464, 12, 284, 24};
  const Geometry& g = size == DialogSize::Big ? kBig : size == DialogSize::Mega ? kMega : kNormal;

  std::string block(static_cast<size_t>(kDialogLayoutSize), '\0');
  block.replace(0, 4, "TRDL");
  PutU16(block, 4, 1);
  PutU16(block, static_cast<size_t>(kLayoutFlags), 0);
  const uint16_t fields[] = {g.dialogW, g.dialogH, g.previewLeft, g.previewTop, g.previewW,
                             g.previewH, g.sliderLeft, g.sliderTop, g.sliderW, g.rowH};
  size_t offset = 8;
  for (uint16_t value : fields) {
    PutU16(block, offset, value);
    offset += 2;
  }
  return block;
}

}  // namespace trel::layout
