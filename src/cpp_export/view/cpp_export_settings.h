#pragma once

#include <QDialog>
#include <QString>
#include <QUrl>

#include <functional>

#include "ui_wnd_cpp_export_settings.h"
#include "cpp_export/view/style_buttons.h"

class QLabel;

namespace plugin { class cpp_export; }
namespace tools { class syntax_highlighter; }

namespace view {

// Modal dialog that edits the export settings of the plug-in; OK validates, stores and saves.
// The form is a private base: its widgets are members of the dialog, hidden from its users.
class cpp_export_settings : public QDialog, private Ui::wnd_cpp_export_settings
{
   Q_OBJECT

public:
   // Replacements for the desktop services, so that unattended runs never open a native window.
   typedef std::function<void (const QUrl & url)> type_fct_open_url;
   // Returns the chosen path, or an empty text when the user cancels.
   typedef std::function<QString (QWidget * parent, const QString & startDir)> type_fct_choose_path;

private:
   plugin::cpp_export * m_pPlugin = nullptr;
   QString m_sCustomTemplateHeader;   // what the user typed in custom mode, kept across style switches
   QString m_sCustomTemplateSource;
   tools::syntax_highlighter * m_pHighlighterHeader = nullptr;   // owned by the editor's document
   tools::syntax_highlighter * m_pHighlighterSource = nullptr;
   QLabel * m_lblTemplateProblem = nullptr;   // what the custom templates lack, under them

public:
   explicit cpp_export_settings(QWidget * parent = nullptr, Qt::WindowFlags f = {});
   virtual ~cpp_export_settings();

   void setPlugin(plugin::cpp_export * plugin);
   plugin::cpp_export * getPlugin() const { return m_pPlugin; }

   // An empty function restores the default behaviour (desktop URL handler, native choosers).
   static void setOpenUrlHandler(const type_fct_open_url & fct);
   static void setDirectoryChooser(const type_fct_choose_path & fct);
   static void setFileChooser(const type_fct_choose_path & fct);

public Q_SLOTS:
   void doBtnOk();
   void doBtnFileLocation();
   void doBtnCustomScriptLocation();
   void doBtnDebugCustomScript();
   void doOptCppTemplateChanged(bool bChecked);
   void doChkPImplChanged(int iState);
   void doHppTemplateTextChanged();
   void doCppTemplateTextChanged();
   void doClickBtnHelpManual();

private:
   QString getMessageTitle() const;
   static QString readResourceText(const QString & path);
   style_buttons styleButtons() const;
   // Says under the editors what custom templates need for PIMPL, instead of a box per file later.
   void updateTemplateProblem();
};

} // namespace view
