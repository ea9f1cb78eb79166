#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/global_params.h"
#include "model/project.h"
#include "tavrel_version.h"
#include "test_support.h"
#include "gui/view/main_wnd.h"

using context::ctx_global;
using context::ctx_project;
using context::ctx_scoped;

namespace {

// Sets an environment variable for the life of the object.
class env_guard
{
   QByteArray m_name;
   QByteArray m_old;
   bool m_bHad;

public:
   env_guard(const char * name, const QByteArray & value) : m_name(name), m_old(qgetenv(name)), m_bHad(qEnvironmentVariableIsSet(name))
   {
      if (value.isNull()) { qunsetenv(name); }
      else { qputenv(name, value); }
   }
   ~env_guard()
   {
      if (m_bHad) { qputenv(m_name.constData(), m_old); }
      else { qunsetenv(m_name.constData()); }
   }
};

QString lumor(const QString & written, bool resolved)
{
   model::global_params p;
   p.setLumorPath(written);
   return p.getLumorPath(resolved);
}

} // namespace

TEST(ContextGlobalParams, UnresolvedPathIsAsWritten)
{
   EXPECT_EQ(lumor("$$(TAVREL_TEST_LIB)/lumor", false), QString("$$(TAVREL_TEST_LIB)/lumor"));
   EXPECT_EQ(lumor("libs/lumor", false), QString("libs/lumor"));
   EXPECT_EQ(lumor("", false), QString());
}

TEST(ContextGlobalParams, ResolvedPathExpandsEveryEnvironmentForm)
{
   env_guard env("TAVREL_TEST_LIB", "/opt/libs");
   env_guard sub("TAVREL_TEST_SUB", "lumor");
   EXPECT_EQ(lumor("$$(TAVREL_TEST_LIB)/lumor", true), QString("/opt/libs/lumor"));
   EXPECT_EQ(lumor("${TAVREL_TEST_LIB}/lumor", true), QString("/opt/libs/lumor"));
   EXPECT_EQ(lumor("$TAVREL_TEST_LIB/lumor", true), QString("/opt/libs/lumor"));
   EXPECT_EQ(lumor("$TAVREL_TEST_LIB/$$(TAVREL_TEST_SUB)/${TAVREL_TEST_SUB}", true), QString("/opt/libs/lumor/lumor"));
   EXPECT_EQ(lumor("$$(TAVREL_TEST_LIB)//x/../lumor/", true), QString("/opt/libs/lumor"));
}

TEST(ContextGlobalParams, UnknownVariableExpandsToNothing)
{
   env_guard env("TAVREL_TEST_UNSET", QByteArray());
   EXPECT_EQ(lumor("/base/$$(TAVREL_TEST_UNSET)/lumor", true), QString("/base/lumor"));
   EXPECT_EQ(lumor("$$(TAVREL_TEST_UNSET)", true), QString());
}

TEST(ContextGlobalParams, RelativePathBecomesAbsolute)
{
   EXPECT_EQ(lumor("libs/../lumor", true), QDir::cleanPath(QDir::currentPath() + "/lumor"));
   env_guard env("TAVREL_TEST_REL", "rel/dir");
   EXPECT_EQ(lumor("${TAVREL_TEST_REL}/lumor", true), QDir::cleanPath(QDir::currentPath() + "/rel/dir/lumor"));
   EXPECT_EQ(lumor("", true), QString());
}

TEST(ContextGlobalParams, QmakeVariablesStayAsWritten)
{
   env_guard env("PWD", "/somewhere/else");
   EXPECT_EQ(lumor("/x/$$PWD/lumor", true), QString("/x/$$PWD/lumor"));
}

class ContextGlobal : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;
   model::global_params_ptr m_saved;

   void SetUp() override
   {
      ASSERT_TRUE(m_dir.isValid());
      m_saved = ctx_global::getGlobalParams();
      ctx_global::setSettingsFile(m_dir.filePath("settings.ini"));
   }
   void TearDown() override
   {
      ctx_global::setSettingsFile(QString());
      ctx_global::setGlobalParams(m_saved);
   }
};

TEST_F(ContextGlobal, NameVersionAndManual)
{
   EXPECT_EQ(ctx_global::getAppName(), QString("Tavrel"));
   EXPECT_EQ(ctx_global::getAppVersionStr(), QString(TAVREL_VERSION_STR));
   const QString url = ctx_global::getAppHelpManualUrl();
   EXPECT_TRUE(url.startsWith("file:///")) << url.toStdString();
   EXPECT_TRUE(url.endsWith("/user_guide.html")) << url.toStdString();
}

TEST_F(ContextGlobal, LumorPathOptionComesFirst)
{
   env_guard env("LUMOR_DIR", "/from/env");
   ASSERT_TRUE(ctx_global::saveLumorPath("/from/settings"));
   ctx_global::initGlobalParams("/from/option");
   EXPECT_EQ(ctx_global::getGlobalParams()->getLumorPath(false), QString("/from/option"));
}

TEST_F(ContextGlobal, LumorPathFromEnvironmentThenSettings)
{
   ASSERT_TRUE(ctx_global::saveLumorPath("$$(HOME)/lumor"));
   EXPECT_EQ(ctx_global::getSavedLumorPath(), QString("$$(HOME)/lumor"));
   {
      env_guard env("LUMOR_DIR", "/from/env");
      ctx_global::initGlobalParams(QString());
      EXPECT_EQ(ctx_global::getGlobalParams()->getLumorPath(false), QString("/from/env"));
   }
   env_guard env("LUMOR_DIR", QByteArray());
   ctx_global::initGlobalParams(QString());
   EXPECT_EQ(ctx_global::getGlobalParams()->getLumorPath(false), QString("$$(HOME)/lumor"));
}

TEST_F(ContextGlobal, GlobalParamsMayBeUnsetByAHost)
{
   ctx_global::initGlobalParams(QString());
   ASSERT_NE(ctx_global::getGlobalParams(), nullptr);
   ctx_global::setGlobalParams(nullptr);
   EXPECT_EQ(ctx_global::getGlobalParams(), nullptr);
   ctx_global::initGlobalParams(QString());
   EXPECT_NE(ctx_global::getGlobalParams(), nullptr);
}

TEST_F(ContextGlobal, MainWindowIsForgottenWhenDestroyed)
{
   auto * wnd = new view::main_wnd();
   ctx_global::setMainWnd(wnd);
   EXPECT_EQ(ctx_global::getMainWnd(), wnd);
   delete wnd;
   EXPECT_EQ(ctx_global::getMainWnd(), nullptr);
}

class ContextProject : public ::testing::Test
{
protected:
   QTemporaryDir m_dir;

   void SetUp() override { ASSERT_TRUE(m_dir.isValid()); ctx_project::closeProject(); }
   void TearDown() override { ctx_project::closeProject(); }
};

TEST_F(ContextProject, PathsWithoutProjectUseTheCurrentDirectory)
{
   EXPECT_TRUE(ctx_project::getProjectFile().isEmpty());
   EXPECT_EQ(ctx_project::getPathFromProjectFile("out/cpp"), QDir::cleanPath(QDir::currentPath() + "/out/cpp"));
   EXPECT_EQ(ctx_project::getPathFromProjectFile("/abs/dir/../out"), QString("/abs/out"));
}

TEST_F(ContextProject, PathsWithProjectUseItsDirectory)
{
   auto project = std::make_shared<model::project>();
   project->setName("Shop");
   project->setFilePath(m_dir.filePath("models/shop.tavrel"));
   ctx_project::setProject(project);
   EXPECT_EQ(ctx_project::getProject(), project);
   EXPECT_EQ(ctx_project::getProjectFile(), QDir::cleanPath(m_dir.filePath("models/shop.tavrel")));
   EXPECT_FALSE(ctx_project::getDatabase().isValid());

   EXPECT_EQ(ctx_project::getPathFromProjectFile("out/cpp"), QDir::cleanPath(m_dir.filePath("models/out/cpp")));
   EXPECT_EQ(ctx_project::getPathFromProjectFile("../gen"), QDir::cleanPath(m_dir.filePath("gen")));
   EXPECT_EQ(ctx_project::getPathFromProjectFile("/abs/out"), QString("/abs/out"));

   ctx_project::closeProject();
   EXPECT_EQ(ctx_project::getProject(), nullptr);
   EXPECT_EQ(ctx_project::getPathFromProjectFile("out"), QDir::cleanPath(QDir::currentPath() + "/out"));
}

TEST_F(ContextProject, InMemoryProjectWithLocationOnly)
{
   auto project = std::make_shared<model::project>();
   project->setLocation(m_dir.path());
   ctx_project::setProject(project);
   EXPECT_TRUE(ctx_project::getProjectFile().isEmpty());
   EXPECT_EQ(ctx_project::getPathFromProjectFile("out"), QDir::cleanPath(m_dir.filePath("out")));
}

TEST_F(ContextProject, OpenRefusesMissingFileDirectoryAndUnknownType)
{
   const QString missing = QDir::cleanPath(m_dir.filePath("none.tavrel"));
   zy::ZyBool r = ctx_project::openProject(missing);
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Cannot open project : file '%1' doesn't exist").arg(missing));

   r = ctx_project::openProject(m_dir.path());
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Cannot open project : '%1' is a directory, not a project file").arg(QDir::cleanPath(m_dir.path())));

   const QString text = QDir::cleanPath(m_dir.filePath("model.txt"));
   ASSERT_TRUE(test_support::writeAll(text, "{}"));
   r = ctx_project::openProject(text);
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Cannot open project : unknown file type '%1' (expected a '.tavrel' project file or a '.json' model document)").arg(text));

   r = ctx_project::openProject(QString());
   EXPECT_FALSE(r.getValue());
   EXPECT_EQ(r.getDesc(), QString("Cannot open project : no project file given"));
   EXPECT_EQ(ctx_project::getProject(), nullptr);
}

TEST_F(ContextProject, JsonModelIsImportedBesideAndOpened)
{
   const QString json = m_dir.filePath("shop.json");
   ASSERT_TRUE(test_support::writeAll(json, R"({"name": "Shop", "entities": [
      {"name": "Order", "namespace": "shop", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})"));
   const zy::ZyBool r = ctx_project::openProject(json);
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();

   const QString projectFile = QDir::cleanPath(m_dir.filePath("shop.tavrel"));
   EXPECT_TRUE(QFileInfo(projectFile).isFile());
   EXPECT_EQ(ctx_project::getProjectFile(), projectFile);
   ASSERT_NE(ctx_project::getProject(), nullptr);
   EXPECT_EQ(ctx_project::getProject()->getName(), QString("Shop"));
   EXPECT_EQ(ctx_project::getProject()->getListOfAllEntities()->size(), 1);
   EXPECT_TRUE(ctx_project::getDatabase().isOpen());
   EXPECT_EQ(ctx_project::getPathFromProjectFile("out"), QDir::cleanPath(m_dir.filePath("out")));

   // The project file itself opens too.
   const zy::ZyBool again = ctx_project::openProject(projectFile);
   ASSERT_TRUE(again.getValue()) << again.getDesc().toStdString();
   EXPECT_EQ(ctx_project::getProject()->getName(), QString("Shop"));

   ctx_project::closeProject();
   EXPECT_FALSE(ctx_project::getDatabase().isValid());
   EXPECT_TRUE(ctx_project::getProjectFile().isEmpty());
}

TEST_F(ContextProject, ScopesStackTheCurrentDatabase)
{
   EXPECT_FALSE(ctx_scoped::current().isValid());
   const QString json = m_dir.filePath("scoped.json");
   ASSERT_TRUE(test_support::writeAll(json, R"({"name": "Scoped"})"));
   const zy::ZyBool r = ctx_project::openProject(json);
   ASSERT_TRUE(r.getValue()) << r.getDesc().toStdString();

   const QString connection = ctx_project::getDatabase().connectionName();
   ASSERT_FALSE(connection.isEmpty());
   EXPECT_EQ(ctx_scoped::current().connectionName(), connection);
   {
      ctx_scoped outer;
      EXPECT_EQ(outer.database()->connectionName(), connection);
      EXPECT_TRUE(outer.database()->isOpen());
      {
         ctx_scoped inner;
         EXPECT_EQ(ctx_scoped::current().connectionName(), connection);
      }
      EXPECT_EQ(ctx_scoped::current().connectionName(), connection);
   }
   ctx_project::closeProject();
   EXPECT_FALSE(ctx_scoped::current().isValid());
}
