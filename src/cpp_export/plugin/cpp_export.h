#pragma once

#include <QPointer>
#include <QString>

#include <functional>

#include "gui/plugin/export_interface.h"
#include "cpp_export/plugin/cpp_template.h"

namespace view { class cpp_export_preview; }

namespace plugin {

class cpp_builder;

// The C++ export plug-in: identity, settings, export command, preview widget.
class cpp_export : public export_interface
{
   Q_OBJECT
   Q_PLUGIN_METADATA(IID "TavrelCppExport" FILE "cpp_export.json")

   QString m_sCppExportPath;
   qint32 m_eCppTemplate = cpp_template::no_inheritance;
   QString m_sCustomCppTemplate_HPP;
   QString m_sCustomCppTemplate_CPP;
   cpp_builder * m_pCppBuilder = nullptr;
   QPointer<view::cpp_export_preview> m_pPreviewWidget;
   bool m_bTerminated = false;
   bool m_bRelativePathLumor = false;
   bool m_bGenerateCustomFiles = true;
   bool m_bPImpl = false;
   QString m_sCustomScriptFile;

public:
   explicit cpp_export(QObject * parent = nullptr);
   virtual ~cpp_export();

   QString getCppExportPath(bool bResolved) const;
   void setCppExportPath(const QString & s) { m_sCppExportPath = s; }
   cpp_template::enum_template getCppTemplate() const { return static_cast<cpp_template::enum_template>(m_eCppTemplate); }
   void setCppTemplate(cpp_template::enum_template e) { m_eCppTemplate = static_cast<qint32>(e); }
   QString getCustomCppTemplate_HPP() const { return m_sCustomCppTemplate_HPP; }
   void setCustomCppTemplate_HPP(const QString & s) { m_sCustomCppTemplate_HPP = s; }
   QString getCustomCppTemplate_CPP() const { return m_sCustomCppTemplate_CPP; }
   void setCustomCppTemplate_CPP(const QString & s) { m_sCustomCppTemplate_CPP = s; }
   bool getRelativePathLumor() const { return m_bRelativePathLumor; }
   void setRelativePathLumor(bool b) { m_bRelativePathLumor = b; }
   bool getGenerateCustomFiles() const { return m_bGenerateCustomFiles; }
   void setGenerateCustomFiles(bool b) { m_bGenerateCustomFiles = b; }
   bool getPImpl() const { return m_bPImpl; }
   void setPImpl(bool b) { m_bPImpl = b; }
   QString getCustomScriptFile() const { return m_sCustomScriptFile; }
   void setCustomScriptFile(const QString & s) { m_sCustomScriptFile = s; }

   // The builder of the exports (null before the first one).
   cpp_builder * getCppBuilder() const { return m_pCppBuilder; }

   // Command-line overrides are applied by the first export of the process only.
   static bool isFirstExport();
   static void setFirstExport(bool b);

   // Source of the keyboard modifiers that the export reads (Shift alone starts the script
   // debugger); tests replace it, an empty function restores the application's own.
   typedef std::function<Qt::KeyboardModifiers()> type_fct_keyboard_modifiers;
   static void setKeyboardModifiersProvider(type_fct_keyboard_modifiers fct);

public Q_SLOTS:
   QString getGuid() const override;
   QString getName() const override;
   QString getShortDesc() const override;
   QString getDescription() const override;
   QString getVersion() const override;
   QString getCommandLineInfos() const override;
   QIcon getIcon() const override;
   QIcon getIconSettings() const override;
   bool hasSettings() const override;
   bool showSettings() override;
   QSqlError saveSettings() override;
   QSqlError loadSettings() override;
   void clearSettings() override;
   QWidget * getPreviewWidget() override;
   void terminate() override;
   zy::ZyBool exportProject(model::project & project) override;
   // Why the custom class style cannot export (a template text it needs is empty); empty when
   // it can or another style is chosen.
   QString customTemplateProblem() const;

protected:
   void readFile(const QString & path, QString & target) const;
   void resetPreviewWidget();
   void applyCommandLine();
};

} // namespace plugin
