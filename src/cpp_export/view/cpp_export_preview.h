#pragma once

#include <QWidget>

#include <memory>

#include "model/model_fwd.h"
#include "ui_wnd_cpp_export_preview.h"
#include "cpp_export/view/style_buttons.h"

class QHideEvent;
class QLabel;
class QShowEvent;
class QTextEdit;

namespace plugin { class cpp_export; class cpp_builder; }
namespace tools { class syntax_highlighter; }

namespace view {

// Shows, read-only, the header and source that an export would generate for the entity or
// enumeration selected in the host; the class style and PIMPL flag can be switched on the spot.
// The form is a private base: its widgets are members of the widget, hidden from its users.
class cpp_export_preview : public QWidget, private Ui::wnd_cpp_export_preview
{
   Q_OBJECT

   plugin::cpp_export * m_pPlugin = nullptr;
   tools::syntax_highlighter * m_pHighlighterHeader = nullptr;   // owned by the editor's document
   tools::syntax_highlighter * m_pHighlighterSource = nullptr;
   std::unique_ptr<plugin::cpp_builder> m_pCppBuilder;           // created on the first preview
   model::project_ptr m_pProject;
   model::entity_ptr m_pEntity;
   model::enumeration_ptr m_pEnumeration;
   bool m_bVisible = false;
   QLabel * m_lblProblem = nullptr;   // why the code shown is empty or incomplete

public:
   explicit cpp_export_preview(QWidget * parent = nullptr, Qt::WindowFlags f = {});
   virtual ~cpp_export_preview();

   void setPlugin(plugin::cpp_export * plugin);
   plugin::cpp_export * getPlugin() const { return m_pPlugin; }
   plugin::cpp_builder * getCppBuilder() const { return m_pCppBuilder.get(); }

   model::project_ptr getProject() const { return m_pProject; }
   model::entity_ptr getEntity() const { return m_pEntity; }
   model::enumeration_ptr getEnumeration() const { return m_pEnumeration; }

   void updateShowHidePreview();
   QString getProblemText() const;

public Q_SLOTS:
   void doLoadProject(model::project_ptr project);
   void doSelectEntity(model::entity_ptr entity);
   void doSelectEnumeration(model::enumeration_ptr enumeration);
   void doOptCppTemplateChanged(bool bChecked);
   void doChkPImplChanged(int iState);

protected:
   void showEvent(QShowEvent * event) override;
   void hideEvent(QHideEvent * event) override;

private:
   void init();
   plugin::cpp_builder * getOrCreateBuilder();
   style_buttons styleButtons() const;
   // Makes item the one selection (none for an unsaved one) and previews it when shown.
   template <typename Item, typename Other>
   void selectItem(const std::shared_ptr<Item> & item, std::shared_ptr<Item> & pSelected, std::shared_ptr<Other> & pOther);
   // Shows generated code, at the same scroll position when bKeepPlace.
   static void setCode(QTextEdit * pEdit, const QString & sCode, bool bKeepPlace);
   void showProblems(const QStringList & lstProblems, bool bEmpty);
   // Saves the plug-in's settings; false, after telling the user, when the project file refuses.
   bool storeOrUndo(const QString & sWhat);
   // The buttons as the plug-in's settings are, without reacting to it.
   void showStoredSettings();
};

} // namespace view
