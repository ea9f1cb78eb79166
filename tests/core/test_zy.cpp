#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>

#include "zy/ZyBool.h"
#include "zy/ZyCollection.h"
#include "zy/ZyInvalidValue.h"
#include "zy/ZySession.h"

TEST(ZyBool, ValueCodeAndDescription)
{
   const zy::ZyBool ok(true);
   EXPECT_TRUE(ok.getValue());
   EXPECT_TRUE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().isEmpty());

   zy::ZyBool failed(false, 12, "went wrong");
   EXPECT_TRUE(! failed);
   EXPECT_EQ(failed.getCode(), 12);
   EXPECT_EQ(failed.getDesc(), QString("went wrong"));
   EXPECT_NE(failed, zy::ZyBool(false, "went wrong"));
   EXPECT_EQ(failed, zy::ZyBool(false, 12, "went wrong"));

   failed.setValue(true);
   failed.setDesc("fine");
   EXPECT_EQ(failed, zy::ZyBool(true, 12, "fine"));
   EXPECT_FALSE(zy::ZyBool().getValue());
}

TEST(ZyCollection, KeepsInsertionOrder)
{
   zy::ZyCollection<QString, int> c;
   EXPECT_TRUE(c.empty());
   EXPECT_TRUE(c.insert("b", 2));
   EXPECT_TRUE(c.insert("a", 1));
   EXPECT_TRUE(c.insert("c", 3));
   ASSERT_EQ(c.size(), 3);
   EXPECT_EQ(c.getKeyByIndex(0), QString("b"));
   EXPECT_EQ(c.getKeyByIndex(1), QString("a"));
   EXPECT_EQ(c.getByIndex(2), 3);
   EXPECT_EQ(c.getByKey("a"), 1);
   EXPECT_EQ(c.getIndexByKey("c"), 2);
   EXPECT_EQ(c.getIndexByKey("zz"), -1);
   EXPECT_EQ(c.getByKey("zz"), 0);

   QStringList keys;
   for (const auto & item : c) { keys << item.first; }
   EXPECT_EQ(keys, (QStringList{"b", "a", "c"}));
}

TEST(ZyCollection, DuplicateInsertIsRefused)
{
   zy::ZyCollection<QString, int> c;
   ASSERT_TRUE(c.insert("k", 1));
   EXPECT_FALSE(c.insert("k", 2));
   EXPECT_EQ(c.size(), 1);
   EXPECT_EQ(c.getByKey("k"), 1);
   c.insertOrReplace("k", 5);
   c.insertOrReplace("m", 6);
   EXPECT_EQ(c.size(), 2);
   EXPECT_EQ(c.getByKey("k"), 5);
   EXPECT_EQ(c.getKeyByIndex(1), QString("m"));
}

TEST(ZyCollection, RemoveReindexes)
{
   zy::ZyCollection<long, QString> c;
   c.insert(10, "ten");
   c.insert(20, "twenty");
   c.insert(30, "thirty");
   c.insert(40, "forty");
   EXPECT_TRUE(c.remove(20));
   EXPECT_FALSE(c.remove(20));
   EXPECT_FALSE(c.exist(20));
   ASSERT_EQ(c.size(), 3);
   EXPECT_EQ(c.getIndexByKey(10), 0);
   EXPECT_EQ(c.getIndexByKey(30), 1);
   EXPECT_EQ(c.getIndexByKey(40), 2);
   EXPECT_EQ(c.getByKey(40), QString("forty"));
   EXPECT_EQ(c.getByIndex(1), QString("thirty"));
   // The freed key can come back, at the end.
   EXPECT_TRUE(c.insert(20, "again"));
   EXPECT_EQ(c.getIndexByKey(20), 3);
   c.clear();
   EXPECT_TRUE(c.empty());
}

TEST(ZyInvalidValue, MessageAndPath)
{
   const zy::ZyInvalidValue v("Entity 'Order' : property 'x' has no type", "entities[0]");
   EXPECT_EQ(v.getMessage(), QString("Entity 'Order' : property 'x' has no type"));
   EXPECT_EQ(v.getPath(), QString("entities[0]"));
}

namespace {

class ZySessionTest : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   QString m_sConnection;
   QSqlDatabase m_db;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      m_sConnection = "zy_session_test_" + QUuid::createUuid().toString(QUuid::WithoutBraces);
      m_db = QSqlDatabase::addDatabase("QSQLITE", m_sConnection);
      m_db.setDatabaseName(m_dir.filePath("session.sqlite"));
      ASSERT_TRUE(m_db.open());
      QSqlQuery q(m_db);
      ASSERT_TRUE(q.exec("CREATE TABLE t_item (id INTEGER PRIMARY KEY, name TEXT)"));
   }

   void TearDown() override
   {
      m_db.close();
      m_db = QSqlDatabase();
      QSqlDatabase::removeDatabase(m_sConnection);
   }

   int count()
   {
      QSqlQuery q(m_db);
      if (! q.exec("SELECT COUNT(*) FROM t_item") || ! q.next()) { return -1; }
      return q.value(0).toInt();
   }
};

} // namespace

TEST_F(ZySessionTest, CommitsWithoutError)
{
   {
      zy::ZySession session(m_db);
      ASSERT_TRUE(session.isValid());
      QSqlQuery q(* session.database());
      ASSERT_TRUE(q.exec("INSERT INTO t_item (name) VALUES ('a')"));
      ASSERT_TRUE(q.exec("INSERT INTO t_item (name) VALUES ('b')"));
      session += QSqlError();
      EXPECT_TRUE(session.isValid());
   }
   EXPECT_EQ(count(), 2);
}

TEST_F(ZySessionTest, RollsBackOnError)
{
   {
      zy::ZySession session(m_db);
      QSqlQuery q(* session.database());
      ASSERT_TRUE(q.exec("INSERT INTO t_item (name) VALUES ('a')"));
      EXPECT_FALSE(q.exec("INSERT INTO t_missing (name) VALUES ('b')"));
      session += q.lastError();
      EXPECT_FALSE(session.isValid());
      EXPECT_TRUE(session.firstError().isValid());
      EXPECT_EQ(session.allErrors().size(), 1);
   }
   EXPECT_EQ(count(), 0);
}

TEST_F(ZySessionTest, ClosedDatabaseIsAnError)
{
   m_db.close();
   zy::ZySession session(m_db);
   EXPECT_FALSE(session.isValid());
   EXPECT_EQ(session.firstError().type(), QSqlError::ConnectionError);
}
