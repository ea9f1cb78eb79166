#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QPointer>
#include <QString>

#include "plugin_finder.h"
#include "model/model_fwd.h"
#include "model/schema_check.h"
#include "gui/plugin/export_interface.h"
#include "gui/view/main_wnd.h"
#include "zy/ZyBool.h"

class QAction;
class QDockWidget;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class QUndoStack;

namespace tools { class custom_javascript; }

#include "desktop/model_edit.h"

namespace desktop {

class diagram_view;
class export_preview_dialog;
class export_progress;
class help_opener;
class script_debugger;
template <typename T> struct item_kind;

// The desktop host's main window: the model tree with a small editor for the selected item,
// the plug-in's preview docked beside it, the message area, and the commands of the plug-in.
// It is the host's view::main_wnd: the plug-ins follow its selection signals.
// One file a part: main_window_tree, _details, _project, _plugins, _export and _messages.cpp.
class main_window : public view::main_wnd
{
   Q_OBJECT

public:
   // Kind of a model tree item (role k_roleKind); k_roleIndex is its place in the project's list.
   enum enum_item_kind { item_group = 0, item_entity = 1, item_enumeration = 2 };
   static const int k_roleKind = Qt::UserRole;
   static const int k_roleIndex = Qt::UserRole + 1;
   static const int k_roleKey = Qt::UserRole + 2;
   // Tool tip of a model tree item: its key, and its description below when it has one.
   static QString itemToolTip(const QString & key, const QString & description);

private:
   QList<app::plugin_info> m_lstPlugins;
   QPointer<plugin::export_interface> m_pPlugin;
   QString m_sPluginDir;
   QString m_sLumorPathOption;

   model::project_ptr m_pProject;
   model::entity_ptr m_pEntity;
   model::enumeration_ptr m_pEnumeration;
   QString m_sProjectPath;   // as the user opened it (.tavrel or .json), for File > Reload
   bool m_bEditsApplied = false;   // since it was opened
   bool m_bCarrySettings = false;   // Save As: the plug-ins keep their settings for the new file
   QUndoStack * m_pUndo = nullptr;
   QStringList m_lstSchemaProblems;   // listed after the last edit
   model::schema_check m_checkSchema;   // re-checks only the items an edit replaced
   QStringList m_lstTreeKeys;   // the items the model tree shows, in order
   bool m_bSwitching = false;   // the selection is changing: an edit leaves it alone
   bool m_bQuietSelection = false;   // an edit shows its place: it tells the plug-ins itself
   QLineEdit * m_txtFilter = nullptr;

   QTreeWidget * m_treeModel = nullptr;
   QLabel * m_lblItemKey = nullptr;
   QLineEdit * m_txtTable = nullptr;
   QLineEdit * m_txtDescription = nullptr;
   QPushButton * m_btnApply = nullptr;
   QTreeWidget * m_treeItemDetails = nullptr;
   QDockWidget * m_dockPreview = nullptr;
   QPointer<QWidget> m_pPreviewWidget;
   QDockWidget * m_dockDiagram = nullptr;
   diagram_view * m_viewDiagram = nullptr;
   QDockWidget * m_dockMessages = nullptr;
   QListWidget * m_lstMessages = nullptr;
   QLabel * m_lblProject = nullptr;
   QPointer<script_debugger> m_pDebugger;
   QPointer<export_preview_dialog> m_pExportPreview;
   help_opener * m_pHelp = nullptr;
   QElapsedTimer m_tmRefresh;
   // Message lines ("hh:mm:ss  text", kind) not listed yet: an export lists them in batches.
   QList<QPair<QString, int>> m_lstPendingMessages;
   export_progress * m_pExportProgress = nullptr;   // while an export runs
   bool m_bDryRunning = false;   // a dry run's plug-in messages about written files are not logged
   QStringList m_lstNamespaceOrder;   // places of the tree's namespaces ('E' or 'N' + label) while a project is open
   bool m_bScrollPending = false;   // the message area scrolls to its end once per turn
   // Dialogs shown during an export, each with an arrow cursor pushed over the busy one.
   QList<QObject *> m_lstExportDialogs;

   QAction * m_actNewProject = nullptr;
   QAction * m_actOpenProject = nullptr;
   QAction * m_actSaveAs = nullptr;
   QAction * m_actRenameProject = nullptr;
   QAction * m_actReloadProject = nullptr;
   QAction * m_actExportJson = nullptr;
   QAction * m_actQuit = nullptr;
   QAction * m_actSave = nullptr;
   QAction * m_actUndo = nullptr;
   QAction * m_actRedo = nullptr;
   QAction * m_actNewEntity = nullptr;
   QAction * m_actNewEnumeration = nullptr;
   QAction * m_actInsertItem = nullptr;
   QAction * m_actEditItem = nullptr;
   QAction * m_actDeleteItem = nullptr;
   QAction * m_actNewProperty = nullptr;
   QAction * m_actEditProperty = nullptr;
   QAction * m_actDeleteProperty = nullptr;
   QDockWidget * m_dockUndo = nullptr;
   QAction * m_actGlobalSettings = nullptr;
   QAction * m_actPluginSettings = nullptr;
   QAction * m_actExport = nullptr;
   QAction * m_actExportPreview = nullptr;
   QAction * m_actShowDebugger = nullptr;
   QAction * m_actUserGuide = nullptr;
   QAction * m_actAbout = nullptr;
   QMenu * m_mnuView = nullptr;

public:
   // Makes itself the host's main window and loads the plug-ins of plugin_finder::pluginDirectories().
   explicit main_window(QWidget * parent = nullptr);
   virtual ~main_window();

   // --lumor-path of the program: it outranks the saved setting when the settings change.
   void setLumorPathOption(const QString & s) { m_sLumorPathOption = s; }

   // Opens a .tavrel project or imports a .json model beside it; announces it to the plug-ins.
   zy::ZyBool openProject(const QString & path);
   // Writes the document "tavrel dump" prints into a file, replaced once complete.
   bool exportModelJson(const QString & path, QString & sError) const;
   // Selects the entity or enumeration of that key in the tree (as a click does).
   bool selectItem(const QString & key);

   model::project_ptr getProject() const { return m_pProject; }
   model::entity_ptr getSelectedEntity() const { return m_pEntity; }
   model::enumeration_ptr getSelectedEnumeration() const { return m_pEnumeration; }
   plugin::export_interface * getPlugin() const { return m_pPlugin.data(); }
   const QList<app::plugin_info> & getPlugins() const { return m_lstPlugins; }
   QTreeWidget * getModelTree() const { return m_treeModel; }
   QDockWidget * getPreviewDock() const { return m_dockPreview; }
   QDockWidget * getDiagramDock() const { return m_dockDiagram; }
   diagram_view * getDiagramView() const { return m_viewDiagram; }
   QListWidget * getMessageList() const { return m_lstMessages; }
   script_debugger * getDebugger() const;
   help_opener * getHelpOpener() const { return m_pHelp; }
   QAction * getExportAction() const { return m_actExport; }
   QAction * getExportPreviewAction() const { return m_actExportPreview; }
   export_preview_dialog * getExportPreview() const;
   QUndoStack * getUndoStack() const { return m_pUndo; }
   QTreeWidget * getPropertyTable() const { return m_treeItemDetails; }
   QLineEdit * getFilterField() const { return m_txtFilter; }
   // True while the model holds edits that are not saved into the project file.
   bool isModelModified() const;

   // Editing the model: each edit is one step of the undo stack, kept in memory until Save.
   // The editors are modal dialogs; a null item creates a new one. False when cancelled.
   bool editEntity(const model::entity_ptr & pEntity);
   bool editEnumeration(const model::enumeration_ptr & pEnumeration);
   bool editProperty(const model::entity_ptr & pEntity, const model::property_ptr & pProperty);
   void deleteEntity(const model::entity_ptr & pEntity);
   void deleteEnumeration(const model::enumeration_ptr & pEnumeration);
   void deleteProperty(const model::entity_ptr & pEntity, const model::property_ptr & pProperty);
   // The property selected in the property table of the selected entity, or null.
   model::property_ptr getSelectedProperty() const;

   // Tells the plug-in's terminate() to every plug-in: at the end of the program only, since a
   // terminated plug-in hands out no preview any more.
   void terminatePlugins();

protected:
   bool eventFilter(QObject * watched, QEvent * event) override;
   // Typed text that is not applied is offered before the window closes.
   void closeEvent(QCloseEvent * event) override;

public Q_SLOTS:
   // A new, empty project: its name and its new file asked in a dialog.
   void doActNewProject();
   void doActOpenProject();
   // The model written into another project file, which becomes the open project.
   bool doActSaveAs();
   // The project's name, one undo step.
   void doActRenameProject();
   void doActReloadProject();
   bool doActExportJson();
   bool doActSave();
   void doActNewEntity();
   void doActNewEnumeration();
   void doActInsertItem();
   void doActEditItem();
   void doActDeleteItem();
   void doActNewProperty();
   void doActEditProperty();
   void doActDeleteProperty();
   void doFilterChanged(const QString & text);
   void doActGlobalSettings();
   bool doActPluginSettings();
   zy::ZyBool doActExport();
   // A dry run of the export, shown in the export preview dialog; false when it could not run.
   bool doActExportPreview();
   void doActShowDebugger();
   void doActUserGuide();
   void doActAbout();
   void doTreeCurrentItemChanged(QTreeWidgetItem * current);
   void doDetailsEdited();
   void doBtnApplyDetails();
   void doPluginMessage(const QString & text, int kind, int duration);
   void doShowDebugger(tools::custom_javascript * pScript);
   void addMessage(const QString & text, int kind);
   void clearMessages();

private:
   // The window: menus, tool bar, title and what the actions allow.
   void createActions();
   // The menus and the tool bar over the actions.
   void createMenus();
   void createWidgets();
   void updateActions();
   void updateTitle();

   // Editing: actions, menus, context menus, the undo history.
   void createEditActions();
   void createEditMenu();
   void createUndoDock();
   // Creates (null item) or edits an entity or enumeration in its editor: texts of the undo step
   // for a new item, an edited one and a renamed one.
   template <typename Dialog, typename T>
   bool editItem(const std::shared_ptr<T> & pItem, const item_kind<T> & kind, const QStringList & lstTexts);
   // Pushes one edit: the model becomes state "after" and the window shows "place".
   void pushEdit(const QString & sText, const model_state & after, const model_place & place);
   // Applies an edit's change (forward: redo) and shows it.
   void applyChange(const model_change & change, bool bForward, const model_place & place);
   // Selects the place of an edit and tells the plug-ins it changed.
   void showPlace(const model_place & place);
   // Lists the model's schema problems (the checkSchema list, from m_checkSchema) in the message area.
   void listSchemaProblems();
   // The rules a reader of the project file applies that the model breaks (Save refuses then).
   QStringList saveProblems() const;
   // Writes the model into that project file, unless it breaks a reader's rule.
   bool saveProjectAs(const QString & sFile);
   // Deleting an item others name: its references go along (true) or nothing goes.
   bool confirmDropReferences(const QString & sKind, const QString & sKey, const QStringList & lstReferences);
   // Before anything drops unsaved edits: Save, Discard or Cancel; false to stay.
   bool confirmDiscard();
   // Where a new entity or enumeration goes: the namespace of the selection.
   QString currentNamespace() const;
   // The window's size, splitters and selection, kept in the settings.
   void saveWindowState() const;
   void restoreWindowState();
   // The selection kept for that project when the window last closed, or empty.
   QString rememberedSelection(const QString & sProjectPath) const;

   // Before a reload of a JSON model replaces applied edits: offers to export them; false to stay.
   bool confirmReload();
   // A project file name with its .tavrel suffix (added when missing).
   static QString projectFileFor(const QString & sPath);
   // A project file chosen in Qt's own file dialog (empty when cancelled).
   QString askProjectFile(const QString & sTitle, const QString & sStart, bool bForSave);
   // Where File > Export model as JSON writes (asked; proposed beside the model when unattended).
   QString askJsonPath() const;

   // The model tree and its selection.
   void createModelTree();
   void fillModelTree();
   void emitSelection();
   // The key of the item beside this one in its namespace of the tree (empty when it is alone).
   QString siblingKey(const QString & sKey) const;
   // The keys the tree would show for the project: entities, then enumerations.
   QStringList treeKeys() const;
   // The tree's items keep their places: the tool tips of the given items follow the model.
   void refreshTreeItems(const QList<const void *> & lstChanged);

   // The edit panel of the selected entity or enumeration.
   QGroupBox * createDetailsPanel();
   void showItemDetails();
   // Applies text typed in the edit panel before an export; false when it cannot be applied.
   bool applyTypedDetails();
   // Why the edit panel's texts cannot be stored (empty when they can).
   QString detailsProblem() const;

   // The plug-ins and what they run.
   void loadPlugins();
   // The plug-in that settings, export and preview act on; its preview goes into the dock.
   void setCurrentPlugin(plugin::export_interface * pPlugin);
   // One entry a loaded export plug-in at the top of the Plug-in menu.
   void addPluginChoices();
   // The plug-in's settings may have changed: its views reload them and show the selection again.
   void refreshPluginViews();
   // Why no export can start now (empty when it can).
   QString exportRefusal() const;
   QString exportTitle() const;
   // The plug-in's export with files to report to, the debugger and the cursor looked after.
   zy::ZyBool runPlugin(plugin::export_files & files);
   void reportFailedExport(const zy::ZyBool & result);
   // The user cancelled: the record follows what was written, nothing is removed.
   zy::ZyBool reportStoppedExport(const plugin::export_files & files, qint64 iStartMs);
   // The host's summary of a complete export: removes the stale files, records the new set.
   void showExportSummary(const plugin::export_files & files, qint64 iStartMs);
   // A script engine of the plug-in that is debugging gets the debugger window.
   void attachRunningDebugger();

   // The message area; flushMessages lists the pending lines.
   void createMessagesDock();
   void flushMessages();
   // The Diagram view, a tab beside the preview.
   void createDiagramDock();
};

} // namespace desktop
