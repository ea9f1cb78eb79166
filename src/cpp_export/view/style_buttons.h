#pragma once

#include <QList>

#include "cpp_export/plugin/cpp_template.h"

class QRadioButton;

namespace view {

// The class-style radio buttons of a form; the settings dialog and the preview share the
// mapping between buttons and styles.
struct style_buttons
{
   QRadioButton * pNoInheritance = nullptr;
   QRadioButton * pIxPersistable = nullptr;
   QRadioButton * pIxPersistableAndQObject = nullptr;
   QRadioButton * pZyPersistable = nullptr;
   QRadioButton * pCustom = nullptr;

   QList<QRadioButton *> all() const;
   // False when the style has no button; nothing is checked then.
   bool check(int iStyle) const;
   // no_inheritance when no button is checked.
   plugin::cpp_template::enum_template checkedStyle() const;
};

} // namespace view
