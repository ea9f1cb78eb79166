#include "cpp_export/view/cpp_export_preview.h"

#include <QColor>
#include <QGraphicsDropShadowEffect>
#include <QGridLayout>
#include <QHideEvent>
#include <QLabel>
#include <QLayout>
#include <QMetaType>
#include <QRadioButton>
#include <QScrollBar>
#include <QTextEdit>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSqlError>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "cpp_export/plugin/cpp_builder.h"
#include "cpp_export/plugin/cpp_export.h"
#include "cpp_export/plugin/cpp_template.h"
#include "gui/tools/message_box.h"
#include "gui/tools/syntax_highlighter.h"
#include "gui/tools/wait_cursor.h"
#include "gui/view/main_wnd.h"

namespace view {

cpp_export_preview::cpp_export_preview(QWidget * parent, Qt::WindowFlags f) : QWidget(parent, f)
{
   setupUi(this);
   init();
}

cpp_export_preview::~cpp_export_preview() { ; }

void cpp_export_preview::init()
{
   QGraphicsDropShadowEffect * pShadow = new QGraphicsDropShadowEffect(m_lblNoEntity);
   pShadow->setColor(QColor(63, 63, 63, 100));
   pShadow->setBlurRadius(10);
   pShadow->setOffset(5);
   m_lblNoEntity->setGraphicsEffect(pShadow);

   // Style 2 is reached only through stored settings or the command line (see setPlugin).
   m_optZyPersistable->setVisible(false);

   // Above the code: why it is empty or incomplete, instead of a message box per file.
   m_lblProblem = new QLabel(m_grpCppTemplate);
   m_lblProblem->setObjectName("m_lblPreviewProblem");
   m_lblProblem->setWordWrap(true);
   m_lblProblem->setTextInteractionFlags(Qt::TextSelectableByMouse);
   m_lblProblem->hide();
   if (QGridLayout * pGrid = qobject_cast<QGridLayout *>(m_grpCppTemplate->layout()))
   {
      pGrid->removeWidget(m_tabCppTemplate);
      pGrid->addWidget(m_lblProblem, 1, 0);
      pGrid->addWidget(m_tabCppTemplate, 2, 0);
   }

   m_txtCppTemplateHeader->setReadOnly(true);
   m_txtCppTemplateSource->setReadOnly(true);
   m_pHighlighterHeader = new tools::syntax_highlighter(m_txtCppTemplateHeader->document());
   m_pHighlighterSource = new tools::syntax_highlighter(m_txtCppTemplateSource->document());

   for (QRadioButton * pOpt : styleButtons().all()) { connect(pOpt, & QRadioButton::toggled, this, & cpp_export_preview::doOptCppTemplateChanged); }
   connect(m_chkPImpl, & QCheckBox::stateChanged, this, & cpp_export_preview::doChkPImplChanged);

   qRegisterMetaType<model::project_ptr>("model::project_ptr");
   qRegisterMetaType<model::entity_ptr>("model::entity_ptr");
   qRegisterMetaType<model::enumeration_ptr>("model::enumeration_ptr");

   view::main_wnd * pMainWnd = context::ctx_global::getMainWnd();
   if (pMainWnd)
   {
      connect(pMainWnd, & view::main_wnd::onLoadProject, this, & cpp_export_preview::doLoadProject);
      connect(pMainWnd, & view::main_wnd::onSelectEntity, this, & cpp_export_preview::doSelectEntity);
      connect(pMainWnd, & view::main_wnd::onUpdateEntity, this, & cpp_export_preview::doSelectEntity);
      connect(pMainWnd, & view::main_wnd::onSelectEnumeration, this, & cpp_export_preview::doSelectEnumeration);
      connect(pMainWnd, & view::main_wnd::onUpdateEnumeration, this, & cpp_export_preview::doSelectEnumeration);
   }

   doSelectEntity(m_pEntity);
   doSelectEnumeration(m_pEnumeration);
}

void cpp_export_preview::setPlugin(plugin::cpp_export * plugin)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   // The builder reads the settings of the plug-in it was made for.
   if ((plugin != m_pPlugin) && m_pCppBuilder) { m_pCppBuilder.reset(); }
   m_pPlugin = plugin;
   if (m_pPlugin) { m_pPlugin->loadSettings(); }

   if (! m_pPlugin) { m_optNoInheritance->setChecked(true); }
   else { styleButtons().check(static_cast<int>(m_pPlugin->getCppTemplate())); }

   m_chkPImpl->setChecked(m_pPlugin ? m_pPlugin->getPImpl() : false);
   doOptCppTemplateChanged(true);
}

void cpp_export_preview::doOptCppTemplateChanged(bool bChecked)
{
   // Each switch fires twice; the button that goes off is ignored.
   if (! bChecked) { return; }

   const plugin::cpp_template::enum_template eStyle = styleButtons().checkedStyle();

   if (m_pPlugin && (eStyle != m_pPlugin->getCppTemplate()))
   {
      const plugin::cpp_template::enum_template eBefore = m_pPlugin->getCppTemplate();
      m_pPlugin->setCppTemplate(eStyle);
      if (! storeOrUndo(tr("class style"))) { m_pPlugin->setCppTemplate(eBefore); showStoredSettings(); return; }
   }

   doSelectEntity(m_pEntity);
}

bool cpp_export_preview::storeOrUndo(const QString & sWhat)
{
   // A project file that refuses the write (read-only, locked) keeps the stored choice: the
   // buttons go back to it and the user is told, rather than a choice that is lost on reopening.
   const QSqlError err = m_pPlugin->saveSettings();
   if (! err.isValid()) { return true; }
   tools::message_box::warning(this, m_pPlugin->getName(),
      tr("The %1 cannot be stored in the project file, it stays as it was : %2").arg(sWhat, err.text()));
   return false;
}

void cpp_export_preview::showStoredSettings()
{
   const QSignalBlocker blockPImpl(m_chkPImpl);
   m_chkPImpl->setChecked(m_pPlugin->getPImpl());
   for (QRadioButton * pOpt : styleButtons().all()) { pOpt->blockSignals(true); }
   styleButtons().check(static_cast<int>(m_pPlugin->getCppTemplate()));
   for (QRadioButton * pOpt : styleButtons().all()) { pOpt->blockSignals(false); }
}

void cpp_export_preview::doChkPImplChanged(int iState)
{
   Q_UNUSED(iState);
   if (! m_pPlugin) { return; }
   bool bPImpl = m_chkPImpl->isChecked();
   if (m_pPlugin->getPImpl() == bPImpl) { return; }
   m_pPlugin->setPImpl(bPImpl);
   if (! storeOrUndo(tr("PIMPL choice"))) { m_pPlugin->setPImpl(! bPImpl); showStoredSettings(); return; }
   doSelectEntity(m_pEntity);
}

void cpp_export_preview::doLoadProject(model::project_ptr project)
{
   m_pProject = project;
   m_pEntity.reset();
   m_pEnumeration.reset();
   setPlugin(m_pPlugin);
}

void cpp_export_preview::doSelectEntity(model::entity_ptr entity)
{
   // An export is running: its own model changes must not regenerate the preview.
   view::main_wnd * pMainWnd = context::ctx_global::getMainWnd();
   if (pMainWnd && pMainWnd->isExecutingPlugin()) { return; }

   selectItem(entity, m_pEntity, m_pEnumeration);
}

void cpp_export_preview::doSelectEnumeration(model::enumeration_ptr enumeration)
{
   // Unlike entities, enumeration selections are honoured during an export.
   selectItem(enumeration, m_pEnumeration, m_pEntity);
}

template <typename Item, typename Other>
void cpp_export_preview::selectItem(const std::shared_ptr<Item> & item, std::shared_ptr<Item> & pSelected, std::shared_ptr<Other> & pOther)
{
   tools::wait_cursor wait; Q_UNUSED(wait);
   // The same item shown again (another class style, PIMPL, an edit) keeps the reader's place.
   const bool bSameItem = (item && (item == pSelected));
   pSelected = item;
   if (pSelected) { pOther.reset(); }
   if (pSelected && (pSelected->getId() == 0)) { pSelected.reset(); }
   updateShowHidePreview();

   if (! m_bVisible || ! m_pProject || ! pSelected || ! m_pPlugin) { return; }
   plugin::cpp_builder * pBuilder = getOrCreateBuilder();
   QString sHeader, sSource;
   QStringList lstProblems;
   {
      // The builder's complaints about the templates are said here, once, not in a box per file.
      tools::message_box::collector problems;
      sHeader = pBuilder->buildHeader(* m_pProject, * pSelected);
      sSource = pBuilder->buildSource(* m_pProject, * pSelected);
      lstProblems = problems.texts();
   }
   // The builder complains once per template: a new one says it again at the next preview.
   if (! lstProblems.isEmpty()) { m_pCppBuilder.reset(); }
   setCode(m_txtCppTemplateHeader, sHeader, bSameItem);
   setCode(m_txtCppTemplateSource, sSource, bSameItem);
   showProblems(lstProblems, sHeader.trimmed().isEmpty() && sSource.trimmed().isEmpty());
}

void cpp_export_preview::showProblems(const QStringList & lstProblems, bool bEmpty)
{
   QStringList lst = lstProblems;
   if (bEmpty && m_pPlugin && (m_pPlugin->getCppTemplate() == plugin::cpp_template::custom))
   { lst.append(tr("No code: the custom templates are empty. Write them in the plug-in's settings (Plug-in > Settings).")); }
   else if (bEmpty) { lst.append(tr("No code: the template gives nothing for this item.")); }
   m_lblProblem->setText(lst.join("\n"));
   m_lblProblem->setVisible(! lst.isEmpty());
}

QString cpp_export_preview::getProblemText() const { return (m_lblProblem->isHidden() ? QString() : m_lblProblem->text()); }

void cpp_export_preview::setCode(QTextEdit * pEdit, const QString & sCode, bool bKeepPlace)
{
   const int iVertical = pEdit->verticalScrollBar()->value();
   const int iHorizontal = pEdit->horizontalScrollBar()->value();
   pEdit->setPlainText(sCode);
   if (! bKeepPlace) { return; }
   pEdit->verticalScrollBar()->setValue(iVertical);
   pEdit->horizontalScrollBar()->setValue(iHorizontal);
}

void cpp_export_preview::updateShowHidePreview()
{
   bool bItem = ((m_pEntity || m_pEnumeration) && m_pPlugin);
   m_stackedWidget->setCurrentWidget(bItem ? m_widgetEntity : m_widgetNoEntity);
   // Enumerations have no class style.
   m_widgetOptCppTemplate->setVisible(! m_pEnumeration);
   if (layout()) { layout()->update(); }
}

void cpp_export_preview::showEvent(QShowEvent * event)
{
   QWidget::showEvent(event);
   m_bVisible = true;
   // Catch up with selections made while hidden.
   doSelectEntity(m_pEntity);
   doSelectEnumeration(m_pEnumeration);
}

void cpp_export_preview::hideEvent(QHideEvent * event)
{
   QWidget::hideEvent(event);
   m_bVisible = false;
}

plugin::cpp_builder * cpp_export_preview::getOrCreateBuilder()
{
   if (! m_pCppBuilder) { m_pCppBuilder = std::make_unique<plugin::cpp_builder>(m_pPlugin); }
   return m_pCppBuilder.get();
}

style_buttons cpp_export_preview::styleButtons() const
{ return { m_optNoInheritance, m_optIxPersistable, m_optIxPersistableAndQObject, m_optZyPersistable, m_optCustomCppTemplate }; }

} // namespace view
