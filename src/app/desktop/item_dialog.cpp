// The common frame of the model item editors.

#include "desktop/item_dialog.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTableWidget>

#include "model/model_text_rules.h"

namespace desktop {

item_dialog::item_dialog(const QString & sTitle, QWidget * parent) : QDialog(parent)
{
   setWindowTitle(sTitle);
   m_pLayout = new QVBoxLayout(this);
   m_pForm = new QFormLayout();
   m_pLayout->addLayout(m_pForm);
   m_lblProblem = new QLabel(this);
   m_lblProblem->setObjectName("m_lblProblem");
   m_pMarks = new field_marks(m_lblProblem, this);
   m_pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
   m_pButtons->setObjectName("m_buttons");
   connect(m_pButtons, & QDialogButtonBox::accepted, this, [this]() { if (m_pMarks->isValid()) { accept(); } });
   connect(m_pButtons, & QDialogButtonBox::rejected, this, & QDialog::reject);
   connect(m_pMarks, & field_marks::validityChanged, m_pButtons->button(QDialogButtonBox::Ok), & QWidget::setEnabled);
}

QLineEdit * item_dialog::addLine(QFormLayout * pForm, const char * szName, const QString & sLabel, const QString & sText, const field_marks::rule & fnRule)
{
   QLineEdit * txt = new QLineEdit(sText, this);
   txt->setObjectName(szName);
   pForm->addRow(sLabel + " :", txt);
   if (fnRule) { m_pMarks->add(txt, sLabel, fnRule); }
   return txt;
}

QCheckBox * item_dialog::addCheck(QFormLayout * pForm, const char * szName, const QString & sLabel, bool bChecked)
{
   QCheckBox * chk = new QCheckBox(sLabel, this);
   chk->setObjectName(szName);
   chk->setChecked(bChecked);
   pForm->addRow(QString(), chk);
   return chk;
}

QComboBox * item_dialog::addCombo(QFormLayout * pForm, const char * szName, const QString & sLabel, const QStringList & lstItems, bool bEditable)
{
   QComboBox * cbo = new QComboBox(this);
   cbo->setObjectName(szName);
   cbo->setEditable(bEditable);
   cbo->addItems(lstItems);
   pForm->addRow(sLabel + " :", cbo);
   return cbo;
}

QTableWidget * item_dialog::addKeyValueTable(const char * szName, const QString & sTitle, const QStringList & lstHeaders, const QList<QPair<QString, QString> > & lstRows)
{
   QGroupBox * pGroup = new QGroupBox(sTitle, this);
   QTableWidget * tbl = new QTableWidget(static_cast<int>(lstRows.size()), 2, pGroup);
   tbl->setObjectName(szName);
   tbl->setHorizontalHeaderLabels(lstHeaders);
   tbl->horizontalHeader()->setStretchLastSection(true);
   tbl->verticalHeader()->hide();
   for (int i = 0; i < lstRows.size(); ++i)
   {
      tbl->setItem(i, 0, new QTableWidgetItem(lstRows.at(i).first));
      tbl->setItem(i, 1, new QTableWidgetItem(lstRows.at(i).second));
   }
   QPushButton * btnAdd = new QPushButton(tr("Add"), pGroup);
   btnAdd->setObjectName(QString(szName) + "_add");
   QPushButton * btnRemove = new QPushButton(tr("Remove"), pGroup);
   btnRemove->setObjectName(QString(szName) + "_remove");
   connect(btnAdd, & QPushButton::clicked, tbl, [tbl]() { tbl->insertRow(tbl->rowCount()); tbl->setCurrentCell(tbl->rowCount() - 1, 0); tbl->editItem(tbl->item(tbl->rowCount() - 1, 0)); });
   connect(btnRemove, & QPushButton::clicked, tbl, [tbl]() { if (tbl->currentRow() >= 0) { tbl->removeRow(tbl->currentRow()); } });
   connect(tbl, & QTableWidget::cellChanged, m_pMarks, & field_marks::update);
   connect(btnRemove, & QPushButton::clicked, m_pMarks, & field_marks::update);
   QHBoxLayout * pButtons = new QHBoxLayout();
   pButtons->addWidget(btnAdd);
   pButtons->addWidget(btnRemove);
   pButtons->addStretch(1);
   QVBoxLayout * pLayout = new QVBoxLayout(pGroup);
   pLayout->addWidget(tbl);
   pLayout->addLayout(pButtons);
   m_pLayout->addWidget(pGroup, 1);
   return tbl;
}

void item_dialog::addMetaTable(const QMap<QString, QString> & map)
{
   QList<QPair<QString, QString> > lst;
   for (auto itr = map.cbegin(); itr != map.cend(); ++itr) { lst.append({ itr.key(), itr.value() }); }
   m_tblMeta = addKeyValueTable("m_tblMeta", tr("Meta data"), { tr("Key"), tr("Value") }, lst);
   m_pMarks->addCheck([this]() { return keysProblem(m_tblMeta, tr("meta data key")); });
}

QMap<QString, QString> item_dialog::metaData() const
{
   QMap<QString, QString> map;
   if (! m_tblMeta) { return map; }
   for (const auto & kv : rowsOf(m_tblMeta)) { map.insert(kv.first, kv.second); }
   return map;
}

void item_dialog::finish()
{
   m_pLayout->addWidget(m_lblProblem);
   m_pLayout->addWidget(m_pButtons);
   m_pMarks->update();
}

QList<QPair<QString, QString> > item_dialog::rowsOf(const QTableWidget * tbl)
{
   QList<QPair<QString, QString> > lst;
   for (int i = 0; i < tbl->rowCount(); ++i)
   {
      const QString sKey = (tbl->item(i, 0) ? tbl->item(i, 0)->text() : QString());
      if (! sKey.isEmpty()) { lst.append({ sKey, tbl->item(i, 1) ? tbl->item(i, 1)->text() : QString() }); }
   }
   return lst;
}

QString item_dialog::keysProblem(const QTableWidget * tbl, const QString & sWhat)
{
   QSet<QString> seen;
   for (const auto & kv : rowsOf(tbl))
   {
      if (seen.contains(kv.first)) { return tr("%1 '%2' is repeated").arg(sWhat, model::model_text_rules::shown(kv.first)); }
      seen.insert(kv.first);
      const QString sReason = model::model_text_rules::nulProblem(kv.first + kv.second);
      if (! sReason.isEmpty()) { return sWhat + " '" + model::model_text_rules::shown(kv.first) + "' " + sReason; }
   }
   return QString();
}

} // namespace desktop
