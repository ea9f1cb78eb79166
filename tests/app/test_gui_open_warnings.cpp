#include <QListWidget>

#include "test_gui_support.h"

using namespace gui_test;

namespace {

class GuiOpenWarnings : public GuiFixture
{
protected:
   int countMessages(const QString & sText) const
   {
      int iCount = 0;
      QListWidget * pList = m_pWnd->getMessageList();
      for (int i = 0; i < pList->count(); ++i) { if (pList->item(i)->text().contains(sText)) { ++iCount; } }
      return iCount;
   }
};

} // namespace

// The example opens without a warning while the project's PIMPL setting is off.
TEST_F(GuiOpenWarnings, PimplWarningsOnlyWithThePimplSettingOn)
{
   const QString sModel = copyShop("p");
   ASSERT_TRUE(m_pWnd->openProject(sModel).getValue());
   EXPECT_EQ(countMessages("Schema warning"), 0);

   ASSERT_NE(plugin(), nullptr);
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), { { "GENERATE_PIMPL", QVariant(true) } }));
   m_pWnd->getMessageList()->clear();
   ASSERT_TRUE(m_pWnd->openProject(m_tmp.filePath("p/shop.tavrel")).getValue());
   EXPECT_EQ(countMessages("Schema warning"), 5);
   EXPECT_EQ(countMessages("with the PIMPL idiom on"), 5);
}
