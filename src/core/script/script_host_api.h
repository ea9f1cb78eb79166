#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include "script/custom_javascript.h"

namespace tools {

// The engine's way back into the host. The script never gets this object itself (it would
// reach QObject's own slots), only plain functions that call it.
class script_host_api : public QObject
{
   Q_OBJECT

   custom_javascript * m_pOwner;

public:
   explicit script_host_api(custom_javascript * pOwner) : QObject(pOwner), m_pOwner(pOwner) { ; }

   Q_INVOKABLE QVariant field(int serial, const QString & kind, const QString & name) const
   { return m_pOwner->viewField(serial, kind, name); }
   Q_INVOKABLE void log(const QString & text) { m_pOwner->scriptLog(text); }
   Q_INVOKABLE void breakpoint(const QString & text) { m_pOwner->scriptBreakpoint(text); }
};

} // namespace tools
