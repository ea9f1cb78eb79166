#pragma once

#include <QMainWindow>
#include <QStringList>

#include "tavrelgui_export.h"
#include "model/model_fwd.h"
#include "model/model_metatypes.h"

namespace view {

// The host's main window as the plug-ins see it: the command line, the selection signals and
// whether a plug-in is running. The command-line host owns one too, never shown.
class TAVRELGUI_EXPORT main_wnd : public QMainWindow
{
   Q_OBJECT

   QStringList m_lstAppArgs;
   bool m_bExecutingPlugin = false;

public:
   explicit main_wnd(QWidget * parent = nullptr, Qt::WindowFlags flags = {});
   virtual ~main_wnd();

   // The values given for one option, in order: "--name=value" gives "value", "--name=" an
   // empty value, "--name value" the next argument unless it is an option itself ("--name"
   // alone, or followed by another option, gives an empty value). "name" may omit the "--".
   QStringList getAppArg(const QString & name) const;
   void setAppArgs(const QStringList & lst) { m_lstAppArgs = lst; }
   QStringList getAppArgs() const { return m_lstAppArgs; }

   bool isExecutingPlugin() const { return m_bExecutingPlugin; }
   void setExecutingPlugin(bool b) { m_bExecutingPlugin = b; }

Q_SIGNALS:
   void onLoadProject(model::project_ptr project);
   void onSelectEntity(model::entity_ptr entity);
   void onUpdateEntity(model::entity_ptr entity);
   void onSelectEnumeration(model::enumeration_ptr enumeration);
   void onUpdateEnumeration(model::enumeration_ptr enumeration);
};

} // namespace view
