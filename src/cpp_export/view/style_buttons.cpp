#include "cpp_export/view/style_buttons.h"

#include <QRadioButton>

namespace view {

QList<QRadioButton *> style_buttons::all() const
{ return { pNoInheritance, pIxPersistable, pIxPersistableAndQObject, pZyPersistable, pCustom }; }

bool style_buttons::check(int iStyle) const
{
   switch (iStyle)
   {
      case plugin::cpp_template::no_inheritance: pNoInheritance->setChecked(true); return true;
      case plugin::cpp_template::ix_persistable: pIxPersistable->setChecked(true); return true;
      // Hidden but checked, so that no visible button claims the style.
      case plugin::cpp_template::zy_persistable: pZyPersistable->setChecked(true); return true;
      case plugin::cpp_template::ix_persistable_and_q_object: pIxPersistableAndQObject->setChecked(true); return true;
      case plugin::cpp_template::custom: pCustom->setChecked(true); return true;
      default: return false;
   }
}

plugin::cpp_template::enum_template style_buttons::checkedStyle() const
{
   if (pNoInheritance->isChecked()) { return plugin::cpp_template::no_inheritance; }
   if (pIxPersistable->isChecked()) { return plugin::cpp_template::ix_persistable; }
   if (pZyPersistable->isChecked()) { return plugin::cpp_template::zy_persistable; }
   if (pIxPersistableAndQObject->isChecked()) { return plugin::cpp_template::ix_persistable_and_q_object; }
   if (pCustom->isChecked()) { return plugin::cpp_template::custom; }
   return plugin::cpp_template::no_inheritance;
}

} // namespace view
