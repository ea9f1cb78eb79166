#include "desktop/export_preview_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QSyntaxHighlighter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "gui/plugin/export_files.h"

namespace desktop {

namespace {

// Added lines green, removed lines red, hunk headers blue: the colours a diff is read in.
class diff_highlighter : public QSyntaxHighlighter
{
public:
   explicit diff_highlighter(QTextDocument * parent) : QSyntaxHighlighter(parent) { ; }

protected:
   void highlightBlock(const QString & text) override
   {
      QTextCharFormat format;
      if (text.startsWith(QLatin1String("+++")) || text.startsWith(QLatin1String("---"))) { format.setFontWeight(QFont::Bold); }
      else if (text.startsWith('+')) { format.setForeground(QColor(0, 120, 0)); }
      else if (text.startsWith('-')) { format.setForeground(QColor(170, 0, 0)); }
      else if (text.startsWith(QLatin1String("@@"))) { format.setForeground(QColor(0, 70, 160)); }
      else { return; }
      setFormat(0, text.size(), format);
   }
};

struct status_look { QChar letter; const char * name; QColor colour; };

status_look lookOf(const QString & sLine)
{
   switch (sLine.isEmpty() ? QChar(' ').unicode() : sLine.at(0).unicode())
   {
      case 'A': return { 'A', QT_TRANSLATE_NOOP("desktop::export_preview_dialog", "Added"), QColor(0, 120, 0) };
      case 'M': return { 'M', QT_TRANSLATE_NOOP("desktop::export_preview_dialog", "Changed"), QColor(160, 100, 0) };
      case 'D': return { 'D', QT_TRANSLATE_NOOP("desktop::export_preview_dialog", "Removed"), QColor(170, 0, 0) };
      default: return { ' ', QT_TRANSLATE_NOOP("desktop::export_preview_dialog", "Unchanged"), QColor(110, 110, 110) };
   }
}

} // namespace

export_preview_dialog::export_preview_dialog(QWidget * parent) : QDialog(parent)
{
   setObjectName("export_preview_dialog");
   setWindowTitle(tr("Export preview (dry run)"));
   m_lblSummary = new QLabel(this);
   m_lblSummary->setObjectName("m_lblSummary");
   m_chkUnchanged = new QCheckBox(tr("Show unchanged files"), this);
   m_chkUnchanged->setObjectName("m_chkUnchanged");
   m_treeFiles = new QTreeWidget(this);
   m_treeFiles->setObjectName("m_treeFiles");
   m_treeFiles->setHeaderLabels({ tr("Status"), tr("File") });
   m_treeFiles->setRootIsDecorated(false);
   m_treeFiles->header()->setSectionResizeMode(col_status, QHeaderView::ResizeToContents);
   m_txtDiff = new QPlainTextEdit(this);
   m_txtDiff->setObjectName("m_txtDiff");
   m_txtDiff->setReadOnly(true);
   m_txtDiff->setLineWrapMode(QPlainTextEdit::NoWrap);
   m_txtDiff->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
   new diff_highlighter(m_txtDiff->document());
   m_lblKept = new QLabel(this);
   m_lblKept->setObjectName("m_lblKept");
   m_lblKept->setWordWrap(true);
   m_lblKept->setTextInteractionFlags(Qt::TextSelectableByMouse);

   QSplitter * pSplitter = new QSplitter(Qt::Horizontal, this);
   pSplitter->addWidget(m_treeFiles);
   pSplitter->addWidget(m_txtDiff);
   pSplitter->setStretchFactor(1, 2);

   QDialogButtonBox * pButtons = new QDialogButtonBox(QDialogButtonBox::Close, this);
   m_btnExport = pButtons->addButton(tr("&Export"), QDialogButtonBox::AcceptRole);
   m_btnExport->setObjectName("m_btnExport");
   connect(pButtons, & QDialogButtonBox::rejected, this, & QDialog::reject);
   connect(m_btnExport, & QPushButton::clicked, this, & export_preview_dialog::exportRequested);
   connect(m_treeFiles, & QTreeWidget::currentItemChanged, this, & export_preview_dialog::doFileSelected);
   connect(m_chkUnchanged, & QCheckBox::toggled, this, & export_preview_dialog::doChkUnchangedToggled);

   QVBoxLayout * pLayout = new QVBoxLayout(this);
   pLayout->addWidget(m_lblSummary);
   pLayout->addWidget(m_chkUnchanged);
   pLayout->addWidget(pSplitter, 1);
   pLayout->addWidget(m_lblKept);
   pLayout->addWidget(pButtons);
   resize(900, 560);
}

void export_preview_dialog::setPreview(const plugin::export_files & files, const app::export_outcome & outcome, const QString & summary)
{
   m_sRoot = files.root();
   m_sIgnoredLine = files.ignoredLine();
   m_hashTexts.clear();
   const QDir root(m_sRoot);
   for (const plugin::export_files::file & f : files.files())
   {
      if (f.status != plugin::export_files::status_unchanged) { m_hashTexts.insert(root.relativeFilePath(f.path), { f.oldText, f.newText }); }
   }
   m_lblSummary->setText(outcome.upToDate() ? tr("The generated files are up to date with the model.\n%1").arg(summary) : summary);
   m_lblKept->setText(outcome.kept.isEmpty() ? QString() : tr("Kept, although no longer generated :\n%1").arg(outcome.kept.join('\n')));
   m_lblKept->setVisible(! outcome.kept.isEmpty());
   m_lstLines = outcome.lines;
   m_txtDiff->clear();
   fillList();
}

void export_preview_dialog::fillList()
{
   const QString sCurrent = (m_treeFiles->currentItem() ? m_treeFiles->currentItem()->text(col_path) : QString());
   const bool bUnchanged = m_chkUnchanged->isChecked();
   const QDir root(m_sRoot);
   QList<QTreeWidgetItem *> lstItems;
   lstItems.reserve(m_lstLines.size());
   QTreeWidgetItem * pFirstChange = nullptr;
   QTreeWidgetItem * pCurrent = nullptr;
   for (const QString & sLine : std::as_const(m_lstLines))
   {
      const status_look look = lookOf(sLine);
      if ((look.letter == ' ') && ! bUnchanged) { continue; }
      QTreeWidgetItem * pItem = new QTreeWidgetItem({ tr(look.name), sLine.mid(2) });
      pItem->setData(col_status, Qt::UserRole, QString(look.letter));
      pItem->setForeground(col_status, look.colour);
      pItem->setToolTip(col_path, QDir::toNativeSeparators(root.filePath(sLine.mid(2))));
      if ((look.letter != ' ') && ! pFirstChange) { pFirstChange = pItem; }
      if (! sCurrent.isEmpty() && (sLine.mid(2) == sCurrent)) { pCurrent = pItem; }
      lstItems.append(pItem);
   }
   const QSignalBlocker block(m_treeFiles);
   m_treeFiles->clear();
   m_treeFiles->addTopLevelItems(lstItems);
   QTreeWidgetItem * pShown = (pCurrent ? pCurrent : pFirstChange);
   if (pShown) { m_treeFiles->setCurrentItem(pShown); }
   doFileSelected();
}

void export_preview_dialog::doFileSelected()
{
   const QTreeWidgetItem * pItem = m_treeFiles->currentItem();
   if (! pItem) { m_txtDiff->clear(); return; }
   m_txtDiff->setPlainText(diffOf(pItem->data(col_status, Qt::UserRole).toString(), pItem->text(col_path)));
}

void export_preview_dialog::doChkUnchangedToggled(bool) { fillList(); }

QString export_preview_dialog::diffOf(const QString & sStatus, const QString & sRel) const
{
   if (sStatus == " ") { return tr("No change : the export leaves this file as it is."); }
   QString sOld, sNew;
   if (sStatus == "D")
   {
      QFile file(QDir(m_sRoot).filePath(sRel));
      if (file.open(QIODevice::ReadOnly)) { sOld = QString::fromUtf8(file.readAll()).remove('\r'); }
   }
   else
   {
      const texts t = m_hashTexts.value(sRel);
      sOld = t.oldText;
      sNew = t.newText;
   }
   QString sDiff;
   const zy::ZyBool ok = app::export_lifecycle::unifiedDiff(sRel, sOld, sNew, m_sIgnoredLine, sDiff);
   if (! ok) { return ok.getDesc(); }
   return sDiff;
}

} // namespace desktop
