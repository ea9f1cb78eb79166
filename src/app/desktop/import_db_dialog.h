#pragma once

#include <QDialog>
#include <QStringList>

#include "db_import/import_options.h"

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;

namespace desktop {

class main_window;

// File > Import from database...: the source (a database server, an SQLite file or a SQL
// script), the filters and naming rules, a preview of the changes before anything is written,
// and the import into the open project or a new project file.
class import_db_dialog : public QDialog
{
   Q_OBJECT

public:
   // Kinds of source, in the order of the source box.
   enum enum_source { source_sqlite = 0, source_postgresql = 1, source_mariadb = 2, source_ddl = 3 };

private:
   QComboBox * m_cboSource = nullptr;
   QLineEdit * m_txtFile = nullptr;
   QPushButton * m_btnFile = nullptr;
   QLineEdit * m_txtHost = nullptr;
   QSpinBox * m_spnPort = nullptr;
   QLineEdit * m_txtDatabase = nullptr;
   QLineEdit * m_txtUser = nullptr;
   QLineEdit * m_txtPassword = nullptr;
   QLineEdit * m_txtSchemas = nullptr;
   QComboBox * m_cboClassNames = nullptr;
   QComboBox * m_cboPropertyNames = nullptr;
   QLineEdit * m_txtNamespace = nullptr;
   QLineEdit * m_txtTables = nullptr;
   QLineEdit * m_txtExclude = nullptr;
   QCheckBox * m_chkDecimalAsString = nullptr;
   QCheckBox * m_chkNullableOptional = nullptr;
   QCheckBox * m_chkNoInverse = nullptr;
   QCheckBox * m_chkPrune = nullptr;
   QCheckBox * m_chkStrict = nullptr;
   QLineEdit * m_txtProject = nullptr;
   QPushButton * m_btnProject = nullptr;
   QPlainTextEdit * m_txtPreview = nullptr;
   QProgressBar * m_barProgress = nullptr;
   QLabel * m_lblStatus = nullptr;
   QPushButton * m_btnPreview = nullptr;
   QPushButton * m_btnImport = nullptr;
   QPushButton * m_btnCancelImport = nullptr;   // enabled while a preview or import runs
   bool m_bRunning = false;
   bool m_bCancelled = false;
   QStringList m_lstSummary;
   QStringList m_lstWarnings;
   QStringList m_lstNotes;      // what a dump file held that was skipped on purpose

public:
   // sProjectFile: the open project (the default target), or empty.
   explicit import_db_dialog(const QString & sProjectFile, QWidget * parent = nullptr);

   QString getProjectFile() const;
   // What the last preview or import changed, and its warnings.
   QStringList getSummary() const { return m_lstSummary; }
   QStringList getWarnings() const { return m_lstWarnings; }
   QStringList getNotes() const { return m_lstNotes; }
   QComboBox * getSourceBox() const { return m_cboSource; }
   QLineEdit * getFileEdit() const { return m_txtFile; }
   QLineEdit * getProjectEdit() const { return m_txtProject; }
   QPlainTextEdit * getPreview() const { return m_txtPreview; }
   QPushButton * getPreviewButton() const { return m_btnPreview; }
   QPushButton * getImportButton() const { return m_btnImport; }
   QPushButton * getCancelImportButton() const { return m_btnCancelImport; }

   // Adds File > Import from database... to the window: the dialog on the open project, then the
   // project opened again and the changes listed in the messages.
   static QAction * installMenuEntry(main_window * pWindow);

public Q_SLOTS:
   void doSourceChanged(int iSource);
   void doBtnFile();
   void doBtnProject();
   void doBtnPreview();
   void doBtnImport();
   void doBtnCancelImport();

private:
   QWidget * createSourceGroup();
   QWidget * createRulesGroup();
   // Reads the source and merges it into the target's project; writes it when bWrite.
   bool runImport(bool bWrite);
   QString sourceUrl() const;
   db_import::import_options options() const;
   void showResult(const QString & sError);
   // True once the user cancelled the run: the next step is not started.
   bool cancelled() const { return m_bCancelled; }
   void reject() override;
};

} // namespace desktop
