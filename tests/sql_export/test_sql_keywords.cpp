// Every keyword a database lists, as a table name and as a column name: the schema script and a
// migration adding the column run on that database. The lists come from the databases themselves.

#include <gtest/gtest.h>

#include <QSqlQuery>
#include <QTemporaryDir>

#include <sqlite3.h>

#include "db_environment.h"
#include "sql_export/schema/schema_migration.h"
#include "sql_export/schema/schema_script.h"
#include "sql_test_support.h"

using namespace sql_export;

namespace {

const ::testing::Environment * const s_pEnvironment = db_support::db_environment::install();

// One table per word, named after it; bWithColumn adds a column of that name.
sql_schema wordSchema(const QStringList & lstWords, const sql_dialect & d, bool bWithColumn)
{
   const QString sType = ((d.kind() == dialect_sqlite) ? QString("INTEGER") : QString("bigint"));
   sql_schema schema;
   for (const QString & sWord : lstWords)
   {
      sql_table t;
      t.sKey = "t:" + sWord;
      t.sName = sWord;
      t.lstColumns.append(sql_column { "c:tavrel_key", "tavrel_key", sType, true, false, false, QString(), QString() });
      t.lstPrimaryKey.append("tavrel_key");
      if (bWithColumn) { t.lstColumns.append(sql_column { "c:" + sWord, sWord, sType, false, false, false, QString(), QString() }); }
      schema.lstTables.append(t);
   }
   return schema;
}

// The script making the tables without the column, then the migration adding it.
QString wordScripts(const QStringList & lstWords, const sql_dialect & d)
{
   const sql_schema from = wordSchema(lstWords, d, false);
   const sql_schema to = wordSchema(lstWords, d, true);
   return schema_script::write(from, d, "KEYWORDS") + schema_migration::write(schema_migration::plan(from, to, d), d, { "A", "a" }, { "B", "b" });
}

// Runs all words at once; when that fails, word by word, to name every word that breaks.
QStringList failingWords(const QStringList & lstWords, const sql_dialect & d, const std::function<bool(const QString &, QString &)> & run)
{
   QString sError;
   if (run(wordScripts(lstWords, d), sError)) { return QStringList(); }
   QStringList lstFailing;
   for (const QString & sWord : lstWords)
   {
      if (! run(wordScripts({ sWord }, d), sError)) { lstFailing.append(sWord + ": " + sError.section('\n', -1)); }
   }
   // The whole failed: a word alone must fail too, or the test names nothing.
   if (lstFailing.isEmpty()) { lstFailing.append("all words at once: " + sError); }
   return lstFailing;
}

QStringList queryWords(db_support::db_server & server, const QString & sQuery)
{
   QStringList lst;
   {
      QSqlDatabase db = server.connect("sqlx_keywords");
      QSqlQuery q(db);
      if (db.open() && q.exec(sQuery)) { while (q.next()) { lst.append(q.value(0).toString()); } }
   }
   QSqlDatabase::removeDatabase("sqlx_keywords");
   return lst;
}

class SqlKeywordsOnServer : public ::testing::TestWithParam<db_support::db_server::enum_kind>
{
};

} // namespace

TEST(SqlKeywords, EverySqliteKeywordIsATableAndColumnName)
{
   QStringList lstWords;
   const int n = sqlite3_keyword_count();
   for (int i = 0; i < n; ++i)
   {
      const char * p = nullptr;
      int iSize = 0;
      if (sqlite3_keyword_name(i, & p, & iSize) == SQLITE_OK) { lstWords.append(QString::fromLatin1(p, iSize).toLower()); }
   }
   ASSERT_GT(lstWords.size(), 100);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   int iRun = 0;
   const auto run = [&dir, &iRun](const QString & sScript, QString & sError) {
      return sql_test::runOnSqlite(dir.filePath(QString("k%1.db").arg(iRun++)), sScript, sError);
   };
   const QStringList lstFailing = failingWords(lstWords, sql_dialect(dialect_sqlite), run);
   EXPECT_TRUE(lstFailing.isEmpty()) << lstFailing.join('\n').toStdString();
}

TEST_P(SqlKeywordsOnServer, EveryKeywordIsATableAndColumnName)
{
   TAVREL_REQUIRE_DB_SERVER(pServer, GetParam());
   const bool bPg = (GetParam() == db_support::db_server::kind_postgresql);
   // MariaDB lists operators too ("&&", "<=>"): as names they are quoted like any odd name.
   const QStringList lstWords = queryWords(* pServer, bPg ? "SELECT word FROM pg_get_keywords() ORDER BY word" : "SELECT LOWER(WORD) FROM information_schema.KEYWORDS ORDER BY 1");
   ASSERT_GT(lstWords.size(), 100);
   const sql_dialect d(bPg ? dialect_postgresql : dialect_mariadb);
   int iRun = 0;
   const auto run = [pServer, &iRun](const QString & sScript, QString & sError) {
      // All words in one database, then each word alone in another.
      const QString sDatabase = ((iRun == 0) ? QString("sqlx_kw_all") : QString("sqlx_kw_each"));
      const bool bFresh = (iRun++ <= 1);
      return (! bFresh || pServer->recreateDatabase(sDatabase, sError)) && pServer->execScript(sScript, sError, sDatabase);
   };
   const QStringList lstFailing = failingWords(lstWords, d, run);
   EXPECT_TRUE(lstFailing.isEmpty()) << lstFailing.size() << " words fail:\n" << lstFailing.join('\n').toStdString();
}

INSTANTIATE_TEST_SUITE_P(PostgreSQLKeywords, SqlKeywordsOnServer, ::testing::Values(db_support::db_server::kind_postgresql));
INSTANTIATE_TEST_SUITE_P(MariaDBKeywords, SqlKeywordsOnServer, ::testing::Values(db_support::db_server::kind_mariadb));
