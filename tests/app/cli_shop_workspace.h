#pragma once

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "test_support.h"

// The example model in a fresh directory with a library directory and an export directory,
// exported by the real program.
class CliShopWorkspace : public ::testing::Test
{
protected:
   QTemporaryDir m_tmp;
   QString m_sModel;

   void SetUp() override
   {
      ASSERT_TRUE(m_tmp.isValid());
      m_sModel = m_tmp.filePath("shop.json");
      ASSERT_TRUE(test_support::writeAll(m_sModel, test_support::readAll(test_support::examplePath("shop.json"))));
      ASSERT_TRUE(QDir().mkpath(m_tmp.filePath("lumor")));
      ASSERT_TRUE(QDir().mkpath(m_tmp.filePath("out")));
   }

   QString path(const QString & rel) const { return m_tmp.filePath(rel); }

   test_support::cli_result exportWith(const QStringList & extra, const QString & sOut = QStringLiteral("out")) const
   {
      return test_support::runTavrel(QStringList({ "export", m_sModel, "--lumor-path", path("lumor"), "--TavrelCppExport_path=" + sOut }) + extra);
   }
};
