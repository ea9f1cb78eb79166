#pragma once

#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

namespace sql_test {

// One entity with a key and a text column, the model the command-line tests export.
inline const char * const k_sGardenModel = R"({ "name": "Garden", "entities": [
  {"name": "Plant", "table": "plant", "properties": [
    {"name": "id", "type": "long", "primary_key": true},
    {"name": "label", "type": "QString", "allow_null": false} ]} ] })";

// That model in a temporary folder, exported by the real program.
class sql_cli_fixture : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sModel;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      m_sModel = m_dir.filePath("garden.json");
      ASSERT_TRUE(test_support::writeAll(m_sModel, QByteArray(k_sGardenModel)));
   }

   // A script path relative to the model's folder.
   test_support::cli_result exportSql(const QString & sPath, const QString & sDialect = "postgresql", const QStringList & extra = QStringList())
   {
      return test_support::runTavrel(QStringList { "export", m_sModel, "--plugin", "TavrelSqlExport", "--TavrelSqlExport_dialect=" + sDialect,
                                                   "--TavrelSqlExport_path=" + sPath } + extra);
   }
};

} // namespace sql_test
