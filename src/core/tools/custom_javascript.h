#pragma once

#include <QHash>
#include <QJSEngine>
#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace plugin { class base_interface; }

namespace tools {

// The user's export script, run in a QJSEngine. The script defines "function execute(params)";
// its return value, as text, replaces params.default_value ("undefined" keeps it).
class TAVRELCORE_EXPORT custom_javascript : public QObject
{
   Q_OBJECT

public:
   struct call_record { QString action; QString input; QString answer; bool ok; };

private:
   std::unique_ptr<QJSEngine> m_pEngine;
   QJSValue m_fctExecute;
   QString m_sFile;
   plugin::base_interface * m_pPlugin = nullptr;
   int m_iTimeLimitMs = 10000;
   bool m_bDebugging = false;

public:
   explicit custom_javascript(QObject * parent = nullptr);
   virtual ~custom_javascript();

   // Loads and evaluates the file; fails when it can't be read, has a syntax error (with its
   // line) or defines no function "execute".
   zy::ZyBool initEngine(const QString & file, plugin::base_interface * plugin);
   zy::ZyBool executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                            model::enumeration * pEnumeration, const QHash<QString, QVariant> & params);

   // Starts watching the script: every later call is reported through onScriptCall.
   zy::ZyBool runDebugger();
   void stopDebugger();
   bool isDebugging() const { return m_bDebugging; }

   int getTimeLimit() const { return m_iTimeLimitMs; }
   void setTimeLimit(int ms) { m_iTimeLimitMs = ms; }
   QString getFile() const { return m_sFile; }

Q_SIGNALS:
   // Emitted for every call while debugging: the action, the default value and the answer.
   void onScriptCall(const QString & action, const QString & input, const QString & answer, bool ok);
   void onDebuggerStateChanged(bool debugging);
};

} // namespace tools
