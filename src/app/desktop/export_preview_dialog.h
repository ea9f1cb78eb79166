#pragma once

#include <QDialog>
#include <QHash>
#include <QString>

#include "export_lifecycle.h"

class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace plugin { class export_files; }

namespace desktop {

// What an export would do, from a dry run: the files it would add, change and remove, and the
// diff of the selected one. Export from here runs the real export.
class export_preview_dialog : public QDialog
{
   Q_OBJECT

public:
   // Columns of the file list.
   enum { col_status = 0, col_path = 1 };

private:
   struct texts { QString oldText; QString newText; };

   QLabel * m_lblSummary = nullptr;
   QCheckBox * m_chkUnchanged = nullptr;
   QTreeWidget * m_treeFiles = nullptr;
   QPlainTextEdit * m_txtDiff = nullptr;
   QLabel * m_lblKept = nullptr;
   QPushButton * m_btnExport = nullptr;
   QString m_sRoot;
   QString m_sIgnoredLine;
   QHash<QString, texts> m_hashTexts;   // by relative path, for added and changed files
   QStringList m_lstLines;   // the outcome's lines; unchanged ones listed only when asked for

public:
   explicit export_preview_dialog(QWidget * parent = nullptr);

   // Shows the outcome of a dry run whose files kept their texts.
   void setPreview(const plugin::export_files & files, const app::export_outcome & outcome, const QString & summary);

   QTreeWidget * getFileList() const { return m_treeFiles; }
   QPlainTextEdit * getDiffView() const { return m_txtDiff; }
   QPushButton * getExportButton() const { return m_btnExport; }
   QCheckBox * getUnchangedBox() const { return m_chkUnchanged; }
   QLabel * getSummaryLabel() const { return m_lblSummary; }

Q_SIGNALS:
   void exportRequested();

private Q_SLOTS:
   void doFileSelected();
   void doChkUnchangedToggled(bool bShown);

private:
   // Lists the lines (the unchanged ones too when asked): thousands of rows made at once, rather
   // than made and then hidden one by one.
   void fillList();
   // The unified diff shown for one listed line ("A path", "M path", "D path" or "  path").
   QString diffOf(const QString & sStatus, const QString & sRel) const;
};

} // namespace desktop
