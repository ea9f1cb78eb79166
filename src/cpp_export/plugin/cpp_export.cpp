#include "cpp_export/plugin/cpp_export.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "gui/plugin/export_files.h"
#include "model/plugin_params.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "cpp_export/tools/text_file.h"
#include "gui/tools/wait_cursor.h"
#include "cpp_export/view/cpp_export_preview.h"
#include "cpp_export/view/cpp_export_settings.h"
#include "gui/view/main_wnd.h"

namespace plugin {

namespace {

bool s_bFirstExport = true;

cpp_export::type_fct_keyboard_modifiers & keyboardModifiersProvider()
{
   static cpp_export::type_fct_keyboard_modifiers s_fct;
   return s_fct;
}

Qt::KeyboardModifiers currentKeyboardModifiers()
{
   const cpp_export::type_fct_keyboard_modifiers & fct = keyboardModifiersProvider();
   return (fct ? fct() : QGuiApplication::keyboardModifiers());
}

// Settings record keys, in the order they are written.
const char * const k_sKeyPath = "CPP_EXPORT_PATH";
const char * const k_sKeyTemplate = "CPP_TEMPLATE";
const char * const k_sKeyHeader = "CUSTOM_CPP_TEMPLATE_HEADER";
const char * const k_sKeySource = "CUSTOM_CPP_TEMPLATE_SOURCE";
const char * const k_sKeyRelative = "RELATIVE_PATH_LUMOR";
const char * const k_sKeyCustomFiles = "GENERATE_CUSTOM_FILES";
const char * const k_sKeyPImpl = "GENERATE_PIMPL";
const char * const k_sKeyScript = "CUSTOM_JAVASCRIPT";

// First value of a command-line parameter, empty when absent.
QString firstArg(const QStringList & lst) { return (lst.isEmpty() ? QString() : lst.first()); }

} // namespace

cpp_export::cpp_export(QObject * parent) : export_interface(parent) { ; }

cpp_export::~cpp_export()
{
   resetPreviewWidget();
   delete m_pCppBuilder;
   m_pCppBuilder = nullptr;
}

bool cpp_export::isFirstExport() { return s_bFirstExport; }
void cpp_export::setFirstExport(bool b) { s_bFirstExport = b; }
void cpp_export::setKeyboardModifiersProvider(type_fct_keyboard_modifiers fct) { keyboardModifiersProvider() = std::move(fct); }

QString cpp_export::getGuid() const { return QStringLiteral("7C3E9A52-4B1D-4F86-9E27-5D0A8C61B3F4"); }
QString cpp_export::getName() const { return QStringLiteral("TavrelCppExport"); }
QString cpp_export::getShortDesc() const { return QStringLiteral("Export to C++ project"); }
QString cpp_export::getDescription() const { return QStringLiteral("This plugin exports current opened project to a C++ project."); }
QString cpp_export::getVersion() const { return QStringLiteral("1.2.3"); }
QIcon cpp_export::getIcon() const { return QIcon(":/cpp_export/images/cpp_export.png"); }
QIcon cpp_export::getIconSettings() const { return getIcon(); }
bool cpp_export::hasSettings() const { return true; }

QString cpp_export::getCommandLineInfos() const
{
   QString s;
   s += "\n  !!! Note : this plugin loads automatically previous parameters values before starting the export process, but you can use following parameters to override them !!!";
   s += "\n  --TavrelCppExport_path=\"<Export Path>\" : [Optional] C++ export path parameter";
   s += "\n  --TavrelCppExport_template_type=<numeric value> : [Optional] C++ template type selected to build C++ files (0=no_inheritance, 1=ix_persistable, 2=zy_persistable, 3=ix_persistable_and_q_object, 4=custom)";
   s += "\n  --TavrelCppExport_template_header=\"<Template Header>\" : [Optional] Custom C++ template header file path (TavrelCppExport_template_type parameter must be equal to 4, which means custom)";
   s += "\n  --TavrelCppExport_template_source=\"<Template Source>\" : [Optional] Custom C++ template source file path (TavrelCppExport_template_type parameter must be equal to 4, which means custom)";
   s += "\n  --TavrelCppExport_lumor_relative_path=0/1 : [Optional] Relative path to Lumor library";
   s += "\n  --TavrelCppExport_generate_custom_files=0/1 : [Optional] Generate a custom directory with custom files for each entity";
   s += "\n  --TavrelCppExport_generate_pimpl=0/1 : [Optional] Generate all persistent classes using the PIMPL (Private Implementation) idiom";
   s += "\n  --TavrelCppExport_custom_javacript=\"<Custom JS>\" : [Optional] Custom script (javascript file) to change the default behaviour of the export process";
   return s;
}

QString cpp_export::getCppExportPath(bool bResolved) const
{
   return (bResolved ? context::ctx_project::getPathFromProjectFile(m_sCppExportPath) : m_sCppExportPath);
}

void cpp_export::readFile(const QString & path, QString & target) const
{
   // The template keeps its line ends as written (the parser handles CR LF).
   const QString text = tools::readTextFile(path, tools::line_ends::as_written);
   if (! text.isEmpty()) { target = text; }
}

void cpp_export::clearSettings()
{
   m_sCppExportPath.clear();
   m_eCppTemplate = cpp_template::no_inheritance;
   m_sCustomCppTemplate_HPP.clear();
   m_sCustomCppTemplate_CPP.clear();
   m_bRelativePathLumor = false;
   m_bGenerateCustomFiles = true;
   m_bPImpl = false;
   m_sCustomScriptFile.clear();
}

bool cpp_export::showSettings()
{
   view::cpp_export_settings dlg(context::ctx_global::getMainWnd(), Qt::WindowFlags());
   dlg.setPlugin(this);
   return (dlg.exec() != 0);
}

QWidget * cpp_export::getPreviewWidget()
{
   if (m_bTerminated) { return nullptr; }
   if (m_pPreviewWidget) { return m_pPreviewWidget; }
   m_pPreviewWidget = new view::cpp_export_preview();
   m_pPreviewWidget->setWindowTitle(tr("C++ preview"));
   m_pPreviewWidget->setWindowIcon(getIcon());
   m_pPreviewWidget->setPlugin(this);
   return m_pPreviewWidget;
}

void cpp_export::resetPreviewWidget()
{
   if (! m_pPreviewWidget) { return; }
   // Loaded plug-ins are destroyed at process exit, possibly after the application object: by
   // then no widget may be touched any more.
   if (! QCoreApplication::instance()) { m_pPreviewWidget = nullptr; return; }
   view::cpp_export_preview * pWidget = m_pPreviewWidget;
   // Every connection in both directions: the widget's own signals and the host's signals into it.
   pWidget->disconnect();
   if (view::main_wnd * pMainWnd = context::ctx_global::getMainWnd()) { QObject::disconnect(pMainWnd, nullptr, pWidget, nullptr); }
   QObject::disconnect(this, nullptr, pWidget, nullptr);
   pWidget->setParent(nullptr);
   pWidget->setPlugin(nullptr);
   pWidget->close();
   pWidget->deleteLater();
   m_pPreviewWidget = nullptr;
}

void cpp_export::terminate()
{
   export_interface::terminate();
   resetPreviewWidget();
   m_bTerminated = true;
}

QSqlError cpp_export::loadSettings()
{
   tools::wait_cursor wait;
   if (! context::ctx_project::getProject()) { return QSqlError(); }
   context::ctx_scoped scope;

   model::plugin_params::list_of_plugin_params lst;
   QSqlError err = model::plugin_params::fetchByGuid(getGuid(), lst, scope.database());
   if (err.isValid()) { return err; }

   for (const auto & item : lst)
   {
      const model::plugin_params_ptr & p = item.second;
      if (! p) { continue; }
      const QString key = p->getParamKey();
      const QVariant value = p->getParamValue();
      if (key == k_sKeyPath) { m_sCppExportPath = value.toString(); }
      else if (key == k_sKeyTemplate) { m_eCppTemplate = value.toInt(); }
      else if (key == k_sKeyHeader) { m_sCustomCppTemplate_HPP = value.toString(); }
      else if (key == k_sKeySource) { m_sCustomCppTemplate_CPP = value.toString(); }
      else if (key == k_sKeyRelative) { m_bRelativePathLumor = value.toBool(); }
      else if (key == k_sKeyCustomFiles) { m_bGenerateCustomFiles = value.toBool(); }
      else if (key == k_sKeyPImpl) { m_bPImpl = value.toBool(); }
      else if (key == k_sKeyScript) { m_sCustomScriptFile = value.toString(); }
   }
   return err;
}

QSqlError cpp_export::saveSettings()
{
   tools::wait_cursor wait;
   if (! context::ctx_project::getProject()) { return QSqlError(); }
   context::ctx_scoped scope;
   const model::plugin_params::list_of_values lst {
      { k_sKeyPath, QVariant(m_sCppExportPath) },
      { k_sKeyTemplate, QVariant(static_cast<qint32>(m_eCppTemplate)) },
      { k_sKeyHeader, QVariant(m_sCustomCppTemplate_HPP) },
      { k_sKeySource, QVariant(m_sCustomCppTemplate_CPP) },
      { k_sKeyRelative, QVariant(m_bRelativePathLumor) },
      { k_sKeyCustomFiles, QVariant(m_bGenerateCustomFiles) },
      { k_sKeyPImpl, QVariant(m_bPImpl) },
      { k_sKeyScript, QVariant(m_sCustomScriptFile) } };
   return model::plugin_params::replaceByGuid(getGuid(), lst, scope.database());
}

void cpp_export::applyCommandLine()
{
   view::main_wnd * pMainWnd = context::ctx_global::getMainWnd();
   if (! s_bFirstExport || ! pMainWnd) { return; }
   s_bFirstExport = false;

   const QString sPath = firstArg(pMainWnd->getAppArg("--TavrelCppExport_path"));
   const QString sType = firstArg(pMainWnd->getAppArg("--TavrelCppExport_template_type"));
   const QString sHeader = firstArg(pMainWnd->getAppArg("--TavrelCppExport_template_header"));
   const QString sSource = firstArg(pMainWnd->getAppArg("--TavrelCppExport_template_source"));
   const QString sRelative = firstArg(pMainWnd->getAppArg("--TavrelCppExport_lumor_relative_path"));
   const QString sCustomFiles = firstArg(pMainWnd->getAppArg("--TavrelCppExport_generate_custom_files"));
   const QString sPImpl = firstArg(pMainWnd->getAppArg("--TavrelCppExport_generate_pimpl"));
   const QString sScript = firstArg(pMainWnd->getAppArg("--TavrelCppExport_custom_javacript"));

   if (! sPath.isEmpty()) { m_sCppExportPath = sPath; }
   if (! sType.isEmpty()) { m_eCppTemplate = sType.toInt(nullptr, 10); }
   if (! sHeader.isEmpty()) { readFile(sHeader, m_sCustomCppTemplate_HPP); }
   if (! sSource.isEmpty()) { readFile(sSource, m_sCustomCppTemplate_CPP); }
   if (! sRelative.isEmpty()) { m_bRelativePathLumor = (sRelative == "1"); }
   if (! sCustomFiles.isEmpty()) { m_bGenerateCustomFiles = (sCustomFiles == "1"); }
   if (! sPImpl.isEmpty()) { m_bPImpl = (sPImpl == "1"); }
   if (! sScript.isEmpty()) { m_sCustomScriptFile = sScript; }
}

zy::ZyBool cpp_export::exportProject(model::project & project)
{
   QSqlError err = loadSettings();
   if (err.isValid()) { return zy::ZyBool(false, tr("Error loading plugin settings : ") + err.text()); }
   if (project.getName().isEmpty()) { return zy::ZyBool(false, tr("Cannot export project to C++ files : project name is empty")); }

   applyCommandLine();

   // A dry run lists what would be written into a directory still to be made, and makes none.
   const bool bDryRun = (getExportFiles() && getExportFiles()->isDryRun());
   const auto usable = [bDryRun](const QString & dir)
   { return QDir(dir).exists() || (bDryRun && ! dir.isEmpty() && ! QFileInfo::exists(dir)); };

   if (! m_sCppExportPath.isEmpty())
   {
      QString sResolved = getCppExportPath(true);
      if (! usable(sResolved))
      {
         QString sTitle = "Tavrel - " + getName();
         QString sText = "Export directory '" + sResolved + "' doesn't exist.\nDo you want to create it and start the export process ?";
         if (tools::message_box::question(nullptr, sTitle, sText, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes) == QMessageBox::Yes)
         { QDir().mkpath(sResolved); }
      }
   }

   if (m_sCppExportPath.isEmpty() || ! usable(getCppExportPath(true)))
   {
      m_sCppExportPath = project.getLocation();
      if (! showSettings()) { m_sCppExportPath.clear(); return zy::ZyBool(true, QString()); }
   }

   if (m_sCppExportPath.isEmpty() || ! usable(getCppExportPath(true)))
   { return zy::ZyBool(false, tr("Export path to create C++ files doesn't exist : '") + m_sCppExportPath + "'"); }

   if (m_pCustomScript && ! m_pCustomScript->isDebugging()) { m_pCustomScript.reset(); }
   bool bDebugging = (m_pCustomScript && m_pCustomScript->isDebugging());
   if (! m_sCustomScriptFile.isEmpty() && getExportFiles())
   { getExportFiles()->reportInput(context::ctx_project::getPathFromProjectFile(m_sCustomScriptFile)); }
   if (! m_sCustomScriptFile.isEmpty() && ! bDebugging)
   {
      m_pCustomScript = std::make_shared<tools::custom_javascript>();
      zy::ZyBool ok = m_pCustomScript->initEngine(m_sCustomScriptFile, this);
      if (! ok) { return ok; }
   }
   if (m_pCustomScript && ! m_pCustomScript->isDebugging() && (currentKeyboardModifiers() == Qt::ShiftModifier))
   {
      zy::ZyBool ok = m_pCustomScript->runDebugger();
      if (! ok) { return ok; }
   }

   if (! m_pCppBuilder)
   {
      m_pCppBuilder = new cpp_builder(this);
      QObject::connect(m_pCppBuilder, & cpp_builder::onMessage, this, & cpp_export::onMessage);
   }

   tools::wait_cursor wait;
   zy::ZyBool result = m_pCppBuilder->build(project);
   // The builder's message stays as it is; the system's reason follows it on a line of its own.
   const QString sReason = m_pCppBuilder->getLastFailureReason();
   if (! result && ! sReason.isEmpty()) { result = zy::ZyBool(false, result.getDesc() + "\n" + sReason); }
   return result;
}

} // namespace plugin
