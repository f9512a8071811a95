#include "editor/FFEditorType1.h"

namespace trel {

FFEditorType1::FFEditorType1(QWidget* parent) : QWidget(parent) { setObjectName("FFEditorType1"); }

}  // namespace trel
