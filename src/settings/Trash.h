// Delete to the trash as freedesktop.org's trash standard lays it out. Qt's
// own move falls back to a folder relative to the working folder when the
// user's data folder is missing, and reports success; so the home trash is
// made first, and where the file went is checked before it counts as trashed.
#pragma once

#include <QString>

namespace trel {

// The home trash: $XDG_DATA_HOME/Trash, or ~/.local/share/Trash.
QString HomeTrashFolder();

// Makes the home trash with its "files" and "info" folders (mode 0700) where
// they are missing. False, with the reason in `error`, when it can't.
bool MakeHomeTrash(QString* error = nullptr);

// Whether `path` is a file inside the "files" folder of a trash: the home
// trash, or a volume's .Trash/<uid> or .Trash-<uid>.
bool IsInTrash(const QString& path);

// Moves `path` to the trash. False when the file is still where it was, with
// the reason in `error`.
bool MoveToTrash(const QString& path, QString* error = nullptr);

}  // namespace trel
