#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

#include "model/model_fwd.h"
#include "cpp_export/tools/template_parser.h"
#include "zy/ZyBool.h"

class QDir;
class QLockFile;

namespace plugin {

class cpp_export;

// Returned by every build step called on a builder that has no plug-in.
inline constexpr const char * k_sNoPlugin = "There is no plugin associated to the C++ builder class";

// Turns a project into a C++ source tree: one header and source per entity and enumeration,
// the project-level files and the user-owned custom files. Files are rewritten only when their
// body changed.
class cpp_builder : public QObject
{
   Q_OBJECT

public:
   typedef std::shared_ptr<tools::template_parser> parser_ptr;

private:
   cpp_export * m_pCppExport = nullptr;
   QString m_sCurrentHeaderFile;
   QString m_sCurrentSourceFile;

   // Class templates, indexed by built-in style (0 to 3).
   parser_ptr m_pParserBuiltInHeader[4];
   parser_ptr m_pParserBuiltInSource[4];
   parser_ptr m_pParserCustomTemplateHeader;
   parser_ptr m_pParserCustomTemplateSource;
   QString m_sCustomTemplateHeaderText;
   QString m_sCustomTemplateSourceText;
   bool m_bPImplSeen = false;
   bool m_bPImplWarningHeader = false;
   bool m_bPImplWarningSource = false;

   parser_ptr m_pParserEnumHeader;
   parser_ptr m_pParserEnumSource;
   parser_ptr m_pParserCustomHeader;
   parser_ptr m_pParserCustomSource;

   // Project-level templates, by resource name.
   QHash<QString, parser_ptr> m_hashProjectParsers;

   // The fingerprint of this build's inputs (empty without a host's record or with a script),
   // recorded when the model had no problem: the next build with the same one skips the checks.
   QByteArray m_itemFingerprint;
   bool m_bModelClean = false;
   // While build() runs: the record trusted by the items (also for the project files), whether
   // the items' files may be vouched for, and whether a generated text showed its date where
   // texts are compared.
   const QHash<QString, QByteArray> * m_pTrusted = nullptr;
   bool m_bVouched = false;
   bool m_bDatedText = false;

   // The export directory while build() runs: nothing is written outside it. Empty otherwise.
   QString m_sWriteRoot;
   // The system's reason (with the path) for the last directory or file that could not be made.
   QString m_sLastFailureReason;

public:
   explicit cpp_builder(cpp_export * plugin);
   virtual ~cpp_builder();

   zy::ZyBool build(model::project & project);

   QString buildHeader(model::project & project, model::entity & entity);
   QString buildSource(model::project & project, model::entity & entity);
   QString buildHeader(model::project & project, model::enumeration & enumeration);
   QString buildSource(model::project & project, model::enumeration & enumeration);

   QString getFileText(const QString & path) const;
   QString getFileText(const QString & path, bool & bExists) const;
   bool isSame(const QString & oldText, const QString & newText) const;
   // The part of a generated text that isSame compares: what follows the banner.
   static QStringView comparedPart(QStringView text);
   // Whether a generated text shows its dated banner line where isSame compares.
   static bool datedWhereCompared(QStringView text);
   // What the entity and enumeration files of an export are made from: the model, the plug-in's
   // settings and build, the Lumor path and the given templates. fnMeanwhile runs on this thread
   // while other threads hash the model.
   QByteArray itemFingerprint(const model::project & project, const std::vector<parser_ptr> & lstParsers,
                              const std::function<void()> & fnMeanwhile = std::function<void()>()) const;
   QString getLumorPath(bool bForceCheck, bool bWithPwdPrefix) const;

   cpp_export * getPlugin() const { return m_pCppExport; }
   QString getCurrentHeaderFile() const { return m_sCurrentHeaderFile; }
   QString getCurrentSourceFile() const { return m_sCurrentSourceFile; }
   // Why the last build failed to create or write a path, as the system says it; empty when
   // the failure had no such reason.
   QString getLastFailureReason() const { return m_sLastFailureReason; }
   // Name of the lock file that keeps two exports out of one directory.
   static QString lockFileName() { return QStringLiteral(".tavrel_export.lock"); }
   // Threads that export the entities and enumerations when no user script is set: the
   // environment variable TAVREL_EXPORT_THREADS when it holds a number from 1 (one thread, as
   // with a script) to 64, else one per core.
   static int exportThreads();

Q_SIGNALS:
   void onMessage(const QString & text, int kind, int duration);

protected:
   parser_ptr getParser(bool bHeader);
   bool checkParserContent(parser_ptr parser, bool bHeader);

   QString buildHelper(model::project & project, model::entity & entity, bool bHeader);
   QString buildHelper(model::project & project, model::enumeration & enumeration, bool bHeader);
   zy::ZyBool build_Generic(model::project & project, parser_ptr parser, const QString & fileName,
                            model::entity * pEntity, model::enumeration * pEnumeration);
   zy::ZyBool build_CustomFile(model::project & project, model::entity * pEntity, model::enumeration * pEnumeration);
   zy::ZyBool executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                            model::enumeration * pEnumeration, const QString & action,
                            const QString & defaultValue, const QString & currentFile) const;

   zy::ZyBool build_PriFile(model::project & project);
   zy::ZyBool build_ProFile(model::project & project);
   zy::ZyBool build_CMakeListsFile(model::project & project);
   zy::ZyBool build_AllCppFile(model::project & project);
   zy::ZyBool build_PrecompiledHeader(model::project & project);
   zy::ZyBool build_ExportFile(model::project & project);
   zy::ZyBool build_MainFile(model::project & project);
   zy::ZyBool build_AllIcludes(model::project & project);

   // Writes a generated text in one piece: a failed write leaves the former file whole. On
   // failure pReason gets the system's reason with the path.
   static bool writeFile(const QString & path, const QString & text, QString * pReason = nullptr);
   // Reports the file to the host's export_files (when it gave one) and writes it when its text
   // changed and the run is no dry run; false when the write failed.
   bool putFile(const QString & path, const QString & oldText, const QString & newText, bool bExists);
   bool isDryRun() const;
   // Whether a file created once for the user is there; if so it is reported as still produced.
   bool userFileExists(const QString & path);
   // Why path may not be written by this build (outside the export directory, or reached through
   // a symbolic link); empty when it may, and always outside build().
   QString refusedPath(const QString & path) const;
   // Creates a directory with its parents; on failure keeps the reason (getLastFailureReason).
   bool makeDirectory(const QString & path);
   // Parser of a built-in template; a resource that can't be read gives an empty template.
   static parser_ptr parserFromResource(const QString & path);

private:
   // One generated file as the host hears of it, kept until its item's turn comes.
   struct file_report
   {
      QString path;
      QString oldText;
      QString newText;
      bool bExists = false;
      bool bSame = false;
      bool bKept = false;    // a user's file that exists: reported as kept, never written
      bool bWritten = false; // written by the worker (a stopped export writes no more)
      QByteArray hash;       // of newText, when the worker wrote it
   };
   // What exporting one item did on whichever thread: handed on to the host in model order.
   struct item_outcome
   {
      std::vector<file_report> reports;
      model::entity * pEntity = nullptr;
      QString sHeaderPath, sSourcePath;
      QString sMessage;
      zy::ZyBool result = zy::ZyBool(true);
      QString sReason;       // the system's reason of a failed write
   };
   struct item_ref { model::entity * pEntity = nullptr; model::enumeration * pEnumeration = nullptr; };
   // Parsers, settings and folder handles the items share; read-only while items are exported.
   struct item_context;

   // Steps of build(), in their order.
   zy::ZyBool checkExportPaths(const QString & sExportDir);
   // True when the model has no errors or the user goes on despite them; bClean tells which.
   bool confirmSchemaErrors(model::project & project, bool & bClean) const;
   // The model's checks, or none when the record's fingerprint is this build's (that export
   // passed them with the same model): false when the export stops (declined, or an error in ok).
   bool checkModel(model::project & project, const QString & sExportDir, zy::ZyBool & ok);
   // The templates of the entity and enumeration files, as the items use them.
   std::vector<parser_ptr> itemParsers();
   zy::ZyBool lockExportDirectory(QLockFile & lock, const QString & sExportDir);
   zy::ZyBool makeExportDirectories(const QDir & dir);
   // Each entity, then each enumeration: its two files, the script's notice, its custom files.
   zy::ZyBool exportItems(model::project & project, const model::list_of_entity & lstEntities, const QString & sExportDir);
   template <typename Item>
   zy::ZyBool exportItem(model::project & project, Item & item, model::entity * pEntity, model::enumeration * pEnumeration,
                         const QString & sKind, const QString & sExportDir);
   zy::ZyBool buildProjectFiles(model::project & project);

   // Without a user script items are independent: each is generated and written by workItem on
   // any thread, then replayItem hands its reports and message on, in model order. bDone is
   // false when the export must go the one-thread way (a folder it needs cannot be made).
   zy::ZyBool exportItemsAtOnce(model::project & project, const model::list_of_entity & lstEntities, const QString & sExportDir, bool & bDone);
   bool prepareItems(item_context & ctx, const QString & sExportDir);
   zy::ZyBool runItems(model::project & project, const std::vector<item_ref> & lstItems, const item_context & ctx, int iThreads);
   template <typename Item>
   void workItem(model::project & project, Item & item, const QString & sKind, const item_context & ctx, item_outcome & res);
   template <typename Item>
   bool workItemFiles(model::project & project, Item & item, const item_context & ctx, const QString & sHeaderName,
                      const QString & sSourceName, file_report & header, file_report & source, item_outcome & res);
   template <typename Item>
   bool workCustomFile(model::project & project, Item & item, const parser_ptr & parser, int iFolder, const QString & sFolder,
                       const QString & sName, const item_context & ctx, item_outcome & res);
   // An item's text from a template, without a script (so it cannot fail).
   QString generateText(model::project & project, model::entity & entity, const parser_ptr & parser);
   QString generateText(model::project & project, model::enumeration & enumeration, const parser_ptr & parser);
   // The former text of a generated file through its folder's handle when it can; the refusal
   // (a link, outside the folder) instead when the file may not be written.
   QString readOld(int iFolder, const QString & sName, const QString & sPath, QString & sOld, bool & bExists) const;
   // Whether a file still holds what the record of the last export says it holds, when that
   // record's fingerprint is this export's (ctx.pTrusted): then it needs no generating.
   bool stillRecorded(int iFolder, const QString & sName, const QString & sPath, const item_context & ctx) const;
   // The same for a project file, by its path.
   bool stillRecorded(const QString & sPath) const;
   // Adds the file's report and writes it when it changed (and the run is not dry).
   bool putNew(int iFolder, const QString & sName, file_report && r, const item_context & ctx, item_outcome & res) const;
   zy::ZyBool replayItem(item_outcome & res, const item_context & ctx);
   parser_ptr enumerationParser(bool bHeader);
   void loadCustomParsers();

   template <typename Dispatch>
   bool expand(const parser_ptr & parser, Dispatch dispatchPiece, model::project * pProject, model::entity * pEntity,
               model::enumeration * pEnumeration, const QString & sCurrentFile, QString & out, QString & sError);
   parser_ptr projectParser(const QString & resource);
   zy::ZyBool buildProjectFile(model::project & project, const QString & resource, const QString & relativePath);

   void dispatch(QString & out, model::project & project, model::entity & entity, const QString & piece, int code);
   void dispatch(QString & out, model::project & project, model::enumeration & enumeration, const QString & piece, int code);
};

} // namespace plugin
