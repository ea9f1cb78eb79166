#pragma once

#include <QStringList>
#include <QTextStream>

namespace app {

// "tavrel import-db SOURCE OUT [options]": a database or DDL script into a new project, or
// merged into the existing one (OUT is a .tavrel or a .json file, left untouched on failure).
class cli_import_db
{
   QTextStream & m_out;
   QTextStream & m_err;

public:
   cli_import_db(QTextStream & out, QTextStream & err) : m_out(out), m_err(err) { ; }

   // The arguments after the command name; returns the exit code (0, 1 failure, 2 usage).
   int run(const QStringList & args);

   static const char * usageText();

private:
   int usageError(const QString & text);
   int failure(const QString & text);
   void warning(const QString & text);
};

} // namespace app
