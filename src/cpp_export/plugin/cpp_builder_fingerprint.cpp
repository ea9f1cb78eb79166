// What an export's entity and enumeration files are made from, in one fingerprint recorded with
// the export: when the next export finds the same one, a file that still has its recorded hash
// is what generating it again would give (but for the banner's date), so it is not generated.

#include "cpp_export/plugin/cpp_builder.h"

#include <QFile>

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "storage/json_writer.h"
#include "cpp_export/plugin/cpp_export.h"

namespace plugin {

namespace {

class fingerprint_hash
{
   XXH3_state_t m_state;

public:
   fingerprint_hash() { XXH3_128bits_reset(& m_state); }
   // Each part is preceded by its size, so that no two lists of parts hash as one.
   void add(const void * pData, std::size_t iSize)
   {
      const quint64 n = iSize;
      XXH3_128bits_update(& m_state, & n, sizeof(n));
      if (iSize > 0) { XXH3_128bits_update(& m_state, pData, iSize); }
   }
   void add(const QByteArray & bytes) { add(bytes.constData(), static_cast<std::size_t>(bytes.size())); }
   void add(const QString & text) { add(text.constData(), static_cast<std::size_t>(text.size()) * sizeof(QChar)); }
   void add(qint64 value) { add(& value, sizeof(value)); }
   QByteArray result()
   {
      const XXH128_hash_t h = XXH3_128bits_digest(& m_state);
      return (QByteArray::number(static_cast<qulonglong>(h.high64), 16).rightJustified(16, '0') +
              QByteArray::number(static_cast<qulonglong>(h.low64), 16).rightJustified(16, '0'));
   }
};

// The file holding the generators' code (the plug-in library, or the program it is built into):
// a rebuilt generator gives another fingerprint even when no version number moved.
void addOwnBuild(fingerprint_hash & h)
{
   Dl_info info;
   if ((::dladdr(reinterpret_cast<const void *>(& addOwnBuild), & info) == 0) || ! info.dli_fname)
   {
      h.add(QByteArray("unknown build"));
      return;
   }
   struct stat st;
   h.add(QByteArray(info.dli_fname));
   if (::stat(info.dli_fname, & st) != 0) { h.add(QByteArray("no status")); return; }
   h.add(static_cast<qint64>(st.st_size));
   h.add(static_cast<qint64>(st.st_mtim.tv_sec));
   h.add(static_cast<qint64>(st.st_mtim.tv_nsec));
   h.add(static_cast<qint64>(st.st_ino));
}

// The model item by item, each item's text hashed on the export's threads (the text of a large
// model costs more than reading its files), then the hashes in model order. This thread first
// does fnMeanwhile (what must run here, such as reading the project file), then joins in.
void addModel(fingerprint_hash & h, const model::project & project, int iThreads, const std::function<void()> & fnMeanwhile)
{
   std::vector<const model::entity *> lstEntities;
   std::vector<const model::enumeration *> lstEnums;
   if (project.getListOfAllEntities()) { for (const model::entity_ptr & p : * project.getListOfAllEntities()) { if (p) { lstEntities.push_back(p.get()); } } }
   if (project.getListOfAllEnums()) { for (const model::enumeration_ptr & p : * project.getListOfAllEnums()) { if (p) { lstEnums.push_back(p.get()); } } }
   const std::size_t n = lstEntities.size() + lstEnums.size();
   std::vector<XXH128_hash_t> lstHashes(n);
   // Items are taken a run at a time by whichever thread is free.
   const std::size_t iRun = 32;
   std::atomic<std::size_t> iNext { 0 };
   auto hashRuns = [&]
   {
      for (std::size_t iFrom = iNext.fetch_add(iRun); iFrom < n; iFrom = iNext.fetch_add(iRun))
      {
         for (std::size_t i = iFrom; i < std::min(n, iFrom + iRun); ++i)
         {
            const QByteArray text = ((i < lstEntities.size()) ? storage::json_write::itemText(* lstEntities[i])
                                                               : storage::json_write::itemText(* lstEnums[i - lstEntities.size()]));
            lstHashes[i] = XXH3_128bits(text.constData(), static_cast<std::size_t>(text.size()));
         }
      }
   };
   // A few items are not worth a thread.
   const std::size_t iWorkers = ((n < 2 * iRun) ? 0 : std::min<std::size_t>(static_cast<std::size_t>(std::max(1, iThreads)), 16));
   std::vector<std::thread> lstThreads;
   for (std::size_t t = 0; t < iWorkers; ++t) { lstThreads.emplace_back(hashRuns); }
   if (fnMeanwhile) { fnMeanwhile(); }
   hashRuns();
   for (std::thread & t : lstThreads) { t.join(); }
   h.add(project.getName());
   h.add(static_cast<qint64>(lstEntities.size()));
   h.add(static_cast<qint64>(lstEnums.size()));
   for (const XXH128_hash_t & x : lstHashes) { h.add(& x, sizeof(x)); }
}

void addParser(fingerprint_hash & h, const cpp_builder::parser_ptr & parser)
{
   if (! parser) { h.add(QByteArray("no template")); return; }
   h.add(parser->getInputText());
}

} // namespace

QByteArray cpp_builder::itemFingerprint(const model::project & project, const std::vector<parser_ptr> & lstParsers,
                                        const std::function<void()> & fnMeanwhile) const
{
   fingerprint_hash h;
   h.add(QByteArray("tavrel C++ export items 1"));
   addOwnBuild(h);
   h.add(context::ctx_global::getAppName());
   h.add(context::ctx_global::getAppVersionStr());
   if (m_pCppExport)
   {
      h.add(m_pCppExport->getVersion());
      h.add(m_pCppExport->getCppExportPath(true));
      h.add(static_cast<qint64>(m_pCppExport->getCppTemplate()));
      h.add(static_cast<qint64>(m_pCppExport->getPImpl()));
      h.add(static_cast<qint64>(m_pCppExport->getGenerateCustomFiles()));
      h.add(static_cast<qint64>(m_pCppExport->getRelativePathLumor()));
      h.add(m_pCppExport->getCustomCppTemplate_HPP());
      h.add(m_pCppExport->getCustomCppTemplate_CPP());
   }
   // A template may name the Lumor library: both forms the keywords write.
   h.add(getLumorPath(false, true));
   h.add(getLumorPath(true, false));
   // The templates' texts themselves: a custom template edited on disk changes them.
   for (const parser_ptr & parser : lstParsers) { addParser(h, parser); }
   addModel(h, project, exportThreads(), fnMeanwhile);
   return h.result();
}

} // namespace plugin
