#include "cpp_export/view/cpp_export_settings.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QKeySequence>
#include <QRadioButton>
#include <QShortcut>
#include <QSqlError>

#include <memory>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/cpp_template.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "gui/tools/syntax_highlighter.h"
#include "cpp_export/tools/text_file.h"
#include "gui/tools/wait_cursor.h"

namespace view {

namespace {

cpp_export_settings::type_fct_open_url & openUrlHandler()
{
   static cpp_export_settings::type_fct_open_url fct;
   return fct;
}

cpp_export_settings::type_fct_choose_path & directoryChooser()
{
   static cpp_export_settings::type_fct_choose_path fct;
   return fct;
}

cpp_export_settings::type_fct_choose_path & fileChooser()
{
   static cpp_export_settings::type_fct_choose_path fct;
   return fct;
}

} // namespace

cpp_export_settings::cpp_export_settings(QWidget * parent, Qt::WindowFlags f) : QDialog(parent, f)
{
   setupUi(this);

   connect(m_btnOk, & QPushButton::clicked, this, & cpp_export_settings::doBtnOk);
   connect(m_btnCancel, & QPushButton::clicked, this, & cpp_export_settings::close);
   connect(m_btnFileLocation, & QPushButton::clicked, this, & cpp_export_settings::doBtnFileLocation);
   connect(m_btnCustomScriptLocation, & QPushButton::clicked, this, & cpp_export_settings::doBtnCustomScriptLocation);
   connect(m_btnDebugCustomScript, & QPushButton::clicked, this, & cpp_export_settings::doBtnDebugCustomScript);
   for (QRadioButton * pOpt : styleButtons().all()) { connect(pOpt, & QRadioButton::toggled, this, & cpp_export_settings::doOptCppTemplateChanged); }
   connect(m_chkPImpl, & QCheckBox::stateChanged, this, & cpp_export_settings::doChkPImplChanged);
   connect(m_txtCppTemplateHeader, & QTextEdit::textChanged, this, & cpp_export_settings::doHppTemplateTextChanged);
   connect(m_txtCppTemplateSource, & QTextEdit::textChanged, this, & cpp_export_settings::doCppTemplateTextChanged);
   connect(m_btnHelpManual, & QPushButton::clicked, this, & cpp_export_settings::doClickBtnHelpManual);
   QShortcut * pShortcutHelp = new QShortcut(QKeySequence(Qt::Key_F1), this);
   connect(pShortcutHelp, & QShortcut::activated, this, & cpp_export_settings::doClickBtnHelpManual);

   // Style 2 stays reachable through stored settings and the command line only.
   m_optZyPersistable->setVisible(false);

   m_pHighlighterHeader = new tools::syntax_highlighter(m_txtCppTemplateHeader->document());
   m_pHighlighterSource = new tools::syntax_highlighter(m_txtCppTemplateSource->document());

   m_lblTemplateProblem = new QLabel(m_grpCppTemplate);
   m_lblTemplateProblem->setObjectName("m_lblTemplateProblem");
   m_lblTemplateProblem->setWordWrap(true);
   m_lblTemplateProblem->hide();
   if (QGridLayout * pGrid = qobject_cast<QGridLayout *>(m_grpCppTemplate->layout())) { pGrid->addWidget(m_lblTemplateProblem, 2, 0); }
}

void cpp_export_settings::updateTemplateProblem()
{
   if (! m_lblTemplateProblem) { return; }
   QStringList lst;
   if (m_optCustomCppTemplate->isChecked() && m_chkPImpl->isChecked())
   {
      const QString sHeader = m_txtCppTemplateHeader->toPlainText();
      const QString sSource = m_txtCppTemplateSource->toPlainText();
      if (! sHeader.contains("@@PIMPL_DEFINITION@@") && ! sHeader.contains("@@CUSTOM_PIMPL_DEFINITION"))
      { lst.append(tr("the header template needs @@PIMPL_DEFINITION@@ (or a @@CUSTOM_PIMPL_DEFINITION...@@ placeholder)")); }
      if (! sSource.contains("@@PIMPL_IMPLEMENTATION@@") && ! sSource.contains("@@CUSTOM_PIMPL_IMPLEMENTATION"))
      { lst.append(tr("the source template needs @@PIMPL_IMPLEMENTATION@@ (or a @@CUSTOM_PIMPL_IMPLEMENTATION...@@ placeholder)")); }
   }
   m_lblTemplateProblem->setText(lst.isEmpty() ? QString() : tr("With the PIMPL idiom, %1.").arg(lst.join(tr(" and "))));
   m_lblTemplateProblem->setVisible(! lst.isEmpty());
}

cpp_export_settings::~cpp_export_settings() { ; }

void cpp_export_settings::setOpenUrlHandler(const type_fct_open_url & fct) { openUrlHandler() = fct; }

void cpp_export_settings::setDirectoryChooser(const type_fct_choose_path & fct) { directoryChooser() = fct; }

void cpp_export_settings::setFileChooser(const type_fct_choose_path & fct) { fileChooser() = fct; }

void cpp_export_settings::setPlugin(plugin::cpp_export * plugin)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   m_pPlugin = plugin;
   if (m_pPlugin) { m_pPlugin->loadSettings(); }

   m_txtFileLocation->setText(m_pPlugin ? QDir::toNativeSeparators(m_pPlugin->getCppExportPath(false)) : QString());
   m_sCustomTemplateHeader = (m_pPlugin ? m_pPlugin->getCustomCppTemplate_HPP() : QString());
   m_sCustomTemplateSource = (m_pPlugin ? m_pPlugin->getCustomCppTemplate_CPP() : QString());

   int iStyle = (m_pPlugin ? static_cast<int>(m_pPlugin->getCppTemplate()) : static_cast<int>(plugin::cpp_template::no_inheritance));
   const style_buttons buttons = styleButtons();
   if (! buttons.check(iStyle))
   {
      // An exclusive button refuses to be unchecked directly.
      for (QRadioButton * pOpt : buttons.all())
      {
         if (! pOpt->isChecked()) { continue; }
         pOpt->setAutoExclusive(false);
         pOpt->setChecked(false);
         pOpt->setAutoExclusive(true);
      }
   }

   m_chkRelativePathLumor->setChecked(m_pPlugin ? m_pPlugin->getRelativePathLumor() : false);
   m_chkGenerateCustomFiles->setChecked(m_pPlugin ? m_pPlugin->getGenerateCustomFiles() : false);
   m_chkPImpl->setChecked(m_pPlugin ? m_pPlugin->getPImpl() : false);
   m_txtCustomScript->setText(m_pPlugin ? QDir::toNativeSeparators(m_pPlugin->getCustomScriptFile()) : QString());

   if (m_pPlugin) { setWindowTitle(context::ctx_global::getAppName() + " - " + m_pPlugin->getName()); }
   doOptCppTemplateChanged(true);
}

void cpp_export_settings::doOptCppTemplateChanged(bool bChecked)
{
   // Runs for both buttons of a switch: the state is read from the buttons, not from the argument.
   Q_UNUSED(bChecked);
   m_txtCppTemplateHeader->setReadOnly(true);
   m_txtCppTemplateSource->setReadOnly(true);

   QString sStyle;
   if (m_optNoInheritance->isChecked()) { sStyle = "no_inheritance"; }
   else if (m_optIxPersistable->isChecked()) { sStyle = "ix_persistable"; }
   else if (m_optZyPersistable->isChecked()) { sStyle = "zy_persistable"; }
   else if (m_optIxPersistableAndQObject->isChecked()) { sStyle = "ix_persistable_and_q_object"; }

   if (! sStyle.isEmpty())
   {
      QString sBase = ":/cpp_export/documents/template_" + sStyle + (m_chkPImpl->isChecked() ? QString("_pimpl") : QString());
      m_txtCppTemplateHeader->setPlainText(readResourceText(sBase + ".h"));
      m_txtCppTemplateSource->setPlainText(readResourceText(sBase + ".cpp"));
   }

   if (m_optCustomCppTemplate->isChecked())
   {
      if (m_sCustomTemplateHeader.isEmpty()) { m_sCustomTemplateHeader = tr("<Please put your custom code here (header file : .h)>"); }
      if (m_sCustomTemplateSource.isEmpty()) { m_sCustomTemplateSource = tr("<Please put your custom code here (source file : .cpp)>"); }
      // Copies: filling an editor re-caches its text through textChanged().
      const QString sHeader = m_sCustomTemplateHeader;
      const QString sSource = m_sCustomTemplateSource;
      m_txtCppTemplateHeader->setPlainText(sHeader);
      m_txtCppTemplateSource->setPlainText(sSource);
      m_txtCppTemplateHeader->setReadOnly(false);
      m_txtCppTemplateSource->setReadOnly(false);
   }
   updateTemplateProblem();
}

void cpp_export_settings::doChkPImplChanged(int iState)
{
   Q_UNUSED(iState);
   doOptCppTemplateChanged(true);
}

void cpp_export_settings::doHppTemplateTextChanged()
{
   if (m_optCustomCppTemplate->isChecked()) { m_sCustomTemplateHeader = m_txtCppTemplateHeader->toPlainText(); }
   updateTemplateProblem();
}

void cpp_export_settings::doCppTemplateTextChanged()
{
   if (m_optCustomCppTemplate->isChecked()) { m_sCustomTemplateSource = m_txtCppTemplateSource->toPlainText(); }
   updateTemplateProblem();
}

void cpp_export_settings::doBtnFileLocation()
{
   // The typed text is tested as it is: a path relative to the project file does not count here.
   // The typed folder (relative to the project file) when it exists, else the project's folder.
   QString sTyped = m_txtFileLocation->text();
   const QString sResolved = (sTyped.isEmpty() ? QString() : context::ctx_project::getPathFromProjectFile(sTyped));
   const QString sProjectFile = context::ctx_project::getProjectFile();
   QString sStartDir = ((! sResolved.isEmpty() && QFileInfo(sResolved).isDir()) ? sResolved
                        : (sProjectFile.isEmpty() ? QString() : QFileInfo(sProjectFile).absolutePath()));

   QString sChosen;
   if (directoryChooser()) { sChosen = directoryChooser()(this, sStartDir); }
   else { sChosen = QFileDialog::getExistingDirectory(this, tr("Select C++ project location"), sStartDir, QFileDialog::ShowDirsOnly); }
   if (sChosen.isEmpty()) { return; }
   m_txtFileLocation->setText(QDir::toNativeSeparators(QDir(sChosen).absolutePath()));
}

void cpp_export_settings::doBtnCustomScriptLocation()
{
   QString sChosen;
   if (fileChooser()) { sChosen = fileChooser()(this, QString()); }
   else { sChosen = QFileDialog::getOpenFileName(this, tr("Select custom script file"), QString(), tr("Javascript files (*.js);;All files (*)")); }
   if (sChosen.isEmpty()) { return; }
   m_txtCustomScript->setText(QDir::toNativeSeparators(sChosen));
}

void cpp_export_settings::doBtnOk()
{
   if (! m_pPlugin) { return; }
   tools::wait_cursor wait; Q_UNUSED(wait);
   const QString sTitle = getMessageTitle();

   // No folder yet is allowed: the export asks for it. A missing one is offered to be created.
   QString sPath = m_txtFileLocation->text().trimmed();
   const QString sDir = (sPath.isEmpty() ? QString() : context::ctx_project::getPathFromProjectFile(sPath));
   if (! sDir.isEmpty() && ! QFileInfo(sDir).isDir())
   {
      if (QFileInfo(sDir).exists() || QFileInfo(sDir).isSymLink())
      {
         tools::message_box::warning(this, sTitle, tr("'%1' is not a directory").arg(sPath), QMessageBox::Ok);
         return;
      }
      const QMessageBox::StandardButton answer = tools::message_box::question(this, sTitle,
         tr("The directory '%1' does not exist. Create it?").arg(QDir::toNativeSeparators(sDir)), QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
      if ((answer != QMessageBox::Yes) || ! QDir().mkpath(sDir))
      {
         if (answer == QMessageBox::Yes) { tools::message_box::warning(this, sTitle, tr("Cannot create the directory '%1'").arg(QDir::toNativeSeparators(sDir)), QMessageBox::Ok); }
         return;
      }
   }
   m_pPlugin->setCppExportPath(QDir::fromNativeSeparators(sPath));

   QString sScript = m_txtCustomScript->text();
   if (! sScript.isEmpty() && ! QFileInfo(context::ctx_project::getPathFromProjectFile(sScript)).isFile())
   {
      tools::message_box::warning(this, sTitle, tr("Custom script file doesn't exist : '") + sScript + "'", QMessageBox::Ok);
      return;
   }
   m_pPlugin->setCustomScriptFile(QDir::fromNativeSeparators(sScript));

   const plugin::cpp_template::enum_template eStyle = styleButtons().checkedStyle();

   // Built-in texts are shown read-only and never become the custom templates.
   if (m_optCustomCppTemplate->isChecked())
   {
      m_pPlugin->setCustomCppTemplate_HPP(m_txtCppTemplateHeader->toPlainText());
      m_pPlugin->setCustomCppTemplate_CPP(m_txtCppTemplateSource->toPlainText());
   }

   m_pPlugin->setRelativePathLumor(m_chkRelativePathLumor->isChecked());
   m_pPlugin->setGenerateCustomFiles(m_chkGenerateCustomFiles->isChecked());
   m_pPlugin->setPImpl(m_chkPImpl->isChecked());
   m_pPlugin->setCppTemplate(eStyle);

   QSqlError err = m_pPlugin->saveSettings();
   if (err.type() != QSqlError::NoError)
   {
      tools::message_box::warning(this, sTitle, tr("Error saving plugin settings : ") + err.text(), QMessageBox::Ok);
      return;
   }
   accept();
}

void cpp_export_settings::doBtnDebugCustomScript()
{
   const QString sTitle = getMessageTitle();
   QString sScript = m_txtCustomScript->text();
   if (sScript.isEmpty())
   {
      tools::message_box::warning(this, sTitle, "Cannot debug custom script : custom script file location is empty", QMessageBox::Ok);
      return;
   }
   if (! QFileInfo(context::ctx_project::getPathFromProjectFile(sScript)).isFile())
   {
      tools::message_box::warning(this, sTitle, "Cannot debug custom script : custom script file '" + sScript + "' doesn't exist", QMessageBox::Ok);
      return;
   }

   // A new session replaces any earlier one.
   if (m_pPlugin) { m_pPlugin->setCustomScript(std::shared_ptr<tools::custom_javascript>()); }

   // Only the plug-in keeps the engine: it must outlive this dialog for the next export.
   std::shared_ptr<tools::custom_javascript> pScript = std::make_shared<tools::custom_javascript>();
   zy::ZyBool bInit = pScript->initEngine(sScript, m_pPlugin);
   if (! bInit)
   {
      tools::message_box::warning(this, sTitle, bInit.getDesc(), QMessageBox::Ok);
      return;
   }
   zy::ZyBool bDebug = pScript->runDebugger();
   if (! bDebug)
   {
      tools::message_box::warning(this, sTitle, bDebug.getDesc(), QMessageBox::Ok);
      return;
   }

   if (m_pPlugin) { m_pPlugin->setCustomScript(pScript); }
   QString sMsg = "A new debugger window has been attached to the C++ export process ('TavrelCppExport' plugin) :\n";
   sMsg += "  1- save your settings and close this settings window ;\n";
   sMsg += "  2- execute the export process : you will be able to debug your custom javascript (putting a breakpoint for example).\n\n";
   sMsg += "Note : debugger process is automatically detached from the C++ export process when closing the debugger window.";
   sMsg += "\n\nOther note : another way to start the debugger is to press the SHIFT key on the keyboard when executing the export process.";
   tools::message_box::information(this, sTitle, sMsg, QMessageBox::Ok);
}

void cpp_export_settings::doClickBtnHelpManual()
{
   QUrl url(context::ctx_global::getAppHelpManualUrl() + "#cpp_export_settings");
   if (openUrlHandler()) { openUrlHandler()(url); }
   else { QDesktopServices::openUrl(url); }
}

QString cpp_export_settings::getMessageTitle() const
{
   return (m_pPlugin ? m_pPlugin->getName() : context::ctx_global::getAppName());
}

QString cpp_export_settings::readResourceText(const QString & path)
{
   return tools::readTextFile(path);
}

style_buttons cpp_export_settings::styleButtons() const
{ return { m_optNoInheritance, m_optIxPersistable, m_optIxPersistableAndQObject, m_optZyPersistable, m_optCustomCppTemplate }; }

} // namespace view
