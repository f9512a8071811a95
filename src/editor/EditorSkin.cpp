// The editor's skin: the interface file names the background picture, the
// window's outline, the kind of sliders, the place of the code boxes and the
// designer's mail link.
#include <QFileInfo>
#include <QPainter>
#include <algorithm>

#include "editor/ClickLabel.h"
#include "editor/CodeBoxes.h"
#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorType1.h"
#include "editor/SkinRegion.h"
#include "editor/SliderBank.h"

namespace trel {

using namespace layout;

void FFEditorType1::LoadSkin(const std::string& interfaceFile) {
  ctx_.interfaceFile = [interfaceFile] { return interfaceFile; };
  ReadInterface();
}

void FFEditorType1::ReadInterface() {
  setWindowTitle(QString());
  const InterfaceListing listing = LookforInterfaceFiles(ctx_.programFolder);
  interfaceFolder_ = listing.folderName.empty() ? "interface" : listing.folderName;
  interfaceFile_ = ctx_.interfaceFile ? ctx_.interfaceFile() : std::string();
  if (interfaceFile_.empty() || interfaceFile_ == "OFF") interfaceFile_ = kDefaultInterfaceFile;
  const std::string path = ResolveInterfacePath(ctx_.programFolder, interfaceFolder_, interfaceFile_);
  ReadDesFile(path, skin_);
  const QString folder = QFileInfo(QString::fromStdString(path)).absolutePath();
  background_ = skin_.picture.empty() ? QImage() : QImage(folder + "/" + Latin1(skin_.picture));
  if (skin_.sizeRead && skin_.width > 0 && skin_.height > 0) setFixedSize(skin_.width, skin_.height);
  else setFixedSize(kWidth, kHeight);

  // A skin starts from the window as designed: no mail link until a skin names one.
  mailLink_->setGeometry(kDefaultMail);
  mailLink_->hide();
  mailAddress_.clear();
  sliders_->ApplySkin(skin_.graphSliders, std::clamp(skin_.tileSet, 0, 2));
  if (!skin_.mailItemRead) {
    mailLink_->setToolTip(QString());
    mailLink_->hide();
  } else if (skin_.mailSeen) {
    const DesBox& b = skin_.mailBox;
    mailLink_->setGeometry(b.left, b.top, b.right - b.left, b.bottom - b.top);
    mailAddress_ = skin_.mailAddress;
    mailLink_->setToolTip(Latin1(skin_.mailToolTip));
    mailLink_->setAccessibleName(Latin1(skin_.mailToolTip));
    mailLink_->show();
  }
  // A skin that names a code item without a place leaves the boxes where they are.
  std::optional<QRect> code;
  if (skin_.codeSeen) {
    const DesBox& b = skin_.codeBox;
    code = QRect(b.left, b.top, b.right - b.left, b.bottom - b.top);
  } else if (!skin_.codeItemRead) {
    code = kDefaultCode;
  }
  codes_->Place(code);

  const QRegion outline = BuildSkinRegion(skin_);
  if (outline.isEmpty()) {
    clearMask();
    Message("SetWindowRegion Error:  0", MsgIcon::Exclamation, "Trel");
  } else {
    setMask(outline);
  }
  update();
  setWindowTitle(kEditorCaption);
}

void FFEditorType1::paintEvent(QPaintEvent*) {
  QPainter p(this);
  if (!background_.isNull()) {
    p.drawImage(0, 0, background_);
  } else {
    p.fillRect(rect(), QColor(70, 80, 100));
  }
}

}  // namespace trel
