// Build-time painter of the shipped skins' background pictures: writes
// Interfc4.png, Interfc5.png and Interfc6.png into the folder it is given.
#include <QDir>
#include <QGuiApplication>
#include <cstdio>

#include "editor/SkinArt.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: trel_skinart FOLDER\n");
    return 2;
  }
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  if (!folder.mkpath(".")) return 1;
  for (int style : {4, 5, 6}) {
    const QString name = folder.filePath(QString("Interfc%1.png").arg(style));
    if (!trel::PaintSkinBackground(style).save(name, "PNG")) {
      std::fprintf(stderr, "cannot write %s\n", qPrintable(name));
      return 1;
    }
  }
  return 0;
}
