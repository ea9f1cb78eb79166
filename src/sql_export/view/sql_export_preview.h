#pragma once

#include <QWidget>

#include "model/model_fwd.h"

class QComboBox;
class QPlainTextEdit;

namespace view {

// The CREATE TABLE of the entity selected in the host, for the chosen database; nothing written.
class sql_export_preview : public QWidget
{
   Q_OBJECT

   QComboBox * m_cboDialect = nullptr;
   QPlainTextEdit * m_txtScript = nullptr;
   model::entity_ptr m_pEntity;

public:
   explicit sql_export_preview(QWidget * parent = nullptr);
   virtual ~sql_export_preview();

   // The database the preview is written for ("sqlite", "postgresql", "mariadb").
   void setDialect(const QString & sDialect);
   QString getText() const;

public Q_SLOTS:
   void doSelectEntity(model::entity_ptr entity);

protected Q_SLOTS:
   void doDialectChanged();

protected:
   void refresh();
};

} // namespace view
