#include "cli_host.h"

#include <QCryptographicHash>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
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

// What the watched files hold: a save that changes nothing starts no export.
QByteArray fingerprint(const QStringList & lstFiles)
{
   QCryptographicHash hash(QCryptographicHash::Sha1);
   for (const QString & sFile : lstFiles)
   {
      QFile file(sFile);
      hash.addData(sFile.toUtf8());
      hash.addData(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("\0missing", 8));
   }
   return hash.result();
}

} // namespace

int cli_host::cmdWatch(const QStringList & positional, const QStringList & allArgs, const export_flags & flags)
{
   if (positional.size() != 1) { return usageError("export needs exactly one PROJECT"); }
   const QStringList lstFiles = watchedFiles(positional.at(0), allArgs);
   g_iStopWatching = 0;
   auto previousInt = std::signal(SIGINT, stopWatching);
   auto previousTerm = std::signal(SIGTERM, stopWatching);

   QFileSystemWatcher watcher;
   QByteArray lastSeen;
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
   auto current = [&]() { return fingerprint(lstSources) + fingerprint(lstProjectFiles); };
   auto exportOnce = [&]()
   {
      const QByteArray before = fingerprint(lstSources);
      cmdExport(positional, allArgs, flags);
      lastSeen = before + fingerprint(lstProjectFiles);
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
