// The desktop host's Diagram view: every entity drawn, the link with the model tree both ways,
// the namespace filter, zoom.

#include <QComboBox>
#include <QDockWidget>
#include <QApplication>
#include <QGraphicsView>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <QTest>

#include <gtest/gtest.h>

#include "desktop/diagram_view.h"
#include "model/entity.h"
#include "model/project.h"
#include "test_gui_support.h"

namespace {

class GuiDiagram : public gui_test::GuiFixture
{
protected:
   desktop::diagram_view * m_pView = nullptr;

   void openShop()
   {
      const zy::ZyBool ok = m_pWnd->openProject(copyShop("d"));
      ASSERT_TRUE(ok) << ok.getDesc().toStdString();
      m_pWnd->getDiagramDock()->show();
      m_pWnd->getDiagramDock()->raise();
      m_pView = m_pWnd->getDiagramView();
      ASSERT_TRUE(m_pView);
      ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWnd.get()));
      ASSERT_TRUE(waitForLayout(0));
   }

   QString currentTreeKey() const
   {
      QTreeWidgetItem * p = m_pWnd->getModelTree()->currentItem();
      return (p ? p->data(0, desktop::main_window::k_roleKey).toString() : QString());
   }
};

} // namespace

TEST_F(GuiDiagram, DrawsEveryEntityOfTheModelOnceShown)
{
   openShop();
   QStringList keys = m_pView->getBoxKeys();
   keys.sort();
   QStringList expected;
   for (const auto & e : * m_pWnd->getProject()->getListOfAllEntities()) { expected << e->getKey(); }
   expected.sort();
   EXPECT_EQ(keys, expected);
   for (const QString & k : keys) { EXPECT_FALSE(m_pView->getBoxRect(k).isEmpty()) << k.toStdString(); }
}

TEST_F(GuiDiagram, ClickOnABoxSelectsTheEntityInTheTree)
{
   openShop();
   QGraphicsView * pView = m_pView->getView();
   for (const QString & key : { QString("shop::sales::Order"), QString("shop::Product") })
   {
      pView->centerOn(m_pView->getBoxRect(key).center());
      const QPoint at = pView->mapFromScene(m_pView->getBoxRect(key).center());
      ASSERT_TRUE(pView->viewport()->rect().contains(at));
      QTest::mouseClick(pView->viewport(), Qt::LeftButton, Qt::NoModifier, at);
      EXPECT_EQ(currentTreeKey(), key);
      ASSERT_TRUE(m_pWnd->getSelectedEntity());
      EXPECT_EQ(m_pWnd->getSelectedEntity()->getKey(), key);
   }
}

TEST_F(GuiDiagram, TreeSelectionMarksAndCentresTheBox)
{
   openShop();
   QGraphicsView * pView = m_pView->getView();
   pView->resetTransform();
   pView->scale(2.0, 2.0);
   for (const QString & key : { QString("shop::Base"), QString("shop::Customer") })
   {
      ASSERT_TRUE(m_pWnd->selectItem(key));
      EXPECT_EQ(m_pView->getSelectedKey(), key);
      const QPointF centre = pView->mapToScene(pView->viewport()->rect().center());
      const QRectF box = m_pView->getBoxRect(key);
      // Centred as far as the scene's border allows: the box is inside the visible part.
      EXPECT_TRUE(pView->mapToScene(pView->viewport()->rect()).boundingRect().intersects(box)) << key.toStdString();
      EXPECT_LT(QLineF(centre, box.center()).length(), pView->mapToScene(pView->viewport()->rect()).boundingRect().width()) << key.toStdString();
   }
}

TEST_F(GuiDiagram, NamespaceFilterKeepsItsEntities)
{
   openShop();
   QComboBox * pFilter = m_pView->getNamespaceFilter();
   const int i = pFilter->findData("shop::sales");
   ASSERT_GE(i, 0);
   const int iLayouts = m_pView->getLayoutCount();
   pFilter->setCurrentIndex(i);
   ASSERT_TRUE(waitForLayout(iLayouts));
   EXPECT_EQ(m_pView->getLayoutCount(), iLayouts + 1);
   QStringList keys = m_pView->getBoxKeys();
   keys.sort();
   EXPECT_EQ(keys, QStringList({ "shop::sales::Invoice", "shop::sales::Order", "shop::sales::OrderItem" }));
   pFilter->setCurrentIndex(0);
   ASSERT_TRUE(waitForLayout(iLayouts + 1));
   EXPECT_EQ(m_pView->getBoxKeys().size(), m_pWnd->getProject()->getListOfAllEntities()->size());
}

TEST_F(GuiDiagram, KeysAndCtrlWheelZoom)
{
   openShop();
   QGraphicsView * pView = m_pView->getView();
   pView->resetTransform();
   pView->setFocus();
   QTest::keyClick(pView, Qt::Key_Plus);
   EXPECT_DOUBLE_EQ(pView->transform().m11(), 1.25);
   QTest::keyClick(pView, Qt::Key_Minus);
   EXPECT_DOUBLE_EQ(pView->transform().m11(), 1.0);
}

TEST_F(GuiDiagram, BehindThePreviewTabNoEditIsLaidOutUntilShown)
{
   const zy::ZyBool ok = m_pWnd->openProject(copyShop("d"));
   ASSERT_TRUE(ok) << ok.getDesc().toStdString();
   ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWnd.get()));
   m_pView = m_pWnd->getDiagramView();
   ASSERT_TRUE(m_pWnd->getPreviewDock());
   // The Diagram as the window opens: a tab behind the preview.
   m_pWnd->getPreviewDock()->raise();
   QCoreApplication::processEvents();
   EXPECT_FALSE(m_pView->isShown());
   const int iBefore = m_pView->getLayoutCount();
   ASSERT_TRUE(m_pWnd->selectItem("shop::Customer"));
   m_pWnd->deleteProperty(m_pWnd->getSelectedEntity(), m_pWnd->getSelectedEntity()->getPropertyByName("vip"));
   m_pWnd->getUndoStack()->undo();
   m_pWnd->getUndoStack()->redo();
   // Longer than the moment a shown diagram waits after an edit: no layout came.
   QTest::qWait(300);
   EXPECT_EQ(m_pView->getLayoutCount(), iBefore);
   // Brought to the front: one layout for the three edits, with the edited model.
   m_pWnd->getDiagramDock()->raise();
   ASSERT_TRUE(waitForLayout(iBefore));
   EXPECT_TRUE(m_pView->isShown());
   QTest::qWait(300);
   EXPECT_EQ(m_pView->getLayoutCount(), iBefore + 1);
   EXPECT_TRUE(m_pView->getBoxKeys().contains("shop::Customer"));
   // Behind the preview again, an edit waits for the next time it is shown.
   m_pWnd->getPreviewDock()->raise();
   m_pWnd->getUndoStack()->undo();
   QTest::qWait(300);
   EXPECT_EQ(m_pView->getLayoutCount(), iBefore + 1);
}

namespace {

// One namespace of iCount entities in a tree of relations: far wider than any window once laid out.
QByteArray wideModel(int iCount)
{
   QStringList lstEntities;
   for (int i = 0; i < iCount; ++i)
   {
      QString sProps = "{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}, {\"name\": \"label\", \"type\": \"QString\"}";
      if (i > 0) { sProps += QString(", {\"name\": \"up\", \"relation\": {\"kind\": \"many_to_one\", \"target\": \"wide::Node%1\", \"foreign_key\": \"up_id\"}}").arg((i - 1) / 4); }
      lstEntities << QString("{\"name\": \"Node%1\", \"namespace\": \"wide\", \"properties\": [%2]}").arg(i).arg(sProps);
   }
   return QString("{\"name\": \"WIDE\", \"entities\": [\n" + lstEntities.join(",\n") + "\n]}").toUtf8();
}

class GuiDiagramLarge : public GuiDiagram
{
protected:
   void openWide(int iCount)
   {
      const QString sModel = m_tmp.filePath("w/wide.json");
      QDir().mkpath(m_tmp.filePath("w"));
      ASSERT_TRUE(test_support::writeAll(sModel, wideModel(iCount)));
      const zy::ZyBool ok = m_pWnd->openProject(sModel);
      ASSERT_TRUE(ok) << ok.getDesc().toStdString();
      m_pWnd->resize(1000, 700);
      m_pWnd->getDiagramDock()->show();
      m_pWnd->getDiagramDock()->raise();
      m_pView = m_pWnd->getDiagramView();
      ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWnd.get()));
      ASSERT_TRUE(QTest::qWaitFor([&] { return (m_pView->getBoxKeys().size() == iCount); }, 60000));
   }
};

} // namespace

TEST_F(GuiDiagramLarge, FitStaysLegibleAndTheZoomKeysStillWorkAfterIt)
{
   openWide(150);
   QGraphicsView * pView = m_pView->getView();
   pView->setFocus();
   QTest::keyClick(pView, Qt::Key_0);
   const double dFitted = m_pView->scale();
   EXPECT_GE(dFitted, desktop::diagram_view::k_dMinFitScale);
   // Larger than the window at that scale: scroll bars to reach the rest.
   EXPECT_GT(pView->horizontalScrollBar()->maximum(), 0);
   QTest::keyClick(pView, Qt::Key_Plus);
   EXPECT_GT(m_pView->scale(), dFitted);
   QTest::keyClick(pView, Qt::Key_Minus);
   QTest::keyClick(pView, Qt::Key_Minus);
   EXPECT_LT(m_pView->scale(), dFitted);
   // Zoomed out as far as it goes, the keys still lead back in.
   for (int i = 0; i < 40; ++i) { QTest::keyClick(pView, Qt::Key_Minus); }
   const double dSmallest = m_pView->scale();
   EXPECT_GE(dSmallest, desktop::diagram_view::k_dMinScale);
   QTest::keyClick(pView, Qt::Key_Plus);
   EXPECT_GT(m_pView->scale(), dSmallest);
   QWheelEvent wheel(QPointF(50, 50), pView->viewport()->mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::ControlModifier,
                     Qt::NoScrollPhase, false);
   const double dBeforeWheel = m_pView->scale();
   QApplication::sendEvent(pView->viewport(), & wheel);
   EXPECT_GT(m_pView->scale(), dBeforeWheel);
}

TEST_F(GuiDiagramLarge, AClickInTheTreeCentresTheBoxAfterAFit)
{
   openWide(150);
   QGraphicsView * pView = m_pView->getView();
   pView->setFocus();
   QTest::keyClick(pView, Qt::Key_0);
   QTreeWidget * pTree = m_pWnd->getModelTree();
   for (const QString & key : { QString("wide::Node75"), QString("wide::Node140") })
   {
      QTreeWidgetItem * pItem = nullptr;
      for (QTreeWidgetItemIterator itr(pTree); * itr; ++itr)
      {
         if ((* itr)->data(0, desktop::main_window::k_roleKey).toString() == key) { pItem = * itr; }
      }
      ASSERT_TRUE(pItem);
      pTree->scrollToItem(pItem);
      QTest::mouseClick(pTree->viewport(), Qt::LeftButton, Qt::NoModifier, pTree->visualItemRect(pItem).center());
      ASSERT_EQ(m_pView->getSelectedKey(), key);
      const QPointF centre = pView->mapToScene(pView->viewport()->rect().center());
      const QRectF box = m_pView->getBoxRect(key);
      // Across, the box is in the middle (the picture is far wider than the view); up and down
      // the picture is not much higher than the view: the box is inside it.
      EXPECT_LT(qAbs(centre.x() - box.center().x()), box.width() / 2) << key.toStdString();
      EXPECT_TRUE(pView->mapToScene(pView->viewport()->rect()).boundingRect().contains(box)) << key.toStdString();
   }
}

TEST_F(GuiDiagramLarge, TheWindowKeepsTurningWhileALayoutRunsAndShowsTheFormerPicture)
{
   openWide(250);
   const QStringList lstBefore = m_pView->getBoxKeys();
   int iTicksWhileLayingOut = 0;
   int iLayingOutWithFormerPicture = 0;
   QTimer timer;
   timer.setInterval(1);
   QObject::connect(& timer, & QTimer::timeout, [&] {
      if (! m_pView->isLayingOut()) { return; }
      ++iTicksWhileLayingOut;
      iLayingOutWithFormerPicture += ((m_pView->getBoxKeys().size() == lstBefore.size()) ? 1 : 0);
   });
   timer.start();
   // An edit (a leaf: nothing refers to it): the diagram is laid out again a moment later.
   const int iLayouts = m_pView->getLayoutCount();
   ASSERT_TRUE(m_pWnd->selectItem("wide::Node200"));
   m_pWnd->deleteEntity(m_pWnd->getSelectedEntity());
   ASSERT_TRUE(waitForLayout(iLayouts));
   timer.stop();
   EXPECT_GT(iTicksWhileLayingOut, 0);
   EXPECT_EQ(iLayingOutWithFormerPicture, iTicksWhileLayingOut);
   EXPECT_EQ(m_pView->getBoxKeys().size(), lstBefore.size() - 1);
   EXPECT_FALSE(m_pView->getBoxKeys().contains("wide::Node200"));
}

TEST_F(GuiDiagramLarge, AnEditDuringALayoutIsDrawnOnceThatLayoutEnds)
{
   openWide(250);
   const int iBoxes = int(m_pView->getBoxKeys().size());
   ASSERT_TRUE(m_pWnd->selectItem("wide::Node200"));
   m_pWnd->deleteEntity(m_pWnd->getSelectedEntity());
   ASSERT_TRUE(QTest::qWaitFor([&] { return m_pView->isLayingOut(); }, 10000));
   // The second edit comes while the first one's layout runs, and asks for its own at once.
   ASSERT_TRUE(m_pWnd->selectItem("wide::Node201"));
   m_pWnd->deleteEntity(m_pWnd->getSelectedEntity());
   ASSERT_TRUE(m_pView->isLayingOut());
   m_pView->rebuild();
   ASSERT_TRUE(QTest::qWaitFor([&] { return (m_pView->getBoxKeys().size() == iBoxes - 2); }, 30000));
   EXPECT_FALSE(m_pView->getBoxKeys().contains("wide::Node200"));
   EXPECT_FALSE(m_pView->getBoxKeys().contains("wide::Node201"));
}
