// The picture operations of the Picture Editor's menus, as pure functions on
// QImage: each returns the changed picture and leaves its argument alone, so
// the editor can keep the former state for Undo.
#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

namespace trel {

// Captions of the operations that take one number, and the number asked for
// when the user gives none.
bool PictureOpTakesValue(const QString& caption);
double PictureOpDefaultValue(const QString& caption);

// Applies the operation named by its menu caption ("Invert", "Blur",
// "Rotate 90", "256 Colors Dithered", "Greyscale", "Channel Swap", ...).
// `value` is the amount of the entries that ask for one (percent for
// Contrast and Brightness, a factor for the gammas, degrees for Rotate Any
// Angle). A caption it doesn't know gives a null image.
QImage ApplyPictureOp(const QImage& picture, const QString& caption, double value = 0);

// Every caption ApplyPictureOp knows.
QStringList PictureOpCaptions();

// Bits per pixel as the editor's caption tells them: 1, 4, 8, 24 or 32.
int PictureBitCount(const QImage& picture);

// Scales to a new size (Resize Image); a size below one pixel is refused
// (null image).
QImage ResizePicture(const QImage& picture, int width, int height);

}  // namespace trel
