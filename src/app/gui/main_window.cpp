#include "gui/main_window.h"
#include "pimpl_setting.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QDateTime>
#include <QDialog>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaMethod>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTime>
#include <QToolBar>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QUrl>

#include <algorithm>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "gui/global_settings.h"
#include "gui/script_debugger.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/model_text_rules.h"
#include "model/project.h"
#include "model/property.h"
#include "gui/plugin/export_interface.h"
#include "storage/project_storage.h"
#include "script/custom_javascript.h"
#include "gui/tools/message_box.h"
#include "gui/tools/wait_cursor.h"
#include "zy/ZyInvalidValue.h"

namespace gui {

namespace {

const int k_iRefreshMs = 100;

QString namespaceLabel(const QString & ns) { return (ns.isEmpty() ? QObject::tr("(global namespace)") : ns); }

// The group item of a namespace under a top-level item, created on first use.
QTreeWidgetItem * namespaceItem(QTreeWidgetItem * pParent, const QString & ns)
{
   const QString label = namespaceLabel(ns);
   for (int i = 0; i < pParent->childCount(); ++i)
   {
      if (pParent->child(i)->text(0) == label) { return pParent->child(i); }
   }
   QTreeWidgetItem * pItem = new QTreeWidgetItem(pParent, QStringList(label));
   pItem->setData(0, main_window::k_roleKind, main_window::item_group);
   pItem->setIcon(0, QApplication::style()->standardIcon(QStyle::SP_DirIcon));
   return pItem;
}

} // namespace

main_window::main_window(QWidget * parent) : view::main_wnd(parent)
{
   setObjectName("main_window");
   // The plug-ins look their main window up when they build their widgets.
   context::ctx_global::setMainWnd(this);
   createActions();
   createWidgets();
   loadPlugins();
   resize(1280, 800);
   // Most of the room for the model and the generated code, a few lines for the messages.
   resizeDocks({ m_dockMessages }, { 160 }, Qt::Vertical);
   if (m_dockPreview) { resizeDocks({ m_dockPreview }, { 780 }, Qt::Horizontal); }
   updateActions();
   updateTitle();
}

main_window::~main_window()
{
   // The preview belongs to the plug-in, which may hand it to a later window.
   if (m_pPreviewWidget)
   {
      QObject::disconnect(this, nullptr, m_pPreviewWidget, nullptr);
      m_pPreviewWidget->hide();
      m_pPreviewWidget->setParent(nullptr);
   }
   if (m_pPlugin) { QObject::disconnect(m_pPlugin, nullptr, this, nullptr); }
}

void main_window::createActions()
{
   QStyle * pStyle = style();
   m_actOpenProject = new QAction(pStyle->standardIcon(QStyle::SP_DialogOpenButton), tr("&Open project..."), this);
   m_actOpenProject->setObjectName("m_actOpenProject");
   m_actOpenProject->setShortcut(QKeySequence::Open);
   m_actOpenProject->setStatusTip(tr("Open a Tavrel project file (.tavrel) or import a JSON model (.json)"));
   m_actReloadProject = new QAction(pStyle->standardIcon(QStyle::SP_BrowserReload), tr("&Reload project"), this);
   m_actReloadProject->setObjectName("m_actReloadProject");
   m_actReloadProject->setShortcut(QKeySequence(Qt::Key_F5));
   m_actReloadProject->setStatusTip(tr("Open the project again (a JSON model is imported again)"));
   m_actQuit = new QAction(tr("&Quit"), this);
   m_actQuit->setShortcut(QKeySequence::Quit);
   m_actGlobalSettings = new QAction(pStyle->standardIcon(QStyle::SP_ComputerIcon), tr("&Global settings..."), this);
   m_actGlobalSettings->setObjectName("m_actGlobalSettings");
   m_actGlobalSettings->setStatusTip(tr("Lumor library path"));
   m_actPluginSettings = new QAction(pStyle->standardIcon(QStyle::SP_FileDialogDetailedView), tr("&Settings..."), this);
   m_actPluginSettings->setObjectName("m_actPluginSettings");
   m_actExport = new QAction(pStyle->standardIcon(QStyle::SP_DialogSaveButton), tr("&Export"), this);
   m_actExport->setObjectName("m_actExport");
   m_actExport->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
   m_actExport->setStatusTip(tr("Export the project with the plug-in (hold Shift to debug the custom script)"));
   m_actShowDebugger = new QAction(tr("Script &debugger"), this);
   m_actShowDebugger->setObjectName("m_actShowDebugger");
   m_actUserGuide = new QAction(pStyle->standardIcon(QStyle::SP_DialogHelpButton), tr("&User guide"), this);
   m_actUserGuide->setObjectName("m_actUserGuide");
   m_actUserGuide->setShortcut(QKeySequence::HelpContents);
   m_actAbout = new QAction(tr("&About Tavrel"), this);

   connect(m_actOpenProject, & QAction::triggered, this, & main_window::doActOpenProject);
   connect(m_actReloadProject, & QAction::triggered, this, & main_window::doActReloadProject);
   connect(m_actQuit, & QAction::triggered, this, & main_window::close);
   connect(m_actGlobalSettings, & QAction::triggered, this, & main_window::doActGlobalSettings);
   connect(m_actPluginSettings, & QAction::triggered, this, & main_window::doActPluginSettings);
   connect(m_actExport, & QAction::triggered, this, & main_window::doActExport);
   connect(m_actShowDebugger, & QAction::triggered, this, & main_window::doActShowDebugger);
   connect(m_actUserGuide, & QAction::triggered, this, & main_window::doActUserGuide);
   connect(m_actAbout, & QAction::triggered, this, & main_window::doActAbout);

   QMenu * pFile = menuBar()->addMenu(tr("&File"));
   pFile->addAction(m_actOpenProject);
   pFile->addAction(m_actReloadProject);
   pFile->addSeparator();
   pFile->addAction(m_actQuit);
   QMenu * pTools = menuBar()->addMenu(tr("&Tools"));
   pTools->addAction(m_actGlobalSettings);
   QMenu * pPlugin = menuBar()->addMenu(tr("&Plug-in"));
   pPlugin->setObjectName("m_mnuPlugin");
   pPlugin->addAction(m_actPluginSettings);
   pPlugin->addAction(m_actExport);
   pPlugin->addSeparator();
   pPlugin->addAction(m_actShowDebugger);
   QMenu * pHelp = menuBar()->addMenu(tr("&Help"));
   pHelp->addAction(m_actUserGuide);
   pHelp->addAction(m_actAbout);

   QToolBar * pToolBar = addToolBar(tr("Main"));
   pToolBar->setObjectName("m_toolBar");
   pToolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
   pToolBar->setMovable(false);
   pToolBar->addAction(m_actOpenProject);
   pToolBar->addAction(m_actReloadProject);
   pToolBar->addSeparator();
   pToolBar->addAction(m_actPluginSettings);
   pToolBar->addAction(m_actExport);
   pToolBar->addSeparator();
   pToolBar->addAction(m_actGlobalSettings);
}

void main_window::createWidgets()
{
   m_treeModel = new QTreeWidget(this);
   m_treeModel->setObjectName("m_treeModel");
   m_treeModel->setHeaderLabel(tr("Model"));
   m_treeModel->setUniformRowHeights(true);
   connect(m_treeModel, & QTreeWidget::currentItemChanged, this, & main_window::doTreeCurrentItemChanged);

   // The editor of the selected item: a few fields, the rest of the model is read-only here.
   QGroupBox * pDetails = new QGroupBox(tr("Selected item"), this);
   pDetails->setObjectName("m_grpDetails");
   m_lblItemKey = new QLabel(pDetails);
   m_lblItemKey->setObjectName("m_lblItemKey");
   m_lblItemKey->setTextInteractionFlags(Qt::TextSelectableByMouse);
   m_txtTable = new QLineEdit(pDetails);
   m_txtTable->setObjectName("m_txtTable");
   m_txtDescription = new QLineEdit(pDetails);
   m_txtDescription->setObjectName("m_txtDescription");
   m_btnApply = new QPushButton(tr("Apply"), pDetails);
   m_btnApply->setObjectName("m_btnApply");
   m_btnApply->setToolTip(tr("Store the changes in the project file and refresh the preview"));
   m_treeItemDetails = new QTreeWidget(pDetails);
   m_treeItemDetails->setObjectName("m_treeItemDetails");
   m_treeItemDetails->setRootIsDecorated(false);
   m_treeItemDetails->setAlternatingRowColors(true);
   m_treeItemDetails->setUniformRowHeights(true);
   QFormLayout * pForm = new QFormLayout();
   pForm->addRow(tr("Item :"), m_lblItemKey);
   pForm->addRow(tr("Table :"), m_txtTable);
   pForm->addRow(tr("Description :"), m_txtDescription);
   QHBoxLayout * pApply = new QHBoxLayout();
   pApply->addStretch(1);
   pApply->addWidget(m_btnApply);
   QVBoxLayout * pDetailsLayout = new QVBoxLayout(pDetails);
   pDetailsLayout->addLayout(pForm);
   pDetailsLayout->addLayout(pApply);
   pDetailsLayout->addWidget(m_treeItemDetails, 1);
   connect(m_txtTable, & QLineEdit::textEdited, this, & main_window::doDetailsEdited);
   connect(m_txtDescription, & QLineEdit::textEdited, this, & main_window::doDetailsEdited);
   connect(m_txtTable, & QLineEdit::returnPressed, this, & main_window::doBtnApplyDetails);
   connect(m_txtDescription, & QLineEdit::returnPressed, this, & main_window::doBtnApplyDetails);
   connect(m_btnApply, & QPushButton::clicked, this, & main_window::doBtnApplyDetails);

   QSplitter * pCentral = new QSplitter(Qt::Vertical, this);
   pCentral->setObjectName("m_splitterModel");
   pCentral->addWidget(m_treeModel);
   pCentral->addWidget(pDetails);
   pCentral->setStretchFactor(0, 1);
   pCentral->setStretchFactor(1, 1);
   setCentralWidget(pCentral);

   m_lstMessages = new QListWidget(this);
   m_lstMessages->setObjectName("m_lstMessages");
   m_lstMessages->setWordWrap(true);
   m_lstMessages->setIconSize(QSize(16, 16));
   m_lstMessages->setContextMenuPolicy(Qt::ActionsContextMenu);
   QAction * pClear = new QAction(tr("Clear messages"), m_lstMessages);
   connect(pClear, & QAction::triggered, this, & main_window::clearMessages);
   m_lstMessages->addAction(pClear);
   m_dockMessages = new QDockWidget(tr("Messages"), this);
   m_dockMessages->setObjectName("m_dockMessages");
   m_dockMessages->setWidget(m_lstMessages);
   m_dockMessages->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
   addDockWidget(Qt::BottomDockWidgetArea, m_dockMessages);

   m_lblProject = new QLabel(this);
   statusBar()->addPermanentWidget(m_lblProject);
   showItemDetails();
}

void main_window::loadPlugins()
{
   m_sPluginDir = app::plugin_finder::pluginDirectories().join(QDir::listSeparator());
   m_lstPlugins = app::plugin_finder::findPlugins();
   plugin::export_interface * pFirst = nullptr;
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin)
      {
         addMessage(tr("Plug-in '%1' not loaded : %2").arg(QDir::toNativeSeparators(info.file), info.error), 2);
         continue;
      }
      connect(info.exportPlugin, & plugin::base_interface::onMessage, this, & main_window::doPluginMessage, Qt::UniqueConnection);
      if (! pFirst) { pFirst = info.exportPlugin; }
   }
   if (! pFirst) { addMessage(tr("No export plug-in found in '%1'").arg(QDir::toNativeSeparators(m_sPluginDir)), 2); }
   setCurrentPlugin(pFirst);
}

void main_window::setCurrentPlugin(plugin::export_interface * pPlugin)
{
   m_pPlugin = pPlugin;
   if (! m_pPlugin) { return; }
   addMessage(tr("Plug-in '%1' %2 loaded : %3").arg(m_pPlugin->getName(), m_pPlugin->getVersion(), m_pPlugin->getShortDesc()), 1);
   m_actExport->setIcon(m_pPlugin->getIcon());
   m_actExport->setText(tr("&Export (%1)").arg(m_pPlugin->getName()));
   m_actPluginSettings->setIcon(m_pPlugin->getIconSettings());
   m_actPluginSettings->setEnabled(m_pPlugin->hasSettings());

   QWidget * pPreview = m_pPlugin->getPreviewWidget();
   m_pPreviewWidget = pPreview;
   if (! pPreview) { return; }
   m_dockPreview = new QDockWidget(pPreview->windowTitle(), this);
   m_dockPreview->setObjectName("m_dockPreview");
   m_dockPreview->setWindowIcon(pPreview->windowIcon());
   m_dockPreview->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
   m_dockPreview->setWidget(pPreview);
   addDockWidget(Qt::RightDockWidgetArea, m_dockPreview);

   // The preview follows the main window it found when it was built; one it was built for an
   // earlier window must be wired to this one. Made here for both cases, so never twice.
   QObject::disconnect(this, nullptr, pPreview, nullptr);
   const QMetaObject * pMeta = pPreview->metaObject();
   const struct { const char * signal; const char * slot; } lstLinks[] = {
      { SIGNAL(onLoadProject(model::project_ptr)), "doLoadProject(model::project_ptr)" },
      { SIGNAL(onSelectEntity(model::entity_ptr)), "doSelectEntity(model::entity_ptr)" },
      { SIGNAL(onUpdateEntity(model::entity_ptr)), "doSelectEntity(model::entity_ptr)" },
      { SIGNAL(onSelectEnumeration(model::enumeration_ptr)), "doSelectEnumeration(model::enumeration_ptr)" },
      { SIGNAL(onUpdateEnumeration(model::enumeration_ptr)), "doSelectEnumeration(model::enumeration_ptr)" } };
   for (const auto & link : lstLinks)
   {
      if (pMeta->indexOfSlot(link.slot) < 0) { continue; }
      const QByteArray slot = QByteArray("1") + link.slot;   // what SLOT() would make
      QObject::connect(this, link.signal, pPreview, slot.constData());
   }
}

script_debugger * main_window::getDebugger() const { return m_pDebugger.data(); }

void main_window::terminatePlugins()
{
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (info.exportPlugin) { info.exportPlugin->terminate(); }
   }
}

zy::ZyBool main_window::openProject(const QString & path)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   zy::ZyBool ok = context::ctx_project::openProject(path);
   if (! ok) { return ok; }
   m_pProject = context::ctx_project::getProject();
   if (! m_pProject) { return zy::ZyBool(false, tr("Cannot open project '%1'").arg(path)); }
   m_sProjectPath = QFileInfo(path).absoluteFilePath();
   m_pEntity.reset();
   m_pEnumeration.reset();

   // The plug-ins' settings are per project: none may survive from the previous one.
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (! info.exportPlugin) { continue; }
      info.exportPlugin->clearSettings();
      info.exportPlugin->loadSettings();
   }

   fillModelTree();
   showItemDetails();
   Q_EMIT onLoadProject(m_pProject);

   addMessage(tr("Project '%1' opened : %2 entities, %3 enumerations (%4)")
                 .arg(m_pProject->getName()).arg(m_pProject->getListOfAllEntities()->size())
                 .arg(m_pProject->getListOfAllEnums()->size()).arg(QDir::toNativeSeparators(context::ctx_project::getProjectFile())), 1);
   for (const auto & e : m_pProject->checkSchema()) { addMessage(tr("Schema error : %1").arg(e.getMessage()), 3); }
   for (const QString & w : m_pProject->checkWarnings(app::pimpl_setting::isOn(m_lstPlugins, getAppArgs()))) { addMessage(tr("Schema warning : %1").arg(w), 2); }
   updateActions();
   updateTitle();
   return ok;
}

void main_window::fillModelTree()
{
   const QSignalBlocker block(m_treeModel);
   m_treeModel->clear();
   if (! m_pProject) { return; }
   QStyle * pStyle = style();

   QTreeWidgetItem * pEntities = new QTreeWidgetItem(m_treeModel, QStringList(tr("Entities")));
   pEntities->setData(0, k_roleKind, item_group);
   pEntities->setIcon(0, pStyle->standardIcon(QStyle::SP_DriveHDIcon));
   const model::list_of_entity_ptr pListEntities = m_pProject->getListOfAllEntities();
   for (qsizetype i = 0; pListEntities && (i < pListEntities->size()); ++i)
   {
      const model::entity_ptr & p = pListEntities->at(i);
      if (! p) { continue; }
      QTreeWidgetItem * pItem = new QTreeWidgetItem(namespaceItem(pEntities, p->getNamespace()), QStringList(p->getName()));
      pItem->setData(0, k_roleKind, item_entity);
      pItem->setData(0, k_roleIndex, static_cast<int>(i));
      pItem->setData(0, k_roleKey, p->getKey());
      pItem->setIcon(0, pStyle->standardIcon(QStyle::SP_FileIcon));
      pItem->setToolTip(0, p->getKey() + (p->getDescription().isEmpty() ? QString() : ("\n" + p->getDescription())));
   }

   QTreeWidgetItem * pEnums = new QTreeWidgetItem(m_treeModel, QStringList(tr("Enumerations")));
   pEnums->setData(0, k_roleKind, item_group);
   pEnums->setIcon(0, pStyle->standardIcon(QStyle::SP_DriveHDIcon));
   const model::list_of_enumeration_ptr pListEnums = m_pProject->getListOfAllEnums();
   for (qsizetype i = 0; pListEnums && (i < pListEnums->size()); ++i)
   {
      const model::enumeration_ptr & p = pListEnums->at(i);
      if (! p) { continue; }
      QTreeWidgetItem * pItem = new QTreeWidgetItem(namespaceItem(pEnums, p->getNamespace()), QStringList(p->getName()));
      pItem->setData(0, k_roleKind, item_enumeration);
      pItem->setData(0, k_roleIndex, static_cast<int>(i));
      pItem->setData(0, k_roleKey, p->getKey());
      pItem->setIcon(0, pStyle->standardIcon(QStyle::SP_FileDialogListView));
      pItem->setToolTip(0, p->getKey() + (p->getDescription().isEmpty() ? QString() : ("\n" + p->getDescription())));
   }
   m_treeModel->expandAll();
}

bool main_window::selectItem(const QString & key)
{
   QTreeWidgetItemIterator itr(m_treeModel);
   for (; * itr; ++itr)
   {
      if ((* itr)->data(0, k_roleKey).toString() != key) { continue; }
      m_treeModel->setCurrentItem(* itr);
      m_treeModel->scrollToItem(* itr);
      return true;
   }
   return false;
}

void main_window::doTreeCurrentItemChanged(QTreeWidgetItem * current)
{
   m_pEntity.reset();
   m_pEnumeration.reset();
   const int kind = (current ? current->data(0, k_roleKind).toInt() : static_cast<int>(item_group));
   const int index = (current ? current->data(0, k_roleIndex).toInt() : -1);
   if (m_pProject && (kind == item_entity))
   {
      const model::list_of_entity_ptr p = m_pProject->getListOfAllEntities();
      if (p && (index >= 0) && (index < p->size())) { m_pEntity = p->at(index); }
   }
   else if (m_pProject && (kind == item_enumeration))
   {
      const model::list_of_enumeration_ptr p = m_pProject->getListOfAllEnums();
      if (p && (index >= 0) && (index < p->size())) { m_pEnumeration = p->at(index); }
   }
   showItemDetails();
   emitSelection();
}

void main_window::emitSelection()
{
   if (m_pEntity) { Q_EMIT onSelectEntity(m_pEntity); }
   else if (m_pEnumeration) { Q_EMIT onSelectEnumeration(m_pEnumeration); }
   else
   {
      // Nothing selected: both kinds are cleared in the plug-ins' views.
      Q_EMIT onSelectEntity(model::entity_ptr());
      Q_EMIT onSelectEnumeration(model::enumeration_ptr());
   }
}

void main_window::showItemDetails()
{
   m_treeItemDetails->clear();
   m_btnApply->setEnabled(false);
   const bool bItem = (m_pEntity || m_pEnumeration);
   m_txtTable->setEnabled(m_pEntity != nullptr);
   m_txtDescription->setEnabled(bItem);
   if (m_pEntity)
   {
      QString sText = "<b>" + tr("Entity") + " " + m_pEntity->getKey().toHtmlEscaped() + "</b>";
      if (! m_pEntity->getParentKey().isEmpty()) { sText += " : " + m_pEntity->getParentKey().toHtmlEscaped(); }
      if (m_pEntity->isAbstract()) { sText += " <i>(" + tr("abstract") + ")</i>"; }
      m_lblItemKey->setText(sText);
      m_txtTable->setText(m_pEntity->getTableName());
      m_txtTable->setPlaceholderText(m_pEntity->getName());
      m_txtDescription->setText(m_pEntity->getDescription());
      m_treeItemDetails->setHeaderLabels({ tr("Property"), tr("Type"), tr("Column"), tr("Description") });
      for (const model::property_ptr & p : m_pEntity->getOwnProperties())
      {
         if (! p) { continue; }
         QString sName = p->getName();
         if (p->isPrimaryKey()) { sName += " (id)"; }
         QTreeWidgetItem * pItem = new QTreeWidgetItem(m_treeItemDetails, { sName, p->getTypeDesc(false, false), p->getColumnName(), p->getDescription() });
         pItem->setToolTip(3, p->getDescription());
      }
   }
   else if (m_pEnumeration)
   {
      m_lblItemKey->setText("<b>" + tr("Enumeration") + " " + m_pEnumeration->getKey().toHtmlEscaped() + "</b> (" + m_pEnumeration->getEnumName().toHtmlEscaped() + ")");
      m_txtTable->clear();
      m_txtTable->setPlaceholderText(QString());
      m_txtDescription->setText(m_pEnumeration->getDescription());
      m_treeItemDetails->setHeaderLabels({ tr("Key"), tr("Value") });
      const auto & kv = m_pEnumeration->getAllKeyValue();
      for (qsizetype i = 0; i < kv.size(); ++i) { new QTreeWidgetItem(m_treeItemDetails, { kv.getKeyByIndex(i), kv.getByIndex(i) }); }
   }
   else
   {
      m_lblItemKey->setText(tr("<i>Select an entity or an enumeration in the tree</i>"));
      m_txtTable->clear();
      m_txtTable->setPlaceholderText(QString());
      m_txtDescription->clear();
      m_treeItemDetails->setHeaderLabels({ QString() });
   }
   for (int i = 0; i < m_treeItemDetails->columnCount() - 1; ++i) { m_treeItemDetails->resizeColumnToContents(i); }
}

// The table name and description as the edit panel would store them, checked by the rules of
// the place where the export writes them; empty when they can be stored.
QString main_window::detailsProblem() const
{
   typedef model::model_text_rules rules;
   QString sField, sValue, sReason;
   const QString sDescription = m_txtDescription->text();
   if (m_pEntity)
   {
      sValue = m_txtTable->text().trimmed();
      sReason = rules::literalProblem(sValue);
      sField = tr("table name");
   }
   if (sReason.isEmpty())
   {
      sValue = sDescription;
      sReason = rules::blockCommentProblem(sValue);
      sField = tr("description");
   }
   if (sReason.isEmpty()) { return QString(); }
   const QString sKey = (m_pEntity ? m_pEntity->getKey() : m_pEnumeration->getKey());
   return tr("'%1' not updated : %2 '%3' %4").arg(sKey, sField, rules::shown(sValue), sReason);
}

void main_window::doDetailsEdited() { m_btnApply->setEnabled(m_pEntity || m_pEnumeration); }

void main_window::doBtnApplyDetails()
{
   if (! m_pProject || (! m_pEntity && ! m_pEnumeration)) { return; }
   const QString sProblem = detailsProblem();
   if (! sProblem.isEmpty())
   {
      addMessage(sProblem, 3);
      tools::message_box::warning(this, context::ctx_global::getAppName(), sProblem);
      return;
   }
   if (m_pEntity)
   {
      m_pEntity->setTableName(m_txtTable->text().trimmed());
      m_pEntity->setDescription(m_txtDescription->text());
   }
   else { m_pEnumeration->setDescription(m_txtDescription->text()); }

   const QString sFile = context::ctx_project::getProjectFile();
   if (! sFile.isEmpty())
   {
      tools::wait_cursor wait; Q_UNUSED(wait);
      zy::ZyBool ok = storage::project_storage::saveProject(* m_pProject, sFile);
      if (! ok)
      {
         addMessage(ok.getDesc(), 3);
         tools::message_box::critical(this, context::ctx_global::getAppName(), tr("Cannot save the project : %1").arg(ok.getDesc()));
      }
   }
   const QString sKey = (m_pEntity ? m_pEntity->getKey() : m_pEnumeration->getKey());
   addMessage(tr("'%1' updated").arg(sKey), 1);
   if (QTreeWidgetItem * pItem = m_treeModel->currentItem())
   {
      const QString sDesc = m_txtDescription->text();
      pItem->setToolTip(0, sKey + (sDesc.isEmpty() ? QString() : ("\n" + sDesc)));
   }
   m_btnApply->setEnabled(false);
   if (m_pEntity) { Q_EMIT onUpdateEntity(m_pEntity); }
   else { Q_EMIT onUpdateEnumeration(m_pEnumeration); }
}

void main_window::doActOpenProject()
{
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

void main_window::doActGlobalSettings()
{
   global_settings dlg(m_sLumorPathOption, this);
   if (dlg.exec() != QDialog::Accepted) { return; }
   addMessage(tr("Global settings saved : Lumor library path '%1'").arg(context::ctx_global::getSavedLumorPath()), 1);
}

bool main_window::doActPluginSettings()
{
   if (! m_pPlugin) { return false; }
   if (! m_pProject)
   {
      tools::message_box::information(this, context::ctx_global::getAppName() + " - " + m_pPlugin->getName(),
                                      tr("Please open a project first : the plug-in's settings are stored in the project file."));
      return false;
   }
   bool bAccepted = false;
   {
      // The dialog can start the script debugger (its debug button).
      script_watcher watcher;
      connect(& watcher, & script_watcher::debuggingStarted, this, & main_window::doShowDebugger);
      bAccepted = m_pPlugin->showSettings();
   }
   attachRunningDebugger();
   if (bAccepted)
   {
      addMessage(tr("Settings of plug-in '%1' saved").arg(m_pPlugin->getName()), 1);
      refreshPluginViews();
   }
   return bAccepted;
}

zy::ZyBool main_window::doActExport()
{
   const QString sTitle = context::ctx_global::getAppName() + " - " + (m_pPlugin ? m_pPlugin->getName() : tr("Export"));
   QString sError;
   if (! m_pPlugin) { sError = tr("No export plug-in found in '%1'").arg(QDir::toNativeSeparators(m_sPluginDir)); }
   else if (! m_pProject) { sError = tr("Please open a project before exporting it"); }
   else if (isExecutingPlugin()) { sError = tr("An export is already running"); }
   else
   {
      // Text that would break out of the generated code is refused whatever the user answers.
      const QString sTextProblems = model::model_text_rules::problemText(* m_pProject);
      if (! sTextProblems.isEmpty()) { sError = tr("Export refused, the model holds text that would break out of the generated code :\n%1").arg(sTextProblems); }
   }
   if (! sError.isEmpty())
   {
      tools::message_box::critical(this, sTitle, sError);
      return zy::ZyBool(false, sError);
   }

   attachRunningDebugger();
   addMessage(tr("Export of project '%1' with plug-in '%2' started").arg(m_pProject->getName(), m_pPlugin->getName()), 1);
   statusBar()->showMessage(tr("Exporting..."));
   zy::ZyBool result;
   {
      // Holding Shift makes the plug-in start debugging its script inside exportProject.
      script_watcher watcher;
      connect(& watcher, & script_watcher::debuggingStarted, this, & main_window::doShowDebugger);
      tools::wait_cursor wait; Q_UNUSED(wait);
      qApp->installEventFilter(this);
      setExecutingPlugin(true);
      result = m_pPlugin->exportProject(* m_pProject);
      setExecutingPlugin(false);
      qApp->removeEventFilter(this);
      for (qsizetype i = 0; i < m_lstExportDialogs.size(); ++i) { QApplication::restoreOverrideCursor(); }
      m_lstExportDialogs.clear();
   }
   attachRunningDebugger();

   if (! result)
   {
      const QString sText = (result.getDesc().isEmpty() ? tr("The export failed") : result.getDesc());
      addMessage(sText, 3);
      statusBar()->showMessage(tr("Export failed"), 10000);
      tools::message_box::critical(this, sTitle, sText);
   }
   else
   {
      if (! result.getDesc().isEmpty()) { addMessage(result.getDesc(), 1); }
      addMessage(tr("Export ended"), 1);
      statusBar()->showMessage(tr("Export ended"), 10000);
   }
   refreshPluginViews();
   return result;
}

bool main_window::eventFilter(QObject * watched, QEvent * event)
{
   // A question, the plug-in's settings or a breakpoint prompt during an export waits for the
   // user: it gets the normal cursor, not the busy one of the export.
   if (isExecutingPlugin() && qobject_cast<QDialog *>(watched))
   {
      if ((event->type() == QEvent::Show) && ! m_lstExportDialogs.contains(watched))
      {
         m_lstExportDialogs.append(watched);
         QApplication::setOverrideCursor(Qt::ArrowCursor);
      }
      else if ((event->type() == QEvent::Hide) && m_lstExportDialogs.removeOne(watched)) { QApplication::restoreOverrideCursor(); }
   }
   return view::main_wnd::eventFilter(watched, event);
}

void main_window::refreshPluginViews()
{
   if (! m_pProject) { return; }
   Q_EMIT onLoadProject(m_pProject);
   emitSelection();
}

void main_window::attachRunningDebugger()
{
   if (! m_pPlugin) { return; }
   const std::shared_ptr<tools::custom_javascript> pScript = m_pPlugin->getCustomScript();
   if (pScript && pScript->isDebugging()) { doShowDebugger(pScript.get()); }
}

void main_window::doShowDebugger(tools::custom_javascript * pScript)
{
   if (! pScript) { return; }
   if (! m_pDebugger) { m_pDebugger = new script_debugger(this); }
   // Called for every message of an export: only a new engine or a hidden window needs work.
   const bool bNewScript = (m_pDebugger->getScript() != pScript);
   if (! bNewScript && m_pDebugger->isVisible()) { return; }
   if (bNewScript) { m_pDebugger->attach(pScript); }
   m_pDebugger->show();
   m_pDebugger->raise();
   // Shown in the middle of an export: it must be drawn before the export goes on.
   if (isExecutingPlugin()) { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }
}

void main_window::doActShowDebugger()
{
   attachRunningDebugger();
   if (! m_pDebugger)
   {
      tools::message_box::information(this, context::ctx_global::getAppName() + " - Script debugger",
                                      tr("No custom script is being debugged.\n\nTo debug one, use the button 'Debug custom javascript file' of the plug-in's settings, "
                                         "or hold the Shift key when you start the export."));
      return;
   }
   m_pDebugger->show();
   m_pDebugger->raise();
}

void main_window::doActUserGuide()
{
   QDesktopServices::openUrl(QUrl(context::ctx_global::getAppHelpManualUrl()));
}

void main_window::doActAbout()
{
   QString sText = "<h3>" + context::ctx_global::getAppName() + " " + context::ctx_global::getAppVersionStr() + "</h3>";
   sText += "<p>" + tr("Entity-modelling tool: desktop host.") + "</p>";
   for (const app::plugin_info & info : std::as_const(m_lstPlugins))
   {
      if (info.exportPlugin) { sText += "<p><b>" + info.exportPlugin->getName() + "</b> " + info.exportPlugin->getVersion() + " : " + info.exportPlugin->getDescription().toHtmlEscaped() + "</p>"; }
   }
   QMessageBox::about(this, tr("About %1").arg(context::ctx_global::getAppName()), sText);
}

void main_window::doPluginMessage(const QString & text, int kind, int duration)
{
   addMessage(text, kind);
   statusBar()->showMessage(text, std::max(duration, 0));
   if (isExecutingPlugin())
   {
      attachRunningDebugger();
      // The export holds the event loop: draw the new line now, at most every few tenths of a
      // second. Painting only: the message may come from a running script.
      if (! m_tmRefresh.isValid() || (m_tmRefresh.elapsed() >= k_iRefreshMs))
      {
         m_lstMessages->doItemsLayout();
         m_lstMessages->scrollToBottom();
         m_lstMessages->viewport()->repaint();
         m_tmRefresh.restart();
      }
   }
}

void main_window::addMessage(const QString & text, int kind)
{
   QStyle * pStyle = style();
   QListWidgetItem * pItem = new QListWidgetItem(QTime::currentTime().toString("hh:mm:ss") + "  " + text);
   pItem->setToolTip(text);
   pItem->setData(Qt::UserRole, kind);
   if (kind == 3)
   {
      pItem->setForeground(QColor(200, 0, 0));
      pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxCritical));
   }
   else if (kind == 2)
   {
      pItem->setForeground(QColor(170, 100, 0));
      pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxWarning));
   }
   else { pItem->setIcon(pStyle->standardIcon(QStyle::SP_MessageBoxInformation)); }
   m_lstMessages->addItem(pItem);
   m_lstMessages->scrollToBottom();
}

void main_window::clearMessages() { m_lstMessages->clear(); }

void main_window::updateActions()
{
   const bool bPlugin = (m_pPlugin != nullptr);
   const bool bProject = (m_pProject != nullptr);
   m_actReloadProject->setEnabled(! m_sProjectPath.isEmpty());
   m_actPluginSettings->setEnabled(bPlugin && bProject && m_pPlugin->hasSettings());
   m_actExport->setEnabled(bPlugin && bProject);
}

void main_window::updateTitle()
{
   QString sTitle = context::ctx_global::getAppName();
   if (m_pProject)
   {
      sTitle += " - " + m_pProject->getName() + " (" + QDir::toNativeSeparators(context::ctx_project::getProjectFile()) + ")";
      m_lblProject->setText(tr("%1 : %2 entities, %3 enumerations").arg(m_pProject->getName())
                               .arg(m_pProject->getListOfAllEntities()->size()).arg(m_pProject->getListOfAllEnums()->size()));
   }
   else { m_lblProject->setText(tr("No project")); }
   setWindowTitle(sTitle);
}

} // namespace gui
