#include "builder_test_support.h"

// Whole generated files compared with files written by hand from the templates and the
// generator rules (tests/cpp_export/golden). The banner date comes from the fixed test clock;
// the token @APP_VERSION@ in a golden file stands for the host's version.

using namespace builder_test;

namespace {

QString goldenPath(const QString & name) { return test_support::sourceDir() + "/tests/cpp_export/golden/" + name; }

// The first line where two texts part, with its neighbours, or an empty text when they are equal.
QString firstDifference(const QString & expected, const QString & actual)
{
   if (expected == actual) { return QString(); }
   const QStringList exp = expected.split('\n');
   const QStringList act = actual.split('\n');
   const qsizetype count = std::min(exp.size(), act.size());
   qsizetype i = 0;
   while ((i < count) && (exp.at(i) == act.at(i))) { ++i; }
   QString report = QString("first difference at line %1 (golden has %2 lines, generated %3)\n").arg(i + 1).arg(exp.size()).arg(act.size());
   for (qsizetype j = std::max<qsizetype>(0, i - 2); j < i; ++j) { report += "   same     : " + exp.at(j) + "\n"; }
   report += "   golden   : " + (i < exp.size() ? "\"" + exp.at(i) + "\"" : QString("<end of text>")) + "\n";
   report += "   generated: " + (i < act.size() ? "\"" + act.at(i) + "\"" : QString("<end of text>")) + "\n";
   return report;
}

class GoldenFiles : public export_fixture
{
protected:
   model::project_ptr m_pProject;

   void SetUp() override
   {
      export_fixture::SetUp();
      m_pProject = loadShop();
      ASSERT_TRUE(m_pProject);
   }

   void configure(plugin::cpp_template::enum_template style, bool pimpl, bool customFiles)
   {
      m_plugin.setCppTemplate(style);
      m_plugin.setPImpl(pimpl);
      m_plugin.setGenerateCustomFiles(customFiles);
   }

   QString golden(const QString & name)
   {
      QString text = readText(goldenPath(name));
      EXPECT_FALSE(text.isEmpty()) << "missing golden file " << name.toStdString();
      EXPECT_EQ(text.count("@APP_VERSION@"), 1) << name.toStdString();
      return text.replace("@APP_VERSION@", context::ctx_global::getAppVersionStr());
   }

   void expectSame(const QString & goldenName, const QString & generated)
   {
      const QString expected = golden(goldenName);
      EXPECT_TRUE(expected == generated) << goldenName.toStdString() << ": " << firstDifference(expected, generated).toStdString();
   }

   model::entity & entity(const QString & key)
   {
      model::entity_ptr e = m_pProject->getEntityByKey(key);
      if (! e) { ADD_FAILURE() << "no entity " << key.toStdString(); static model::entity none; return none; }
      return * e;
   }
};

} // namespace

TEST_F(GoldenFiles, PlainEntityHeaderWithoutInheritanceStyle)
{
   configure(plugin::cpp_template::no_inheritance, false, false);
   expectSame("shop_CustomerProfile.no_inheritance.gen.h", m_pBuilder->buildHeader(* m_pProject, entity("shop::CustomerProfile")));
}

TEST_F(GoldenFiles, PlainEntitySourceWithoutInheritanceStyle)
{
   configure(plugin::cpp_template::no_inheritance, false, false);
   expectSame("shop_CustomerProfile.no_inheritance.gen.cpp", m_pBuilder->buildSource(* m_pProject, entity("shop::CustomerProfile")));
}

TEST_F(GoldenFiles, DerivedEntityWithTriggersAndRelationsHeaderWithPimpl)
{
   configure(plugin::cpp_template::ix_persistable, true, true);
   expectSame("shop_sales_Order.ix_persistable_pimpl.gen.h", m_pBuilder->buildHeader(* m_pProject, entity("shop::sales::Order")));
}

TEST_F(GoldenFiles, DerivedEntityWithTriggersAndRelationsSourceWithPimpl)
{
   configure(plugin::cpp_template::ix_persistable, true, true);
   expectSame("shop_sales_Order.ix_persistable_pimpl.gen.cpp", m_pBuilder->buildSource(* m_pProject, entity("shop::sales::Order")));
}

// A root class: no base, a text primary key, private and obsolete members, a read-only table.
TEST_F(GoldenFiles, RootEntityHeaderWithQObjectStyle)
{
   configure(plugin::cpp_template::ix_persistable_and_q_object, false, true);
   expectSame("shop_sales_Invoice.ix_persistable_and_q_object.gen.h", m_pBuilder->buildHeader(* m_pProject, entity("shop::sales::Invoice")));
}

TEST_F(GoldenFiles, RootEntitySourceWithQObjectStyle)
{
   configure(plugin::cpp_template::ix_persistable_and_q_object, false, true);
   expectSame("shop_sales_Invoice.ix_persistable_and_q_object.gen.cpp", m_pBuilder->buildSource(* m_pProject, entity("shop::sales::Invoice")));
}

// The report used above must point at the line that differs, or the failures would be unreadable.
TEST(GoldenDiffReport, NamesTheFirstDifferingLine)
{
   EXPECT_TRUE(firstDifference("a\nb\nc", "a\nb\nc").isEmpty());
   const QString report = firstDifference("a\nb\nc\n", "a\nb\nX\n");
   EXPECT_TRUE(report.startsWith("first difference at line 3 ")) << report.toStdString();
   EXPECT_TRUE(report.contains("golden   : \"c\"")) << report.toStdString();
   EXPECT_TRUE(report.contains("generated: \"X\"")) << report.toStdString();
   EXPECT_TRUE(firstDifference("a\n", "a\nmore").contains("line 2")) << firstDifference("a\n", "a\nmore").toStdString();
}
