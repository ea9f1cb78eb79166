// Export of the entities and enumerations when no user script is set: each item is generated
// and written on a pool of threads, and what the host must hear of it (file reports, the item's
// message) is handed on afterwards in model order, so that nothing but the time differs from an
// export on one thread.

#include "cpp_export/plugin/cpp_builder.h"

#include <QDir>
#include <QStringEncoder>
#include <QThread>

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"
#include "cpp_export/tools/export_folders.h"
#include "cpp_export/tools/text_file.h"
#include "gui/plugin/export_files.h"

namespace plugin {

struct cpp_builder::item_context
{
   parser_ptr entityHeader, entitySource, enumHeader, enumSource, customHeader, customSource;
   bool bCustomFiles = false;
   bool bDryRun = false;
   QString sExportDir;    // as the messages show it
   QString sAbsDir;       // absolute, with a final '/'
   std::unique_ptr<tools::export_folders> pFolders;
   int iInclude = -1, iSrc = -1, iCustomInclude = -1, iCustomSrc = -1;
   // What the custom folders held when the export began, listed once rather than asked per
   // file; bListed false when a folder could not be listed.
   QSet<QString> customIncludeNames, customSrcNames;
   bool bCustomListed = false;
   const export_files * pFiles = nullptr;   // its stop is seen before each write
   // The record of the last export when its fingerprint is this export's: a file that still has
   // its recorded hash is what generating it would give.
   const export_files::recorded_files * pTrusted = nullptr;
   // A generated text shows its dated banner where isSame compares: generated a minute later it
   // would differ, so no fingerprint may vouch for the files.
   mutable std::atomic<bool> bDatedText { false };
};

namespace {

const int k_iDuration = 10000;
// Items generated ahead of the one handed on, per thread: bounds the texts held at once.
const std::size_t k_iAheadPerThread = 16;

model::entity * entityOf(model::entity & e) { return & e; }
model::entity * entityOf(model::enumeration &) { return nullptr; }
model::enumeration * enumerationOf(model::entity &) { return nullptr; }
model::enumeration * enumerationOf(model::enumeration & e) { return & e; }

// A user's file that is there (a link to something that exists counts, as QFileInfo::exists).
bool userFileThere(int iFolder, const QString & sName, const QString & sPath, const QSet<QString> * pListed)
{
   if ((iFolder < 0) || ! tools::export_folders::isPlainName(sName)) { return QFileInfo::exists(sPath); }
   // A file made since the listing is found by the read that follows, and kept.
   if (pListed) { return pListed->contains(sName); }
   struct stat st;
   return (::fstatat(iFolder, QFile::encodeName(sName).constData(), & st, 0) == 0);
}


// Items worked on by several threads and handed on in order by the calling thread, which is one
// of the workers: while the item it waits for is not done, it works on the next one itself.
// Nobody is woken who is not asleep: with items as short as an unchanged file's check, waking
// costs more than the work. Workers run at most k_iAheadPerThread items per thread ahead of the
// one handed on, so that the texts held at once stay bounded.
class ordered_pool
{
   const std::size_t m_n;
   const std::size_t m_iThreads;
   const std::function<bool(std::size_t)> m_fnWork;     // false: the item failed, start no more
   const std::function<bool(std::size_t)> m_fnHandOn;   // false: stop
   std::vector<char> m_lstDone;
   std::mutex m_mutex;
   std::condition_variable m_workerWake, m_handerWake;
   std::size_t m_iNext = 0, m_iHandedOn = 0, m_iWorkersAsleep = 0;
   bool m_bHanderAsleep = false, m_bStop = false;

   // Under the lock: the next item may be started.
   bool mayStart() const { return (! m_bStop && (m_iNext < m_n) && (m_iNext < m_iHandedOn + m_iThreads * k_iAheadPerThread)); }

   // Works item i and says it is done (items before it were all taken and finish; later ones
   // are not started after a failure).
   void finishItem(std::size_t i)
   {
      const bool bOk = m_fnWork(i);
      bool bWake = false;
      {
         std::lock_guard<std::mutex> lock(m_mutex);
         m_lstDone[i] = 1;
         if (! bOk) { m_bStop = true; }
         bWake = m_bHanderAsleep;
      }
      if (bWake) { m_handerWake.notify_one(); }
   }

   void worker()
   {
      while (true)
      {
         std::size_t i = 0;
         {
            std::unique_lock<std::mutex> lock(m_mutex);
            while (! m_bStop && (m_iNext < m_n) && ! mayStart()) { ++m_iWorkersAsleep; m_workerWake.wait(lock); --m_iWorkersAsleep; }
            if (! mayStart()) { return; }
            i = m_iNext++;
         }
         finishItem(i);
      }
   }

   // Until item i is done, works on others; false when the pool stopped before it started.
   bool awaitItem(std::size_t i)
   {
      while (true)
      {
         std::size_t j = m_n;
         {
            std::unique_lock<std::mutex> lock(m_mutex);
            if (m_lstDone[i] != 0) { return true; }
            if (mayStart()) { j = m_iNext++; }
            else if (i >= m_iNext) { return false; }
            else
            {
               m_bHanderAsleep = true;
               m_handerWake.wait(lock, [&] { return (m_lstDone[i] != 0); });
               m_bHanderAsleep = false;
               return true;
            }
         }
         finishItem(j);
      }
   }

   void stop()
   {
      {
         std::lock_guard<std::mutex> lock(m_mutex);
         m_bStop = true;
      }
      m_workerWake.notify_all();
   }

public:
   ordered_pool(std::size_t n, std::size_t iThreads, std::function<bool(std::size_t)> fnWork, std::function<bool(std::size_t)> fnHandOn)
      : m_n(n), m_iThreads(std::max<std::size_t>(iThreads, 1)), m_fnWork(std::move(fnWork)), m_fnHandOn(std::move(fnHandOn)), m_lstDone(n, 0)
   {}

   // Every item handed on: true; a hand-on that said stop, or items never started: false.
   bool run()
   {
      std::vector<std::thread> lstThreads;
      lstThreads.reserve(m_iThreads - 1);
      for (std::size_t t = 1; t < m_iThreads; ++t) { lstThreads.emplace_back([this] { worker(); }); }
      bool bOk = true;
      for (std::size_t i = 0; (i < m_n) && bOk; ++i)
      {
         bOk = (awaitItem(i) && m_fnHandOn(i));
         bool bWake = false;
         {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_iHandedOn = i + 1;
            bWake = (m_iWorkersAsleep > 0);
         }
         if (bWake) { m_workerWake.notify_all(); }
      }
      stop();
      for (std::thread & t : lstThreads) { t.join(); }
      return bOk;
   }
};

} // namespace

int cpp_builder::exportThreads()
{
   bool bNumber = false;
   const int iAsked = qEnvironmentVariable("TAVREL_EXPORT_THREADS").toInt(& bNumber);
   if (bNumber && (iAsked >= 1) && (iAsked <= 64)) { return iAsked; }
   return qBound(1, QThread::idealThreadCount(), 64);
}

QString cpp_builder::readOld(int iFolder, const QString & sName, const QString & sPath, QString & sOld, bool & bExists) const
{
   QByteArray bytes;
   const tools::export_folders::outcome e = tools::export_folders::read(iFolder, sName, bytes);
   if (e == tools::export_folders::outcome::done) { bExists = true; sOld = tools::decodeText(std::move(bytes)); return QString(); }
   if (e == tools::export_folders::outcome::missing) { bExists = false; sOld.clear(); return QString(); }
   // A link, a folder in the file's place, a name with a slash: the path-based rules say why.
   const QString sRefused = refusedPath(sPath);
   if (! sRefused.isEmpty()) { return sRefused; }
   sOld = getFileText(sPath, bExists);
   return QString();
}

bool cpp_builder::stillRecorded(int iFolder, const QString & sName, const QString & sPath, const item_context & ctx) const
{
   if (! ctx.pTrusted || ! ctx.pFiles) { return false; }
   const auto it = ctx.pTrusted->constFind(ctx.pFiles->relativePath(sPath));
   if ((it == ctx.pTrusted->constEnd()) || it->isEmpty()) { return false; }
   QByteArray bytes;
   if (tools::export_folders::read(iFolder, sName, bytes) != tools::export_folders::outcome::done) { return false; }
   // The record keeps the hash of the bytes the export wrote: the file is not even decoded.
   return (export_files::hashOfBytes(bytes) == * it);
}

bool cpp_builder::stillRecorded(const QString & sPath) const
{
   const export_files * pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   if (! m_pTrusted || ! pFiles) { return false; }
   const auto it = m_pTrusted->constFind(pFiles->relativePath(sPath));
   if ((it == m_pTrusted->constEnd()) || it->isEmpty()) { return false; }
   bool bExists = false;
   const QString sText = getFileText(sPath, bExists);
   return (bExists && (export_files::hashOf(sText) == * it));
}

bool cpp_builder::putNew(int iFolder, const QString & sName, file_report && r, const item_context & ctx, item_outcome & res) const
{
   r.bSame = isSame(r.oldText, r.newText);
   // What export_files::report answers: a changed file is written unless the run is dry.
   const bool bWrite = (! r.bSame && ! ctx.bDryRun);
   const bool bExists = r.bExists;
   res.reports.push_back(std::move(r));
   // A cancelled export leaves each file it has not reached as it was.
   if (! bWrite || (ctx.pFiles && ctx.pFiles->isStopped())) { return true; }
   file_report & f = res.reports.back();
   if (! bExists)
   {
      // The same bytes as the host's text stream gives (UTF-8, no byte-order mark), in one write.
      QStringEncoder encoder(QStringConverter::Utf8);
      const QByteArray data = encoder.encode(f.newText);
      int iError = 0;
      const tools::export_folders::outcome e = tools::export_folders::create(iFolder, sName, data, iError);
      if (e == tools::export_folders::outcome::done) { f.bWritten = true; f.hash = export_files::hashOfBytes(data); return true; }
      if (e == tools::export_folders::outcome::failed)
      {
         res.sReason = QString::fromLocal8Bit(std::strerror(iError)) + " : " + QDir::toNativeSeparators(f.path);
         return false;
      }
   }
   f.bWritten = writeFile(f.path, f.newText, & res.sReason);
   if (f.bWritten) { f.hash = export_files::hashOf(f.newText); }
   return f.bWritten;
}

template <typename Item>
bool cpp_builder::workCustomFile(model::project & project, Item & item, const parser_ptr & parser, int iFolder, const QString & sFolder,
                                 const QString & sName, const item_context & ctx, item_outcome & res)
{
   file_report r;
   r.path = ctx.sAbsDir + sFolder + sName;
   // Created once for the user, then the user's: a file that is there is only reported.
   const QSet<QString> * pListed = (! ctx.bCustomListed ? nullptr
                                    : ((iFolder == ctx.iCustomInclude) ? & ctx.customIncludeNames : & ctx.customSrcNames));
   if (userFileThere(iFolder, sName, r.path, pListed)) { r.bKept = true; res.reports.push_back(std::move(r)); return true; }
   if (! parser) { res.result = zy::ZyBool(false, "No template parser defined to create file : " + r.path); return false; }
   if (parser->textList().size() != parser->actionList().size()) { res.result = zy::ZyBool(false, "Invalid template parser to create file : " + r.path); return false; }
   const QString sRefused = readOld(iFolder, sName, r.path, r.oldText, r.bExists);
   if (! sRefused.isEmpty()) { res.result = zy::ZyBool(false, sRefused); return false; }
   if (r.bExists) { r.oldText.clear(); r.bKept = true; res.reports.push_back(std::move(r)); return true; }
   r.newText = generateText(project, item, parser);
   const QString sPath = r.path;
   if (! putNew(iFolder, sName, std::move(r), ctx, res)) { res.result = zy::ZyBool(false, "An error occurred opening file : " + sPath); return false; }
   return true;
}

template <typename Item>
bool cpp_builder::workItemFiles(model::project & project, Item & item, const item_context & ctx, const QString & sHeaderName,
                                const QString & sSourceName, file_report & header, file_report & source, item_outcome & res)
{
   const bool bEntity = (entityOf(item) != nullptr);
   QString sRefused = readOld(ctx.iInclude, sHeaderName, header.path, header.oldText, header.bExists);
   if (sRefused.isEmpty()) { sRefused = readOld(ctx.iSrc, sSourceName, source.path, source.oldText, source.bExists); }
   if (! sRefused.isEmpty()) { res.result = zy::ZyBool(false, sRefused); return false; }
   header.newText = generateText(project, item, (bEntity ? ctx.entityHeader : ctx.enumHeader));
   source.newText = generateText(project, item, (bEntity ? ctx.entitySource : ctx.enumSource));
   if (! ctx.bDatedText.load(std::memory_order_relaxed) && (datedWhereCompared(header.newText) || datedWhereCompared(source.newText)))
   { ctx.bDatedText = true; }
   const QString sHeaderPath = header.path, sSourcePath = source.path;
   if (! putNew(ctx.iInclude, sHeaderName, std::move(header), ctx, res))
   { res.result = zy::ZyBool(false, "An error occurred opening header file : " + sHeaderPath); return false; }
   if (! putNew(ctx.iSrc, sSourceName, std::move(source), ctx, res))
   { res.result = zy::ZyBool(false, "An error occurred opening source file : " + sSourcePath); return false; }
   return true;
}

template <typename Item>
void cpp_builder::workItem(model::project & project, Item & item, const QString & sKind, const item_context & ctx, item_outcome & res)
{
   res.pEntity = entityOf(item);
   const QString sKey = item.getKey();
   const QString sFlat = generators::flatKey(sKey);
   const QString sHeaderName = sFlat + QStringLiteral(".gen.h");
   const QString sSourceName = sFlat + QStringLiteral(".gen.cpp");
   file_report header, source;
   header.path = ctx.sAbsDir + QStringLiteral("include/") + sHeaderName;
   source.path = ctx.sAbsDir + QStringLiteral("src/") + sSourceName;
   res.sHeaderPath = header.path;
   res.sSourcePath = source.path;
   if (stillRecorded(ctx.iInclude, sHeaderName, header.path, ctx) && stillRecorded(ctx.iSrc, sSourceName, source.path, ctx))
   {
      // Reported as the comparison with a generated text would: there, unchanged.
      for (file_report * r : { & header, & source }) { r->bExists = true; r->bSame = true; res.reports.push_back(std::move(* r)); }
   }
   else if (! workItemFiles(project, item, ctx, sHeaderName, sSourceName, header, source, res)) { return; }
   if (ctx.bCustomFiles)
   {
      if (! workCustomFile(project, item, ctx.customHeader, ctx.iCustomInclude, QStringLiteral("custom/include/"), sFlat + QStringLiteral(".h"), ctx, res)) { return; }
      if (! workCustomFile(project, item, ctx.customSource, ctx.iCustomSrc, QStringLiteral("custom/src/"), sFlat + QStringLiteral(".cpp"), ctx, res)) { return; }
   }
   res.sMessage = sKind + " '" + sKey + "' exported to C++ class : '" + ctx.sExportDir + "'";
}

zy::ZyBool cpp_builder::replayItem(item_outcome & res, const item_context & ctx)
{
   m_sCurrentHeaderFile = res.sHeaderPath;
   m_sCurrentSourceFile = res.sSourcePath;
   // The warning of a PIMPL template without its placeholder comes where one thread showed it.
   if (res.pEntity)
   {
      for (bool bHeader : { true, false })
      {
         const parser_ptr & parser = (bHeader ? ctx.entityHeader : ctx.entitySource);
         if (parser && (parser->textList().size() == parser->actionList().size())) { checkParserContent(parser, bHeader); }
      }
   }
   export_files * pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   for (const file_report & r : res.reports)
   {
      if (! pFiles) { continue; }
      if (r.bKept) { pFiles->reportKept(r.path); }
      else if (r.bWritten) { pFiles->reportWritten(r.path, r.bExists, r.oldText, r.newText, r.hash); }
      else { pFiles->report(r.path, r.bExists, r.oldText, r.newText, r.bSame); }
   }
   if (! res.result)
   {
      if (! res.sReason.isEmpty()) { m_sLastFailureReason = res.sReason; }
      return res.result;
   }
   Q_EMIT onMessage(res.sMessage, 1, k_iDuration);
   return zy::ZyBool(true);
}

bool cpp_builder::prepareItems(item_context & ctx, const QString & sExportDir)
{
   ctx.entityHeader = getParser(true);
   ctx.entitySource = getParser(false);
   ctx.enumHeader = enumerationParser(true);
   ctx.enumSource = enumerationParser(false);
   ctx.bCustomFiles = (! m_pCppExport || m_pCppExport->getGenerateCustomFiles());
   ctx.bDryRun = isDryRun();
   ctx.pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   ctx.sExportDir = sExportDir;
   ctx.sAbsDir = QDir(sExportDir).absolutePath();
   if (! ctx.sAbsDir.endsWith('/')) { ctx.sAbsDir += '/'; }
   if (ctx.bCustomFiles)
   {
      loadCustomParsers();
      ctx.customHeader = m_pParserCustomHeader;
      ctx.customSource = m_pParserCustomSource;
      // A folder that cannot be made: the one-thread export fails where it always did.
      for (const char * sDir : { "custom", "custom/include", "custom/src" })
      { if (! makeDirectory(ctx.sAbsDir + QLatin1String(sDir))) { return false; } }
   }
   ctx.pFolders = std::make_unique<tools::export_folders>(ctx.sAbsDir);
   ctx.iInclude = ctx.pFolders->open(QStringLiteral("include"));
   ctx.iSrc = ctx.pFolders->open(QStringLiteral("src"));
   if (ctx.bCustomFiles)
   {
      ctx.iCustomInclude = ctx.pFolders->open(QStringLiteral("custom/include"));
      ctx.iCustomSrc = ctx.pFolders->open(QStringLiteral("custom/src"));
      ctx.bCustomListed = ((ctx.iCustomInclude != ctx.iCustomSrc) && tools::export_folders::presentNames(ctx.iCustomInclude, ctx.customIncludeNames)
                           && tools::export_folders::presentNames(ctx.iCustomSrc, ctx.customSrcNames));
   }
   return true;
}

zy::ZyBool cpp_builder::runItems(model::project & project, const std::vector<item_ref> & lstItems, const item_context & ctx, int iThreads)
{
   auto work = [&](const item_ref & ref, item_outcome & res)
   {
      if (ref.pEntity) { workItem(project, * ref.pEntity, QStringLiteral("Entity"), ctx, res); }
      else { workItem(project, * ref.pEnumeration, QStringLiteral("Enumeration"), ctx, res); }
   };
   const std::size_t n = lstItems.size();
   const std::size_t iWorkers = std::min<std::size_t>(static_cast<std::size_t>(std::max(1, iThreads)), n);
   if (iWorkers <= 1)
   {
      for (const item_ref & ref : lstItems)
      {
         item_outcome res;
         work(ref, res);
         const zy::ZyBool ok = replayItem(res, ctx);
         if (! ok) { return ok; }
      }
      return zy::ZyBool(true);
   }

   // The model's look-up tables are built here, so that the workers only read them.
   project.invalidateIndex();
   project.getEntityById(0);
   project.getEnumerationById(0);

   std::vector<item_outcome> lstResults(n);
   zy::ZyBool ok(true);
   ordered_pool pool(n, iWorkers,
                     [&](std::size_t i) { work(lstItems[i], lstResults[i]); return lstResults[i].result.getValue(); },
                     [&](std::size_t i)
                     {
                        ok = replayItem(lstResults[i], ctx);
                        lstResults[i] = item_outcome();
                        return ok.getValue();
                     });
   if (! pool.run() && ok.getValue()) { ok = zy::ZyBool(false, "The export stopped before every entity and enumeration was exported"); }
   return ok;
}

zy::ZyBool cpp_builder::exportItemsAtOnce(model::project & project, const model::list_of_entity & lstEntities, const QString & sExportDir,
                                          bool & bDone)
{
   bDone = false;
   item_context ctx;
   if (! prepareItems(ctx, sExportDir)) { return zy::ZyBool(true); }
   bDone = true;
   std::vector<item_ref> lstItems;
   for (const model::entity_ptr & pEntity : lstEntities)
   {
      if (pEntity && (pEntity->getId() != 0)) { lstItems.push_back({ pEntity.get(), nullptr }); }
   }
   model::list_of_enumeration_ptr pEnums = project.getListOfAllEnums();
   if (pEnums)
   {
      for (const model::enumeration_ptr & pEnum : * pEnums)
      {
         if (pEnum && (pEnum->getId() != 0)) { lstItems.push_back({ nullptr, pEnum.get() }); }
      }
   }
   // The fingerprint is recorded only when the host keeps a record, and trusted only when the
   // record it read carries the same one.
   export_files * pFiles = (m_pCppExport ? m_pCppExport->getExportFiles() : nullptr);
   const QByteArray & fingerprint = m_itemFingerprint;
   if (pFiles && ! fingerprint.isEmpty() && pFiles->previousRecordRead().getValue() && (pFiles->previousFingerprint() == fingerprint))
   { ctx.pTrusted = & pFiles->previousRecord(); }
   const zy::ZyBool ok = runItems(project, lstItems, ctx, exportThreads());
   // The project files follow: they trust the same record, and build() records the fingerprint.
   m_pTrusted = ctx.pTrusted;
   m_bVouched = (ok && pFiles && ! fingerprint.isEmpty() && m_bModelClean);
   if (ctx.bDatedText) { m_bDatedText = true; }
   return ok;
}

} // namespace plugin
