// The desktop export of a larger model: its progress dialog, Cancel pressed in the middle of it
// (each file then old or new, the record describing the directory as it is), the message lines
// listed as the export goes, and the message area's bounds.

#include <QDirIterator>
#include <QListWidget>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include <gtest/gtest.h>

#include "desktop/export_progress.h"
#include "gui/plugin/export_files.h"
#include "storage/export_record.h"
#include "test_gui_support.h"

namespace {

using gui_test::GuiFixture;

class GuiExportProgress : public GuiFixture
{
protected:
   // The dialog shows at the first turn, whatever the machine's speed.
   void SetUp() override { GuiFixture::SetUp(); desktop::export_progress::setShowAfterMs(0); }
   void TearDown() override { desktop::export_progress::setShowAfterMs(250); GuiFixture::TearDown(); }
};

// A model of iCount entities in one namespace, each pointing at an earlier one.
QByteArray chainModel(int iCount)
{
   QStringList lstEntities;
   for (int i = 0; i < iCount; ++i)
   {
      QString sProps = "{\"name\": \"id\", \"type\": \"long\", \"primary_key\": true}, {\"name\": \"label\", \"type\": \"QString\"}, "
                       "{\"name\": \"amount\", \"type\": \"double\"}";
      if (i > 0) { sProps += QString(", {\"name\": \"up\", \"relation\": {\"kind\": \"many_to_one\", \"target\": \"big::Item%1\", \"foreign_key\": \"up_id\"}}").arg((i - 1) / 2); }
      lstEntities << QString("{\"name\": \"Item%1\", \"namespace\": \"big\", \"properties\": [%2]}").arg(i).arg(sProps);
   }
   return QString("{\"name\": \"BIG\", \"entities\": [\n" + lstEntities.join(",\n") + "\n]}").toUtf8();
}

// Every file below root by relative path, the dated banner made comparable.
QMap<QString, QString> readTree(const QString & root)
{
   static const QRegularExpression rxDate("\\(\\d{4}/\\d{2}/\\d{2} \\d{2}:\\d{2}\\)");
   QMap<QString, QString> files;
   QDirIterator itr(root, QDir::Files, QDirIterator::Subdirectories);
   while (itr.hasNext())
   {
      const QString path = itr.next();
      if (path.endsWith(".lock")) { continue; }
      QString text = QString::fromUtf8(test_support::readAll(path));
      text.replace(rxDate, "(DATE)");
      files.insert(QDir(root).relativeFilePath(path), text);
   }
   return files;
}

int countLines(QListWidget * pList, const QString & sText)
{
   int n = 0;
   for (int i = 0; i < pList->count(); ++i) { n += (pList->item(i)->text().contains(sText) ? 1 : 0); }
   return n;
}

QMap<QString, QVariant> settings(int iStyle)
{
   return { { "CPP_EXPORT_PATH", QString("out") }, { "CPP_TEMPLATE", QVariant(static_cast<qint32>(iStyle)) }, { "GENERATE_CUSTOM_FILES", false } };
}

} // namespace

TEST_F(GuiExportProgress, ShowsFilesDoneAndCancelLeavesEachFileOldOrNewWithAConsistentRecord)
{
   ASSERT_NE(plugin(), nullptr);
   const int iEntities = 400;
   const QString sModel = m_tmp.filePath("big/model.json");
   QDir().mkpath(m_tmp.filePath("big/out"));
   ASSERT_TRUE(test_support::writeAll(sModel, chainModel(iEntities)));
   const QString sLumor = m_tmp.filePath("lumor");
   QDir().mkpath(sLumor);
   context::ctx_global::initGlobalParams(sLumor);
   ASSERT_TRUE(m_pWnd->openProject(sModel).getValue());

   // The old tree in one style; the settings then ask for another, so every entity file changes.
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), settings(0)));
   ASSERT_TRUE(m_pWnd->doActExport().getValue());
   const QMap<QString, QString> oldTree = readTree(m_tmp.filePath("big/out"));
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), settings(1)));
   m_pWnd->getMessageList()->clear();

   // Cancel is pressed once the dialog shows some files done, and the message area lists some
   // entities already.
   int iSeenDone = 0, iSeenTotal = 0, iLinesDuringExport = 0;
   QString sLabel;
   QTimer poll;
   poll.setInterval(5);
   QObject::connect(& poll, & QTimer::timeout, [&] {
      QProgressDialog * pDialog = m_pWnd->findChild<QProgressDialog *>("export_progress");
      if (! pDialog || ! pDialog->isVisible() || (pDialog->value() < 20) || (iSeenDone > 0)) { return; }
      iSeenDone = pDialog->value();
      iSeenTotal = pDialog->maximum();
      sLabel = pDialog->labelText();
      iLinesDuringExport = countLines(m_pWnd->getMessageList(), "exported to C++ class");
      QPushButton * pCancel = pDialog->findChild<QPushButton *>();
      ASSERT_TRUE(pCancel);
      QTest::mouseClick(pCancel, Qt::LeftButton);
   });
   poll.start();
   const zy::ZyBool result = m_pWnd->doActExport();
   poll.stop();
   EXPECT_FALSE(result.getValue());
   EXPECT_TRUE(result.getDesc().contains("cancelled")) << result.getDesc().toStdString();
   EXPECT_FALSE(m_pWnd->isExecutingPlugin());

   // The dialog showed the files done of the total (the last export's record).
   ASSERT_GT(iSeenDone, 0);
   EXPECT_EQ(iSeenTotal, int(oldTree.size()));
   EXPECT_TRUE(sLabel.contains(QString("of %1 files").arg(iSeenTotal))) << sLabel.toStdString();
   EXPECT_GT(iLinesDuringExport, 0);

   // Each file is as the first export left it or as the second writes it, some of each.
   const QMap<QString, QString> after = readTree(m_tmp.filePath("big/out"));
   test_support::cli_options options;
   options.configHome = m_tmp.filePath("config");
   const QString sProject = m_tmp.filePath("big/model.tavrel");
   EXPECT_EQ(after.keys(), oldTree.keys());
   int iOld = 0, iNew = 0;
   {
      // The record as the cancelled export left it: every entry is the file's present text.
      context::ctx_scoped scope;
      QSqlDatabase db = * scope.database();
      storage::export_record::files record;
      ASSERT_TRUE(storage::export_record::read(db, plugin()->getName(), QDir::cleanPath(m_tmp.filePath("big/out")), record).getValue());
      EXPECT_EQ(record.size(), oldTree.size());
      for (auto it = record.constBegin(); it != record.constEnd(); ++it)
      {
         QString text = QString::fromUtf8(test_support::readAll(m_tmp.filePath("big/out/" + it.key())));
         text.remove('\r');
         EXPECT_EQ(it.value(), plugin::export_files::hashOf(text)) << it.key().toStdString();
      }
   }
   // The command line finishes the export: it writes the files left old, removes nothing and
   // keeps nothing aside.
   const test_support::cli_result run = test_support::runTavrel({ "export", sProject, "--lumor-path", sLumor, "--yes" }, options);
   ASSERT_EQ(run.code, 0) << run.err.toStdString();
   const QMap<QString, QString> newTree = readTree(m_tmp.filePath("big/out"));
   for (auto it = after.constBegin(); it != after.constEnd(); ++it)
   {
      const bool bOld = (it.value() == oldTree.value(it.key()));
      const bool bNew = (it.value() == newTree.value(it.key()));
      EXPECT_TRUE(bOld || bNew) << it.key().toStdString();
      iOld += ((bOld && ! bNew) ? 1 : 0);
      iNew += ((bNew && ! bOld) ? 1 : 0);
   }
   EXPECT_GT(iOld, 0);
   EXPECT_GT(iNew, 0);
   const QString sOutput = run.out + run.err;
   EXPECT_TRUE(sOutput.contains(QRegularExpression(QString("%1 files: %2 written, \\d+ unchanged, 0 removed").arg(oldTree.size()).arg(iOld))))
      << sOutput.toStdString();
   EXPECT_FALSE(sOutput.contains("kept")) << sOutput.toStdString();
}

TEST_F(GuiExportProgress, ListsOneLinePerEntityAsTheExportGoes)
{
   ASSERT_NE(plugin(), nullptr);
   const int iEntities = 120;
   const QString sModel = m_tmp.filePath("m/model.json");
   QDir().mkpath(m_tmp.filePath("m/out"));
   ASSERT_TRUE(test_support::writeAll(sModel, chainModel(iEntities)));
   QDir().mkpath(m_tmp.filePath("lumor"));
   context::ctx_global::initGlobalParams(m_tmp.filePath("lumor"));
   ASSERT_TRUE(m_pWnd->openProject(sModel).getValue());
   ASSERT_TRUE(storeSettings(plugin()->getGuid(), settings(0)));
   ASSERT_TRUE(m_pWnd->doActExport().getValue());
   EXPECT_EQ(countLines(m_pWnd->getMessageList(), "exported to C++ class"), iEntities);
   EXPECT_EQ(countLines(m_pWnd->getMessageList(), "All entities have been exported"), 1);
}

TEST_F(GuiExportProgress, AMessageOfSeveralLinesIsOneItemPerLineOfItsKind)
{
   ASSERT_NE(plugin(), nullptr);
   QListWidget * pList = m_pWnd->getMessageList();
   const int iBefore = pList->count();
   Q_EMIT plugin()->onMessage("first line\nsecond line", 3, 1000);
   ASSERT_EQ(pList->count(), iBefore + 2);
   EXPECT_TRUE(pList->item(iBefore)->text().endsWith("first line"));
   EXPECT_EQ(pList->item(iBefore + 1)->text().trimmed(), "second line");
   for (int i : { iBefore, iBefore + 1 })
   {
      EXPECT_EQ(pList->item(i)->data(Qt::UserRole).toInt(), 3);
      EXPECT_EQ(pList->item(i)->toolTip(), "first line\nsecond line");
   }
}

TEST_F(GuiExportProgress, TheMessageAreaKeepsTheNewestLinesUpToItsBound)
{
   QListWidget * pList = m_pWnd->getMessageList();
   pList->clear();
   const int iBound = 20000;
   for (int i = 0; i < iBound + 50; ++i) { Q_EMIT plugin()->onMessage(QString("line %1").arg(i), 1, 0); }
   EXPECT_EQ(pList->count(), iBound);
   EXPECT_TRUE(pList->item(0)->text().endsWith(QString("line %1").arg(50)));
   EXPECT_TRUE(pList->item(pList->count() - 1)->text().endsWith(QString("line %1").arg(iBound + 49)));
}
