#pragma once

namespace plugin {

// Class style of the generated persistent classes; the values are stored in the settings and
// accepted on the command line.
struct cpp_template
{
   enum enum_template
   {
      no_inheritance = 0,
      ix_persistable = 1,
      zy_persistable = 2,
      ix_persistable_and_q_object = 3,
      custom = 4
   };
};

} // namespace plugin
