@@COMMENT_FILE_CREATED_BY@@

#ifndef @@INCLUDE_MACRO_GUARD@@
#define @@INCLUDE_MACRO_GUARD@@

#ifdef _ZY_NO_PRECOMPILED_HEADER
#ifndef Q_MOC_RUN
#include "../include/@@PROJECT_NAME@@_precompiled_header.gen.h" // Need to include precompiled header for the generated moc file
#endif // Q_MOC_RUN
#endif // _ZY_NO_PRECOMPILED_HEADER

@@NAMESPACE_BEGIN@@

@@COMMENT_CLASS_DESCRIPTION@@
class @@CLASS_MACRO_EXPORT@@ @@CLASS_NAME@@ : public @@INHERIT_FROM@@
{

@@MACRO_Q_OBJECT@@
@@MACRO_Q_ENUMS@@

public:

@@TYPEDEF_ENUM_ALL_VALUES@@

private:

   @@CLASS_NAME@@();
   virtual ~@@CLASS_NAME@@();

};

@@NAMESPACE_END@@

@@INCLUDE_ITEM_HEADER_CUSTOM@@

#endif // @@INCLUDE_MACRO_GUARD@@
