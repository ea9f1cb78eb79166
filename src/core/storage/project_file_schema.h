#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>

// The tables of a project file and the plain SQL steps shared by its writer and its reader.
namespace storage {
namespace project_file {

// Version of the table layout written by this code; newer files are refused, not misread.
const int k_iFormatVersion = 1;

// The model tables, dependent ones first (the order they are emptied in).
const QStringList & modelTables();
// The statements creating the tables and indexes that are missing.
QStringList schemaStatements();
// One column per trigger, named after the trigger: "trigger_before_fetch"...; with a suffix
// such as " INTEGER NOT NULL DEFAULT 0" for the table's definition.
QString triggerColumns(const char * szSuffix = "");

QString dbErrorText(const QSqlError & err);
bool execSql(QSqlDatabase & db, const QString & sql, QString & sError);
// Lists the tables; also the first real read, where a corrupt file shows.
bool listTables(QSqlDatabase & db, QStringList & lstTables, QString & sError);

} // namespace project_file
} // namespace storage
