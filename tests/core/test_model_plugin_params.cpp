#include <gtest/gtest.h>

#include <QDateTime>
#include <QSqlQuery>
#include <QTemporaryDir>

#include "model/plugin_params.h"
#include "storage/project_storage.h"
#include "zy/ZySession.h"

namespace {

typedef model::plugin_params::list_of_plugin_params list_of_params;

model::plugin_params_ptr param(const QString & sGuid, const QString & sKey, const QVariant & value)
{
   auto p = std::make_shared<model::plugin_params>();
   p->setGuid(sGuid);
   p->setParamKey(sKey);
   p->setParamValue(value);
   return p;
}

QString longTemplateText()
{
   QString s;
   for (int i = 0; i < 2000; ++i) { s += QString("line %1 \t \"quoted\" \\ @@KEYWORD@@ \xc3\xa9\r\n").arg(i); }
   return s + "\nlast line without end";
}

// A project database in a temporary directory, opened for the test and closed after it.
struct project_db
{
   QTemporaryDir dir;
   QSqlDatabase db;

   project_db()
   {
      EXPECT_TRUE(dir.isValid());
      const zy::ZyBool ok = storage::project_storage::openDatabase(dir.filePath("params.tavrel"), db);
      EXPECT_TRUE(ok.getValue()) << ok.getDesc().toStdString();
   }
   ~project_db() { storage::project_storage::closeDatabase(db); }

   void insert(const QList<model::plugin_params_ptr> & lst)
   {
      list_of_params items;
      for (qsizetype i = 0; i < lst.size(); ++i) { items.insert(long(i), lst.at(i)); }
      const QSqlError err = model::plugin_params::insert(items, & db);
      EXPECT_FALSE(err.isValid()) << err.text().toStdString();
   }

   list_of_params fetch(const QString & sGuid)
   {
      list_of_params result;
      const QSqlError err = model::plugin_params::fetchByGuid(sGuid, result, & db);
      EXPECT_FALSE(err.isValid()) << err.text().toStdString();
      return result;
   }
};

QStringList keysOf(const list_of_params & lst)
{
   QStringList lstKeys;
   for (const auto & item : lst) { lstKeys.append(item.second->getParamKey()); }
   return lstKeys;
}

} // namespace

TEST(ModelPluginParams, InsertThenFetchKeepsOrderAndTypes)
{
   project_db p;
   const QString sTemplate = longTemplateText();
   p.insert({ param("G", "CPP_EXPORT_PATH", QString("../out/$$(HOME)")),
              param("G", "CPP_TEMPLATE", int(3)),
              param("G", "CUSTOM_CPP_TEMPLATE_HEADER", sTemplate),
              param("G", "CUSTOM_CPP_TEMPLATE_SOURCE", QString("")),
              param("G", "RELATIVE_PATH_LUMOR", true),
              param("G", "GENERATE_CUSTOM_FILES", false),
              param("G", "GENERATE_PIMPL", true),
              param("G", "CUSTOM_JAVASCRIPT", QString()) });

   const list_of_params lst = p.fetch("G");
   ASSERT_EQ(lst.size(), 8);
   EXPECT_EQ(keysOf(lst), QStringList({ "CPP_EXPORT_PATH", "CPP_TEMPLATE", "CUSTOM_CPP_TEMPLATE_HEADER", "CUSTOM_CPP_TEMPLATE_SOURCE",
                                         "RELATIVE_PATH_LUMOR", "GENERATE_CUSTOM_FILES", "GENERATE_PIMPL", "CUSTOM_JAVASCRIPT" }));
   for (qsizetype i = 0; i < lst.size(); ++i)
   {
      EXPECT_EQ(lst.getKeyByIndex(i), lst.getByIndex(i)->getId());
      EXPECT_EQ(lst.getByIndex(i)->getGuid().toStdString(), "G");
      if (i > 0) { EXPECT_GT(lst.getByIndex(i)->getId(), lst.getByIndex(i - 1)->getId()); }
   }
   EXPECT_EQ(lst.getByIndex(0)->getParamValue().metaType().id(), QMetaType::QString);
   EXPECT_EQ(lst.getByIndex(0)->getParamValue().toString().toStdString(), "../out/$$(HOME)");
   EXPECT_EQ(lst.getByIndex(1)->getParamValue().metaType().id(), QMetaType::Int);
   EXPECT_EQ(lst.getByIndex(1)->getParamValue().toInt(), 3);
   EXPECT_TRUE(lst.getByIndex(2)->getParamValue().toString() == sTemplate);
   EXPECT_TRUE(lst.getByIndex(3)->getParamValue().toString().isEmpty());
   EXPECT_EQ(lst.getByIndex(4)->getParamValue().metaType().id(), QMetaType::Bool);
   EXPECT_TRUE(lst.getByIndex(4)->getParamValue().toBool());
   EXPECT_FALSE(lst.getByIndex(5)->getParamValue().toBool());
   EXPECT_EQ(lst.getByIndex(5)->getParamValue().metaType().id(), QMetaType::Bool);
   EXPECT_TRUE(lst.getByIndex(6)->getParamValue().toBool());
   EXPECT_EQ(lst.getByIndex(7)->getParamValue().metaType().id(), QMetaType::QString);
   EXPECT_TRUE(lst.getByIndex(7)->getParamValue().toString().isEmpty());
}

TEST(ModelPluginParams, InsertGivesTheRecordsTheirRowIds)
{
   project_db p;
   list_of_params items;
   auto a = param("G", "A", 1);
   auto b = param("G", "B", 2);
   items.insert(0, a);
   items.insert(1, b);
   ASSERT_FALSE(model::plugin_params::insert(items, & p.db).isValid());
   EXPECT_GT(a->getId(), 0);
   EXPECT_GT(b->getId(), a->getId());
   const list_of_params lst = p.fetch("G");
   ASSERT_EQ(lst.size(), 2);
   EXPECT_EQ(lst.getByIndex(0)->getId(), a->getId());
   EXPECT_EQ(lst.getByIndex(1)->getId(), b->getId());
}

TEST(ModelPluginParams, FetchAndDeleteOnlyTouchTheirGuid)
{
   project_db p;
   p.insert({ param("MINE", "A", 1), param("OTHER", "A", 10), param("MINE", "B", 2), param("OTHER", "B", 20) });
   EXPECT_EQ(keysOf(p.fetch("MINE")), QStringList({ "A", "B" }));
   EXPECT_EQ(p.fetch("MINE").getByIndex(1)->getParamValue().toInt(), 2);
   EXPECT_TRUE(p.fetch("NOBODY").empty());

   ASSERT_FALSE(model::plugin_params::deleteByGuid("MINE", & p.db).isValid());
   EXPECT_TRUE(p.fetch("MINE").empty());
   const list_of_params lstOther = p.fetch("OTHER");
   ASSERT_EQ(lstOther.size(), 2);
   EXPECT_EQ(lstOther.getByIndex(0)->getParamValue().toInt(), 10);
   EXPECT_EQ(lstOther.getByIndex(1)->getParamValue().toInt(), 20);
}

TEST(ModelPluginParams, FetchReplacesTheCollection)
{
   project_db p;
   p.insert({ param("G", "A", 1) });
   list_of_params lst;
   lst.insert(99, param("X", "stale", 0));
   ASSERT_FALSE(model::plugin_params::fetchByGuid("G", lst, & p.db).isValid());
   EXPECT_EQ(keysOf(lst), QStringList({ "A" }));
}

TEST(ModelPluginParams, TextWhereANumberIsExpectedReadsAsZero)
{
   project_db p;
   p.insert({ param("G", "CPP_TEMPLATE", QString("three")), param("G", "GENERATE_PIMPL", QString("")) });
   const list_of_params lst = p.fetch("G");
   ASSERT_EQ(lst.size(), 2);
   EXPECT_EQ(lst.getByIndex(0)->getParamValue().toInt(), 0);
   EXPECT_EQ(lst.getByIndex(0)->getParamValue().toString().toStdString(), "three");
   EXPECT_FALSE(lst.getByIndex(1)->getParamValue().toBool());

   // A row whose stored type says integer but whose value is text (written by hand).
   QSqlQuery q(p.db);
   ASSERT_TRUE(q.exec(QString("INSERT INTO t_plugin_params (plugin_guid, param_key, param_value, param_type) "
                              "VALUES ('H', 'CPP_TEMPLATE', 'abc', %1)").arg(int(QMetaType::Int))));
   const list_of_params lstH = p.fetch("H");
   ASSERT_EQ(lstH.size(), 1);
   EXPECT_EQ(lstH.getByIndex(0)->getParamValue().toInt(), 0);
}

TEST(ModelPluginParams, OtherValueTypesSurvive)
{
   project_db p;
   const QDateTime when(QDate(2024, 2, 29), QTime(13, 14, 15), Qt::UTC);
   p.insert({ param("G", "list", QStringList({ "a", "b\nc" })), param("G", "when", when), param("G", "ratio", 0.125),
              param("G", "big", qlonglong(1) << 40), param("G", "bytes", QByteArray("\x00\x01\xff", 3)), param("G", "none", QVariant()) });
   const list_of_params lst = p.fetch("G");
   ASSERT_EQ(lst.size(), 6);
   EXPECT_EQ(lst.getByIndex(0)->getParamValue().toStringList(), QStringList({ "a", "b\nc" }));
   EXPECT_EQ(lst.getByIndex(1)->getParamValue().toDateTime(), when);
   EXPECT_EQ(lst.getByIndex(2)->getParamValue().metaType().id(), QMetaType::Double);
   EXPECT_EQ(lst.getByIndex(2)->getParamValue().toDouble(), 0.125);
   EXPECT_EQ(lst.getByIndex(3)->getParamValue().toLongLong(), qlonglong(1) << 40);
   EXPECT_EQ(lst.getByIndex(4)->getParamValue().toByteArray(), QByteArray("\x00\x01\xff", 3));
   EXPECT_FALSE(lst.getByIndex(5)->getParamValue().isValid());
}

TEST(ModelPluginParams, FailedInsertInASessionKeepsThePreviousRecords)
{
   project_db p;
   p.insert({ param("G", "A", 1), param("G", "B", 2) });
   QSqlQuery q(p.db);
   // A trigger stands for any failure of the insert after the delete.
   ASSERT_TRUE(q.exec("CREATE TRIGGER refuse_bad BEFORE INSERT ON t_plugin_params WHEN NEW.param_key = 'BAD' "
                      "BEGIN SELECT RAISE(ABORT, 'bad key'); END"));

   QSqlError err;
   {
      zy::ZySession session(p.db);
      session += model::plugin_params::deleteByGuid("G", session.database());
      ASSERT_TRUE(session.isValid());
      list_of_params items;
      items.insert(0, param("G", "C", 3));
      items.insert(1, param("G", "BAD", 4));
      if (session.isValid()) { session += model::plugin_params::insert(items, session.database()); }
      err = session.firstError();
   }
   EXPECT_TRUE(err.isValid());
   EXPECT_EQ(keysOf(p.fetch("G")), QStringList({ "A", "B" }));
}

TEST(ModelPluginParams, FailedInsertAloneWritesNothing)
{
   project_db p;
   QSqlQuery q(p.db);
   ASSERT_TRUE(q.exec("CREATE TRIGGER refuse_bad BEFORE INSERT ON t_plugin_params WHEN NEW.param_key = 'BAD' "
                      "BEGIN SELECT RAISE(ABORT, 'bad key'); END"));
   list_of_params items;
   items.insert(0, param("G", "C", 3));
   items.insert(1, param("G", "BAD", 4));
   const QSqlError err = model::plugin_params::insert(items, & p.db);
   EXPECT_TRUE(err.isValid());
   EXPECT_TRUE(p.fetch("G").empty());
}

TEST(ModelPluginParams, ClosedDatabaseGivesAnError)
{
   QSqlDatabase closed;
   list_of_params lst;
   EXPECT_TRUE(model::plugin_params::fetchByGuid("G", lst, & closed).isValid());
   EXPECT_TRUE(model::plugin_params::deleteByGuid("G", & closed).isValid());
   EXPECT_TRUE(model::plugin_params::insert(lst, & closed).isValid());
}
