#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "db_environment.h"
#include "migration_series.h"
#include "sql_export/schema/sql_dialect.h"
#include "sql_test_support.h"

namespace sql_test {

enum enum_apply_kind { apply_sqlite, apply_postgresql, apply_mariadb };

// A test run on each of the three databases: a fresh database of the kind, the script runner,
// and the first column of a query's rows.
class sql_apply_test : public ::testing::TestWithParam<enum_apply_kind>
{
protected:
   QTemporaryDir m_dir;
   db_support::db_server * m_pServer = nullptr;
   QString m_sDatabase;

   sql_export::enum_dialect dialect() const
   {
      return ((GetParam() == apply_sqlite) ? sql_export::dialect_sqlite
                                           : ((GetParam() == apply_postgresql) ? sql_export::dialect_postgresql : sql_export::dialect_mariadb));
   }
   QString dialectName() const { return sql_export::sql_dialect(dialect()).name(); }

   // An empty database named sName (a file for SQLite); false with the reason.
   bool freshDatabase(const QString & sName, QString & sError)
   {
      m_sDatabase = sName;
      if (GetParam() == apply_sqlite) { return m_dir.isValid() && ! QFile::exists(m_dir.filePath(sName + ".db")); }
      const db_support::db_server::enum_kind eKind = ((GetParam() == apply_postgresql) ? db_support::db_server::kind_postgresql : db_support::db_server::kind_mariadb);
      m_pServer = db_support::db_environment::server(eKind, sError);
      qputenv("TAVREL_DB_PASSWORD", db_support::db_server::k_sPassword);
      return m_pServer && m_pServer->recreateDatabase(sName, sError);
   }

   bool run(const QString & sScript, QString & sError)
   {
      if (GetParam() == apply_sqlite) { return runOnSqlite(m_dir.filePath(m_sDatabase + ".db"), sScript, sError); }
      return m_pServer->execScript(sScript, sError, m_sDatabase);
   }

   QStringList values(const QString & sQuery)
   {
      QStringList lst;
      {
         QSqlDatabase db;
         if (GetParam() == apply_sqlite)
         {
            db = QSqlDatabase::addDatabase("QSQLITE", "sqlx_apply_values");
            db.setDatabaseName(m_dir.filePath(m_sDatabase + ".db"));
         }
         else { db = m_pServer->connect("sqlx_apply_values", m_sDatabase); }
         QSqlQuery q(db);
         if (! db.open() || ! q.exec(sQuery)) { lst.append("error: " + q.lastError().text() + db.lastError().text()); }
         while (q.next()) { lst.append(q.value(0).toString()); }
      }
      QSqlDatabase::removeDatabase("sqlx_apply_values");
      return lst;
   }
};

inline std::string applyKindName(const ::testing::TestParamInfo<enum_apply_kind> & info)
{
   return ((info.param == apply_sqlite) ? "sqlite" : ((info.param == apply_postgresql) ? "postgresql" : "mariadb"));
}

} // namespace sql_test
