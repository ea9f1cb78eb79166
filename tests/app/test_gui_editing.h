#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QUndoStack>

#include <functional>

#include "desktop/item_dialog.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "test_gui_support.h"

namespace gui_test {

// Drives the model editors of the desktop host: a dialog is filled by a function run once it
// is shown (the editors are modal), and keys go to the widget that has the focus.
class GuiEditing : public GuiFixture
{
protected:
   void openShop(const QString & sKey = QString())
   {
      const zy::ZyBool ok = m_pWnd->openProject(copyShop("e"));
      ASSERT_TRUE(ok.getValue()) << ok.getDesc().toStdString();
      m_pWnd->activateWindow();
      ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
      if (! sKey.isEmpty()) { ASSERT_TRUE(m_pWnd->selectItem(sKey)); }
   }

   // Types a description into the selected item's field and applies it with Return.
   void editDescription(const QString & sKey, const QString & sText)
   {
      ASSERT_TRUE(m_pWnd->selectItem(sKey));
      QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
      pDescription->setFocus();
      pDescription->selectAll();
      QTest::keyClicks(pDescription, sText);
      QTest::keyClick(pDescription, Qt::Key_Return);
   }

   // fn gets the editor that opens next (looked for every 10 ms, for at most 10 s).
   template <typename T>
   static void onNextDialog(const std::function<void(T *)> & fn)
   {
      QTimer * pTimer = new QTimer();
      pTimer->setInterval(10);
      auto pTries = std::make_shared<int>(0);
      QObject::connect(pTimer, & QTimer::timeout, [fn, pTimer, pTries]() {
         T * pDialog = qobject_cast<T *>(QApplication::activeModalWidget());
         if (! pDialog && (++ (* pTries) < 1000)) { return; }
         pTimer->stop();
         pTimer->deleteLater();
         if (! pDialog) { ADD_FAILURE() << "no editor of the expected kind opened"; return; }
         fn(pDialog);
      });
      pTimer->start();
   }

   // Sends a key to a widget with the focus, as a user does.
   void key(QWidget * pWidget, int iKey, Qt::KeyboardModifiers mods = Qt::NoModifier)
   {
      // A closed editor leaves no window active on the offscreen platform.
      m_pWnd->activateWindow();
      ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWnd.get()));
      pWidget->setFocus();
      QTest::keyClick(pWidget, static_cast<Qt::Key>(iKey), mods);
   }

   // Replaces the text of a field by typing.
   static void type(QWidget * pDialog, const char * szName, const QString & sText)
   {
      QLineEdit * txt = pDialog->findChild<QLineEdit *>(szName);
      ASSERT_TRUE(txt) << szName;
      txt->setFocus();
      txt->selectAll();
      if (sText.isEmpty()) { QTest::keyClick(txt, Qt::Key_Delete); }
      else { QTest::keyClicks(txt, sText); }
   }

   static void pick(QWidget * pDialog, const char * szName, const QString & sText)
   {
      QComboBox * cbo = pDialog->findChild<QComboBox *>(szName);
      ASSERT_TRUE(cbo) << szName;
      if (cbo->isEditable()) { cbo->setCurrentText(sText); return; }
      const int i = cbo->findText(sText);
      ASSERT_GE(i, 0) << sText.toStdString();
      cbo->setCurrentIndex(i);
   }

   static void check(QWidget * pDialog, const char * szName, bool bOn)
   {
      QCheckBox * chk = pDialog->findChild<QCheckBox *>(szName);
      ASSERT_TRUE(chk) << szName;
      if (chk->isChecked() != bOn) { QTest::mouseClick(chk, Qt::LeftButton, Qt::NoModifier, QPoint(5, chk->height() / 2)); }
   }

   // Adds a row to a key/value table of an editor.
   static void addRow(QWidget * pDialog, const char * szTable, const QString & sKey, const QString & sValue)
   {
      QTableWidget * tbl = pDialog->findChild<QTableWidget *>(szTable);
      ASSERT_TRUE(tbl);
      QTest::mouseClick(pDialog->findChild<QPushButton *>(QString(szTable) + "_add"), Qt::LeftButton);
      const int iRow = tbl->rowCount() - 1;
      tbl->setItem(iRow, 0, new QTableWidgetItem(sKey));
      tbl->setItem(iRow, 1, new QTableWidgetItem(sValue));
   }

   static QPushButton * okButton(desktop::item_dialog * pDialog) { return pDialog->getButtons()->button(QDialogButtonBox::Ok); }
   static void ok(desktop::item_dialog * pDialog) { QTest::mouseClick(okButton(pDialog), Qt::LeftButton); }

   static QString problemOf(QWidget * pDialog, const char * szName)
   {
      QWidget * w = pDialog->findChild<QWidget *>(szName);
      return (w ? w->property(desktop::field_marks::k_szProblem).toString() : QString("<no field>"));
   }

   model::entity_ptr entity(const QString & sKey) const { return m_pWnd->getProject()->getEntityByKey(sKey); }
   model::enumeration_ptr enumeration(const QString & sKey) const { return m_pWnd->getProject()->getEnumerationByKey(sKey); }

   // Messages of the message area holding the text.
   int messagesWith(const QString & sText) const
   {
      int n = 0;
      QListWidget * pList = m_pWnd->getMessageList();
      for (int i = 0; i < pList->count(); ++i) { n += (pList->item(i)->text().contains(sText) ? 1 : 0); }
      return n;
   }

   void undo() { key(m_pWnd->getModelTree(), Qt::Key_Z, Qt::ControlModifier); }
   void redo() { key(m_pWnd->getModelTree(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
};

} // namespace gui_test
