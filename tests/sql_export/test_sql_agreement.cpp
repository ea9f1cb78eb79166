#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QTemporaryDir>

#include "model/entity.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "sql_test_support.h"
#include "test_support.h"

namespace {

// The columns one generated registration function declares, in its order: ids, data members,
// many-to-one keys, the soft-delete column; one-to-one members apart (they have a column only
// with a foreign key).
struct registered
{
   QStringList lstColumns;
   QStringList lstOneToOne;
};

registered readRegistration(const QString & sFile)
{
   static const QRegularExpression s_reMember("t\\.(id|data|relationManyToOne|relationOneToOne)\\(& [^,]+, \"([^\"]+)\"");
   static const QRegularExpression s_reRename("(pData|pRelation->getDataMember\\(\\))->setName\\(\"([^\"]+)\"\\)");
   static const QRegularExpression s_reSoftDelete("ZySoftDelete\\(\"([^\"]+)\"\\)");
   registered r;
   QStringList * pLast = nullptr;
   QString sSoftDelete;
   const QStringList lstLines = QString::fromUtf8(test_support::readAll(sFile)).split('\n');
   for (const QString & sLine : lstLines)
   {
      const QRegularExpressionMatch m = s_reMember.match(sLine);
      const QRegularExpressionMatch n = s_reRename.match(sLine);
      const QRegularExpressionMatch d = s_reSoftDelete.match(sLine);
      // A member the classes keep out of the database ends with a false "dao" argument.
      if (m.hasMatch() && sLine.contains(QRegularExpression(", false(, pImpl)?\\);$"))) { pLast = nullptr; }
      else if (m.hasMatch())
      {
         pLast = ((m.captured(1) == "relationOneToOne") ? & r.lstOneToOne : & r.lstColumns);
         pLast->append(m.captured(2));
      }
      else if (n.hasMatch() && pLast && ! pLast->isEmpty()) { pLast->last() = n.captured(2); }
      else if (d.hasMatch()) { sSoftDelete = d.captured(1); }
   }
   if (! sSoftDelete.isEmpty() && ! r.lstColumns.contains(sSoftDelete)) { r.lstColumns.append(sSoftDelete); }
   return r;
}

QString fileOf(const QString & sDir, const model::entity & e)
{
   return sDir + "/src/" + e.getKey().replace("::", "_") + ".gen.cpp";
}

// What the classes of an entity read and write: its ancestors' registrations first.
QStringList expectedColumns(const QString & sDir, const model::entity_ptr & pEntity)
{
   QList<model::entity_ptr> lstChain;
   for (model::entity_ptr p = pEntity; p; p = p->getParent()) { lstChain.prepend(p); }
   QStringList lst;
   for (const model::entity_ptr & p : lstChain)
   {
      const registered r = readRegistration(fileOf(sDir, * p));
      lst += r.lstColumns;
      for (const QString & sName : r.lstOneToOne)
      {
         const model::property_ptr pProperty = p->getPropertyByName(sName);
         if (pProperty && pProperty->getRelation() && ! pProperty->getRelation()->getForeignKey().isEmpty()) { lst.append(sName); }
      }
   }
   // The soft-delete column closes the table whichever class of the chain declares it.
   for (const model::entity_ptr & p : lstChain)
   {
      const QString s = p->getSoftDeleteColumn();
      if (! s.isEmpty() && lst.removeOne(s)) { lst.append(s); }
   }
   return lst;
}

} // namespace

TEST(SqlAgreement, TablesHoldTheColumnsTheGeneratedClassesRegister)
{
   for (const QString & sName : { QString("shop"), QString("library") })
   {
      QTemporaryDir dir;
      ASSERT_TRUE(dir.isValid());
      // A copy: the program writes the project file beside the model it reads.
      const QString sModel = dir.filePath(sName + ".json");
      ASSERT_TRUE(test_support::writeAll(sModel, test_support::readAll(test_support::examplePath(sName + ".json"))));
      const test_support::cli_result r = test_support::runTavrel({ "export", sModel, "--plugin", "TavrelCppExport",
         "--lumor-path=" + test_support::sourceDir() + "/tests/compile_check/lumor", "--TavrelCppExport_path=" + dir.filePath("cpp") });
      ASSERT_EQ(r.code, 0) << r.err.toStdString();
      const model::project_ptr pProject = sql_test::exampleModel(sName);
      ASSERT_TRUE(pProject);
      const sql_export::sql_schema schema = sql_export::schema_builder::build(* pProject, sql_export::sql_dialect(), sql_export::schema_options());
      int iCompared = 0;
      for (const model::entity_ptr & pEntity : * pProject->getListOfAllEntities())
      {
         if (pEntity->isAbstract()) { continue; }
         const QString sTable = sql_export::schema_builder::tableName(* pEntity);
         for (const sql_export::sql_table & t : schema.lstTables)
         {
            if (t.sName != sTable) { continue; }
            QStringList lstColumns;
            for (const sql_export::sql_column & c : t.lstColumns) { lstColumns.append(c.sName); }
            EXPECT_EQ(lstColumns.join(' ').toStdString(), expectedColumns(dir.filePath("cpp"), pEntity).join(' ').toStdString()) << sTable.toStdString();
            ++iCompared;
         }
      }
      EXPECT_GE(iCompared, 6) << sName.toStdString();
   }
}
