#pragma once

#include <QDir>
#include <QMap>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVariant>

#include <gtest/gtest.h>

#include <memory>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "desktop/diagram_view.h"
#include "desktop/main_window.h"
#include "model/global_params.h"
#include "model/plugin_params.h"
#include "gui/plugin/export_interface.h"
#include "test_support.h"
#include "gui/tools/message_box.h"

namespace gui_test {

// The desktop host's window over a fresh copy of the example model, with the real plug-in
// loaded from the build tree. Message boxes answer unattended.
class GuiFixture : public ::testing::Test
{
protected:
   QTemporaryDir m_tmp;
   std::unique_ptr<desktop::main_window> m_pWnd;

   void SetUp() override
   {
      ASSERT_TRUE(m_tmp.isValid());
      qputenv("TAVREL_PLUGIN_DIR", (test_support::binaryDir() + "/bin/plugins").toLocal8Bit());
      tools::message_box::reset();
      tools::message_box::setUnattended(true);
      tools::message_box::setPrintUnattended(false);
      context::ctx_global::setSettingsFile(m_tmp.filePath("settings.ini"));
      context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
      m_pWnd = std::make_unique<desktop::main_window>();
      m_pWnd->show();
   }

   void TearDown() override
   {
      if (plugin::export_interface * p = plugin()) { p->setCustomScript(nullptr); }
      m_pWnd.reset();
      context::ctx_project::closeProject();
      context::ctx_global::setSettingsFile(QString());
      context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());
      tools::message_box::reset();
   }

   plugin::export_interface * plugin() const { return (m_pWnd ? m_pWnd->getPlugin() : nullptr); }

   // A copy of the example model in its own directory (the project file lands beside it).
   QString copyShop(const QString & subDir) const
   {
      const QString dir = m_tmp.filePath(subDir);
      QDir().mkpath(dir);
      const QString model = dir + "/shop.json";
      test_support::writeAll(model, test_support::readAll(test_support::examplePath("shop.json")));
      return model;
   }

   // Stores plug-in settings in the opened project, as the settings dialog would.
   static bool storeSettings(const QString & guid, const QMap<QString, QVariant> & values)
   {
      context::ctx_scoped scope;
      model::plugin_params::list_of_plugin_params lst;
      for (auto itr = values.cbegin(); itr != values.cend(); ++itr)
      {
         auto p = std::make_shared<model::plugin_params>();
         p->setGuid(guid);
         p->setParamKey(itr.key());
         p->setParamValue(itr.value());
         lst.insert(lst.count() + 1, p);
      }
      if (model::plugin_params::deleteByGuid(guid, scope.database()).isValid()) { return false; }
      return ! model::plugin_params::insert(lst, scope.database()).isValid();
   }

   // Waits until the diagram has been laid out more than iBefore times: it lays out a moment
   // after a change, once it is in front.
   bool waitForLayout(int iBefore) const
   {
      return QTest::qWaitFor([&] { return (m_pWnd->getDiagramView()->getLayoutCount() > iBefore); }, 10000);
   }

   // Items of the model tree of one kind (entity or enumeration), by key.
   QStringList treeKeys(int kind) const
   {
      QStringList keys;
      for (QTreeWidgetItemIterator itr(m_pWnd->getModelTree()); * itr; ++itr)
      {
         if ((* itr)->data(0, desktop::main_window::k_roleKind).toInt() == kind) { keys << (* itr)->data(0, desktop::main_window::k_roleKey).toString(); }
      }
      return keys;
   }
};

} // namespace gui_test
