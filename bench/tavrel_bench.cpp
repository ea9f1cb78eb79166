// Export benchmark: cold export, unchanged re-export, one-entity-changed re-export and preview
// of synthetic models, each figure beside the time "cp -r" takes to copy the same tree; then the
// cold export on one thread, reading every file once, and the start of a one-entity export.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "export_lifecycle.h"
#include "gui/plugin/export_files.h"
#include "model/entity.h"
#include "model/global_params.h"
#include "model/project.h"
#include "model/property.h"
#include "model/relationship.h"
#include "model_generator.h"
#include "bench_extra.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "gui/tools/message_box.h"

// Callgrind starts collecting inside this function only (--toggle-collect=tavrel_bench_profiled),
// so model generation and set-up stay out of the profile.
extern "C" __attribute__((noinline)) void tavrel_bench_profiled(const std::function<void()> * pWork)
{
   (* pWork)();
   __asm__ volatile("" ::: "memory");
}

namespace {

struct file_state
{
   quint64 inode = 0;
   qint64 mtimeNs = 0;
   qint64 size = 0;
};

typedef QHash<QString, file_state> tree_state;

tree_state snapshot(const QString & dir)
{
   tree_state result;
   QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
   while (it.hasNext())
   {
      const QString path = it.next();
      struct stat st;
      if (::stat(QFile::encodeName(path).constData(), & st) != 0) { continue; }
      file_state s;
      s.inode = st.st_ino;
      s.mtimeNs = (static_cast<qint64>(st.st_mtim.tv_sec) * 1000000000LL) + st.st_mtim.tv_nsec;
      s.size = st.st_size;
      result.insert(path, s);
   }
   return result;
}

qint64 totalBytes(const tree_state & s)
{
   qint64 n = 0;
   for (const file_state & f : s) { n += f.size; }
   return n;
}

// Files created or rewritten between two snapshots (a new inode or a new time stamp), and their bytes.
void diffTrees(const tree_state & before, const tree_state & after, int & files, qint64 & bytes, QStringList * pNames = nullptr)
{
   files = 0;
   bytes = 0;
   for (auto it = after.constBegin(); it != after.constEnd(); ++it)
   {
      auto old = before.constFind(it.key());
      if ((old != before.constEnd()) && (old->inode == it->inode) && (old->mtimeNs == it->mtimeNs) && (old->size == it->size)) { continue; }
      ++files;
      bytes += it->size;
      if (pNames) { pNames->append(it.key()); }
   }
}

double median(std::vector<double> v)
{
   if (v.empty()) { return 0.0; }
   std::sort(v.begin(), v.end());
   const size_t n = v.size();
   return ((n % 2) ? v[n / 2] : ((v[n / 2 - 1] + v[n / 2]) / 2.0));
}

// Dirty pages of the previous step are flushed, untimed, so that no figure pays for another's writes.
void settleDisk() { ::sync(); }

// Wall time of "cp -r"; the system time of the copy goes to sysMs.
double copyTreeMs(const QString & from, const QString & to, double & sysMs)
{
   QDir(to).removeRecursively();
   settleDisk();
   struct rusage before;
   ::getrusage(RUSAGE_CHILDREN, & before);
   QElapsedTimer t;
   t.start();
   QProcess cp;
   cp.start("cp", { "-r", from, to });
   if (! cp.waitForFinished(-1) || (cp.exitCode() != 0)) { qFatal("cp -r failed"); }
   const double ms = t.nsecsElapsed() / 1e6;
   struct rusage after;
   ::getrusage(RUSAGE_CHILDREN, & after);
   sysMs = ((after.ru_stime.tv_sec - before.ru_stime.tv_sec) * 1e3) + ((after.ru_stime.tv_usec - before.ru_stime.tv_usec) / 1e3);
   return ms;
}

struct settings
{
   QList<int> sizes = { 100, 1000, 5000 };
   int repeat = 5;
   int previewIterations = 500;
   QString workDir;
   bool customFiles = true;
   bool pimpl = false;
   int style = 0;
   QString profile;        // empty, "cold", "unchanged", "changed", "preview" or "dry"
   bool keep = false;
   bool hostSide = true;   // the second table (record, dry run); --no-host-side leaves it out
};

struct figures
{
   int n = 0;
   int files = 0;
   qint64 bytes = 0;
   double coldMs = 0, coldUserMs = 0, coldSysMs = 0, copyMs = 0, copySysMs = 0;
   double unchangedMs = 0; int unchangedWritten = -1;
   double changedMs = 0; int changedWritten = -1; qint64 changedBytes = 0;
   double previewUs = 0; qint64 previewBytes = 0;
   // The host's side of an export: the file report, the stale-file check and the record.
   double coldPairMs = 0, coldRecordMs = 0, unchangedPairMs = 0, unchangedRecordMs = 0, dryRunMs = 0;
   // User processor time of a cold export without and with the record: the record's own work,
   // apart from the file system's (creating thousands of files just after deleting as many costs
   // the kernel a varying amount of time).
   double coldPairCpuMs = 0, coldRecordCpuMs = 0;
   // The same cold export on one thread (TAVREL_EXPORT_THREADS=1), and reading every file of
   // the tree: the floor of an unchanged re-export.
   double coldOneThreadMs = 0, readMs = 0;
   // The unchanged re-export generating every file again (the plug-in without a record), and the
   // user processor time of both kinds of unchanged re-export.
   double unchangedFullMs = 0, unchangedUserMs = 0, unchangedFullUserMs = 0;
};

// Runs f with TAVREL_EXPORT_THREADS set to value, then puts the variable back as it was.
template <typename F> auto withThreads(const QByteArray & value, F f)
{
   const bool bWasSet = qEnvironmentVariableIsSet("TAVREL_EXPORT_THREADS");
   const QByteArray before = qgetenv("TAVREL_EXPORT_THREADS");
   qputenv("TAVREL_EXPORT_THREADS", value);
   auto result = f();
   if (bWasSet) { qputenv("TAVREL_EXPORT_THREADS", before); } else { qunsetenv("TAVREL_EXPORT_THREADS"); }
   return result;
}

class bench_runner
{
   settings m_settings;
   plugin::cpp_export m_plugin;
   std::shared_ptr<model::global_params> m_pParams;
   QString m_sLumorDir;

public:
   explicit bench_runner(const settings & s) : m_settings(s)
   {
      m_sLumorDir = s.workDir + "/lumor";
      QDir().mkpath(m_sLumorDir);
      m_pParams = std::make_shared<model::global_params>();
      m_pParams->setLumorPath(m_sLumorDir);
      context::ctx_global::setGlobalParams(m_pParams);
      m_plugin.setGenerateCustomFiles(s.customFiles);
      m_plugin.setPImpl(s.pimpl);
      m_plugin.setCppTemplate(static_cast<plugin::cpp_template::enum_template>(s.style));
   }

   // An exported entity whose files only it generates: no descendant and no relation points to it,
   // so renaming one of its plain properties touches exactly its header and source (in every
   // style, with or without PIMPL).
   static model::entity_ptr leafEntity(const model::project & project)
   {
      QSet<const model::entity *> referenced;
      for (const model::entity_ptr & e : * project.getListOfAllEntities())
      {
         if (e->getParent()) { referenced.insert(e->getParent().get()); }
         for (const model::property_ptr & p : e->getOwnProperties())
         { if (p->hasRelationship() && p->getRelation()->getEntityTarget()) { referenced.insert(p->getRelation()->getEntityTarget().get()); } }
      }
      const model::list_of_entity & lst = * project.getListOfAllEntities();
      for (qsizetype i = lst.size() / 2; i < lst.size() + (lst.size() / 2); ++i)
      {
         const model::entity_ptr & e = lst.at(i % lst.size());
         if (referenced.contains(e.get()) || (e->getId() == 0) || e->isAbstract()) { continue; }
         for (const model::property_ptr & p : e->getOwnProperties())
         { if (! p->hasRelationship() && ! p->isPrimaryKey()) { return e; } }
      }
      return model::entity_ptr();
   }

   static model::property_ptr plainProperty(const model::entity & e)
   {
      for (const model::property_ptr & p : e.getOwnProperties()) { if (! p->hasRelationship() && ! p->isPrimaryKey()) { return p; } }
      return model::property_ptr();
   }

   // Processor time of the process so far, user and system (kernel: file creation and writes).
   static void cpuMs(double & user, double & sys)
   {
      struct rusage ru;
      ::getrusage(RUSAGE_SELF, & ru);
      user = (ru.ru_utime.tv_sec * 1e3) + (ru.ru_utime.tv_usec / 1e3);
      sys = (ru.ru_stime.tv_sec * 1e3) + (ru.ru_stime.tv_usec / 1e3);
   }

   // Wall time of one export; its user and system processor times go to pUserMs and pSysMs.
   double timedBuild(plugin::cpp_builder & builder, model::project & project, bool bProfiled, double * pUserMs = nullptr, double * pSysMs = nullptr)
   {
      zy::ZyBool ok(true);
      QElapsedTimer t;
      std::function<void()> work = [&] { ok = builder.build(project); };
      double user0 = 0, sys0 = 0, user1 = 0, sys1 = 0;
      cpuMs(user0, sys0);
      t.start();
      if (bProfiled) { tavrel_bench_profiled(& work); } else { work(); }
      const double ms = t.nsecsElapsed() / 1e6;
      cpuMs(user1, sys1);
      if (pUserMs) { * pUserMs = user1 - user0; }
      if (pSysMs) { * pSysMs = sys1 - sys0; }
      if (! ok) { qFatal("export failed: %s", qPrintable(ok.getDesc())); }
      return ms;
   }

   // One export as the host runs it: the plug-in reports every file, then the host compares them
   // with the record, removes nothing (nothing is stale) and records the set unless dry.
   double timedHostExport(plugin::cpp_builder & builder, model::project & project, bool bDryRun, bool bProfiled = false, double * pCpuMs = nullptr)
   {
      double user0 = 0, sys0 = 0, user1 = 0, sys1 = 0;
      cpuMs(user0, sys0);
      plugin::export_files files;
      files.setDryRun(bDryRun);
      app::export_lifecycle::attachRecord(m_plugin.getName(), files);
      app::export_outcome outcome;
      QElapsedTimer t;
      zy::ZyBool ok(true);
      std::function<void()> work = [&] {
         m_plugin.setExportFiles(& files);
         ok = builder.build(project);
         m_plugin.setExportFiles(nullptr);
         if (ok) { ok = app::export_lifecycle::finish(m_plugin.getName(), files, bDryRun, false, outcome); }
      };
      t.start();
      if (bProfiled) { tavrel_bench_profiled(& work); } else { work(); }
      const double ms = t.nsecsElapsed() / 1e6;
      cpuMs(user1, sys1);
      if (pCpuMs) { * pCpuMs = (user1 - user0); }
      if (! ok) { qFatal("export failed: %s", qPrintable(ok.getDesc())); }
      if (bDryRun && ! outcome.upToDate()) { qFatal("the dry run of an unchanged tree found changes"); }
      return ms;
   }

   // Each run with the record follows one without, so that both see the same machine.
   void runLifecycle(figures & f, model::project & project, const QString & out)
   {
      std::vector<double> vCold, vColdRecord, vUnchanged, vUnchangedRecord, vDry, vColdCpu, vColdRecordCpu;
      for (int r = 0; r < m_settings.repeat; ++r)
      {
         for (bool bRecord : { false, true })
         {
            QDir(out).removeRecursively();
            QDir().mkpath(out);
            plugin::cpp_builder builder(& m_plugin);
            // A first export into the directory: no record yet, so it reads none and writes one.
            if (bRecord) { QSqlQuery(context::ctx_project::getDatabase()).exec("DELETE FROM t_export_record"); }
            settleDisk();
            double user = 0, sys = 0, cpu = 0;
            if (bRecord) { vColdRecord.push_back(timedHostExport(builder, project, false, false, & cpu)); vColdRecordCpu.push_back(cpu); }
            else { vCold.push_back(timedBuild(builder, project, false, & user, & sys)); vColdCpu.push_back(user); }
         }
      }
      plugin::cpp_builder builder(& m_plugin);
      for (int r = 0; r < m_settings.repeat; ++r)
      {
         settleDisk();
         vUnchanged.push_back(timedBuild(builder, project, false));
         settleDisk();
         vUnchangedRecord.push_back(timedHostExport(builder, project, false));
         settleDisk();
         vDry.push_back(timedHostExport(builder, project, true));
      }
      f.coldPairMs = median(vCold);
      f.coldRecordMs = median(vColdRecord);
      f.coldPairCpuMs = median(vColdCpu);
      f.coldRecordCpuMs = median(vColdRecordCpu);
      f.unchangedPairMs = median(vUnchanged);
      f.unchangedRecordMs = median(vUnchangedRecord);
      f.dryRunMs = median(vDry);
   }

   figures run(int n)
   {
      figures f;
      f.n = n;
      bench::model_options opt;
      opt.entities = n;
      model::project_ptr pProject = bench::generateModel(opt);
      const QString base = m_settings.workDir + QString("/n%1").arg(n);
      QDir(base).removeRecursively();
      QDir().mkpath(base);
      const QString out = base + "/out";
      const bool bProfileOnly = ! m_settings.profile.isEmpty();
      const int repeat = (bProfileOnly ? 1 : m_settings.repeat);

      // Cold: a new builder (templates parsed again) into an empty directory.
      std::vector<double> vCold, vColdUser, vColdSys, vCopy, vCopySys, vColdOne;
      for (int r = 0; r < repeat; ++r)
      {
         QDir(out).removeRecursively();
         QDir().mkpath(out);
         m_plugin.setCppExportPath(out);
         plugin::cpp_builder builder(& m_plugin);
         settleDisk();
         double user = 0, sys = 0;
         vCold.push_back(timedBuild(builder, * pProject, m_settings.profile == "cold", & user, & sys));
         vColdUser.push_back(user);
         vColdSys.push_back(sys);
         if (! bProfileOnly)
         {
            double copySys = 0;
            vCopy.push_back(copyTreeMs(out, base + "/copy", copySys));
            vCopySys.push_back(copySys);
            QDir(base + "/one").removeRecursively();
            QDir().mkpath(base + "/one");
            m_plugin.setCppExportPath(base + "/one");
            plugin::cpp_builder oneBuilder(& m_plugin);
            settleDisk();
            vColdOne.push_back(withThreads("1", [&] { return timedBuild(oneBuilder, * pProject, false); }));
            m_plugin.setCppExportPath(out);
         }
      }
      const tree_state cold = snapshot(out);
      f.files = cold.size();
      f.bytes = totalBytes(cold);
      f.coldMs = median(vCold);
      f.coldUserMs = median(vColdUser);
      f.coldSysMs = median(vColdSys);
      f.copyMs = median(vCopy);
      f.copySysMs = median(vCopySys);
      f.coldOneThreadMs = median(vColdOne);
      QDir(base + "/copy").removeRecursively();
      QDir(base + "/one").removeRecursively();

      // The rest reuse one builder, as the host does between exports. The first export records
      // the files and their fingerprint, as a user's first export does.
      m_plugin.setCppExportPath(out);
      plugin::cpp_builder builder(& m_plugin);
      QSqlQuery(context::ctx_project::getDatabase()).exec("DELETE FROM t_export_record");
      timedHostExport(builder, * pProject, false);

      if (! bProfileOnly || (m_settings.profile == "unchanged") || (m_settings.profile == "unchanged-full"))
      {
         std::vector<double> v, vFull, vRead, vUser, vFullUser;
         f.unchangedWritten = 0;
         for (int r = 0; r < repeat; ++r)
         {
            qint64 iRead = 0;
            settleDisk();
            vRead.push_back(bench::readTreeMs(out, iRead));
            const tree_state before = snapshot(out);
            double user = 0;
            // As the hosts run it: the record's fingerprint matches, no file is generated.
            if (! bProfileOnly || (m_settings.profile == "unchanged"))
            {
               settleDisk();
               v.push_back(timedHostExport(builder, * pProject, false, m_settings.profile == "unchanged", & user));
               vUser.push_back(user);
            }
            // The plug-in alone, without a record: every file generated and compared.
            if (! bProfileOnly || (m_settings.profile == "unchanged-full"))
            {
               settleDisk();
               double sys = 0;
               vFull.push_back(timedBuild(builder, * pProject, m_settings.profile == "unchanged-full", & user, & sys));
               vFullUser.push_back(user);
            }
            int files = 0; qint64 bytes = 0;
            diffTrees(before, snapshot(out), files, bytes);
            f.unchangedWritten = std::max(f.unchangedWritten, files);
         }
         f.unchangedMs = median(v);
         f.unchangedUserMs = median(vUser);
         f.unchangedFullMs = median(vFull);
         f.unchangedFullUserMs = median(vFullUser);
         f.readMs = median(vRead);
      }

      if (m_settings.profile == "dry")
      {
         timedHostExport(builder, * pProject, false);
         timedHostExport(builder, * pProject, true, true);
      }

      model::entity_ptr pLeaf = leafEntity(* pProject);
      if (pLeaf && (! bProfileOnly || (m_settings.profile == "changed")))
      {
         model::property_ptr pProp = plainProperty(* pLeaf);
         const QString sOriginal = pProp->getName();
         std::vector<double> v;
         f.changedWritten = 0;
         for (int r = 0; r < repeat; ++r)
         {
            pProp->setName(sOriginal + QString("_edit%1").arg(r));
            const tree_state before = snapshot(out);
            settleDisk();
            v.push_back(timedBuild(builder, * pProject, m_settings.profile == "changed"));
            int files = 0; qint64 bytes = 0; QStringList names;
            diffTrees(before, snapshot(out), files, bytes, & names);
            f.changedWritten = std::max(f.changedWritten, files);
            f.changedBytes = bytes;
            if (files != 2) { std::fprintf(stderr, "one-entity change wrote %d files: %s\n", files, qPrintable(names.join(", "))); }
         }
         pProp->setName(sOriginal);
         f.changedMs = median(v);
      }

      // Preview of the entity with the most properties: header and source, nothing written.
      if (! bProfileOnly || (m_settings.profile == "preview"))
      {
         model::entity_ptr pBig;
         for (const model::entity_ptr & e : * pProject->getListOfAllEntities())
         { if (! pBig || (e->getOwnProperties().size() > pBig->getOwnProperties().size())) { pBig = e; } }
         std::vector<double> v;
         const int iterations = m_settings.previewIterations;
         for (int r = 0; r < repeat; ++r)
         {
            qint64 bytes = 0;
            QElapsedTimer t;
            std::function<void()> work = [&]
            {
               for (int i = 0; i < iterations; ++i)
               {
                  bytes += builder.buildHeader(* pProject, * pBig).size();
                  bytes += builder.buildSource(* pProject, * pBig).size();
               }
            };
            t.start();
            if (m_settings.profile == "preview") { tavrel_bench_profiled(& work); } else { work(); }
            v.push_back(t.nsecsElapsed() / 1e3 / iterations);
            f.previewBytes = bytes / iterations;
         }
         f.previewUs = median(v);
      }

      if (! bProfileOnly && m_settings.hostSide) { runLifecycle(f, * pProject, out); }
      if (! m_settings.keep) { QDir(base).removeRecursively(); }
      return f;
   }
};

void printFloors(const QList<figures> & all, double startMs)
{
   std::printf("\nThreads and floors: the cold export on every core and on one, cp -r of its tree, the unchanged re-export and "
               "reading every file once\n\n");
   std::printf("| N | files | MB | cold ms (user) | cold, one thread ms | cp -r ms | cold / cp -r | unchanged ms (user) "
               "| unchanged, every file generated ms (user) | read every file ms | unchanged / read |\n");
   std::printf("|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
   for (const figures & f : all)
   {
      std::printf("| %d | %d | %.1f | %.1f (%.0f) | %.1f | %.1f | %.2f | %.1f (%.0f) | %.1f (%.0f) | %.1f | %.2f |\n", f.n, f.files, f.bytes / 1e6,
                  f.coldMs, f.coldUserMs, f.coldOneThreadMs, f.copyMs, (f.copyMs > 0 ? f.coldMs / f.copyMs : 0.0), f.unchangedMs,
                  f.unchangedUserMs, f.unchangedFullMs, f.unchangedFullUserMs, f.readMs, (f.readMs > 0 ? f.unchangedMs / f.readMs : 0.0));
   }
   std::printf("\nOne-entity export, whole process (tavrel export, median): %.1f ms\n", startMs);
}

void printTable(const QList<figures> & all, const settings & s)
{
   std::printf("\nstyle %d, PIMPL %s, custom files %s, median of %d runs (preview: %d iterations per run)\n\n",
               s.style, s.pimpl ? "on" : "off", s.customFiles ? "on" : "off", s.repeat, s.previewIterations);
   std::printf("| N | files | bytes written | cold export ms (user, system) | cp -r ms (system) | cold / cp -r "
               "| unchanged re-export ms (files written) | one entity changed ms (files written, bytes) | preview header+source us (chars) |\n");
   std::printf("|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
   for (const figures & f : all)
   {
      std::printf("| %d | %d | %lld | %.1f (%.0f, %.0f) | %.1f (%.0f) | %.2f | %.1f (%d) | %.1f (%d, %lld) | %.1f (%lld) |\n", f.n, f.files,
                  static_cast<long long>(f.bytes), f.coldMs, f.coldUserMs, f.coldSysMs, f.copyMs, f.copySysMs,
                  (f.copyMs > 0 ? f.coldMs / f.copyMs : 0.0),
                  f.unchangedMs, f.unchangedWritten, f.changedMs, f.changedWritten, static_cast<long long>(f.changedBytes),
                  f.previewUs, static_cast<long long>(f.previewBytes));
   }
   if (! s.hostSide) { std::fflush(stdout); return; }
   std::printf("\nThe host's side (file report, stale-file check, record in the project file), median of %d runs\n\n", s.repeat);
   std::printf("| N | cold export ms (user ms) | cold export + record ms (user ms) | added by the record: wall, user "
               "| unchanged re-export ms | unchanged re-export + record ms "
               "| dry run or check of the unchanged tree ms |\n");
   std::printf("|---:|---:|---:|---:|---:|---:|---:|\n");
   for (const figures & f : all)
   {
      std::printf("| %d | %.1f (%.1f) | %.1f (%.1f) | %+.1f %%, %+.1f %% | %.1f | %.1f | %.1f |\n", f.n, f.coldPairMs, f.coldPairCpuMs,
                  f.coldRecordMs, f.coldRecordCpuMs, (f.coldPairMs > 0 ? (100.0 * (f.coldRecordMs - f.coldPairMs) / f.coldPairMs) : 0.0),
                  (f.coldPairCpuMs > 0 ? (100.0 * (f.coldRecordCpuMs - f.coldPairCpuMs) / f.coldPairCpuMs) : 0.0),
                  f.unchangedPairMs, f.unchangedRecordMs, f.dryRunMs);
   }
   std::fflush(stdout);
}

} // namespace

int main(int argc, char ** argv)
{
   QCoreApplication app(argc, argv);
   QCoreApplication::setApplicationName("tavrel_bench");
   tools::message_box::setUnattended(true);
   tools::message_box::setPrintUnattended(false);

   QCommandLineParser parser;
   parser.setApplicationDescription("Speed of the C++ export on synthetic models.");
   parser.addHelpOption();
   QCommandLineOption optSizes("sizes", "Entity counts, comma separated (default 100,1000,5000).", "list");
   QCommandLineOption optRepeat("repeat", "Runs per figure; the median is reported (default 5).", "n");
   QCommandLineOption optPreview("preview-iterations", "Header+source previews per run (default 500).", "n");
   QCommandLineOption optWork("work-dir", "Directory for the exported trees (default: a temporary directory).", "dir");
   QCommandLineOption optCustom("no-custom-files", "Do not generate the custom companion files (on by default, as in the plug-in).");
   QCommandLineOption optPImpl("pimpl", "Use the PIMPL templates.");
   QCommandLineOption optStyle("style", "Class style 0 to 3 (default 0, the plug-in's default).", "n");
   QCommandLineOption optProfile("profile", "Run one export of this kind only, for callgrind: cold, unchanged (as the hosts run it, record included), unchanged-full (the plug-in alone, every file generated), changed, preview or dry (a dry run of the unchanged tree, host included).", "kind");
   QCommandLineOption optKeep("keep", "Keep the exported trees.");
   QCommandLineOption optNoHost("no-host-side", "Leave out the host's side (record, dry run): the second table.");
   parser.addOptions({ optSizes, optRepeat, optPreview, optWork, optCustom, optPImpl, optStyle, optProfile, optKeep, optNoHost });
   parser.process(app);

   settings s;
   if (parser.isSet(optSizes))
   {
      s.sizes.clear();
      for (const QString & v : parser.value(optSizes).split(',', Qt::SkipEmptyParts)) { s.sizes.append(v.toInt()); }
   }
   if (parser.isSet(optRepeat)) { s.repeat = std::max(1, parser.value(optRepeat).toInt()); }
   if (parser.isSet(optPreview)) { s.previewIterations = std::max(1, parser.value(optPreview).toInt()); }
   s.customFiles = ! parser.isSet(optCustom);
   s.pimpl = parser.isSet(optPImpl);
   if (parser.isSet(optStyle)) { s.style = qBound(0, parser.value(optStyle).toInt(), 3); }
   s.profile = parser.value(optProfile);
   s.keep = parser.isSet(optKeep);
   s.hostSide = ! parser.isSet(optNoHost);

   QTemporaryDir tmp;
   s.workDir = (parser.isSet(optWork) ? QDir(parser.value(optWork)).absolutePath() : tmp.path());
   QDir().mkpath(s.workDir);

   // The record of the exported files lives in a project file, as in the hosts.
   const QString sProjectModel = s.workDir + "/bench_project.json";
   {
      QFile model(sProjectModel);
      if (! model.open(QIODevice::WriteOnly) || (model.write("{ \"name\": \"BENCH\", \"entities\": [] }\n") <= 0)) { qFatal("cannot write %s", qPrintable(sProjectModel)); }
   }
   const zy::ZyBool opened = context::ctx_project::openProject(sProjectModel);
   if (! opened) { qFatal("cannot open the bench project: %s", qPrintable(opened.getDesc())); }

   bench_runner runner(s);
   QList<figures> all;
   for (int n : s.sizes)
   {
      figures f = runner.run(n);
      std::fprintf(stderr, "N=%d done\n", n);
      all.append(f);
   }
   if (s.profile.isEmpty())
   {
      printTable(all, s);
      printFloors(all, bench::oneEntityStartMs(QCoreApplication::applicationDirPath() + "/tavrel", s.workDir, s.repeat));
   }
   return 0;
}
