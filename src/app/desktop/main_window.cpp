// The window itself: its actions, menus and tool bar, the layout of its parts, its title.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"

#include <QAction>
#include <QBoxLayout>
#include <QLineEdit>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>

#include "context/ctx_global.h"
#include "context/ctx_project.h"
#include "desktop/global_settings.h"
#include "desktop/help_window.h"
#include "model/project.h"
#include "gui/plugin/export_interface.h"

namespace desktop {

main_window::main_window(QWidget * parent) : view::main_wnd(parent)
{
   setObjectName("main_window");
   // The plug-ins look their main window up when they build their widgets.
   context::ctx_global::setMainWnd(this);
   m_pHelp = new help_opener(this);
   createActions();
   createWidgets();
   loadPlugins();
   createDiagramDock();
   createUndoDock();
   resize(1280, 800);
   // Most of the room for the model and the generated code, a few lines for the messages.
   resizeDocks({ m_dockMessages }, { 160 }, Qt::Vertical);
   if (m_dockPreview) { resizeDocks({ m_dockPreview }, { 780 }, Qt::Horizontal); }
   updateActions();
   updateTitle();
   restoreWindowState();
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
   // The undo stack is deleted with the widgets, after this window's own part is gone.
   if (m_pUndo) { QObject::disconnect(m_pUndo, nullptr, this, nullptr); }
   // Docks hidden while the window goes tell the diagram nothing any more.
   if (m_dockDiagram) { QObject::disconnect(m_dockDiagram, nullptr, m_viewDiagram, nullptr); }
}

void main_window::createActions()
{
   QStyle * pStyle = style();
   m_actNewProject = new QAction(pStyle->standardIcon(QStyle::SP_FileIcon), tr("&New project..."), this);
   m_actNewProject->setObjectName("m_actNewProject");
   m_actNewProject->setShortcut(QKeySequence::New);
   m_actNewProject->setStatusTip(tr("Create an empty project in a new project file"));
   m_actSaveAs = new QAction(tr("Save &as..."), this);
   m_actSaveAs->setObjectName("m_actSaveAs");
   // Some platforms bind no Save As key: the usual one then.
   QList<QKeySequence> lstSaveAs = QKeySequence::keyBindings(QKeySequence::SaveAs);
   if (lstSaveAs.isEmpty()) { lstSaveAs.append(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)); }
   m_actSaveAs->setShortcuts(lstSaveAs);
   m_actSaveAs->setStatusTip(tr("Write the model into another project file and go on there"));
   m_actRenameProject = new QAction(tr("Re&name project..."), this);
   m_actRenameProject->setObjectName("m_actRenameProject");
   m_actRenameProject->setStatusTip(tr("Change the project's name (it names the generated project files)"));
   m_actOpenProject = new QAction(pStyle->standardIcon(QStyle::SP_DialogOpenButton), tr("&Open project..."), this);
   m_actOpenProject->setObjectName("m_actOpenProject");
   m_actOpenProject->setShortcut(QKeySequence::Open);
   m_actOpenProject->setStatusTip(tr("Open a Tavrel project file (.tavrel) or import a JSON model (.json)"));
   m_actReloadProject = new QAction(pStyle->standardIcon(QStyle::SP_BrowserReload), tr("&Reload project"), this);
   m_actReloadProject->setObjectName("m_actReloadProject");
   m_actReloadProject->setShortcut(QKeySequence(Qt::Key_F5));
   m_actReloadProject->setStatusTip(tr("Open the project again (a JSON model is imported again)"));
   m_actExportJson = new QAction(tr("Export model as &JSON..."), this);
   m_actExportJson->setObjectName("m_actExportJson");
   m_actExportJson->setStatusTip(tr("Write the model as the JSON document 'tavrel dump' prints"));
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
   m_actExportPreview = new QAction(tr("Export &preview (dry run)..."), this);
   m_actExportPreview->setObjectName("m_actExportPreview");
   m_actExportPreview->setStatusTip(tr("List the files the export would add, change and remove, with their differences"));
   m_actShowDebugger = new QAction(tr("Script &debugger"), this);
   m_actShowDebugger->setObjectName("m_actShowDebugger");
   m_actUserGuide = new QAction(pStyle->standardIcon(QStyle::SP_DialogHelpButton), tr("&User guide"), this);
   m_actUserGuide->setObjectName("m_actUserGuide");
   m_actUserGuide->setShortcut(QKeySequence::HelpContents);
   m_actAbout = new QAction(tr("&About Tavrel"), this);

   connect(m_actNewProject, & QAction::triggered, this, & main_window::doActNewProject);
   connect(m_actSaveAs, & QAction::triggered, this, & main_window::doActSaveAs);
   connect(m_actRenameProject, & QAction::triggered, this, & main_window::doActRenameProject);
   connect(m_actOpenProject, & QAction::triggered, this, & main_window::doActOpenProject);
   connect(m_actReloadProject, & QAction::triggered, this, & main_window::doActReloadProject);
   connect(m_actExportJson, & QAction::triggered, this, & main_window::doActExportJson);
   connect(m_actQuit, & QAction::triggered, this, & main_window::close);
   connect(m_actGlobalSettings, & QAction::triggered, this, & main_window::doActGlobalSettings);
   connect(m_actPluginSettings, & QAction::triggered, this, & main_window::doActPluginSettings);
   connect(m_actExport, & QAction::triggered, this, & main_window::doActExport);
   connect(m_actExportPreview, & QAction::triggered, this, & main_window::doActExportPreview);
   connect(m_actShowDebugger, & QAction::triggered, this, & main_window::doActShowDebugger);
   connect(m_actUserGuide, & QAction::triggered, this, & main_window::doActUserGuide);
   connect(m_actAbout, & QAction::triggered, this, & main_window::doActAbout);
   createEditActions();
   createMenus();
}

void main_window::createMenus()
{
   QMenu * pFile = menuBar()->addMenu(tr("&File"));
   pFile->setObjectName("m_mnuFile");
   pFile->addAction(m_actNewProject);
   pFile->addAction(m_actOpenProject);
   pFile->addAction(m_actReloadProject);
   pFile->addAction(m_actSave);
   pFile->addAction(m_actSaveAs);
   pFile->addSeparator();
   pFile->addAction(m_actRenameProject);
   pFile->addAction(m_actExportJson);
   pFile->addSeparator();
   pFile->addAction(m_actQuit);
   createEditMenu();
   QMenu * pTools = menuBar()->addMenu(tr("&Tools"));
   pTools->addAction(m_actGlobalSettings);
   QMenu * pPlugin = menuBar()->addMenu(tr("&Plug-in"));
   pPlugin->setObjectName("m_mnuPlugin");
   pPlugin->addAction(m_actPluginSettings);
   pPlugin->addAction(m_actExport);
   pPlugin->addAction(m_actExportPreview);
   pPlugin->addSeparator();
   pPlugin->addAction(m_actShowDebugger);
   m_mnuView = menuBar()->addMenu(tr("&View"));
   m_mnuView->setObjectName("m_mnuView");
   QMenu * pHelp = menuBar()->addMenu(tr("&Help"));
   pHelp->addAction(m_actUserGuide);
   pHelp->addAction(m_actAbout);

   QToolBar * pToolBar = addToolBar(tr("Main"));
   pToolBar->setObjectName("m_toolBar");
   pToolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
   pToolBar->setMovable(false);
   pToolBar->addAction(m_actOpenProject);
   pToolBar->addAction(m_actReloadProject);
   pToolBar->addAction(m_actSave);
   pToolBar->addSeparator();
   pToolBar->addActions({ m_actUndo, m_actRedo, m_actNewEntity, m_actNewEnumeration, m_actNewProperty, m_actDeleteItem });
   pToolBar->addSeparator();
   pToolBar->addAction(m_actPluginSettings);
   pToolBar->addAction(m_actExport);
   pToolBar->addSeparator();
   pToolBar->addAction(m_actGlobalSettings);
}

void main_window::createWidgets()
{
   createModelTree();
   QGroupBox * pDetails = createDetailsPanel();
   QSplitter * pCentral = new QSplitter(Qt::Vertical, this);
   pCentral->setObjectName("m_splitterModel");
   // The search field filters the tree: entities, properties, tables, columns, enumerations.
   QWidget * pTree = new QWidget(pCentral);
   QVBoxLayout * pTreeLayout = new QVBoxLayout(pTree);
   pTreeLayout->setContentsMargins(0, 0, 0, 0);
   m_txtFilter = new QLineEdit(pTree);
   m_txtFilter->setObjectName("m_txtFilter");
   m_txtFilter->setPlaceholderText(tr("Search entities, properties, tables, columns (Ctrl+F)"));
   m_txtFilter->setClearButtonEnabled(true);
   m_txtFilter->installEventFilter(this);
   connect(m_txtFilter, & QLineEdit::textChanged, this, & main_window::doFilterChanged);
   QAction * pFind = new QAction(tr("Find"), this);
   pFind->setObjectName("m_actFind");
   pFind->setShortcut(QKeySequence::Find);
   connect(pFind, & QAction::triggered, m_txtFilter, [this]() { m_txtFilter->setFocus(); m_txtFilter->selectAll(); });
   addAction(pFind);
   pTreeLayout->addWidget(m_txtFilter);
   pTreeLayout->addWidget(m_treeModel, 1);
   pCentral->addWidget(pTree);
   pCentral->addWidget(pDetails);
   pCentral->setStretchFactor(0, 1);
   pCentral->setStretchFactor(1, 1);
   setCentralWidget(pCentral);

   createMessagesDock();

   m_lblProject = new QLabel(this);
   statusBar()->addPermanentWidget(m_lblProject);
   showItemDetails();
}

void main_window::doActGlobalSettings()
{
   global_settings dlg(m_sLumorPathOption, this);
   if (dlg.exec() != QDialog::Accepted) { return; }
   addMessage(tr("Global settings saved : Lumor library path '%1'").arg(context::ctx_global::getSavedLumorPath()), 1);
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

void main_window::updateActions()
{
   const bool bPlugin = (m_pPlugin != nullptr);
   const bool bProject = (m_pProject != nullptr);
   m_actReloadProject->setEnabled(! m_sProjectPath.isEmpty());
   m_actExportJson->setEnabled(bProject);
   m_actSaveAs->setEnabled(bProject);
   m_actRenameProject->setEnabled(bProject);
   m_actPluginSettings->setEnabled(bPlugin && bProject && m_pPlugin->hasSettings());
   m_actExport->setEnabled(bPlugin && bProject);
   m_actExportPreview->setEnabled(bPlugin && bProject);
   const bool bItem = (m_pEntity || m_pEnumeration);
   m_actSave->setEnabled(bProject);
   m_actNewEntity->setEnabled(bProject);
   m_actNewEnumeration->setEnabled(bProject);
   m_actEditItem->setEnabled(bItem);
   m_actDeleteItem->setEnabled(bItem);
   m_actNewProperty->setEnabled(m_pEntity != nullptr);
   m_actEditProperty->setEnabled(m_pEntity != nullptr);
   m_actDeleteProperty->setEnabled(m_pEntity != nullptr);
}

void main_window::updateTitle()
{
   QString sTitle = context::ctx_global::getAppName();
   if (m_pProject)
   {
      // "[*]" is where the modified marker goes.
      sTitle += " - " + m_pProject->getName() + "[*] (" + QDir::toNativeSeparators(context::ctx_project::getProjectFile()) + ")";
      m_lblProject->setText(tr("%1 : %2 entities, %3 enumerations").arg(m_pProject->getName())
                               .arg(m_pProject->getListOfAllEntities()->size()).arg(m_pProject->getListOfAllEnums()->size()));
   }
   else { m_lblProject->setText(tr("No project")); }
   setWindowTitle(sTitle);
   setWindowModified(isModelModified());
}

} // namespace desktop
