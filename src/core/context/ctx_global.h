#pragma once

#include <QString>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"

namespace view { class main_wnd; }

namespace context {

// Application-wide context shared by the hosts and the plug-ins.
class TAVRELCORE_EXPORT ctx_global
{
public:
   static QString getAppName();
   static QString getAppVersionStr();
   // Address of the local user manual shipped with the host (a file URL).
   static QString getAppHelpManualUrl();

   static view::main_wnd * getMainWnd();
   static void setMainWnd(view::main_wnd * pMainWnd);

   static model::global_params_ptr getGlobalParams();
   static void setGlobalParams(const model::global_params_ptr & p);
};

} // namespace context
