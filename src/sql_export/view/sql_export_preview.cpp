#include "sql_export/view/sql_export_preview.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "context/ctx_global.h"
#include "gui/view/main_wnd.h"
#include "model/entity.h"
#include "sql_export/schema/schema_script.h"

namespace view {

sql_export_preview::sql_export_preview(QWidget * parent) : QWidget(parent)
{
   m_cboDialect = new QComboBox(this);
   m_cboDialect->addItem("SQLite", "sqlite");
   m_cboDialect->addItem("PostgreSQL", "postgresql");
   m_cboDialect->addItem("MariaDB", "mariadb");
   m_txtScript = new QPlainTextEdit(this);
   m_txtScript->setReadOnly(true);
   m_txtScript->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
   auto * pLayout = new QVBoxLayout(this);
   pLayout->addWidget(m_cboDialect);
   pLayout->addWidget(m_txtScript);
   connect(m_cboDialect, & QComboBox::currentIndexChanged, this, & sql_export_preview::doDialectChanged);
   if (view::main_wnd * pMainWnd = context::ctx_global::getMainWnd())
   {
      connect(pMainWnd, & view::main_wnd::onSelectEntity, this, & sql_export_preview::doSelectEntity);
      connect(pMainWnd, & view::main_wnd::onUpdateEntity, this, & sql_export_preview::doSelectEntity);
   }
   refresh();
}

sql_export_preview::~sql_export_preview() { ; }

void sql_export_preview::setDialect(const QString & sDialect)
{
   const int i = m_cboDialect->findData(sDialect.toLower());
   if (i >= 0) { m_cboDialect->setCurrentIndex(i); }
}

QString sql_export_preview::getText() const { return m_txtScript->toPlainText(); }

void sql_export_preview::doSelectEntity(model::entity_ptr entity)
{
   m_pEntity = entity;
   refresh();
}

void sql_export_preview::doDialectChanged() { refresh(); }

void sql_export_preview::refresh()
{
   if (! m_pEntity) { m_txtScript->setPlainText(tr("-- Select an entity to see its table")); return; }
   if (m_pEntity->isAbstract()) { m_txtScript->setPlainText(tr("-- %1 is abstract: it has no table of its own").arg(m_pEntity->getName())); return; }
   sql_export::enum_dialect eDialect = sql_export::dialect_sqlite;
   sql_export::sql_dialect::parse(m_cboDialect->currentData().toString(), eDialect);
   const sql_export::sql_dialect dialect(eDialect);
   QStringList lstWarnings;
   const sql_export::sql_table table = sql_export::schema_builder::tableOf(* m_pEntity, dialect, sql_export::schema_options(), lstWarnings);
   QString sText;
   for (const QString & s : lstWarnings) { sText += "-- warning: " + sql_export::schema_script::commentText(s) + '\n'; }
   // Keys are shown in the table whatever the order the whole script would give them.
   sText += sql_export::schema_script::createTable(table, dialect, QSet<QString>(), true);
   m_txtScript->setPlainText(sText);
}

} // namespace view
