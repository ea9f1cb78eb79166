#pragma once

#include <QStringList>
#include <QTextStream>

namespace app {

// "tavrel migrate OLD NEW --dialect D [-o FILE] [--allow-destructive] [--check]": the SQL that
// brings a database made for one version of a model to the next.
class cli_migrate
{
   QTextStream & m_out;
   QTextStream & m_err;

public:
   cli_migrate(QTextStream & out, QTextStream & err) : m_out(out), m_err(err) { ; }

   // The arguments after the command name; returns the exit code (0, 1 failure, refusal or a
   // migration needed under --check, 2 usage).
   int run(const QStringList & args);

   static const char * usageText();

private:
   int message(const QString & text, int iExit, bool bHint = false);
};

} // namespace app
