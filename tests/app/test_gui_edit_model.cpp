// A model built only through the desktop host's editors, from an empty project, exports the
// same files as the same model written as JSON; and the diagram follows the edits.

#include <QDirIterator>
#include <QDockWidget>
#include <QGraphicsScene>
#include <QGroupBox>
#include <QTabWidget>
#include <QToolBar>

#include <gtest/gtest.h>

#include "desktop/diagram_view.h"
#include "desktop/entity_dialog.h"
#include "desktop/enumeration_dialog.h"
#include "desktop/property_dialog.h"
#include "storage/project_storage.h"
#include "test_gui_editing.h"

namespace {

using desktop::entity_dialog;
using desktop::enumeration_dialog;
using desktop::property_dialog;

const char * const k_sSameModel = R"({
  "name": "PETS",
  "entities": [
    {"id": 1, "name": "Person", "namespace": "demo", "table": "t_person", "description": "Someone who keeps pets",
     "properties": [
       {"id": 1, "name": "id", "type": "long", "primary_key": true},
       {"id": 2, "name": "name", "type": "QString", "allow_null": false, "max_length": 80},
       {"id": 3, "name": "colour", "enumeration": "demo::Colour"},
       {"id": 6, "name": "pets", "relation": {"kind": "one_to_many", "target": "demo::Pet", "foreign_key": "owner"}}
     ]},
    {"id": 2, "name": "Pet", "namespace": "demo", "table": "t_pet",
     "properties": [
       {"id": 4, "name": "id", "type": "long", "primary_key": true},
       {"id": 5, "name": "owner", "relation": {"kind": "many_to_one", "target": "demo::Person"}}
     ]}
  ],
  "enumerations": [
    {"id": 1, "name": "Colour", "namespace": "demo", "values": [{"key": "Red", "value": "0"}, {"key": "Green", "value": "1"}]}
  ]
}
)";

class GuiEditModel : public gui_test::GuiEditing
{
protected:
   void addEntity(const QString & sName, const QString & sTable, const QString & sDescription)
   {
      onNextDialog<entity_dialog>([=](entity_dialog * d) {
         type(d, "m_txtName", sName);
         type(d, "m_txtNamespace", "demo");
         type(d, "m_txtTable", sTable);
         if (! sDescription.isEmpty()) { type(d, "m_txtDescription", sDescription); }
         ok(d);
      });
      QTest::mouseClick(m_pWnd->findChild<QToolBar *>("m_toolBar")->widgetForAction(m_pWnd->findChild<QAction *>("m_actNewEntity")), Qt::LeftButton);
   }

   // A data member: fn sets what differs from a QString.
   void addProperty(const std::function<void(property_dialog *)> & fn)
   {
      onNextDialog<property_dialog>([fn](property_dialog * d) { fn(d); ok(d); });
      key(m_pWnd->getPropertyTable(), Qt::Key_Insert);
   }

   static void relation(property_dialog * d, const QString & sKind, const QString & sTarget, const QString & sForeignKey)
   {
      d->findChild<QTabWidget *>("m_tabProperty")->setCurrentIndex(1);
      d->findChild<QGroupBox *>("m_grpRelation")->setChecked(true);
      pick(d, "m_cboKind", sKind);
      pick(d, "m_cboTarget", sTarget);
      if (! sForeignKey.isEmpty()) { type(d, "m_txtForeignKey", sForeignKey); }
   }

   static QMap<QString, QString> readTree(const QString & sRoot)
   {
      QMap<QString, QString> files;
      QDirIterator itr(sRoot, QDir::Files, QDirIterator::Subdirectories);
      while (itr.hasNext())
      {
         const QString sPath = itr.next();
         files.insert(QDir(sRoot).relativeFilePath(sPath), test_support::withoutBannerDate(QString::fromUtf8(test_support::readAll(sPath))));
      }
      return files;
   }

   // Exports a model with the command-line host into DIR/out.
   void exportModel(const QString & sModel, const QString & sDir)
   {
      test_support::cli_options options;
      options.configHome = m_tmp.filePath("config");
      const test_support::cli_result run = test_support::runTavrel({ "export", sModel, "--lumor-path", m_tmp.filePath("lumor"), "--yes",
                                                                     "--TavrelCppExport_path=" + sDir + "/out" }, options);
      ASSERT_EQ(run.code, 0) << run.err.toStdString();
   }

   void buildPetsModel();
};

void GuiEditModel::buildPetsModel()
{
   onNextDialog<enumeration_dialog>([](enumeration_dialog * d) {
      type(d, "m_txtName", "Colour");
      type(d, "m_txtNamespace", "demo");
      addRow(d, "m_tblValues", "Red", "0");
      addRow(d, "m_tblValues", "Green", "1");
      ok(d);
   });
   m_pWnd->findChild<QAction *>("m_actNewEnumeration")->trigger();
   addEntity("Person", "t_person", "Someone who keeps pets");
   addProperty([](property_dialog * d) { type(d, "m_txtName", "id"); pick(d, "m_cboType", "long"); check(d, "m_chkPrimaryKey", true); });
   addProperty([](property_dialog * d) {
      type(d, "m_txtName", "name");
      check(d, "m_chkAllowNull", false);
      type(d, "m_txtMaxLength", "80");
   });
   addProperty([](property_dialog * d) { type(d, "m_txtName", "colour"); pick(d, "m_cboType", ""); pick(d, "m_cboEnumeration", "demo::Colour"); });
   addEntity("Pet", "t_pet", QString());
   addProperty([](property_dialog * d) { type(d, "m_txtName", "id"); pick(d, "m_cboType", "long"); check(d, "m_chkPrimaryKey", true); });
   addProperty([](property_dialog * d) { type(d, "m_txtName", "owner"); relation(d, "many-to-one", "demo::Person", QString()); });
   ASSERT_TRUE(m_pWnd->selectItem("demo::Person"));
   addProperty([](property_dialog * d) { type(d, "m_txtName", "pets"); relation(d, "one-to-many", "demo::Pet", "owner"); });
}

} // namespace

TEST_F(GuiEditModel, ModelBuiltInTheWindowExportsLikeTheSameJson)
{
   QDir().mkpath(m_tmp.filePath("lumor"));
   QDir().mkpath(m_tmp.filePath("gui"));
   QDir().mkpath(m_tmp.filePath("json"));
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("gui/pets.json"), "{ \"name\": \"PETS\" }\n"));
   ASSERT_TRUE(test_support::writeAll(m_tmp.filePath("json/pets.json"), k_sSameModel));
   ASSERT_TRUE(m_pWnd->openProject(m_tmp.filePath("gui/pets.json")).getValue());
   m_pWnd->activateWindow();
   ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
   buildPetsModel();
   if (HasFailure()) { return; }
   EXPECT_TRUE(m_pWnd->getProject()->checkSchema().isEmpty());
   key(m_pWnd->getModelTree(), Qt::Key_S, Qt::ControlModifier);
   ASSERT_FALSE(m_pWnd->isWindowModified());

   // The saved project holds the JSON document's model.
   model::project_ptr pSaved;
   model::project_ptr pJson;
   ASSERT_TRUE(storage::project_storage::loadProject(m_tmp.filePath("gui/pets.tavrel"), pSaved).getValue());
   ASSERT_TRUE(context::ctx_project::openProject(m_tmp.filePath("json/pets.json")).getValue());
   pJson = context::ctx_project::getProject();
   EXPECT_EQ(storage::project_storage::toJson(* pSaved).toStdString(), storage::project_storage::toJson(* pJson).toStdString());
   context::ctx_project::closeProject();

   exportModel(m_tmp.filePath("gui/pets.tavrel"), m_tmp.filePath("gui"));
   exportModel(m_tmp.filePath("json/pets.json"), m_tmp.filePath("json"));
   const QMap<QString, QString> gui = readTree(m_tmp.filePath("gui/out"));
   const QMap<QString, QString> json = readTree(m_tmp.filePath("json/out"));
   EXPECT_EQ(gui.keys(), json.keys());
   EXPECT_TRUE(gui.contains("include/demo_Person.gen.h")) << gui.keys().join(", ").toStdString();
   for (auto itr = gui.cbegin(); itr != gui.cend(); ++itr) { EXPECT_EQ(itr.value().toStdString(), json.value(itr.key()).toStdString()) << itr.key().toStdString(); }
}

TEST_F(GuiEditModel, DiagramFollowsEditsAndItsClicksSelect)
{
   openShop("shop::Customer");
   m_pWnd->getDiagramDock()->show();
   m_pWnd->getDiagramDock()->raise();
   desktop::diagram_view * pView = m_pWnd->getDiagramView();
   ASSERT_TRUE(pView);
   ASSERT_TRUE(waitForLayout(0));
   onNextDialog<entity_dialog>([](entity_dialog * d) { type(d, "m_txtName", "Coupon"); ok(d); });
   key(m_pWnd->getModelTree(), Qt::Key_Insert);
   ASSERT_TRUE(waitForLayout(pView->getLayoutCount()));
   EXPECT_TRUE(pView->getBoxKeys().contains("shop::Coupon")) << pView->getBoxKeys().join(", ").toStdString();
   undo();
   ASSERT_TRUE(waitForLayout(pView->getLayoutCount()));
   EXPECT_FALSE(pView->getBoxKeys().contains("shop::Coupon"));
   // A click on a box still selects its entity in the tree.
   Q_EMIT pView->entityClicked("shop::Product");
   ASSERT_TRUE(m_pWnd->getSelectedEntity());
   EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), "shop::Product");
}
