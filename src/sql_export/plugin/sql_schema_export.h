#pragma once

#include <QPointer>
#include <QString>

#include "gui/plugin/export_interface.h"

namespace view { class sql_export_preview; }

namespace plugin {

// The SQL export plug-in: a schema script of the model for one database.
class sql_schema_export : public export_interface
{
   Q_OBJECT
   Q_PLUGIN_METADATA(IID "TavrelSqlExport" FILE "sql_export.json")

   QString m_sDialect = QStringLiteral("sqlite");
   QString m_sScriptPath;
   bool m_bIncludeObsolete = false;
   QPointer<view::sql_export_preview> m_pPreviewWidget;
   bool m_bTerminated = false;

public:
   explicit sql_schema_export(QObject * parent = nullptr);
   virtual ~sql_schema_export();

   QString getDialect() const { return m_sDialect; }
   void setDialect(const QString & s) { m_sDialect = s; }
   // The script's file as set (relative to the project) or resolved; when none is set, the
   // model's name and the dialect name a file beside the project.
   QString getScriptPath(bool bResolved, const model::project * pProject = nullptr) const;
   void setScriptPath(const QString & s) { m_sScriptPath = s; }
   bool getIncludeObsolete() const { return m_bIncludeObsolete; }
   void setIncludeObsolete(bool b) { m_bIncludeObsolete = b; }

   // Command-line overrides are applied by the first export of the process only.
   static bool isFirstExport();
   static void setFirstExport(bool b);

public Q_SLOTS:
   // Identity, as "tavrel plugins" lists it.
   QString getName() const override;
   QString getGuid() const override;
   QString getVersion() const override;
   QString getShortDesc() const override;
   QString getDescription() const override;
   QString getCommandLineInfos() const override;
   QIcon getIconSettings() const override;
   QIcon getIcon() const override;
   // Settings, kept in the project.
   QSqlError loadSettings() override;
   QSqlError saveSettings() override;
   void clearSettings() override;
   bool hasSettings() const override;
   bool showSettings() override;
   QWidget * getPreviewWidget() override;
   void terminate() override;
   zy::ZyBool exportProject(model::project & project) override;

protected:
   void applyCommandLine();
   void resetPreviewWidget();
};

} // namespace plugin
