#pragma once

#include <QList>
#include <QStringList>

#include "plugin_finder.h"

namespace app {

// Whether an export of the open project would use the PIMPL idiom, so that the warnings that only
// hold with it are shown only then.
class pimpl_setting
{
public:
   // A plug-in's command-line override "--<plug-in>_generate_pimpl=<0|1>" in lstArgs, else its
   // GENERATE_PIMPL setting stored in the open project; true when any export plug-in has it on.
   static bool isOn(const QList<plugin_info> & lstPlugins, const QStringList & lstArgs);
   // "--<plug-in>_generate_pimpl=..." (the only plug-in parameter that matters outside an export).
   static bool isPImplParameter(const QString & sArg);
};

} // namespace app
