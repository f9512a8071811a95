// FFEditorType1, the skinned Filter Factory Editor window.
#pragma once

#include <QWidget>

namespace trel {

class FFEditorType1 : public QWidget {
  Q_OBJECT
 public:
  explicit FFEditorType1(QWidget* parent = nullptr);
};

}  // namespace trel
