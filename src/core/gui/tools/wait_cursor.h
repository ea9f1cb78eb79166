#pragma once

#include "tavrelgui_export.h"

namespace tools {

// Shows the busy cursor for the life of the object (nothing without a GUI application).
class TAVRELGUI_EXPORT wait_cursor
{
   bool m_bActive = false;

public:
   wait_cursor();
   ~wait_cursor();
   wait_cursor(const wait_cursor &) = delete;
   wait_cursor & operator=(const wait_cursor &) = delete;
};

} // namespace tools
