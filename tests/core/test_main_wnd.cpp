#include <QCoreApplication>
#include <QMetaType>
#include <QVariant>

#include <gtest/gtest.h>

#include "model/entity.h"
#include "model/project.h"
#include "gui/view/main_wnd.h"

TEST(MainWndAppArg, EveryForm)
{
   view::main_wnd wnd;
   wnd.setAppArgs({"tavrel", "export", "--path=/out", "--empty=", "--flag", "--next", "value", "--path", "/second",
                   "--path", "--other", "--last"});
   EXPECT_EQ(wnd.getAppArg("--path"), (QStringList{"/out", "/second", ""}));
   EXPECT_EQ(wnd.getAppArg("--empty"), QStringList{QString()});
   EXPECT_EQ(wnd.getAppArg("--flag"), QStringList{QString()});
   EXPECT_EQ(wnd.getAppArg("--next"), QStringList{"value"});
   EXPECT_EQ(wnd.getAppArg("--last"), QStringList{QString()});
   EXPECT_TRUE(wnd.getAppArg("--missing").isEmpty());
   // The dashes may be left out of the name.
   EXPECT_EQ(wnd.getAppArg("next"), QStringList{"value"});
   // A longer option is not the same option.
   EXPECT_TRUE(wnd.getAppArg("--pat").isEmpty());
}

TEST(MainWndAppArg, PluginOptions)
{
   view::main_wnd wnd;
   wnd.setAppArgs({"tavrel", "export", "shop.json", "--TavrelCppExport_path=out dir", "--TavrelCppExport_generate_pimpl", "1"});
   EXPECT_EQ(wnd.getAppArg("--TavrelCppExport_path"), QStringList{"out dir"});
   EXPECT_EQ(wnd.getAppArg("--TavrelCppExport_generate_pimpl"), QStringList{"1"});
   EXPECT_TRUE(wnd.getAppArg("--TavrelCppExport_template_type").isEmpty());
}

TEST(MainWndAppArg, ExecutingPluginFlag)
{
   view::main_wnd wnd;
   EXPECT_FALSE(wnd.isExecutingPlugin());
   wnd.setExecutingPlugin(true);
   EXPECT_TRUE(wnd.isExecutingPlugin());
}

TEST(MainWndSignals, ModelPointersTravelThroughQueuedSignals)
{
   view::main_wnd wnd;
   EXPECT_TRUE(QMetaType::fromName("model::project_ptr").isValid());
   EXPECT_TRUE(QMetaType::fromName("model::entity_ptr").isValid());
   EXPECT_TRUE(QMetaType::fromName("model::enumeration_ptr").isValid());

   auto entity = std::make_shared<model::entity>();
   entity->setName("Order");
   QObject receiver;
   model::entity_ptr received;
   QObject::connect(& wnd, & view::main_wnd::onSelectEntity, & receiver,
                    [& received](model::entity_ptr p) { received = p; }, Qt::QueuedConnection);
   Q_EMIT wnd.onSelectEntity(entity);
   EXPECT_EQ(received, nullptr);
   QCoreApplication::processEvents();
   EXPECT_EQ(received, entity);

   const QVariant v = QVariant::fromValue(entity);
   EXPECT_EQ(v.value<model::entity_ptr>(), entity);
}
