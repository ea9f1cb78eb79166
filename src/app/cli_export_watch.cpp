#include "cli_host.h"

#include <QCryptographicHash>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QMap>
#include <QTimer>

#include <csignal>

#include "context/ctx_project.h"
#include "tools/terminal_text.h"

namespace app {

namespace {

volatile std::sig_atomic_t g_iStopWatching = 0;

extern "C" void stopWatching(int) { g_iStopWatching = 1; }

// The files a watch follows: the model, and every existing file a plug-in parameter names (the
// user script, custom templates).
QStringList watchedFiles(const QString & model, const QStringList & allArgs)
{
   QStringList lst { QFileInfo(model).absoluteFilePath() };
   const QString sBase = QFileInfo(model).absolutePath();
   for (const QString & a : allArgs)
   {
      if (! a.startsWith(QLatin1String("--")) || ! a.contains('=') || ! a.section('=', 0, 0).contains('_')) { continue; }
      const QString sValue = a.section('=', 1);
      const QFileInfo info(QFileInfo(sValue).isAbsolute() ? sValue : (sBase + '/' + sValue));
      if (info.isFile()) { lst.append(info.absoluteFilePath()); }
   }
   lst.removeDuplicates();
   return lst;
}

// What each watched file holds: a save that changes nothing starts no export.
typedef QMap<QString, QByteArray> file_state;

file_state fingerprint(const QStringList & lstFiles)
{
   file_state state;
   for (const QString & sFile : lstFiles)
   {
      QFile file(sFile);
      state.insert(sFile, file.open(QIODevice::ReadOnly) ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1) : QByteArray("\0missing", 8));
   }
   return state;
}

file_state united(file_state a, const file_state & b)
{
   a.insert(b);
   return a;
}

} // namespace

int cli_host::cmdWatch(const QStringList & positional, const QStringList & allArgs, const export_flags & flags)
{
   if (positional.size() != 1) { return usageError("export needs exactly one PROJECT"); }
   QStringList lstFiles = watchedFiles(positional.at(0), allArgs);
   g_iStopWatching = 0;
   auto previousInt = std::signal(SIGINT, stopWatching);
   auto previousTerm = std::signal(SIGTERM, stopWatching);

   QFileSystemWatcher watcher;
   file_state lastSeen;
   QTimer debounce;
   debounce.setSingleShot(true);
   debounce.setInterval(300);
   // An editor that saves by writing a new file and renaming it over the old one ends the watch
   // of the file: the folder is watched too, and the file watched again after each change.
   auto rewatch = [&]()
   {
      for (const QString & sFile : lstFiles)
      {
         if (QFileInfo::exists(sFile) && ! watcher.files().contains(sFile)) { watcher.addPath(sFile); }
         const QString sDir = QFileInfo(sFile).absolutePath();
         if (! watcher.directories().contains(sDir)) { watcher.addPath(sDir); }
      }
   };
   // The sources are read before the export, so that a save during it starts another one; a
   // project file after it, as the export writes its record there.
   QStringList lstSources, lstProjectFiles;
   for (const QString & sFile : lstFiles) { (sFile.endsWith(QLatin1String(".tavrel")) ? lstProjectFiles : lstSources).append(sFile); }
   auto current = [&]() { return united(fingerprint(lstSources), fingerprint(lstProjectFiles)); };
   auto exportOnce = [&]()
   {
      file_state before = fingerprint(lstSources);
      cmdExport(positional, allArgs, flags);
      // Files the plug-in read on its own (a user script of the stored settings) are followed
      // from now on, as they were when it read them.
      for (const QString & sInput : m_lstLastInputs)
      {
         if (lstFiles.contains(sInput)) { continue; }
         lstFiles.append(sInput);
         lstSources.append(sInput);
         before.insert(fingerprint({ sInput }));
      }
      lastSeen = united(before, fingerprint(lstProjectFiles));
      rewatch();
      // A save while the files were not watched yet gave no event.
      if (current() != lastSeen) { debounce.start(); }
      m_out << "Watching " << lstFiles.size() << " file(s) for changes (Ctrl+C ends)\n";
      m_out.flush();
   };

   QObject::connect(& watcher, & QFileSystemWatcher::fileChanged, & debounce, qOverload<>(& QTimer::start));
   QObject::connect(& watcher, & QFileSystemWatcher::directoryChanged, & debounce, qOverload<>(& QTimer::start));
   QObject::connect(& debounce, & QTimer::timeout, [&]()
   {
      rewatch();
      if (current() != lastSeen) { exportOnce(); }
   });
   QEventLoop loop;
   QTimer interrupted;
   interrupted.setInterval(100);
   QObject::connect(& interrupted, & QTimer::timeout, & loop, [&]() { if (g_iStopWatching) { loop.quit(); } });

   exportOnce();
   interrupted.start();
   loop.exec();
   std::signal(SIGINT, previousInt);
   std::signal(SIGTERM, previousTerm);
   m_out << "Watch ended\n";
   m_out.flush();
   return exit_ok;
}

} // namespace app
