#include "pimpl_setting.h"

#include "context/ctx_project.h"
#include "gui/plugin/export_interface.h"
#include "model/plugin_params.h"

namespace app {

namespace {

const char * const k_sParameter = "_generate_pimpl";
const char * const k_sStoredKey = "GENERATE_PIMPL";

bool storedSetting(const QString & sGuid)
{
   model::plugin_params::list_of_plugin_params lst;
   QSqlDatabase database = context::ctx_scoped::current();
   if (model::plugin_params::fetchByGuid(sGuid, lst, & database).isValid()) { return false; }
   for (const auto & item : lst)
   {
      if (item.second && (item.second->getParamKey() == QLatin1String(k_sStoredKey))) { return item.second->getParamValue().toBool(); }
   }
   return false;
}

} // namespace

bool pimpl_setting::isPImplParameter(const QString & sArg)
{
   return (sArg.startsWith("--") && sArg.section('=', 0, 0).endsWith(QLatin1String(k_sParameter)));
}

bool pimpl_setting::isOn(const QList<plugin_info> & lstPlugins, const QStringList & lstArgs)
{
   for (const plugin_info & info : lstPlugins)
   {
      if (! info.exportPlugin) { continue; }
      // The plug-in reads the first override and takes "1" for on.
      const QString sOption = "--" + info.exportPlugin->getName() + QLatin1String(k_sParameter) + "=";
      bool bOverridden = false, bOn = false;
      for (const QString & sArg : lstArgs)
      {
         if (sArg.startsWith(sOption)) { bOverridden = true; bOn = (sArg.mid(sOption.size()) == "1"); break; }
      }
      if (! bOverridden) { bOn = storedSetting(info.exportPlugin->getGuid()); }
      if (bOn) { return true; }
   }
   return false;
}

} // namespace app
