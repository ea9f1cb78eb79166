// Times edits in the desktop host on generated models: one edit through the window (undo
// command, tree, property table, preview and the schema check), its undo and its
// redo, deleting a property and deleting an entity (the tree loses an item), with the window
// shown as a user has it.

#include <QApplication>
#include <QDockWidget>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "context/ctx_global.h"
#include "desktop/diagram_view.h"
#include "desktop/main_window.h"
#include "gui/tools/message_box.h"
#include "model/entity.h"
#include "model/global_params.h"
#include "model/project.h"
#include "model/property.h"
#include "model_generator.h"

namespace {

double median(std::vector<double> v)
{
   std::sort(v.begin(), v.end());
   return (v.empty() ? 0.0 : v.at(v.size() / 2));
}

// Milliseconds from the start of an edit until the window has handled every event it caused.
template <typename Fn> double timed(Fn fn)
{
   QElapsedTimer t;
   t.start();
   fn();
   QCoreApplication::processEvents();
   return t.nsecsElapsed() / 1e6;
}

struct figures { int n = 0; double openMs = 0, editMs = 0, undoMs = 0, redoMs = 0, deleteMs = 0, selectMs = 0, deleteEntityMs = 0, undoDeleteEntityMs = 0; };

figures run(int n, int iRepeat, const QString & sWork)
{
   figures f;
   f.n = n;
   bench::model_options opt;
   opt.entities = n;
   const QString sModel = sWork + QString("/editor_%1.json").arg(n);
   QFile file(sModel);
   if (! file.open(QIODevice::WriteOnly) || (file.write(bench::generateModelJson(opt)) <= 0)) { qFatal("cannot write %s", qPrintable(sModel)); }
   file.close();

   desktop::main_window w;
   w.resize(1280, 800);
   w.show();
   QCoreApplication::processEvents();
   // The Diagram where the window puts it, a tab behind the preview: it lays out only once it
   // is brought to the front, so an edit pays nothing for it.
   if (! w.getPreviewDock()) { qFatal("no preview: the plug-in was not found beside the program"); }
   w.getPreviewDock()->raise();
   QCoreApplication::processEvents();
   if (w.getDiagramView()->isShown()) { qFatal("the Diagram tab is in front"); }
   f.openMs = timed([&] { if (! w.openProject(sModel)) { qFatal("cannot open %s", qPrintable(sModel)); } });
   // An entity in the middle of the list, with its preview shown.
   const model::list_of_entity & lst = * w.getProject()->getListOfAllEntities();
   const QString sKey = lst.at(lst.size() / 2)->getKey();
   const QString sOtherKey = lst.at(lst.size() / 3)->getKey();
   QLineEdit * pDescription = w.findChild<QLineEdit *>("m_txtDescription");
   if (! pDescription) { qFatal("no description field"); }

   std::vector<double> vEdit, vUndo, vRedo, vDelete, vSelect, vDeleteEntity, vUndoDeleteEntity;
   for (int r = 0; r < iRepeat; ++r)
   {
      vSelect.push_back(timed([&] { w.selectItem((r % 2) ? sOtherKey : sKey); }));
      w.selectItem(sKey);
      QCoreApplication::processEvents();
      pDescription->setText(QString("Edited description %1").arg(r));
      vEdit.push_back(timed([&] { w.doBtnApplyDetails(); }));
      vUndo.push_back(timed([&] { w.getUndoStack()->undo(); }));
      vRedo.push_back(timed([&] { w.getUndoStack()->redo(); }));
      model::entity_ptr pEntity = w.getSelectedEntity();
      model::property_ptr pVictim;
      for (const model::property_ptr & p : pEntity->getOwnProperties()) { if (! p->isPrimaryKey()) { pVictim = p; } }
      if (pVictim)
      {
         vDelete.push_back(timed([&] { w.deleteProperty(pEntity, pVictim); }));
         w.getUndoStack()->undo();
         QCoreApplication::processEvents();
      }
      // An entity removed and put back: the tree loses and gets back an item.
      vDeleteEntity.push_back(timed([&] { w.deleteEntity(w.getSelectedEntity()); }));
      vUndoDeleteEntity.push_back(timed([&] { w.getUndoStack()->undo(); }));
   }
   f.editMs = median(vEdit);
   f.undoMs = median(vUndo);
   f.redoMs = median(vRedo);
   f.deleteMs = median(vDelete);
   f.selectMs = median(vSelect);
   f.deleteEntityMs = median(vDeleteEntity);
   f.undoDeleteEntityMs = median(vUndoDeleteEntity);
   if (w.getDiagramView()->getLayoutCount() != 0) { qFatal("the hidden Diagram was laid out"); }
   // Nothing is saved: the window is left without asking.
   w.getUndoStack()->setClean();
   return f;
}

} // namespace

int main(int argc, char ** argv)
{
   QApplication app(argc, argv);
   QCoreApplication::setApplicationName("tavrel_editor_bench");
   tools::message_box::setUnattended(true);
   tools::message_box::setPrintUnattended(false);

   QCommandLineParser parser;
   parser.setApplicationDescription("Speed of model edits in the desktop host on synthetic models.");
   parser.addHelpOption();
   QCommandLineOption optSizes("sizes", "Entity counts, comma separated (default 100,1000,5000).", "list");
   QCommandLineOption optRepeat("repeat", "Edits per figure; the median is reported (default 9).", "n");
   parser.addOptions({ optSizes, optRepeat });
   parser.process(app);
   QList<int> sizes { 100, 1000, 5000 };
   if (parser.isSet(optSizes))
   {
      sizes.clear();
      for (const QString & v : parser.value(optSizes).split(',', Qt::SkipEmptyParts)) { sizes.append(v.toInt()); }
   }
   const int iRepeat = (parser.isSet(optRepeat) ? std::max(1, parser.value(optRepeat).toInt()) : 9);

   // The plug-in of the build tree gives the preview; the user's own settings stay out.
   QTemporaryDir tmp;
   qputenv("TAVREL_PLUGIN_DIR", (QCoreApplication::applicationDirPath() + "/plugins").toLocal8Bit());
   context::ctx_global::setSettingsFile(tmp.filePath("settings.ini"));
   context::ctx_global::setGlobalParams(std::make_shared<model::global_params>());

   std::printf("| N | open ms | select ms | edit description ms | undo ms | redo ms | delete property ms | delete entity ms | undo delete entity ms |\n");
   std::printf("|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
   for (int n : sizes)
   {
      const figures f = run(n, iRepeat, tmp.path());
      std::printf("| %d | %.0f | %.1f | %.1f | %.1f | %.1f | %.1f | %.1f | %.1f |\n", f.n, f.openMs, f.selectMs, f.editMs, f.undoMs, f.redoMs, f.deleteMs, f.deleteEntityMs, f.undoDeleteEntityMs);
      std::fflush(stdout);
   }
   return 0;
}
