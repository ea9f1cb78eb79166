#include <QLockFile>

#include "builder_test_support.h"

using namespace builder_test;

namespace {

class WriteGuard : public export_fixture
{
protected:
   // Every entry under the temporary directory except the export directory (given relative
   // to it).
   QStringList outsideState(const QString & exportDir = "out") const { return test_support::treeState(m_tmp.path(), { exportDir }); }

   model::project_ptr person()
   {
      model::project_ptr p = parseModel(k_personJson);
      EXPECT_TRUE(p);
      return p;
   }
};

} // namespace

TEST_F(WriteGuard, HostileEntityNameWritesNothingOutside)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   // Names the import would refuse, set on the model in memory as a hand-edited file could.
   model::entity_ptr pEntity = p->getEntityByKey("ns::Person");
   ASSERT_TRUE(pEntity);
   pEntity->setNamespace(QString());
   pEntity->setName("../../victim");
   ASSERT_TRUE(test_support::writeAll(m_tmp.path() + "/victim.gen.h", "keep"));
   const QStringList before = outsideState();
   // "Export in spite of schema errors?" answered Yes.
   tools::message_box::setFixedAnswer(QMessageBox::Yes);
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().startsWith("Cannot write outside the export directory '" + m_sExportDir + "' : ")) << ok.getDesc().toStdString();
   EXPECT_EQ(outsideState(), before);
   EXPECT_EQ(test_support::readAll(m_tmp.path() + "/victim.gen.h"), QByteArray("keep"));
}

TEST_F(WriteGuard, HostileProjectNameWritesNothingOutside)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   p->setName("../../x");
   // Two levels below the temporary directory, so that where the name leads is watched too.
   ASSERT_TRUE(QDir().mkpath(m_tmp.path() + "/a/out"));
   m_plugin.setCppExportPath(m_tmp.path() + "/a/out");
   const QStringList before = outsideState("a/out");
   tools::message_box::setFixedAnswer(QMessageBox::Yes);
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().startsWith("Cannot write outside the export directory")) << ok.getDesc().toStdString();
   EXPECT_EQ(outsideState("a/out"), before);
   EXPECT_FALSE(QFileInfo::exists(m_tmp.path() + "/x.gen.pri"));
   EXPECT_FALSE(QFileInfo::exists(m_tmp.path() + "/x.gen.pro"));
}

TEST_F(WriteGuard, LinkedClassFileIsNotWrittenThrough)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   ASSERT_TRUE(test_support::writeAll(m_tmp.path() + "/target.h", "outside"));
   ASSERT_TRUE(QDir().mkpath(out("include")));
   ASSERT_TRUE(QFile::link(m_tmp.path() + "/target.h", out("include/ns_Person.gen.h")));
   const QStringList before = outsideState();
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().contains("symbolic link '" + out("include/ns_Person.gen.h") + "'")) << ok.getDesc().toStdString();
   EXPECT_EQ(test_support::readAll(m_tmp.path() + "/target.h"), QByteArray("outside"));
   EXPECT_EQ(outsideState(), before);
}

TEST_F(WriteGuard, DanglingCustomLinkCreatesNothingOutside)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   ASSERT_TRUE(QDir().mkpath(out("custom/include")));
   ASSERT_TRUE(QFile::link(m_tmp.path() + "/planted.h", out("custom/include/ns_Person.h")));
   const QStringList before = outsideState();
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().contains("symbolic link '" + out("custom/include/ns_Person.h") + "'")) << ok.getDesc().toStdString();
   EXPECT_FALSE(QFileInfo::exists(m_tmp.path() + "/planted.h"));
   EXPECT_EQ(outsideState(), before);
}

TEST_F(WriteGuard, LinkedSubfoldersAreRefused)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   for (const char * sub : { "include", "src", "custom", "custom/src" })
   {
      ASSERT_TRUE(QDir(m_sExportDir).removeRecursively());
      ASSERT_TRUE(QDir().mkpath(m_sExportDir));
      ASSERT_TRUE(QDir(m_tmp.path() + "/elsewhere").removeRecursively());
      ASSERT_TRUE(QDir().mkpath(m_tmp.path() + "/elsewhere"));
      ASSERT_TRUE(QDir().mkpath(QFileInfo(out(sub)).absolutePath()));
      ASSERT_TRUE(QFile::link(m_tmp.path() + "/elsewhere", out(sub))) << sub;
      zy::ZyBool ok = exportProject(* p);
      EXPECT_FALSE(static_cast<bool>(ok)) << sub;
      EXPECT_TRUE(QDir(m_tmp.path() + "/elsewhere").isEmpty()) << sub;
      EXPECT_TRUE(m_pBuilder->getLastFailureReason().contains("symbolic link '" + out(sub) + "'") || ok.getDesc().contains("symbolic link '" + out(sub) + "'"))
         << sub << " " << ok.getDesc().toStdString() << " " << m_pBuilder->getLastFailureReason().toStdString();
   }
}

TEST_F(WriteGuard, SecondExportIntoALockedDirectoryIsRefused)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   QLockFile lock(out(plugin::cpp_builder::lockFileName()));
   ASSERT_TRUE(lock.tryLock(0));
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_TRUE(ok.getDesc().startsWith("Another export into this directory is running")) << ok.getDesc().toStdString();
   EXPECT_FALSE(QFileInfo::exists(out("include")));
   lock.unlock();
   ok = exportProject(* p);
   EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   // The lock goes with the export.
   EXPECT_FALSE(QFileInfo::exists(out(plugin::cpp_builder::lockFileName())));
}

TEST_F(WriteGuard, SystemReasonOfAFailedWrite)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   ASSERT_TRUE(QDir().mkpath(out("include/ns_Person.gen.h")));
   zy::ZyBool ok = exportProject(* p);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_EQ(m_pBuilder->getLastFailureReason(), "Is a directory : " + out("include/ns_Person.gen.h"));

   ASSERT_TRUE(QDir(m_sExportDir).removeRecursively());
   ASSERT_TRUE(QDir().mkpath(m_sExportDir));
   ASSERT_TRUE(test_support::writeAll(out("include"), "x"));
   ok = exportProject(* p);
   EXPECT_EQ(ok.getDesc(), QString("Cannot create 'include' directory"));
   EXPECT_EQ(m_pBuilder->getLastFailureReason(), "Not a directory : " + out("include"));
}

TEST_F(WriteGuard, LinkedBuildDirectoryStaysUntouched)
{
   model::project_ptr p = person();
   ASSERT_TRUE(p);
   // The user's own build place: nothing is written there, so the link may stay.
   ASSERT_TRUE(QDir().mkpath(m_tmp.path() + "/builds"));
   ASSERT_TRUE(QFile::link(m_tmp.path() + "/builds", out("build")));
   zy::ZyBool ok = exportProject(* p);
   EXPECT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   EXPECT_TRUE(QFileInfo(out("build")).isSymLink());
   EXPECT_TRUE(QDir(m_tmp.path() + "/builds").isEmpty());
}
