// What an export's entity and enumeration files are made from, in one fingerprint recorded with
// the export: when the next export finds the same one, a file that still has its recorded hash
// is what generating it again would give (but for the banner's date), so it is not generated.

#include "cpp_export/plugin/cpp_builder.h"

#include <QFile>

#include <dlfcn.h>
#include <sys/stat.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "context/ctx_global.h"
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

void addParser(fingerprint_hash & h, const cpp_builder::parser_ptr & parser)
{
   if (! parser) { h.add(QByteArray("no template")); return; }
   h.add(parser->getInputText());
}

} // namespace

QByteArray cpp_builder::itemFingerprint(const model::project & project, const std::vector<parser_ptr> & lstParsers) const
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
   h.add(storage::json_write::projectText(project));
   return h.result();
}

} // namespace plugin
