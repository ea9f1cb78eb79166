#pragma once

#include <QList>
#include <QString>

#include "db_import/db_catalog.h"

namespace db_import {

// One statement of a dump file as the server's client would send it: comments left out, the
// text of conditional comments ("/*!40101 SET ... */") kept without their marks.
struct dump_statement
{
   int iLine = 0;
   int iColumn = 0;
   QString sText;
   // A client command line ("\connect db"), never sent to a server.
   bool bMeta = false;
   // Rows of "COPY ... FROM stdin" that followed the statement, up to "\.".
   qsizetype iRows = 0;
};

// Splits a PostgreSQL or MariaDB dump into statements: quotes, "$tag$" bodies, comments, COPY
// data and "DELIMITER" changes are followed so that no ";" inside them ends a statement. An
// unclosed quote, body, comment or COPY block ends the list; sError then names its line.
QList<dump_statement> splitDump(const QString & sScript, enum_dialect eDialect, QString & sError);

} // namespace db_import
