#pragma once

#include <QGraphicsView>
#include <QHash>
#include <QWidget>

#include "diagram/diagram_graph.h"
#include "model/model_fwd.h"

class QComboBox;
class QGraphicsItem;
class QGraphicsScene;
class QLabel;
class QThread;
class QTimer;

namespace desktop {

// The Diagram view: the model's entities laid out by Graphviz and drawn in a QGraphicsScene,
// zoomed with Ctrl + wheel or the +/- keys, fitted with 0, panned by dragging, filtered by
// namespace. A click on a box reports its entity; selectEntity() marks and centres a box. The
// layout is computed only while the view is in front (setShown), a short moment after the last
// change: edits made while it is hidden or behind another tab cost no layout, and several edits
// in a row cost one. Graphviz runs in a thread of its own, one layout at a time; the former
// picture stays until the new one is drawn.
class diagram_view : public QWidget
{
   Q_OBJECT

   model::project_ptr m_pProject;
   diagram::graph m_graph;
   QHash<QString, QGraphicsItem *> m_hBoxes;
   QComboBox * m_cboNamespace = nullptr;
   QLabel * m_lblStatus = nullptr;
   QGraphicsView * m_viewGraph = nullptr;
   QGraphicsScene * m_pScene = nullptr;
   QString m_sSelectedKey;
   QTimer * m_tmLayout = nullptr;
   bool m_bDirty = false;
   bool m_bShown = false;
   bool m_bSelecting = false;
   int m_iLayouts = 0;
   QThread * m_pWorker = nullptr;   // the layout under way
   bool m_bStale = false;   // the model or filter changed while it ran

public:
   // Below this scale a box's text is no longer legible: fit stops there (with scroll bars).
   static constexpr double k_dMinFitScale = 0.6;
   // The zoom keys and wheel stay within these.
   static constexpr double k_dMinScale = 0.05;
   static constexpr double k_dMaxScale = 8.0;

public:
   explicit diagram_view(QWidget * parent = nullptr);
   // The scene goes first: clearing it announces a selection change this view must not receive.
   ~diagram_view() override;

   // A new or changed model: the picture is made again once the view is in front.
   void setProject(const model::project_ptr & pProject);
   // Whether the user sees the view (its dock open and its tab in front).
   void setShown(bool bShown);
   bool isShown() const { return m_bShown; }
   // Layouts drawn (or failed) so far.
   int getLayoutCount() const { return m_iLayouts; }
   // Starts laying the model out in the layout thread; drawn once done (laidOut). A request
   // while a layout runs is served when it ends.
   void rebuild();
   bool isLayingOut() const { return (m_pWorker != nullptr); }
   // The whole picture when it is legible so, else the legible scale around the selected box.
   void fit();
   double scale() const;
   // Marks the entity's box and centres it; false when it is not drawn.
   bool selectEntity(const QString & key);

   QGraphicsView * getView() const { return m_viewGraph; }
   QComboBox * getNamespaceFilter() const { return m_cboNamespace; }
   QStringList getBoxKeys() const { return m_hBoxes.keys(); }
   // The box of an entity in scene coordinates (empty when it is not drawn).
   QRectF getBoxRect(const QString & key) const;
   QString getSelectedKey() const { return m_sSelectedKey; }

Q_SIGNALS:
   void entityClicked(const QString & key);
   // A layout was computed and drawn (or failed).
   void laidOut();

protected:
   bool eventFilter(QObject * watched, QEvent * event) override;

private Q_SLOTS:
   void doSceneSelectionChanged();
   void doCboNamespaceChanged();

private:
   // Starts the layout timer when the picture is stale and seen.
   void scheduleLayout();
   void fillNamespaces();
   void drawBox(const diagram::box & b);
   void drawEdge(const diagram::edge & e);
   // Draws a finished layout (ok) or shows why there is none.
   void showLayout(const diagram::graph & g, bool ok, const QString & sError);
   void zoom(double dFactor);
   void setScale(double dScale);
};

} // namespace desktop
