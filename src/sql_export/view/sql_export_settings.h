#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace plugin { class sql_schema_export; }

namespace view {

// The SQL export's settings: database, script file, obsolete columns; saved in the project.
class sql_export_settings : public QDialog
{
   Q_OBJECT

   plugin::sql_schema_export * m_pPlugin = nullptr;
   QComboBox * m_cboDialect = nullptr;
   QLineEdit * m_txtScriptPath = nullptr;
   QCheckBox * m_chkIncludeObsolete = nullptr;

public:
   explicit sql_export_settings(QWidget * parent = nullptr);
   virtual ~sql_export_settings();

   void setPlugin(plugin::sql_schema_export * p);
   QComboBox * dialectBox() const { return m_cboDialect; }
   QLineEdit * scriptPathEdit() const { return m_txtScriptPath; }
   QCheckBox * includeObsoleteBox() const { return m_chkIncludeObsolete; }

public Q_SLOTS:
   void accept() override;

protected Q_SLOTS:
   void doBrowse();
};

} // namespace view
