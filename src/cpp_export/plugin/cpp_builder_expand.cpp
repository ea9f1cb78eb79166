#include "cpp_export/plugin/cpp_builder.h"

#include "gui/plugin/export_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <cerrno>
#include <cstring>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/generators/generators.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "tools/string_helper.h"
#include "cpp_export/tools/text_file.h"

namespace plugin {

namespace {

// A maximal run of at least three line feeds at or after iFrom; false when there is none. Any
// three consecutive characters hold one position of each residue modulo 3, so probing every
// third character finds every such run while looking at a third of the text.
bool findEmptyLineRun(const QChar * pText, qsizetype iSize, qsizetype iFrom, qsizetype & iStart, qsizetype & iEnd)
{
   for (qsizetype i = iFrom + 2; i < iSize; i += 3)
   {
      if (pText[i] != QLatin1Char('\n')) { continue; }
      qsizetype s = i;
      while ((s > iFrom) && (pText[s - 1] == QLatin1Char('\n'))) { --s; }
      qsizetype e = i + 1;
      while ((e < iSize) && (pText[e] == QLatin1Char('\n'))) { ++e; }
      if ((e - s) >= 3) { iStart = s; iEnd = e; return true; }
   }
   return false;
}

// Runs of three or more line feeds become two, so that generators emitting nothing leave at
// most one empty line (the same result as replacing "\n\n\n" until none is left). Done in place,
// moving the text between runs in blocks, because it runs over every generated file: appending
// character by character, or searching for the three-character string, weighs on the export.
void collapseEmptyLines(QString & out)
{
   const qsizetype iSize = out.size();
   qsizetype iStart = 0;
   qsizetype iEnd = 0;
   if (! findEmptyLineRun(out.constData(), iSize, 0, iStart, iEnd)) { return; }
   QChar * pData = out.data();
   qsizetype iWrite = iStart + 2;
   qsizetype iRead = iEnd;
   while (true)
   {
      const bool bMore = findEmptyLineRun(pData, iSize, iRead, iStart, iEnd);
      const qsizetype iBlockEnd = (bMore ? iStart : iSize);
      ::memmove(pData + iWrite, pData + iRead, static_cast<size_t>(iBlockEnd - iRead) * sizeof(QChar));
      iWrite += (iBlockEnd - iRead);
      if (! bMore) { break; }
      pData[iWrite++] = QLatin1Char('\n');
      pData[iWrite++] = QLatin1Char('\n');
      iRead = iEnd;
   }
   out.truncate(iWrite);
}

} // namespace

bool cpp_builder::writeFile(const QString & path, const QString & text, QString * pReason)
{
   auto fail = [&](const QString & sError) { if (pReason) { * pReason = sError + " : " + QDir::toNativeSeparators(path); } return false; };
   // Never through a link, whoever calls: its target may be anywhere.
   if (QFileInfo(path).isSymLink()) { return fail(QStringLiteral("Is a symbolic link")); }
   // A new file has no former content to protect: it is written in place, without the temporary
   // copy, link and disk sync of QSaveFile, which take milliseconds per file on a cold export.
   QFile newFile(path);
   if (newFile.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Text))
   {
      QTextStream stream(& newFile);
      tools::string_helper::initTextStream(& stream);
      stream << text;
      stream.flush();
      if ((stream.status() == QTextStream::Ok) && newFile.flush()) { newFile.close(); return true; }
      const QString sError = newFile.errorString();
      newFile.close();
      newFile.remove();
      return fail(sError);
   }
   // Anything but "it exists already" is the reason itself (no directory, no permission...).
   if (! QFileInfo::exists(path)) { return fail(newFile.errorString()); }

   QSaveFile file(path);
   if (! file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
   {
      // A directory in the file's place: the save file's message names its temporary file.
      if (QFileInfo(path).isDir()) { return fail(QString::fromLocal8Bit(std::strerror(EISDIR))); }
      return fail(file.errorString());
   }
   QTextStream stream(& file);
   tools::string_helper::initTextStream(& stream);
   stream << text;
   stream.flush();
   if (stream.status() != QTextStream::Ok) { const QString sError = file.errorString(); file.cancelWriting(); return fail(sError); }
   if (! file.commit()) { return fail(file.errorString()); }
   return true;
}

cpp_builder::parser_ptr cpp_builder::parserFromResource(const QString & path)
{
   return std::make_shared<tools::template_parser>(tools::readTextFile(path));
}

QString cpp_builder::buildHeader(model::project & project, model::entity & entity) { return buildHelper(project, entity, true); }
QString cpp_builder::buildSource(model::project & project, model::entity & entity) { return buildHelper(project, entity, false); }
QString cpp_builder::buildHeader(model::project & project, model::enumeration & enumeration) { return buildHelper(project, enumeration, true); }
QString cpp_builder::buildSource(model::project & project, model::enumeration & enumeration) { return buildHelper(project, enumeration, false); }

cpp_builder::parser_ptr cpp_builder::getParser(bool bHeader)
{
   if (! m_pCppExport) { return parser_ptr(); }
   const bool bPImpl = m_pCppExport->getPImpl();
   if (bPImpl != m_bPImplSeen)
   {
      m_bPImplSeen = bPImpl;
      for (int i = 0; i < 4; ++i) { m_pParserBuiltInHeader[i].reset(); m_pParserBuiltInSource[i].reset(); }
      m_bPImplWarningHeader = false;
      m_bPImplWarningSource = false;
   }

   static const char * const k_sStyles[4] = { "no_inheritance", "ix_persistable", "zy_persistable", "ix_persistable_and_q_object" };
   const int iStyle = static_cast<int>(m_pCppExport->getCppTemplate());
   if ((iStyle >= 0) && (iStyle <= 3))
   {
      parser_ptr & pParser = (bHeader ? m_pParserBuiltInHeader[iStyle] : m_pParserBuiltInSource[iStyle]);
      if (! pParser)
      {
         QString sPath = QString(":/cpp_export/documents/template_") + k_sStyles[iStyle] + (bPImpl ? "_pimpl" : "") + (bHeader ? ".h" : ".cpp");
         pParser = parserFromResource(sPath);
      }
      return pParser;
   }
   if (iStyle == cpp_template::custom)
   {
      const QString sText = (bHeader ? m_pCppExport->getCustomCppTemplate_HPP() : m_pCppExport->getCustomCppTemplate_CPP());
      parser_ptr & pParser = (bHeader ? m_pParserCustomTemplateHeader : m_pParserCustomTemplateSource);
      QString & sCached = (bHeader ? m_sCustomTemplateHeaderText : m_sCustomTemplateSourceText);
      if (pParser && (sCached == sText)) { return pParser; }
      sCached = sText;
      pParser = std::make_shared<tools::template_parser>(sText);
      return pParser;
   }
   return parser_ptr();
}

bool cpp_builder::checkParserContent(parser_ptr parser, bool bHeader)
{
   if (! m_pCppExport || ! parser) { return true; }
   if (! m_pCppExport->getPImpl()) { return true; }
   const QString & sInput = parser->getInputText();
   const QString sTitle = "Tavrel - " + m_pCppExport->getName();
   if (bHeader && ! m_bPImplWarningHeader && ! sInput.contains("@@PIMPL_DEFINITION@@") && ! sInput.contains("@@CUSTOM_PIMPL_DEFINITION"))
   {
      m_bPImplWarningHeader = true;
      tools::message_box::critical(nullptr, sTitle, "When you enable 'PIMPL idiom' setting in C++ export plugin, your template for *.HPP files must contain '@@PIMPL_DEFINITION@@' or '@@CUSTOM_PIMPL_DEFINITION' placeholder to define the private implementation pointer.", QMessageBox::Ok);
      return false;
   }
   if (! bHeader && ! m_bPImplWarningSource && ! sInput.contains("@@PIMPL_IMPLEMENTATION@@") && ! sInput.contains("@@CUSTOM_PIMPL_IMPLEMENTATION"))
   {
      m_bPImplWarningSource = true;
      tools::message_box::critical(nullptr, sTitle, "When you enable 'PIMPL idiom' setting in C++ export plugin, your template for *.CPP files must contain '@@PIMPL_IMPLEMENTATION@@' or '@@CUSTOM_PIMPL_IMPLEMENTATION' placeholder to implement the private implementation pointer.", QMessageBox::Ok);
      return false;
   }
   return true;
}

template <typename Dispatch>
bool cpp_builder::expand(const parser_ptr & parser, Dispatch dispatchPiece, model::project * pProject, model::entity * pEntity,
                         model::enumeration * pEnumeration, const QString & sCurrentFile, QString & out, QString & sError)
{
   out.clear();
   // Room for the largest text this template gave so far: regrowing the output would copy it
   // again and again. Only a capacity hint, so a reused address does no harm.
   thread_local QHash<const tools::template_parser *, qsizetype> s_hashLargestOutput;
   if (s_hashLargestOutput.size() > 64) { s_hashLargestOutput.clear(); }
   const qsizetype iLargest = s_hashLargestOutput.value(parser.get(), 0);
   out.reserve(qMax<qsizetype>(parser->getInputTextSize() * 5, iLargest + (iLargest / 8)));
   std::shared_ptr<tools::custom_javascript> pScript = (m_pCppExport ? m_pCppExport->getCustomScript() : nullptr);
   QHash<QString, QVariant> params;
   if (pScript)
   {
      params.insert("plugin_name", m_pCppExport->getName());
      params.insert("current_file", sCurrentFile);
      params.insert("output_location", m_pCppExport->getCppExportPath(true));
   }

   const QList<QString> & lstText = parser->textList();
   const QList<tools::template_parser::enum_action> & lstAction = parser->actionList();
   qsizetype iPrev = 0;
   for (qsizetype i = 0; i < lstText.size(); ++i)
   {
      const QString & t = lstText.at(i);
      const int c = static_cast<int>(lstAction.at(i));
      dispatchPiece(out, t, c);
      if (! pScript) { continue; }
      if (c == tools::template_parser::action_none) { iPrev = out.size(); continue; }
      if (out.size() < iPrev) { iPrev = out.size(); }
      params.insert("default_value", out.mid(iPrev));
      params.insert("action", t);
      zy::ZyBool answer = pScript->executeScript(pProject, pEntity, nullptr, pEnumeration, params);
      if (! answer) { sError = answer.getDesc(); return false; }
      out.truncate(iPrev);
      out += answer.getDesc();
      iPrev = out.size();
   }

   if (out.size() > iLargest) { s_hashLargestOutput.insert(parser.get(), out.size()); }
   collapseEmptyLines(out);

   if (pScript)
   {
      params.insert("default_value", out);
      params.insert("action", QStringLiteral("BEFORE_CLOSING_FILE"));
      zy::ZyBool answer = pScript->executeScript(pProject, pEntity, nullptr, pEnumeration, params);
      if (! answer) { sError = answer.getDesc(); return false; }
      out = answer.getDesc();
   }
   return true;
}

QString cpp_builder::buildHelper(model::project & project, model::entity & entity, bool bHeader)
{
   parser_ptr parser = getParser(bHeader);
   if (! parser || (parser->textList().size() != parser->actionList().size())) { return QString(); }
   checkParserContent(parser, bHeader);
   const QString sCurrentFile = (bHeader ? m_sCurrentHeaderFile : m_sCurrentSourceFile);
   QString out, sError;
   auto dispatchPiece = [&](QString & o, const QString & t, int c) { dispatch(o, project, entity, t, c); };
   if (! expand(parser, dispatchPiece, & project, & entity, nullptr, sCurrentFile, out, sError))
   {
      Q_EMIT onMessage(sError, 3, 10000);
      return sError;
   }
   return out;
}

QString cpp_builder::generateText(model::project & project, model::entity & entity, const parser_ptr & parser)
{
   if (! parser || (parser->textList().size() != parser->actionList().size())) { return QString(); }
   QString out, sError;
   auto dispatchPiece = [&](QString & o, const QString & t, int c) { dispatch(o, project, entity, t, c); };
   expand(parser, dispatchPiece, & project, & entity, nullptr, QString(), out, sError);
   return out;
}

QString cpp_builder::generateText(model::project & project, model::enumeration & enumeration, const parser_ptr & parser)
{
   if (! parser || (parser->textList().size() != parser->actionList().size())) { return QString(); }
   QString out, sError;
   auto dispatchPiece = [&](QString & o, const QString & t, int c) { dispatch(o, project, enumeration, t, c); };
   expand(parser, dispatchPiece, & project, nullptr, & enumeration, QString(), out, sError);
   return out;
}

cpp_builder::parser_ptr cpp_builder::enumerationParser(bool bHeader)
{
   parser_ptr & parser = (bHeader ? m_pParserEnumHeader : m_pParserEnumSource);
   if (! parser)
   {
      const QString sPath = (bHeader ? QStringLiteral(":/cpp_export/documents/template_enumeration.h") : QStringLiteral(":/cpp_export/documents/template_enumeration.cpp"));
      if (QFileInfo::exists(sPath)) { parser = parserFromResource(sPath); }
   }
   return parser;
}

void cpp_builder::loadCustomParsers()
{
   if (! m_pParserCustomHeader && QFileInfo::exists(":/cpp_export/documents/template_custom_header.h"))
   { m_pParserCustomHeader = parserFromResource(":/cpp_export/documents/template_custom_header.h"); }
   if (! m_pParserCustomSource && QFileInfo::exists(":/cpp_export/documents/template_custom_source.cpp"))
   { m_pParserCustomSource = parserFromResource(":/cpp_export/documents/template_custom_source.cpp"); }
}

QString cpp_builder::buildHelper(model::project & project, model::enumeration & enumeration, bool bHeader)
{
   parser_ptr parser = enumerationParser(bHeader);
   if (! parser || (parser->textList().size() != parser->actionList().size())) { return QString(); }
   const QString sCurrentFile = (bHeader ? m_sCurrentHeaderFile : m_sCurrentSourceFile);
   QString out, sError;
   auto dispatchPiece = [&](QString & o, const QString & t, int c) { dispatch(o, project, enumeration, t, c); };
   if (! expand(parser, dispatchPiece, & project, nullptr, & enumeration, sCurrentFile, out, sError))
   {
      Q_EMIT onMessage(sError, 3, 10000);
      return sError;
   }
   return out;
}

zy::ZyBool cpp_builder::build_Generic(model::project & project, parser_ptr parser, const QString & fileName,
                                      model::entity * pEntity, model::enumeration * pEnumeration)
{
   if (! parser) { return zy::ZyBool(false, "No template parser defined to create file : " + fileName); }
   if (parser->textList().size() != parser->actionList().size()) { return zy::ZyBool(false, "Invalid template parser to create file : " + fileName); }
   const QString sRefused = refusedPath(fileName);
   if (! sRefused.isEmpty()) { return zy::ZyBool(false, sRefused); }
   // A project file the record vouches for is reported as the comparison would report it.
   if (! pEntity && ! pEnumeration && stillRecorded(fileName))
   {
      m_pCppExport->getExportFiles()->report(fileName, true, QString(), QString(), true);
      return zy::ZyBool(true);
   }
   bool bExists = false;
   QString sOld = getFileText(fileName, bExists);
   // The slow "\r\n" search only when there is a '\r' at all.
   if (sOld.contains(QLatin1Char('\r'))) { sOld.replace(QStringLiteral("\r\n"), QStringLiteral("\n")); }

   model::entity emptyEntity;
   QString out, sError;
   auto dispatchPiece = [&](QString & o, const QString & t, int c)
   {
      if (pEntity) { dispatch(o, project, * pEntity, t, c); }
      else if (pEnumeration) { dispatch(o, project, * pEnumeration, t, c); }
      else { dispatch(o, project, emptyEntity, t, c); }
   };
   if (! expand(parser, dispatchPiece, & project, pEntity, pEnumeration, fileName, out, sError))
   { return zy::ZyBool(false, "An error occurred with custom javascript for file '" + fileName + "' :\n" + sError); }

   if (datedWhereCompared(out)) { m_bDatedText = true; }
   if (! putFile(fileName, sOld, out, bExists))
   { return zy::ZyBool(false, "An error occurred opening file : " + fileName); }

   executeScript(& project, pEntity, nullptr, pEnumeration, "AFTER_CLOSING_FILE", out, fileName);
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::build_CustomFile(model::project & project, model::entity * pEntity, model::enumeration * pEnumeration)
{
   if (m_pCppExport && ! m_pCppExport->getGenerateCustomFiles()) { return zy::ZyBool(true); }
   loadCustomParsers();

   const QDir dir(m_pCppExport ? m_pCppExport->getCppExportPath(true) : QString());
   if (! makeDirectory(dir.absoluteFilePath("custom"))) { return zy::ZyBool(false, "Cannot create 'custom' directory"); }
   if (! makeDirectory(dir.absoluteFilePath("custom/include"))) { return zy::ZyBool(false, "Cannot create 'custom/include' directory"); }
   if (! makeDirectory(dir.absoluteFilePath("custom/src"))) { return zy::ZyBool(false, "Cannot create 'custom/src' directory"); }

   const QString sKey = generators::flatKey(pEntity ? pEntity->getKey() : (pEnumeration ? pEnumeration->getKey() : QString()));
   const QString sHeader = dir.absoluteFilePath("custom/include/" + sKey + ".h");
   const QString sSource = dir.absoluteFilePath("custom/src/" + sKey + ".cpp");
   // A dangling link does not exist for this test: build_Generic then refuses to write through it.
   if (! userFileExists(sHeader))
   {
      zy::ZyBool ok = build_Generic(project, m_pParserCustomHeader, sHeader, pEntity, pEnumeration);
      if (! ok) { return ok; }
   }
   if (! userFileExists(sSource)) { return build_Generic(project, m_pParserCustomSource, sSource, pEntity, pEnumeration); }
   return zy::ZyBool(true);
}

zy::ZyBool cpp_builder::executeScript(model::project * pProject, model::entity * pEntity, model::property * pProperty,
                                      model::enumeration * pEnumeration, const QString & action,
                                      const QString & defaultValue, const QString & currentFile) const
{
   if (! m_pCppExport) { return zy::ZyBool(false, k_sNoPlugin); }
   std::shared_ptr<tools::custom_javascript> pScript = m_pCppExport->getCustomScript();
   if (! pScript) { return zy::ZyBool(true, QString()); }
   QHash<QString, QVariant> params;
   params.insert("plugin_name", m_pCppExport->getName());
   params.insert("output_location", m_pCppExport->getCppExportPath(true));
   params.insert("current_file", currentFile);
   params.insert("default_value", defaultValue);
   params.insert("action", action);
   return pScript->executeScript(pProject, pEntity, pProperty, pEnumeration, params);
}

} // namespace plugin
