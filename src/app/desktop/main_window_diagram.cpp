// The Diagram view: a dock tabbed with the preview, linked to the model tree's selection.

#include "desktop/main_window.h"
#include "desktop/diagram_view.h"

#include <QDockWidget>
#include <QMenu>

namespace desktop {

void main_window::createDiagramDock()
{
   m_viewDiagram = new diagram_view(this);
   m_dockDiagram = new QDockWidget(tr("Diagram"), this);
   m_dockDiagram->setObjectName("m_dockDiagram");
   m_dockDiagram->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable | QDockWidget::DockWidgetClosable);
   m_dockDiagram->setWidget(m_viewDiagram);
   addDockWidget(Qt::RightDockWidgetArea, m_dockDiagram);
   if (m_dockPreview)
   {
      tabifyDockWidget(m_dockPreview, m_dockDiagram);
      m_dockPreview->raise();
   }
   // Laid out only while its tab is in front: a dock behind another tab still counts as visible.
   connect(m_dockDiagram, & QDockWidget::visibilityChanged, m_viewDiagram, & diagram_view::setShown);
   // A click on a box selects its entity in the tree, which centres the box again.
   connect(m_viewDiagram, & diagram_view::entityClicked, this, [this](const QString & key) { selectItem(key); });
   if (m_dockPreview) { m_mnuView->addAction(m_dockPreview->toggleViewAction()); }
   m_mnuView->addAction(m_dockDiagram->toggleViewAction());
   m_mnuView->addAction(m_dockMessages->toggleViewAction());
}

} // namespace desktop
