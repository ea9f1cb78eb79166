#include "bench_extra.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace bench {

double readTreeMs(const QString & dir, qint64 & bytes)
{
   // The paths are listed first, so that only the reading is timed.
   QList<QByteArray> lstPaths;
   QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
   while (it.hasNext()) { lstPaths.append(QFile::encodeName(it.next())); }
   std::vector<char> buffer(1 << 20);
   bytes = 0;
   QElapsedTimer t;
   t.start();
   for (const QByteArray & path : lstPaths)
   {
      const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
      if (fd < 0) { continue; }
      ssize_t n = 0;
      while ((n = ::read(fd, buffer.data(), buffer.size())) > 0) { bytes += n; }
      ::close(fd);
   }
   return t.nsecsElapsed() / 1e6;
}

double oneEntityStartMs(const QString & program, const QString & workDir, int repeat)
{
   if (! QFileInfo(program).isExecutable()) { return 0; }
   const QString sBase = workDir + "/start";
   QDir(sBase).removeRecursively();
   QDir().mkpath(sBase + "/lumor");
   QFile model(sBase + "/solo.json");
   if (! model.open(QIODevice::WriteOnly)) { return 0; }
   model.write(R"({"name": "solo", "entities": [{"name": "Person", "namespace": "ns", "properties": [)"
               R"({"name": "id", "type": "long", "primary_key": true}, {"name": "name", "type": "QString"}]}]})");
   model.close();
   auto run = [&](const QString & input) -> double
   {
      const QString sOut = sBase + "/out";
      QDir(sOut).removeRecursively();
      QDir().mkpath(sOut);
      QProcess p;
      QElapsedTimer t;
      t.start();
      p.start(program, { "export", input, "--lumor-path", sBase + "/lumor", "--yes", "--TavrelCppExport_path=" + sOut });
      if (! p.waitForFinished(-1) || (p.exitCode() != 0)) { qFatal("the one-entity export failed: %s", p.readAllStandardError().constData()); }
      return t.nsecsElapsed() / 1e6;
   };
   // The first run turns the model into a project file; the timed ones export that file, as a
   // user's repeated export does.
   run(sBase + "/solo.json");
   std::vector<double> v;
   for (int r = 0; r < std::max(3, repeat); ++r) { v.push_back(run(sBase + "/solo.tavrel")); }
   std::sort(v.begin(), v.end());
   return v[v.size() / 2];
}

} // namespace bench
