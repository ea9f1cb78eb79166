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

   // Builds the global parameters of a host: the Lumor path comes from the host's option when
   // it is not empty, else from the environment variable LUMOR_DIR, else from the saved settings.
   static void initGlobalParams(const QString & lumorPathOption);
   // The Lumor path kept in the user's settings ("global/lumor_path"), as written.
   static QString getSavedLumorPath();
   static bool saveLumorPath(const QString & path);
   // Settings live in the user's "Tavrel/Tavrel" settings; an INI file instead when set (tests).
   static void setSettingsFile(const QString & iniFile);
   // The INI file set above, empty for the user's settings.
   static QString getSettingsFile();
};

} // namespace context
