// The main window's keys: no key is bound twice where it works, and the standard keys of the
// platform do what their names say.

#include <QFileDialog>
#include <QMap>
#include <QShortcut>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "desktop/help_window.h"
#include "test_gui_editing.h"

namespace {

class GuiShortcuts : public gui_test::GuiEditing
{
protected:
   // Where a shortcut works: the widget of a widget-wide one, the window otherwise.
   static const QObject * scopeOf(QAction * pAction)
   {
      if ((pAction->shortcutContext() == Qt::WidgetShortcut) || (pAction->shortcutContext() == Qt::WidgetWithChildrenShortcut))
      {
         const QList<QObject *> lst = pAction->associatedObjects();
         return (lst.isEmpty() ? pAction : lst.constFirst());
      }
      return nullptr;
   }

   // Every binding of the window, its menus and its docks: "key" -> names of what it triggers,
   // one name for each time it is bound.
   QMap<QPair<const QObject *, QString>, QStringList> bindings() const
   {
      QMap<QPair<const QObject *, QString>, QStringList> map;
      for (QAction * pAction : m_pWnd->findChildren<QAction *>())
      {
         const QString sName = (pAction->objectName().isEmpty() ? pAction->text() : pAction->objectName());
         for (const QKeySequence & k : pAction->shortcuts())
         {
            if (! k.isEmpty()) { map[{ scopeOf(pAction), k.toString() }].append(sName); }
         }
      }
      for (QShortcut * pShortcut : m_pWnd->findChildren<QShortcut *>())
      {
         const QObject * pScope = (pShortcut->context() == Qt::WindowShortcut) ? nullptr : pShortcut->parent();
         for (const QKeySequence & k : pShortcut->keys()) { map[{ pScope, k.toString() }].append("shortcut " + pShortcut->objectName()); }
      }
      return map;
   }

   void editDescription(const QString & sText)
   {
      QLineEdit * pDescription = m_pWnd->findChild<QLineEdit *>("m_txtDescription");
      pDescription->setFocus();
      pDescription->selectAll();
      QTest::keyClicks(pDescription, sText);
      QTest::keyClick(pDescription, Qt::Key_Return);
   }

   // The platform's key, or the usual one where it binds none.
   static QKeySequence standard(QKeySequence::StandardKey k, const QKeySequence & usual = QKeySequence())
   {
      return QKeySequence::keyBindings(k).value(0, usual);
   }

   // Presses a key sequence of one key combination on the model tree, as a user does.
   void press(const QKeySequence & k)
   {
      ASSERT_FALSE(k.isEmpty());
      const QKeyCombination c = k[0];
      key(m_pWnd->getModelTree(), c.key(), c.keyboardModifiers());
   }
};

} // namespace

TEST_F(GuiShortcuts, NoKeyIsBoundTwiceWhereItWorks)
{
   openShop("shop::Customer");
   const auto map = bindings();
   ASSERT_FALSE(map.isEmpty());
   for (auto itr = map.cbegin(); itr != map.cend(); ++itr)
   {
      EXPECT_EQ(itr.value().size(), 1) << itr.key().second.toStdString() << " : " << itr.value().join(", ").toStdString();
   }
   // The usual keys are there, each once.
   const QObject * pWindow = nullptr;
   for (const char * sz : { "Ctrl+Z", "Ctrl+Shift+Z", "Ctrl+Y", "Ctrl+N", "Ctrl+O", "Ctrl+S", "Ctrl+Shift+S", "Ctrl+F", "F1", "Ctrl+E" })
   {
      EXPECT_TRUE(map.contains({ pWindow, QString::fromLatin1(sz) })) << sz;
   }
   EXPECT_EQ(map.value({ pWindow, "Ctrl+Y" }), QStringList { "m_actRedo" });
   EXPECT_EQ(map.value({ pWindow, "Ctrl+Shift+Z" }), QStringList { "m_actRedo" });
}

TEST_F(GuiShortcuts, StandardKeysDoWhatTheySay)
{
   openShop("shop::Customer");
   editDescription("Buyers");
   ASSERT_EQ(entity("shop::Customer")->getDescription(), "Buyers");
   press(standard(QKeySequence::Undo));
   EXPECT_NE(entity("shop::Customer")->getDescription(), "Buyers");
   press(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
   EXPECT_EQ(entity("shop::Customer")->getDescription(), "Buyers");
   press(standard(QKeySequence::Undo));
   press(QKeySequence(Qt::CTRL | Qt::Key_Y));
   EXPECT_EQ(entity("shop::Customer")->getDescription(), "Buyers");
   EXPECT_EQ(m_pWnd->getUndoStack()->index(), 1);

   EXPECT_TRUE(m_pWnd->isWindowModified());
   press(standard(QKeySequence::Save));
   EXPECT_FALSE(m_pWnd->isWindowModified());

   press(standard(QKeySequence::Find));
   EXPECT_EQ(QApplication::focusWidget(), m_pWnd->getFilterField());

   bool bNewAsked = false;
   onNextDialog<QDialog>([&bNewAsked](QDialog * d) { bNewAsked = (d->objectName() == "new_project_dialog"); d->reject(); });
   press(standard(QKeySequence::New));
   EXPECT_TRUE(bNewAsked);

   bool bSaveAsAsked = false;
   onNextDialog<QFileDialog>([&bSaveAsAsked](QFileDialog * d) { bSaveAsAsked = (d->acceptMode() == QFileDialog::AcceptSave); d->reject(); });
   press(standard(QKeySequence::SaveAs, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)));
   EXPECT_TRUE(bSaveAsAsked);

   press(standard(QKeySequence::HelpContents));
   ASSERT_TRUE(m_pWnd->getHelpOpener()->getWindow());
   EXPECT_TRUE(m_pWnd->getHelpOpener()->getWindow()->isVisible());
   m_pWnd->getHelpOpener()->getWindow()->hide();
}
