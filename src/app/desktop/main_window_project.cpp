// Creating, opening, importing, reloading, saving under another name and renaming a project.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"
#include "pimpl_setting.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QUndoStack>

#include <functional>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_names.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"
#include "zy/ZyInvalidValue.h"

namespace desktop {

zy::ZyBool main_window::openProject(const QString & path)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   zy::ZyBool ok = context::ctx_project::openProject(path);
   if (! ok) { return ok; }
   m_pProject = context::ctx_project::getProject();
   if (! m_pProject) { return zy::ZyBool(false, tr("Cannot open project '%1'").arg(path)); }
   m_sProjectPath = QFileInfo(path).absoluteFilePath();
   m_bEditsApplied = false;
   m_pUndo->clear();
   m_lstSchemaProblems.clear();
   m_checkSchema.clear();
   m_pEntity.reset();
   m_pEnumeration.reset();

   // The plug-ins' settings are per project: none may survive from the previous one.
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin) { continue; }
      // Save As: the settings in memory are the ones the new file gets.
      if (m_bCarrySettings) { info.exportPlugin->saveSettings(); continue; }
      info.exportPlugin->clearSettings();
      info.exportPlugin->loadSettings();
   }

   m_lstNamespaceOrder.clear();
   fillModelTree();
   showItemDetails();
   if (m_viewDiagram) { m_viewDiagram->setProject(m_pProject); }
   Q_EMIT onLoadProject(m_pProject);

   addMessage(tr("Project '%1' opened : %2 entities, %3 enumerations (%4)")
                 .arg(m_pProject->getName()).arg(m_pProject->getListOfAllEntities()->size())
                 .arg(m_pProject->getListOfAllEnums()->size()).arg(QDir::toNativeSeparators(context::ctx_project::getProjectFile())), 1);
   for (const auto & e : m_checkSchema.run(* m_pProject))
   {
      addMessage(tr("Schema error : %1").arg(e.getMessage()), 3);
      m_lstSchemaProblems.append(e.getMessage());
   }
   for (const QString & w : m_pProject->checkWarnings(app::pimpl_setting::isOn(m_lstPlugins, getAppArgs()))) { addMessage(tr("Schema warning : %1").arg(w), 2); }
   const QString sRemembered = rememberedSelection(m_sProjectPath);
   if (! sRemembered.isEmpty()) { selectItem(sRemembered); }
   updateActions();
   updateTitle();
   return ok;
}

void main_window::doActOpenProject()
{
   if (! confirmDiscard()) { return; }
   const QString sStart = (m_sProjectPath.isEmpty() ? QDir::currentPath() : QFileInfo(m_sProjectPath).absolutePath());
   const QString sPath = QFileDialog::getOpenFileName(this, tr("Open project"), sStart,
                                                      tr("Tavrel projects and models (*.tavrel *.json);;Tavrel project files (*.tavrel);;JSON models (*.json);;All files (*)"));
   if (sPath.isEmpty()) { return; }
   zy::ZyBool ok = openProject(sPath);
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), ok.getDesc());
   }
}

void main_window::doActReloadProject()
{
   if (m_sProjectPath.isEmpty()) { return; }
   // A JSON model is imported again, which drops saved edits too: offered as JSON first.
   const bool bJson = (QFileInfo(m_sProjectPath).suffix().toLower() == "json");
   if (bJson ? ! confirmReload() : ! confirmDiscard()) { return; }
   QTreeWidgetItem * pCurrent = m_treeModel->currentItem();
   const QString sKey = (pCurrent ? pCurrent->data(0, k_roleKey).toString() : QString());
   zy::ZyBool ok = openProject(m_sProjectPath);
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), ok.getDesc());
      return;
   }
   if (! sKey.isEmpty()) { selectItem(sKey); }
}

} // namespace desktop

namespace desktop {

namespace {

// The project's name as one undo step: it is kept in the project, not in the item lists.
class rename_project_command : public QUndoCommand
{
   QString m_sOld;
   QString m_sNew;
   std::function<void(const QString &)> m_fnSet;

public:
   rename_project_command(const QString & sOld, const QString & sNew, const std::function<void(const QString &)> & fnSet)
      : QUndoCommand(QObject::tr("Rename project %1 to %2").arg(sOld, sNew)), m_sOld(sOld), m_sNew(sNew), m_fnSet(fnSet) { ; }
   void undo() override { m_fnSet(m_sOld); }
   void redo() override { m_fnSet(m_sNew); }
};

// Why a new project cannot be made from these texts (empty when it can).
QString newProjectProblem(const QString & sName, const QString & sFile)
{
   if (! model::model_names::isCppIdentifier(sName)) { return main_window::tr("Name : %1").arg(model::model_names::identifierProblem(sName)); }
   if (sFile.trimmed().isEmpty()) { return main_window::tr("File : choose where the project file goes"); }
   const QFileInfo info(sFile.trimmed());
   if (info.exists() || info.isSymLink()) { return main_window::tr("File : '%1' already exists (a new project gets a new file)").arg(info.fileName()); }
   if (! info.absoluteDir().exists()) { return main_window::tr("File : the folder '%1' does not exist").arg(QDir::toNativeSeparators(info.absolutePath())); }
   return QString();
}

} // namespace

QString main_window::projectFileFor(const QString & sPath)
{
   const QString s = sPath.trimmed();
   return ((s.isEmpty() || s.endsWith(".tavrel", Qt::CaseInsensitive)) ? s : (s + ".tavrel"));
}

QString main_window::askProjectFile(const QString & sTitle, const QString & sStart, bool bForSave)
{
   QFileDialog dlg(this, sTitle, sStart, tr("Tavrel project files (*.tavrel)"));
   dlg.setObjectName("m_dlgProjectFile");
   // Qt's own dialog: the same on every desktop, and one the tests can type into.
   dlg.setOption(QFileDialog::DontUseNativeDialog, true);
   dlg.setAcceptMode(bForSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
   dlg.setDefaultSuffix("tavrel");
   if ((dlg.exec() != QDialog::Accepted) || dlg.selectedFiles().isEmpty()) { return QString(); }
   return dlg.selectedFiles().constFirst();
}

void main_window::doActNewProject()
{
   if (! confirmDiscard()) { return; }
   QDialog dlg(this);
   dlg.setObjectName("new_project_dialog");
   dlg.setWindowTitle(tr("New project"));
   QFormLayout * pForm = new QFormLayout(& dlg);
   QLineEdit * txtName = new QLineEdit(& dlg);
   txtName->setObjectName("m_txtProjectName");
   QLineEdit * txtFile = new QLineEdit(& dlg);
   txtFile->setObjectName("m_txtProjectFile");
   QPushButton * btnBrowse = new QPushButton(tr("Browse..."), & dlg);
   btnBrowse->setObjectName("m_btnBrowse");
   QHBoxLayout * pFile = new QHBoxLayout();
   pFile->addWidget(txtFile, 1);
   pFile->addWidget(btnBrowse);
   QLabel * lblProblem = new QLabel(& dlg);
   lblProblem->setObjectName("m_lblProblem");
   lblProblem->setStyleSheet("color: #c00000");
   QDialogButtonBox * pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, & dlg);
   pForm->addRow(tr("Name"), txtName);
   pForm->addRow(tr("File"), pFile);
   pForm->addRow(lblProblem);
   pForm->addRow(pButtons);
   const QString sStart = (m_sProjectPath.isEmpty() ? QDir::currentPath() : QFileInfo(m_sProjectPath).absolutePath());
   auto fnCheck = [&]() {
      const QString sProblem = newProjectProblem(txtName->text().trimmed(), projectFileFor(txtFile->text()));
      lblProblem->setText(sProblem);
      pButtons->button(QDialogButtonBox::Ok)->setEnabled(sProblem.isEmpty());
   };
   connect(txtName, & QLineEdit::textChanged, & dlg, fnCheck);
   connect(txtFile, & QLineEdit::textChanged, & dlg, fnCheck);
   connect(btnBrowse, & QPushButton::clicked, & dlg, [&]() {
      const QString s = askProjectFile(tr("New project file"), sStart, true);
      if (! s.isEmpty()) { txtFile->setText(QDir::toNativeSeparators(s)); }
   });
   connect(pButtons, & QDialogButtonBox::accepted, & dlg, & QDialog::accept);
   connect(pButtons, & QDialogButtonBox::rejected, & dlg, & QDialog::reject);
   fnCheck();
   if (dlg.exec() != QDialog::Accepted) { return; }
   const QString sFile = QFileInfo(projectFileFor(QDir::fromNativeSeparators(txtFile->text()))).absoluteFilePath();
   // Checked again: the file may have appeared while the dialog was open.
   const QString sProblem = newProjectProblem(txtName->text().trimmed(), sFile);
   model::project project;
   project.setName(txtName->text().trimmed());
   zy::ZyBool ok = (sProblem.isEmpty() ? storage::project_storage::saveProject(project, sFile) : zy::ZyBool(false, sProblem));
   if (ok) { ok = openProject(sFile); }
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), tr("Cannot create the project : %1").arg(ok.getDesc()));
   }
}

bool main_window::doActSaveAs()
{
   if (! m_pProject) { return false; }
   const QString sFile = askProjectFile(tr("Save project as"), QFileInfo(context::ctx_project::getProjectFile()).absolutePath(), true);
   if (sFile.isEmpty()) { return false; }
   if (! saveProjectAs(QFileInfo(projectFileFor(sFile)).absoluteFilePath())) { return false; }
   // The new file is the project from now on; the plug-ins' settings go into it.
   const QString sKey = (m_pEntity ? m_pEntity->getKey() : (m_pEnumeration ? m_pEnumeration->getKey() : QString()));
   m_bCarrySettings = true;
   const zy::ZyBool ok = openProject(QFileInfo(projectFileFor(sFile)).absoluteFilePath());
   m_bCarrySettings = false;
   if (! ok)
   {
      addMessage(ok.getDesc(), 3);
      tools::message_box::critical(this, context::ctx_global::getAppName(), ok.getDesc());
      return false;
   }
   if (! sKey.isEmpty()) { selectItem(sKey); }
   return true;
}

void main_window::doActRenameProject()
{
   if (! m_pProject) { return; }
   QInputDialog dlg(this);
   dlg.setObjectName("rename_project_dialog");
   dlg.setWindowTitle(tr("Rename project"));
   dlg.setLabelText(tr("Name of the project (a C++ identifier: it names the generated project files):"));
   dlg.setTextValue(m_pProject->getName());
   if (dlg.exec() != QDialog::Accepted) { return; }
   const QString sName = dlg.textValue().trimmed();
   if (sName == m_pProject->getName()) { return; }
   if (! model::model_names::isCppIdentifier(sName))
   {
      const QString sText = tr("The project is not renamed : '%1' %2").arg(sName, model::model_names::identifierProblem(sName));
      addMessage(sText, 3);
      tools::message_box::warning(this, context::ctx_global::getAppName(), sText);
      return;
   }
   m_pUndo->push(new rename_project_command(m_pProject->getName(), sName, [this](const QString & s) {
      m_pProject->setName(s);
      m_bEditsApplied = true;
      updateTitle();
      Q_EMIT onLoadProject(m_pProject);
   }));
}

} // namespace desktop
