#include "desktop/diagram_view.h"

#include <QComboBox>
#include <QGraphicsPathItem>
#include <QGraphicsScene>
#include <QGraphicsSimpleTextItem>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QSet>
#include <QStyleOptionGraphicsItem>
#include <QMutex>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtMath>

#include <memory>

#include "diagram/diagram_layout.h"
#include "diagram/diagram_text.h"
#include "model/entity.h"
#include "model/project.h"

namespace desktop {

namespace {

const int k_roleKey = 0;

// Graphviz keeps one context for the process: two windows' views never lay out at once.
QMutex s_mtxGraphviz;

// An entity's box: a title band (name, namespace) over its property rows, sized by the layout.
class box_item : public QGraphicsItem
{
   diagram::box m_box;

public:
   explicit box_item(const diagram::box & b) : m_box(b)
   {
      setPos(b.rect.topLeft());
      setFlag(QGraphicsItem::ItemIsSelectable);
      setData(k_roleKey, b.sKey);
      setToolTip(b.sKey + (b.sTable.isEmpty() ? QString() : QLatin1String("\n") + QObject::tr("table %1").arg(b.sTable)));
   }
   QRectF boundingRect() const override { return QRectF(QPointF(0, 0), m_box.rect.size()).adjusted(-2, -2, 2, 2); }

   void paint(QPainter * p, const QStyleOptionGraphicsItem *, QWidget *) override
   {
      const QRectF r(QPointF(0, 0), m_box.rect.size());
      const int iRows = int(m_box.lines.size()) + (m_box.sNamespace.isEmpty() ? 1 : 2);
      const double dRow = qMax(8.0, r.height() / (iRows + 0.6));
      const double dTitle = dRow * (m_box.sNamespace.isEmpty() ? 1.3 : 2.3);
      p->setPen(QPen(isSelected() ? QColor(0xd0, 0x60, 0x00) : Qt::black, isSelected() ? 2.5 : 1.0));
      p->setBrush(Qt::white);
      p->drawRect(r);
      p->fillRect(QRectF(r.left(), r.top(), r.width(), dTitle).adjusted(1, 1, -1, 0), QColor(0xdb, 0xe7, 0xf3));
      p->drawLine(QPointF(r.left(), dTitle), QPointF(r.right(), dTitle));
      QFont f = p->font();
      f.setPixelSize(qMax(6, int(dRow * 0.8)));
      f.setBold(true);
      f.setItalic(m_box.bAbstract);
      p->setFont(f);
      p->drawText(QRectF(r.left(), 0, r.width(), dRow * 1.2), Qt::AlignCenter, m_box.sName);
      f.setBold(false);
      f.setItalic(false);
      p->setFont(f);
      if (! m_box.sNamespace.isEmpty()) { p->drawText(QRectF(r.left(), dRow * 1.1, r.width(), dRow), Qt::AlignCenter, m_box.sNamespace); }
      for (int i = 0; i < m_box.lines.size(); ++i)
      {
         f.setItalic(m_box.lines.at(i).bRelation);
         p->setFont(f);
         const QRectF row(r.left() + 4, dTitle + dRow * (i + 0.3), r.width() - 8, dRow);
         p->drawText(row, Qt::AlignLeft | Qt::AlignVCenter, p->fontMetrics().elidedText(diagram::lineText(m_box.lines.at(i)), Qt::ElideRight, int(row.width())));
      }
   }
};

QPainterPath edgePath(const QList<QPointF> & pts)
{
   QPainterPath path(pts.first());
   int i = 1;
   // Graphviz gives a start point and triples of control points; the rest are straight.
   for (; (i + 2) < pts.size(); i += 3) { path.cubicTo(pts.at(i), pts.at(i + 1), pts.at(i + 2)); }
   for (; i < pts.size(); ++i) { path.lineTo(pts.at(i)); }
   return path;
}

QPolygonF arrowHead(const QPointF & from, const QPointF & tip)
{
   const double a = qAtan2(tip.y() - from.y(), tip.x() - from.x());
   const double s = 9.0;
   return QPolygonF({ tip, tip - QPointF(s * qCos(a - 0.4), s * qSin(a - 0.4)), tip - QPointF(s * qCos(a + 0.4), s * qSin(a + 0.4)) });
}

} // namespace

diagram_view::diagram_view(QWidget * parent) : QWidget(parent)
{
   setObjectName("diagram_view");
   m_cboNamespace = new QComboBox(this);
   m_cboNamespace->setObjectName("m_cboNamespace");
   m_cboNamespace->setToolTip(tr("Show the entities of one namespace (and the namespaces below it)"));
   m_lblStatus = new QLabel(this);
   m_pScene = new QGraphicsScene(this);
   m_viewGraph = new QGraphicsView(m_pScene, this);
   m_viewGraph->setObjectName("m_viewGraph");
   m_viewGraph->setDragMode(QGraphicsView::ScrollHandDrag);
   m_viewGraph->setRenderHint(QPainter::Antialiasing);
   m_viewGraph->setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
   m_viewGraph->viewport()->installEventFilter(this);
   m_viewGraph->installEventFilter(this);
   QHBoxLayout * pTop = new QHBoxLayout();
   pTop->addWidget(new QLabel(tr("Namespace:"), this));
   pTop->addWidget(m_cboNamespace, 1);
   pTop->addWidget(m_lblStatus);
   QVBoxLayout * pLayout = new QVBoxLayout(this);
   pLayout->setContentsMargins(2, 2, 2, 2);
   pLayout->addLayout(pTop);
   pLayout->addWidget(m_viewGraph, 1);
   connect(m_pScene, & QGraphicsScene::selectionChanged, this, & diagram_view::doSceneSelectionChanged);
   connect(m_cboNamespace, & QComboBox::currentIndexChanged, this, & diagram_view::doCboNamespaceChanged);
   m_tmLayout = new QTimer(this);
   m_tmLayout->setSingleShot(true);
   m_tmLayout->setInterval(150);
   connect(m_tmLayout, & QTimer::timeout, this, [this]() { if (m_bShown && m_bDirty) { rebuild(); } });
}

diagram_view::~diagram_view()
{
   m_tmLayout->stop();
   // Graphviz cannot be interrupted: the running layout is waited for, and its result dropped.
   if (m_pWorker)
   {
      disconnect(m_pWorker, nullptr, this, nullptr);
      m_pWorker->wait();
      delete m_pWorker;
      m_pWorker = nullptr;
   }
   disconnect(m_pScene, nullptr, this, nullptr);
   delete m_pScene;
   m_pScene = nullptr;
}

void diagram_view::setProject(const model::project_ptr & pProject)
{
   m_pProject = pProject;
   m_bDirty = true;
   scheduleLayout();
}

void diagram_view::setShown(bool bShown)
{
   m_bShown = bShown;
   if (m_bShown) { scheduleLayout(); }
   else { m_tmLayout->stop(); }
}

void diagram_view::scheduleLayout()
{
   if (m_bShown && m_bDirty) { m_tmLayout->start(); }
}

void diagram_view::fillNamespaces()
{
   const QString sCurrent = m_cboNamespace->currentData().toString();
   QSet<QString> set;
   if (m_pProject)
   {
      for (const model::entity_ptr & e : * m_pProject->getListOfAllEntities())
      {
         // Every level of a nested namespace can be chosen.
         const QStringList parts = e->getNamespace().split(QLatin1String("::"), Qt::SkipEmptyParts);
         for (int i = 1; i <= parts.size(); ++i) { set.insert(parts.mid(0, i).join(QLatin1String("::"))); }
      }
   }
   QStringList lst = set.values();
   lst.sort();
   const QSignalBlocker block(m_cboNamespace);
   m_cboNamespace->clear();
   m_cboNamespace->addItem(tr("All namespaces"), QString());
   for (const QString & s : lst) { m_cboNamespace->addItem(s, s); }
   const int i = m_cboNamespace->findData(sCurrent);
   m_cboNamespace->setCurrentIndex(qMax(0, i));
}

void diagram_view::rebuild()
{
   m_bDirty = false;
   m_tmLayout->stop();
   if (m_pWorker) { m_bStale = true; return; }
   m_bStale = false;
   fillNamespaces();
   const QString sNamespace = m_cboNamespace->currentData().toString();
   // Past the layout's bound the picture is refused anyway: counting costs less than the graph.
   int iBoxes = 0;
   if (m_pProject)
   {
      for (const model::entity_ptr & e : * m_pProject->getListOfAllEntities())
      {
         const QString sOwn = (e ? e->getNamespace() : QString());
         iBoxes += ((e && (sNamespace.isEmpty() || (sOwn == sNamespace) || sOwn.startsWith(sNamespace + QLatin1String("::")))) ? 1 : 0);
      }
   }
   if (iBoxes > diagram::k_iMaxLaidOutBoxes)
   {
      showLayout(diagram::graph(), false, tr("%1 entities; a picture is laid out for at most %2 : choose a namespace in the list").arg(iBoxes).arg(diagram::k_iMaxLaidOutBoxes));
      return;
   }
   // The model is read here, in the window's thread; the layout thread gets a copy of the graph.
   auto pJob = std::make_shared<std::pair<diagram::graph, QString>>();
   pJob->first = (m_pProject ? diagram::buildGraph(* m_pProject, sNamespace) : diagram::graph());
   if (pJob->first.boxes.isEmpty()) { showLayout(pJob->first, true, QString()); return; }
   auto pOk = std::make_shared<bool>(false);
   m_lblStatus->setText(tr("Laying out %1 entities...").arg(pJob->first.boxes.size()));
   m_pWorker = QThread::create([pJob, pOk]() {
      const QMutexLocker lock(& s_mtxGraphviz);
      * pOk = diagram::layout(pJob->first, pJob->second);
   });
   m_pWorker->setObjectName("diagram_layout");
   connect(m_pWorker, & QThread::finished, this, [this, pJob, pOk]() {
      m_pWorker->deleteLater();
      m_pWorker = nullptr;
      // A change came while it ran: its picture is already out of date.
      if (m_bStale) { m_bDirty = true; scheduleLayout(); return; }
      showLayout(pJob->first, * pOk, pJob->second);
   });
   m_pWorker->start(QThread::LowPriority);
}

void diagram_view::showLayout(const diagram::graph & g, bool ok, const QString & sError)
{
   ++m_iLayouts;
   if (! ok)
   {
      m_lblStatus->setText(tr("No diagram : %1").arg(sError));
      Q_EMIT laidOut();
      return;
   }
   {
      // Clearing drops the selection, which is no click; the view must still hear of the new
      // scene rectangle below (its scroll range follows it).
      const QSignalBlocker block(m_pScene);
      m_pScene->clear();
   }
   m_hBoxes.clear();
   m_graph = g;
   for (const diagram::box & b : m_graph.boxes) { drawBox(b); }
   for (const diagram::edge & e : m_graph.edges) { drawEdge(e); }
   m_pScene->setSceneRect(m_graph.bounds.adjusted(-20, -20, 20, 20));
   m_lblStatus->setText(tr("%1 entities, %2 edges").arg(m_graph.boxes.size()).arg(m_graph.edges.size()));
   if (! m_sSelectedKey.isEmpty()) { selectEntity(m_sSelectedKey); }
   Q_EMIT laidOut();
}

void diagram_view::drawBox(const diagram::box & b)
{
   box_item * pItem = new box_item(b);
   pItem->setZValue(1);
   m_pScene->addItem(pItem);
   m_hBoxes.insert(b.sKey, pItem);
}

void diagram_view::drawEdge(const diagram::edge & e)
{
   if (e.points.size() < 2) { return; }
   QPen pen(Qt::darkGray, 1.2);
   if (e.bInheritance) { pen.setStyle(Qt::DashLine); }
   m_pScene->addPath(edgePath(e.points), pen);
   const QPolygonF head = arrowHead(e.points.at(e.points.size() - 2), e.points.last());
   m_pScene->addPolygon(head, QPen(Qt::darkGray, 1.2), e.bInheritance ? QBrush(Qt::white) : QBrush(Qt::darkGray));
   const QList<QPair<QString, QPointF>> labels = { { e.sLabel, e.labelPos }, { e.sTail, e.tailPos }, { e.sHead, e.headPos } };
   for (const auto & l : labels)
   {
      if (l.first.isEmpty()) { continue; }
      QGraphicsSimpleTextItem * pText = m_pScene->addSimpleText(l.first);
      QFont f = pText->font();
      f.setPixelSize(10);
      pText->setFont(f);
      pText->setPos(l.second - pText->boundingRect().center());
   }
}

QRectF diagram_view::getBoxRect(const QString & key) const
{
   QGraphicsItem * p = m_hBoxes.value(key);
   return (p ? p->sceneBoundingRect().adjusted(2, 2, -2, -2) : QRectF());
}

bool diagram_view::selectEntity(const QString & key)
{
   m_sSelectedKey = key;
   QGraphicsItem * pItem = (key.isEmpty() ? nullptr : m_hBoxes.value(key));
   m_bSelecting = true;
   m_pScene->clearSelection();
   if (pItem)
   {
      pItem->setSelected(true);
      m_viewGraph->centerOn(pItem);
   }
   m_bSelecting = false;
   return (pItem != nullptr);
}

void diagram_view::doSceneSelectionChanged()
{
   if (m_bSelecting) { return; }
   const QList<QGraphicsItem *> lst = m_pScene->selectedItems();
   if (lst.isEmpty()) { return; }
   m_sSelectedKey = lst.first()->data(k_roleKey).toString();
   Q_EMIT entityClicked(m_sSelectedKey);
}

void diagram_view::doCboNamespaceChanged()
{
   m_bDirty = true;
   if (m_bShown) { rebuild(); }
}

double diagram_view::scale() const { return m_viewGraph->transform().m11(); }

void diagram_view::zoom(double dFactor) { setScale(scale() * dFactor); }

void diagram_view::setScale(double dScale)
{
   // Kept within bounds rather than refused: from any scale, the keys lead back into them.
   const double dTarget = qBound(k_dMinScale, dScale, k_dMaxScale);
   const double dCurrent = scale();
   if ((dCurrent <= 0) || qFuzzyCompare(dTarget, dCurrent)) { return; }
   m_viewGraph->scale(dTarget / dCurrent, dTarget / dCurrent);
}

void diagram_view::fit()
{
   const QRectF scene = m_pScene->sceneRect();
   const QRect port = m_viewGraph->viewport()->rect();
   if (scene.isEmpty() || port.isEmpty()) { return; }
   const double dFit = qMin(port.width() / scene.width(), port.height() / scene.height());
   if (dFit >= k_dMinFitScale)
   {
      m_viewGraph->fitInView(scene, Qt::KeepAspectRatio);
      setScale(qMin(scale(), k_dMaxScale));
      return;
   }
   // Too large to be read whole: the legible scale, around the selection (else the middle).
   const QGraphicsView::ViewportAnchor anchor = m_viewGraph->transformationAnchor();
   m_viewGraph->setTransformationAnchor(QGraphicsView::NoAnchor);
   m_viewGraph->setTransform(QTransform::fromScale(k_dMinFitScale, k_dMinFitScale));
   m_viewGraph->setTransformationAnchor(anchor);
   const QRectF selected = getBoxRect(m_sSelectedKey);
   m_viewGraph->centerOn(selected.isEmpty() ? scene.center() : selected.center());
}

bool diagram_view::eventFilter(QObject * watched, QEvent * event)
{
   if ((watched == m_viewGraph->viewport()) && (event->type() == QEvent::Wheel))
   {
      QWheelEvent * pWheel = static_cast<QWheelEvent *>(event);
      if (pWheel->modifiers() & Qt::ControlModifier) { zoom(pWheel->angleDelta().y() > 0 ? 1.15 : 1.0 / 1.15); return true; }
   }
   if ((watched == m_viewGraph) && (event->type() == QEvent::KeyPress))
   {
      const int k = static_cast<QKeyEvent *>(event)->key();
      if ((k == Qt::Key_Plus) || (k == Qt::Key_Equal)) { zoom(1.25); return true; }
      if (k == Qt::Key_Minus) { zoom(0.8); return true; }
      if (k == Qt::Key_0) { fit(); return true; }
   }
   return QWidget::eventFilter(watched, event);
}

} // namespace desktop
