#include "sql_export/view/sql_export_settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

#include "gui/tools/message_box.h"
#include "sql_export/plugin/sql_schema_export.h"

namespace view {

sql_export_settings::sql_export_settings(QWidget * parent) : QDialog(parent)
{
   setWindowTitle(tr("SQL export settings"));
   m_cboDialect = new QComboBox(this);
   m_cboDialect->addItem("SQLite", "sqlite");
   m_cboDialect->addItem("PostgreSQL", "postgresql");
   m_cboDialect->addItem("MariaDB", "mariadb");
   m_txtScriptPath = new QLineEdit(this);
   m_txtScriptPath->setPlaceholderText(tr("<project name>.<database>.sql beside the project"));
   auto * pBrowse = new QPushButton(tr("..."), this);
   auto * pPathRow = new QHBoxLayout();
   pPathRow->addWidget(m_txtScriptPath);
   pPathRow->addWidget(pBrowse);
   m_chkIncludeObsolete = new QCheckBox(tr("Columns for obsolete properties"), this);
   auto * pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
   auto * pForm = new QFormLayout(this);
   pForm->addRow(tr("Database"), m_cboDialect);
   pForm->addRow(tr("Script file"), pPathRow);
   pForm->addRow(QString(), m_chkIncludeObsolete);
   pForm->addRow(pButtons);
   connect(pBrowse, & QPushButton::clicked, this, & sql_export_settings::doBrowse);
   connect(pButtons, & QDialogButtonBox::accepted, this, & sql_export_settings::accept);
   connect(pButtons, & QDialogButtonBox::rejected, this, & sql_export_settings::reject);
}

sql_export_settings::~sql_export_settings() { ; }

void sql_export_settings::setPlugin(plugin::sql_schema_export * p)
{
   m_pPlugin = p;
   if (! p) { return; }
   const int i = m_cboDialect->findData(p->getDialect().toLower());
   m_cboDialect->setCurrentIndex((i >= 0) ? i : 0);
   m_txtScriptPath->setText(p->getScriptPath(false));
   m_chkIncludeObsolete->setChecked(p->getIncludeObsolete());
}

void sql_export_settings::doBrowse()
{
   const QString s = QFileDialog::getSaveFileName(this, tr("SQL script"), m_txtScriptPath->text(), tr("SQL scripts (*.sql)"));
   if (! s.isEmpty()) { m_txtScriptPath->setText(s); }
}

void sql_export_settings::accept()
{
   if (m_pPlugin)
   {
      m_pPlugin->setDialect(m_cboDialect->currentData().toString());
      m_pPlugin->setScriptPath(m_txtScriptPath->text().trimmed());
      m_pPlugin->setIncludeObsolete(m_chkIncludeObsolete->isChecked());
      const QSqlError err = m_pPlugin->saveSettings();
      if (err.isValid())
      {
         tools::message_box::warning(this, windowTitle(), tr("Cannot save the settings : ") + err.text());
         return;
      }
   }
   QDialog::accept();
}

} // namespace view
