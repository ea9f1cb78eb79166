#include "desktop/import_db_dialog.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QUrl>
#include <QUrlQuery>
#include <QVBoxLayout>

#include "db_import/db_importer.h"
#include "desktop/main_window.h"
#include "model/project.h"

namespace desktop {

namespace {

QStringList globs(const QLineEdit * pEdit)
{
   return pEdit->text().split(QRegularExpression("[,\\s]+"), Qt::SkipEmptyParts);
}

// A line edit with a browse button beside it.
QWidget * withButton(QLineEdit * pEdit, QPushButton * pButton)
{
   auto * pRow = new QWidget();
   auto * pLayout = new QHBoxLayout(pRow);
   pLayout->setContentsMargins(0, 0, 0, 0);
   pLayout->addWidget(pEdit, 1);
   pLayout->addWidget(pButton);
   return pRow;
}

} // namespace

import_db_dialog::import_db_dialog(const QString & sProjectFile, QWidget * parent) : QDialog(parent)
{
   setWindowTitle(tr("Import from database"));
   setObjectName("import_db_dialog");
   m_txtProject = new QLineEdit(sProjectFile);
   m_btnProject = new QPushButton(tr("..."));
   m_txtPreview = new QPlainTextEdit();
   m_txtPreview->setReadOnly(true);
   m_txtPreview->setPlaceholderText(tr("Preview lists the changes before anything is written."));
   m_barProgress = new QProgressBar();
   m_barProgress->setRange(0, 1);
   m_barProgress->setValue(0);
   m_barProgress->setTextVisible(false);
   m_lblStatus = new QLabel();
   m_btnPreview = new QPushButton(tr("&Preview"));
   m_btnImport = new QPushButton(tr("&Import"));
   m_btnCancelImport = new QPushButton(tr("&Cancel import"));
   m_btnCancelImport->setObjectName("m_btnCancelImport");
   m_btnCancelImport->setToolTip(tr("Stop the preview or the import: nothing is written"));
   m_btnCancelImport->setEnabled(false);
   auto * pButtons = new QDialogButtonBox(QDialogButtonBox::Close);
   pButtons->addButton(m_btnPreview, QDialogButtonBox::ActionRole);
   pButtons->addButton(m_btnImport, QDialogButtonBox::AcceptRole);
   pButtons->addButton(m_btnCancelImport, QDialogButtonBox::ActionRole);

   auto * pTarget = new QFormLayout();
   pTarget->addRow(tr("Project file (.tavrel or .json)"), withButton(m_txtProject, m_btnProject));
   auto * pLayout = new QVBoxLayout(this);
   pLayout->addWidget(createSourceGroup());
   pLayout->addWidget(createRulesGroup());
   pLayout->addLayout(pTarget);
   pLayout->addWidget(m_txtPreview, 1);
   pLayout->addWidget(m_barProgress);
   pLayout->addWidget(m_lblStatus);
   pLayout->addWidget(pButtons);

   connect(m_cboSource, qOverload<int>(& QComboBox::currentIndexChanged), this, & import_db_dialog::doSourceChanged);
   connect(m_btnFile, & QPushButton::clicked, this, & import_db_dialog::doBtnFile);
   connect(m_btnProject, & QPushButton::clicked, this, & import_db_dialog::doBtnProject);
   connect(m_btnPreview, & QPushButton::clicked, this, & import_db_dialog::doBtnPreview);
   connect(m_btnImport, & QPushButton::clicked, this, & import_db_dialog::doBtnImport);
   connect(m_btnCancelImport, & QPushButton::clicked, this, & import_db_dialog::doBtnCancelImport);
   connect(pButtons, & QDialogButtonBox::rejected, this, & QDialog::reject);
   doSourceChanged(m_cboSource->currentIndex());
   resize(640, 720);
}

QWidget * import_db_dialog::createSourceGroup()
{
   m_cboSource = new QComboBox();
   m_cboSource->addItems({ tr("SQLite file"), tr("PostgreSQL"), tr("MariaDB / MySQL"), tr("SQL script (DDL)") });
   m_txtFile = new QLineEdit();
   m_btnFile = new QPushButton(tr("..."));
   m_txtHost = new QLineEdit("localhost");
   m_spnPort = new QSpinBox();
   m_spnPort->setRange(1, 65535);
   m_txtDatabase = new QLineEdit();
   m_txtUser = new QLineEdit(qEnvironmentVariable("USER"));
   m_txtPassword = new QLineEdit();
   m_txtPassword->setEchoMode(QLineEdit::Password);
   m_txtSchemas = new QLineEdit();
   m_txtSchemas->setPlaceholderText(tr("all (PostgreSQL), the database (MariaDB)"));
   // Named as their members, for the tests.
   const QList<QPair<QWidget *, const char *> > lstNames { { m_txtHost, "m_txtHost" }, { m_spnPort, "m_spnPort" }, { m_txtDatabase, "m_txtDatabase" },
                                                          { m_txtUser, "m_txtUser" }, { m_txtPassword, "m_txtPassword" }, { m_txtSchemas, "m_txtSchemas" } };
   for (const auto & p : lstNames) { p.first->setObjectName(p.second); }
   auto * pGroup = new QGroupBox(tr("Source"));
   auto * pForm = new QFormLayout(pGroup);
   pForm->addRow(tr("Kind"), m_cboSource);
   pForm->addRow(tr("File"), withButton(m_txtFile, m_btnFile));
   pForm->addRow(tr("Host"), m_txtHost);
   pForm->addRow(tr("Port"), m_spnPort);
   pForm->addRow(tr("Database"), m_txtDatabase);
   pForm->addRow(tr("User"), m_txtUser);
   pForm->addRow(tr("Password"), m_txtPassword);
   pForm->addRow(tr("Schemas"), m_txtSchemas);
   return pGroup;
}

QWidget * import_db_dialog::createRulesGroup()
{
   m_cboClassNames = new QComboBox();
   m_cboClassNames->addItems({ tr("PascalCase (order_item -> OrderItem)"), tr("as the table") });
   m_cboPropertyNames = new QComboBox();
   m_cboPropertyNames->addItems({ tr("as the column"), tr("camelCase (unit_price -> unitPrice)") });
   m_txtNamespace = new QLineEdit();
   m_txtNamespace->setPlaceholderText(tr("one per schema"));
   m_txtTables = new QLineEdit();
   m_txtTables->setPlaceholderText(tr("all, or patterns such as sales_* order?"));
   m_txtExclude = new QLineEdit();
   m_chkDecimalAsString = new QCheckBox(tr("numeric and decimal columns as QString (exact)"));
   m_chkNullableOptional = new QCheckBox(tr("nullable columns as std::optional"));
   m_chkNoInverse = new QCheckBox(tr("no one-to-many relation on the target of a foreign key"));
   m_chkPrune = new QCheckBox(tr("remove what disappeared from the database (else marked obsolete)"));
   m_chkStrict = new QCheckBox(tr("a failing statement of the script ends the import"));
   auto * pGroup = new QGroupBox(tr("Filters and naming rules"));
   auto * pForm = new QFormLayout(pGroup);
   pForm->addRow(tr("Class names"), m_cboClassNames);
   pForm->addRow(tr("Property names"), m_cboPropertyNames);
   pForm->addRow(tr("Namespace"), m_txtNamespace);
   pForm->addRow(tr("Tables"), m_txtTables);
   pForm->addRow(tr("Exclude"), m_txtExclude);
   for (QCheckBox * p : { m_chkDecimalAsString, m_chkNullableOptional, m_chkNoInverse, m_chkPrune, m_chkStrict }) { pForm->addRow(p); }
   return pGroup;
}

void import_db_dialog::doSourceChanged(int iSource)
{
   const bool bFile = ((iSource == source_sqlite) || (iSource == source_ddl));
   for (QWidget * p : { static_cast<QWidget *>(m_txtFile), static_cast<QWidget *>(m_btnFile) }) { p->setEnabled(bFile); }
   for (QWidget * p : { static_cast<QWidget *>(m_txtHost), static_cast<QWidget *>(m_spnPort), static_cast<QWidget *>(m_txtDatabase),
                        static_cast<QWidget *>(m_txtUser), static_cast<QWidget *>(m_txtPassword), static_cast<QWidget *>(m_txtSchemas) })
   { p->setEnabled(! bFile); }
   m_chkStrict->setEnabled(iSource == source_ddl);
   m_spnPort->setValue((iSource == source_mariadb) ? 3306 : 5432);
}

void import_db_dialog::doBtnFile()
{
   const bool bDdl = (m_cboSource->currentIndex() == source_ddl);
   const QString s = QFileDialog::getOpenFileName(this, bDdl ? tr("SQL script") : tr("SQLite database"), m_txtFile->text(),
                                                  bDdl ? tr("SQL scripts (*.sql);;All files (*)") : tr("SQLite databases (*.db *.sqlite *.sqlite3);;All files (*)"));
   if (! s.isEmpty()) { m_txtFile->setText(s); }
}

void import_db_dialog::doBtnProject()
{
   const QString s = QFileDialog::getSaveFileName(this, tr("Project file"), m_txtProject->text(), tr("Tavrel projects (*.tavrel);;JSON models (*.json)"),
                                                  nullptr, QFileDialog::DontConfirmOverwrite);
   if (! s.isEmpty()) { m_txtProject->setText(s); }
}

QString import_db_dialog::getProjectFile() const
{
   return m_txtProject->text().trimmed();
}

QString import_db_dialog::sourceUrl() const
{
   const int iSource = m_cboSource->currentIndex();
   if (iSource == source_sqlite) { return "sqlite:" + m_txtFile->text().trimmed(); }
   QUrl url;
   url.setScheme((iSource == source_postgresql) ? "postgresql" : "mysql");
   url.setUserName(m_txtUser->text().trimmed());
   url.setHost(m_txtHost->text().trimmed());
   url.setPort(m_spnPort->value());
   url.setPath("/" + m_txtDatabase->text().trimmed());
   if (! m_txtSchemas->text().trimmed().isEmpty()) { url.setQuery("schema=" + globs(m_txtSchemas).join(',')); }
   return url.toString();
}

db_import::import_options import_db_dialog::options() const
{
   db_import::import_options o;
   o.eClassNames = db_import::import_options::enum_class_names(m_cboClassNames->currentIndex());
   o.ePropertyNames = db_import::import_options::enum_property_names(m_cboPropertyNames->currentIndex());
   o.sNamespace = m_txtNamespace->text().trimmed();
   o.bFixedNamespace = ! o.sNamespace.isEmpty();
   o.bDecimalAsString = m_chkDecimalAsString->isChecked();
   o.bNullableOptional = m_chkNullableOptional->isChecked();
   o.bInverse = ! m_chkNoInverse->isChecked();
   o.lstTables = globs(m_txtTables);
   o.lstExclude = globs(m_txtExclude);
   o.bPrune = m_chkPrune->isChecked();
   o.bStrict = (m_chkStrict->isChecked() && (m_cboSource->currentIndex() == source_ddl));
   return o;
}

bool import_db_dialog::runImport(bool bWrite)
{
   m_lstSummary.clear();
   m_lstWarnings.clear();
   m_lstNotes.clear();
   const QString sProject = getProjectFile();
   const QString sSuffix = QFileInfo(sProject).suffix().toLower();
   if ((sSuffix != "tavrel") && (sSuffix != "json")) { showResult(tr("The project file must be a .tavrel or a .json file.")); return false; }
   // The last run's result (an error, say) does not stay beside the new run.
   m_txtPreview->clear();
   m_lblStatus->setText(tr("Reading the source..."));
   // A busy bar while the catalog is read; the steps of a large schema show below it.
   m_barProgress->setRange(0, 0);
   m_btnPreview->setEnabled(false);
   m_btnImport->setEnabled(false);
   m_btnCancelImport->setEnabled(true);
   m_bRunning = true;
   m_bCancelled = false;
   QApplication::setOverrideCursor(Qt::WaitCursor);
   db_import::db_importer importer(options());
   importer.setPassword(m_txtPassword->text());
   // Each step lets the window answer, Stop included; a stop is taken between two steps, always
   // before the project file is written, so a stopped import leaves it as it was.
   importer.setProgress([this](const QString & s) { if (! m_bCancelled) { m_lblStatus->setText(s); } QApplication::processEvents(); });
   QApplication::processEvents();
   const bool bDdl = (m_cboSource->currentIndex() == source_ddl);
   db_import::db_catalog catalog;
   model::project_ptr pProject;
   QString sError;
   auto go = [this, &sError]() { if (m_bCancelled) { sError = tr("Import cancelled : nothing was written."); } return ! m_bCancelled; };
   const bool bOk = (go() && importer.readSource(bDdl ? QString() : sourceUrl(), bDdl ? m_txtFile->text().trimmed() : QString(), catalog, sError) &&
                     go() && db_import::db_importer::loadProject(sProject, pProject, sError) && go() && importer.importInto(catalog, pProject, sError) &&
                     (! bWrite || (go() && db_import::db_importer::writeProject(* pProject, sProject, sError))));
   QApplication::restoreOverrideCursor();
   m_bRunning = false;
   m_barProgress->setRange(0, 1);
   m_barProgress->setValue(bOk ? 1 : 0);
   m_btnPreview->setEnabled(true);
   m_btnImport->setEnabled(true);
   m_btnCancelImport->setEnabled(false);
   m_lstSummary = (m_bCancelled ? QStringList() : importer.getSummary());
   m_lstWarnings = (m_bCancelled ? QStringList() : importer.getWarnings());
   m_lstNotes = (m_bCancelled ? QStringList() : importer.getNotes());
   showResult(sError);
   return bOk;
}

void import_db_dialog::doBtnCancelImport()
{
   if (! m_bRunning) { return; }
   m_bCancelled = true;
   m_btnCancelImport->setEnabled(false);
   m_lblStatus->setText(tr("Stopping..."));
}

void import_db_dialog::reject()
{
   // Closing the window while a run goes on stops it first; the dialog goes once it has stopped.
   if (m_bRunning) { doBtnCancelImport(); return; }
   QDialog::reject();
}

void import_db_dialog::showResult(const QString & sError)
{
   QStringList lst = m_lstSummary;
   for (const QString & w : m_lstWarnings) { lst.append(tr("warning: %1").arg(w)); }
   // As the command line says them: what the dump held that the model has no place for.
   for (const QString & n : m_lstNotes) { lst.append(tr("note: %1").arg(n)); }
   if (! sError.isEmpty()) { lst.append(tr("error: %1").arg(sError)); }
   m_txtPreview->setPlainText(lst.join('\n'));
   m_lblStatus->setText(sError.isEmpty() ? tr("%n change(s)", nullptr, int(m_lstSummary.size())) : tr("Nothing was written."));
}

void import_db_dialog::doBtnPreview()
{
   runImport(false);
}

void import_db_dialog::doBtnImport()
{
   if (runImport(true)) { accept(); }
}

QAction * import_db_dialog::installMenuEntry(main_window * pWindow)
{
   auto * pAction = new QAction(tr("Import from &database..."), pWindow);
   pAction->setObjectName("m_actImportDb");
   pAction->setStatusTip(tr("Create or refresh a project from a database or a SQL script"));
   QObject::connect(pAction, & QAction::triggered, pWindow, [pWindow]()
   {
      const model::project_ptr pProject = pWindow->getProject();
      import_db_dialog dlg(pProject ? pProject->getFilePath() : QString(), pWindow);
      if (dlg.exec() != QDialog::Accepted) { return; }
      const zy::ZyBool ok = pWindow->openProject(dlg.getProjectFile());
      if (! ok) { pWindow->addMessage(ok.getDesc(), 3); return; }
      for (const QString & s : dlg.getSummary()) { pWindow->addMessage(tr("Import from database : %1").arg(s), 1); }
      for (const QString & s : dlg.getWarnings()) { pWindow->addMessage(tr("Import from database : %1").arg(s), 2); }
   });
   // In the File menu, before its closing separator and Quit.
   for (QAction * pMenuAction : pWindow->menuBar()->actions())
   {
      QMenu * pMenu = pMenuAction->menu();
      if (! pMenu || pMenu->actions().isEmpty()) { continue; }
      const QList<QAction *> lst = pMenu->actions();
      QAction * pBefore = ((lst.size() >= 2) && lst.at(lst.size() - 2)->isSeparator()) ? lst.at(lst.size() - 2) : nullptr;
      pMenu->insertAction(pBefore, pAction);
      break;
   }
   return pAction;
}

} // namespace desktop
