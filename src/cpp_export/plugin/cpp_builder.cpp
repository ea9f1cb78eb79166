#include "cpp_export/plugin/cpp_builder.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/global_params.h"
#include "model/model_integrity.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "tools/string_helper.h"
#include "cpp_export/tools/text_file.h"
#include "gui/tools/wait_cursor.h"
#include "gui/plugin/export_files.h"

namespace plugin {

namespace {

const int k_iDuration = 10000;

// Views, not copies: the comparison runs on every generated file.
QStringView removeUpTo(QStringView text, QLatin1String marker)
{
   qsizetype pos = text.indexOf(marker);
   return ((pos > 0) ? text.mid(pos) : text);
}

} // namespace

cpp_builder::cpp_builder(cpp_export * plugin) : QObject(nullptr), m_pCppExport(plugin) { ; }

cpp_builder::~cpp_builder() { ; }

QString cpp_builder::getFileText(const QString & path) const { return tools::readTextFile(path); }
QString cpp_builder::getFileText(const QString & path, bool & bExists) const { return tools::readTextFile(path, tools::line_ends::lf_only, & bExists); }

bool cpp_builder::isSame(const QString & oldText, const QString & newText) const
{
   if (oldText == newText) { return true; }
   // A missing file against a generated text (cold export): the markers cannot make them equal.
   if (oldText.isEmpty() != newText.isEmpty()) { return false; }
   return (comparedPart(oldText) == comparedPart(newText));
}

QStringView cpp_builder::comparedPart(QStringView text)
{
   return removeUpTo(removeUpTo(text, QLatin1String("****/\n\n")), QLatin1String("#####\n\n"));
}

bool cpp_builder::datedWhereCompared(QStringView text)
{
   return comparedPart(text).contains(QLatin1String("File created by "));
}

QString cpp_builder::getLumorPath(bool bForceCheck, bool bWithPwdPrefix) const
{
   model::global_params_ptr pParams = context::ctx_global::getGlobalParams();
   if (! pParams) { return QString(); }
   bool bRelative = (m_pCppExport && m_pCppExport->getRelativePathLumor());
   bool bCheck = (bForceCheck || bRelative);
   QString p = pParams->getLumorPath(bCheck);
   p.replace("\\", "/");
   if (! p.isEmpty() && ! p.endsWith("/")) { p += "/"; }
   if (p.isEmpty() || (bCheck && ! QDir(p).exists())) { return QString(); }
   if (! bRelative) { return p; }

   QString d = m_pCppExport->getCppExportPath(true);
   if (d.isEmpty() || ! QDir(d).exists()) { return p; }
   QString r = QDir(d).relativeFilePath(p);
   r.replace("\\", "/");
   if (! r.endsWith("/")) { r += "/"; }
   if (bWithPwdPrefix && (r.toUpper() != p.toUpper())) { r = "$$PWD/" + r; }
   return r;
}

zy::ZyBool cpp_builder::checkExportPaths(const QString & sExportDir)
{
   // An empty path names no directory (QDir would take it for the current one); a dry run
   // exports into a missing one as into an empty one.
   if (sExportDir.isEmpty() || (! isDryRun() && ! QDir(sExportDir).exists())) { return zy::ZyBool(false, "Directory to export entities doesn't exist : " + sExportDir); }
   model::global_params_ptr pParams = context::ctx_global::getGlobalParams();
   if (! pParams) { return zy::ZyBool(false, "Cannot access to global parameters"); }
   // The path is written into the generated CMake and qmake files: refused before anything is
   // written when it would break out of its text there or names an unset variable.
   const QString sLumorProblem = pParams->getLumorPathProblem();
   if (! sLumorProblem.isEmpty())
   {
      return zy::ZyBool(false, "Lumor library path is not valid : " + model::model_text_rules::shown(pParams->getLumorPath(false))
                                  + "\nThe Lumor library path " + sLumorProblem);
   }
   const QString L = pParams->getLumorPath(true);
   if (L.isEmpty()) { return zy::ZyBool(false, "You must define a Lumor library path in Tavrel global settings (menu 'Tools >> Global settings') before exporting to C++ project"); }
   if (! QDir(L).exists()) { return zy::ZyBool(false, "Lumor library path is not valid : " + L); }
   // The project files get the path with '\\' read as '/': it must still name the directory.
   if (getLumorPath(true, false).isEmpty())
   {
      return zy::ZyBool(false, "Lumor library path is not valid : " + model::model_text_rules::shown(L) +
                               "\nWith its backslashes read as '/', as the generated project files read them, it names no directory");
   }
   return zy::ZyBool(true);
}

bool cpp_builder::confirmSchemaErrors(model::project & project, bool & bClean) const
{
   const zy::ZyInvalidValueX lstInvalid = project.checkSchema();
   bClean = lstInvalid.isEmpty();
   if (lstInvalid.isEmpty()) { return true; }
   QString sText = "Some errors have been detected in current project :";
   for (const auto & invalid : lstInvalid) { sText += "\n- " + invalid.getMessage(); }
   sText += "\n\nDo you want to continue the export process anyway ?";
   QMessageBox::StandardButton answer = tools::message_box::question(nullptr, "Tavrel - " + m_pCppExport->getName(), sText,
                                                                       QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
   return (answer == QMessageBox::Yes);
}

std::vector<cpp_builder::parser_ptr> cpp_builder::itemParsers()
{
   std::vector<parser_ptr> lst = { getParser(true), getParser(false), enumerationParser(true), enumerationParser(false) };
   if (! m_pCppExport || m_pCppExport->getGenerateCustomFiles())
   {
      loadCustomParsers();
      lst.push_back(m_pParserCustomHeader);
      lst.push_back(m_pParserCustomSource);
   }
   return lst;
}

bool cpp_builder::checkModel(model::project & project, const QString & sExportDir, zy::ZyBool & ok)
{
   m_itemFingerprint.clear();
   m_bModelClean = false;
   // A user script may make each run different: no fingerprint stands for its output.
   export_files * pFiles = m_pCppExport->getExportFiles();
   if (pFiles && ! m_pCppExport->getCustomScript())
   {
      // The record is read from the project file while the model is hashed.
      QByteArray recorded;
      m_itemFingerprint = itemFingerprint(project, itemParsers(), [&] { recorded = pFiles->recordedFingerprint(sExportDir); });
      // Recorded only after a complete export of a model without problems: the same fingerprint
      // is the same model, with none.
      if (! recorded.isEmpty() && (recorded == m_itemFingerprint)) { m_bModelClean = true; return true; }
   }
   // Declining to go on with errors in the model is no failure of the export.
   if (! confirmSchemaErrors(project, m_bModelClean)) { ok = zy::ZyBool(true, QString()); return false; }

   // No answer makes two classes share a file: one would silently replace the other.
   const QStringList lstCollisions = model::model_integrity::fileCollisions(project, true);
   if (! lstCollisions.isEmpty()) { ok = zy::ZyBool(false, "Nothing was exported, generated files would overwrite each other :\n- " + lstCollisions.join("\n- ")); return false; }
   return true;
}

zy::ZyBool cpp_builder::lockExportDirectory(QLockFile & lock, const QString & sExportDir)
{
   const QDir dir(sExportDir);
   const QString sLockFile = dir.absoluteFilePath(lockFileName());
   const QString sShown = QDir::toNativeSeparators(sLockFile);
   const QFileInfo info(sLockFile);
   // A link is never written through, nor read: it is replaced by a lock of our own.
   if (info.isSymLink())
   {
      const QString sTarget = info.symLinkTarget();
      if (! QFile::remove(sLockFile)) { return zy::ZyBool(false, "The lock file '" + sShown + "' is a symbolic link that cannot be removed : " + sExportDir); }
      Q_EMIT onMessage("The lock file '" + sShown + "' was a symbolic link (to '" + QDir::toNativeSeparators(sTarget) +
                       "') : the link was removed and its target left alone", 2, k_iDuration);
   }
   else if (info.exists())
   {
      // An empty or damaged lock names no process: nobody holds it, and nobody ever would.
      qint64 iPid = 0;
      QString sHost, sApp;
      if (! lock.getLockInfo(& iPid, & sHost, & sApp) || (iPid <= 0))
      {
         if (info.isDir() || ! QFile::remove(sLockFile)) { return zy::ZyBool(false, "The lock file '" + sShown + "' is damaged and cannot be removed : " + sExportDir); }
         Q_EMIT onMessage("The lock file '" + sShown + "' named no process (empty or damaged) : it was taken over", 2, k_iDuration);
      }
   }
   const bool bLeftBehind = QFileInfo::exists(sLockFile);
   // One export at a time in a directory: two would mix their files. One left by a process that
   // is gone (or is not this program) is taken over.
   lock.setStaleLockTime(0);
   if (! lock.tryLock(0) && (lock.error() == QLockFile::LockFailedError))
   {
      qint64 iPid = 0;
      QString sHost, sApp;
      lock.getLockInfo(& iPid, & sHost, & sApp);
      return zy::ZyBool(false, "Another export into this directory is running (process " + QString::number(iPid) + ", lock file '" +
                               sShown + "') : " + sExportDir);
   }
   if (bLeftBehind && lock.isLocked()) { Q_EMIT onMessage("The lock file '" + sShown + "' of an export that is no longer running was taken over", 2, k_iDuration); }
   // A lock that cannot be made at all (a directory that can't be written) is left to the
   // creation of the directories, which says why.
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::makeExportDirectories(const QDir & dir)
{
   if (! makeDirectory(dir.absoluteFilePath("include"))) { return zy::ZyBool(false, "Cannot create 'include' directory"); }
   if (! makeDirectory(dir.absoluteFilePath("src"))) { return zy::ZyBool(false, "Cannot create 'src' directory"); }
   // Nothing is written into these two: a link to the user's own build place is fine.
   auto makeEmptyDirectory = [&](const QString & path) { return (QFileInfo(path).isDir() || makeDirectory(path)); };
   if (! makeEmptyDirectory(dir.absoluteFilePath("bin"))) { return zy::ZyBool(false, "Cannot create 'bin' directory"); }
   if (! makeEmptyDirectory(dir.absoluteFilePath("build"))) { return zy::ZyBool(false, "Cannot create 'build' directory"); }
   return zy::ZyBool(true);
}

template <typename Item>
zy::ZyBool cpp_builder::exportItem(model::project & project, Item & item, model::entity * pEntity, model::enumeration * pEnumeration,
                                   const QString & sKind, const QString & sExportDir)
{
   const QDir dir(sExportDir);
   const QString sKey = item.getKey();
   const QString sFlat = generators::flatKey(sKey);
   m_sCurrentHeaderFile = dir.absoluteFilePath("include/" + sFlat + ".gen.h");
   m_sCurrentSourceFile = dir.absoluteFilePath("src/" + sFlat + ".gen.cpp");
   for (const QString & sFile : { m_sCurrentHeaderFile, m_sCurrentSourceFile })
   {
      const QString sRefused = refusedPath(sFile);
      if (! sRefused.isEmpty()) { return zy::ZyBool(false, sRefused); }
   }
   bool bHeaderExists = false, bSourceExists = false;
   QString sOldHeader = getFileText(m_sCurrentHeaderFile, bHeaderExists);
   QString sOldSource = getFileText(m_sCurrentSourceFile, bSourceExists);
   const QString sNewHeader = buildHelper(project, item, true);
   const QString sNewSource = buildHelper(project, item, false);
   // No "\r\n" to turn into "\n": getFileText drops every '\r' already.
   if (! putFile(m_sCurrentHeaderFile, sOldHeader, sNewHeader, bHeaderExists))
   { return zy::ZyBool(false, "An error occurred opening header file : " + m_sCurrentHeaderFile); }
   if (! putFile(m_sCurrentSourceFile, sOldSource, sNewSource, bSourceExists))
   { return zy::ZyBool(false, "An error occurred opening source file : " + m_sCurrentSourceFile); }
   executeScript(& project, pEntity, nullptr, pEnumeration, "AFTER_CLOSING_FILE", sNewHeader, m_sCurrentHeaderFile);
   executeScript(& project, pEntity, nullptr, pEnumeration, "AFTER_CLOSING_FILE", sNewSource, m_sCurrentSourceFile);
   zy::ZyBool ok = build_CustomFile(project, pEntity, pEnumeration);
   if (! ok) { return ok; }
   Q_EMIT onMessage(sKind + " '" + sKey + "' exported to C++ class : '" + sExportDir + "'", 1, k_iDuration);
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::exportItems(model::project & project, const model::list_of_entity & lstEntities, const QString & sExportDir)
{
   // A user script sees the items one after the other, and may depend on their order.
   if (m_pCppExport && ! m_pCppExport->getCustomScript())
   {
      bool bDone = false;
      const zy::ZyBool ok = exportItemsAtOnce(project, lstEntities, sExportDir, bDone);
      if (bDone) { return ok; }
   }
   for (const model::entity_ptr & pEntity : lstEntities)
   {
      if (! pEntity || (pEntity->getId() == 0)) { continue; }
      zy::ZyBool ok = exportItem(project, * pEntity, pEntity.get(), nullptr, "Entity", sExportDir);
      if (! ok) { return ok; }
   }

   model::list_of_enumeration_ptr pEnums = project.getListOfAllEnums();
   if (! pEnums) { return zy::ZyBool(true); }
   for (const model::enumeration_ptr & pEnum : * pEnums)
   {
      if (! pEnum || (pEnum->getId() == 0)) { continue; }
      zy::ZyBool ok = exportItem(project, * pEnum, nullptr, pEnum.get(), "Enumeration", sExportDir);
      if (! ok) { return ok; }
   }
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::buildProjectFiles(model::project & project)
{
   typedef zy::ZyBool (cpp_builder::*fct_build)(model::project &);
   const QList<QPair<fct_build, QString> > lstSteps = {
      { & cpp_builder::build_PriFile, "C++ project file *.pri created" },
      { & cpp_builder::build_ProFile, "C++ project file *.pro created" },
      { & cpp_builder::build_CMakeListsFile, "C++ project file CMakeLists.txt created" },
      { & cpp_builder::build_AllCppFile, "C++ unity build 'all.cpp' file created" },
      { & cpp_builder::build_PrecompiledHeader, "C++ precompiled header file created" },
      { & cpp_builder::build_ExportFile, "C++ 'export.h' file created" },
      { & cpp_builder::build_MainFile, "C++ 'main.cpp' file created" },
      { & cpp_builder::build_AllIcludes, "C++ all includes project header file created" } };
   for (const auto & step : lstSteps)
   {
      zy::ZyBool ok = (this->*(step.first))(project);
      if (! ok) { return ok; }
      Q_EMIT onMessage(step.second, 1, k_iDuration);
   }
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::build(model::project & project)
{
   tools::wait_cursor wait;
   m_sLastFailureReason.clear();
   if (! m_pCppExport) { return zy::ZyBool(false, k_sNoPlugin); }
   model::list_of_entity_ptr pEntities = project.getListOfAllEntities();
   if (! pEntities) { return zy::ZyBool(false, "This project doesn't have a valid list of entities"); }

   const QString D = m_pCppExport->getCppExportPath(true);
   zy::ZyBool ok = checkExportPaths(D);
   if (! ok) { return ok; }
   if (! checkModel(project, D, ok)) { return ok; }

   QDir dir(D);
   // The lock goes with this call however it ends. A dry run writes nothing, not even the lock.
   QLockFile lock(dir.absoluteFilePath(lockFileName()));
   if (! isDryRun())
   {
      ok = lockExportDirectory(lock, D);
      if (! ok) { return ok; }
   }

   m_sWriteRoot = D;
   m_pTrusted = nullptr;
   m_bVouched = false;
   m_bDatedText = false;
   struct write_root_reset
   {
      cpp_builder & b;
      ~write_root_reset() { b.m_sWriteRoot.clear(); b.m_pTrusted = nullptr; }
   } resetRoot{ * this };
   // The dated line of the banner is no change for the rewrite rule, nor for a diff.
   if (m_pCppExport->getExportFiles()) { m_pCppExport->getExportFiles()->begin(D, QStringLiteral("File created by Tavrel .* : please, do NOT modify this file")); }

   ok = makeExportDirectories(dir);
   if (! ok) { return ok; }
   executeScript(& project, nullptr, nullptr, nullptr, "PLUGIN_EXPORT_START", QString(), QString());
   ok = exportItems(project, * pEntities, D);
   if (! ok) { return ok; }
   ok = buildProjectFiles(project);
   if (! ok) { return ok; }
   // A model with problems asks again next time: no fingerprint lets that export skip the check.
   export_files * pFiles = m_pCppExport->getExportFiles();
   if (pFiles && m_bVouched && ! m_bDatedText) { pFiles->setFingerprint(m_itemFingerprint); }

   executeScript(& project, nullptr, nullptr, nullptr, "PLUGIN_EXPORT_END", QString(), QString());
   Q_EMIT onMessage("All entities have been exported to a C++ project : '" + D + "'", 1, k_iDuration);
   return zy::ZyBool(true);
}

} // namespace plugin
