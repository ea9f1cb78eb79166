#include "gui/view/main_wnd.h"

#include <QCoreApplication>

#include "context/ctx_global.h"

namespace view {

main_wnd::main_wnd(QWidget * parent, Qt::WindowFlags flags) : QMainWindow(parent, flags)
{
   model::registerModelMetaTypes();
   if (QCoreApplication::instance()) { m_lstAppArgs = QCoreApplication::arguments(); }
}

main_wnd::~main_wnd()
{
   // The global context must not hand out a window that is gone.
   if (context::ctx_global::getMainWnd() == this) { context::ctx_global::setMainWnd(nullptr); }
}

QStringList main_wnd::getAppArg(const QString & name) const
{
   QStringList values;
   if (name.isEmpty()) { return values; }
   const QString option = (name.startsWith(QLatin1Char('-')) ? name : (QStringLiteral("--") + name));
   const QString withValue = option + QLatin1Char('=');
   for (qsizetype i = 0; i < m_lstAppArgs.size(); ++i)
   {
      const QString & arg = m_lstAppArgs.at(i);
      if (arg.startsWith(withValue)) { values.append(arg.mid(withValue.size())); }
      else if (arg == option)
      {
         // "--name value": the next argument, unless it is an option itself (then no value).
         if (((i + 1) < m_lstAppArgs.size()) && ! m_lstAppArgs.at(i + 1).startsWith(QLatin1String("--")))
         {
            values.append(m_lstAppArgs.at(i + 1));
            ++i;
         }
         else { values.append(QString()); }
      }
   }
   return values;
}

} // namespace view
