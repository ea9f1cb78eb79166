// Draws the C++ export plug-in's icons (32x32 PNG) into the given directory.
// Shapes only, no fonts, so the output does not depend on the machine's font set.
//
// Build and run once, then commit the PNG files:
//   g++ -std=c++17 -fPIC scripts/make_icons.cpp $(pkg-config --cflags --libs Qt6Gui) -o /tmp/make_icons
//   QT_QPA_PLATFORM=offscreen /tmp/make_icons src/cpp_export/resources/cpp_export/images

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cstdio>
#include <functional>

namespace {

const int kSize = 32;

bool draw(const QString & path, const std::function<void(QPainter &)> & paint)
{
   QImage image(kSize, kSize, QImage::Format_ARGB32);
   image.fill(Qt::transparent);
   {
      QPainter painter(&image);
      painter.setRenderHint(QPainter::Antialiasing, true);
      paint(painter);
   }
   if (!image.save(path, "PNG")) { std::fprintf(stderr, "cannot write %s\n", qPrintable(path)); return false; }
   return true;
}

QPen roundPen(const QColor & color, qreal width)
{
   return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// Green disc with a white tick
void paintOk(QPainter & p)
{
   QRadialGradient fill(QPointF(12, 10), 20);
   fill.setColorAt(0.0, QColor(120, 220, 110));
   fill.setColorAt(1.0, QColor(30, 140, 40));
   p.setPen(QPen(QColor(20, 100, 30), 1.2));
   p.setBrush(fill);
   p.drawEllipse(QRectF(1.5, 1.5, 29, 29));
   QPainterPath tick;
   tick.moveTo(8.5, 16.5);
   tick.lineTo(13.5, 22);
   tick.lineTo(23.5, 10);
   p.setBrush(Qt::NoBrush);
   p.setPen(roundPen(Qt::white, 3.6));
   p.drawPath(tick);
}

// Red disc with a white cross
void paintCancel(QPainter & p)
{
   QRadialGradient fill(QPointF(12, 10), 20);
   fill.setColorAt(0.0, QColor(245, 110, 100));
   fill.setColorAt(1.0, QColor(170, 25, 25));
   p.setPen(QPen(QColor(120, 15, 15), 1.2));
   p.setBrush(fill);
   p.drawEllipse(QRectF(1.5, 1.5, 29, 29));
   p.setPen(roundPen(Qt::white, 3.6));
   p.drawLine(QPointF(10.5, 10.5), QPointF(21.5, 21.5));
   p.drawLine(QPointF(21.5, 10.5), QPointF(10.5, 21.5));
}

// Blue rounded badge reading "C++"
void paintCppExport(QPainter & p)
{
   QLinearGradient fill(0, 0, 0, kSize);
   fill.setColorAt(0.0, QColor(80, 140, 220));
   fill.setColorAt(1.0, QColor(25, 70, 150));
   p.setPen(QPen(QColor(15, 45, 110), 1.0));
   p.setBrush(fill);
   p.drawRoundedRect(QRectF(1.5, 4.5, 29, 23), 5, 5);

   // The "C": an open arc
   p.setBrush(Qt::NoBrush);
   p.setPen(QPen(Qt::white, 3.0, Qt::SolidLine, Qt::FlatCap));
   p.drawArc(QRectF(4.5, 9.5, 11, 13), 45 * 16, 270 * 16);

   // Two "+" signs
   p.setPen(QPen(Qt::white, 2.2, Qt::SolidLine, Qt::FlatCap));
   const qreal centers[] = { 19.5, 26.0 };
   for (qreal cx : centers)
   {
      p.drawLine(QPointF(cx - 2.8, 16), QPointF(cx + 2.8, 16));
      p.drawLine(QPointF(cx, 13.2), QPointF(cx, 18.8));
   }
}

// A beetle seen from above: round head, oval body split in two, six legs and two feelers
void paintDebug(QPainter & p)
{
   const QColor dark(60, 40, 30);
   p.setPen(roundPen(dark, 1.6));
   // legs
   const qreal ys[] = { 14.0, 19.0, 24.0 };
   for (qreal y : ys)
   {
      p.drawLine(QPointF(16, y), QPointF(5, y - 2 + (y - 19) * 0.4));
      p.drawLine(QPointF(16, y), QPointF(27, y - 2 + (y - 19) * 0.4));
   }
   // feelers
   p.drawLine(QPointF(14, 7), QPointF(10, 2.5));
   p.drawLine(QPointF(18, 7), QPointF(22, 2.5));
   // head
   p.setBrush(dark);
   p.drawEllipse(QRectF(12, 5, 8, 6.5));
   // body
   QRadialGradient fill(QPointF(13, 15), 14);
   fill.setColorAt(0.0, QColor(240, 90, 70));
   fill.setColorAt(1.0, QColor(160, 30, 20));
   p.setPen(QPen(dark, 1.2));
   p.setBrush(fill);
   p.drawEllipse(QRectF(8.5, 10, 15, 19.5));
   p.drawLine(QPointF(16, 10.5), QPointF(16, 29));
   // spots
   p.setPen(Qt::NoPen);
   p.setBrush(dark);
   p.drawEllipse(QPointF(12.3, 16), 1.6, 1.6);
   p.drawEllipse(QPointF(19.7, 16), 1.6, 1.6);
   p.drawEllipse(QPointF(12.5, 23), 1.4, 1.4);
   p.drawEllipse(QPointF(19.5, 23), 1.4, 1.4);
}

// A closed book with a question mark on its cover
void paintHelpManual(QPainter & p)
{
   // pages seen from the side
   p.setPen(QPen(QColor(120, 120, 120), 1.0));
   p.setBrush(QColor(250, 250, 245));
   p.drawRoundedRect(QRectF(7.5, 4.5, 21, 26), 2, 2);
   // cover
   QLinearGradient fill(0, 0, kSize, 0);
   fill.setColorAt(0.0, QColor(40, 90, 170));
   fill.setColorAt(1.0, QColor(70, 130, 210));
   p.setPen(QPen(QColor(20, 50, 110), 1.0));
   p.setBrush(fill);
   p.drawRoundedRect(QRectF(4.5, 1.5, 21, 26), 2, 2);
   // spine
   p.setPen(QPen(QColor(20, 50, 110), 2.0));
   p.drawLine(QPointF(7.5, 2.5), QPointF(7.5, 26.5));
   // question mark
   QPainterPath mark;
   mark.moveTo(11.5, 10.5);
   mark.cubicTo(11.5, 5.5, 20.5, 5.5, 20.5, 10.5);
   mark.cubicTo(20.5, 13.5, 16, 13.5, 16, 17.5);
   p.setBrush(Qt::NoBrush);
   p.setPen(roundPen(Qt::white, 2.8));
   p.drawPath(mark);
   p.setPen(Qt::NoPen);
   p.setBrush(Qt::white);
   p.drawEllipse(QPointF(16, 22.2), 1.8, 1.8);
}

} // namespace

int main(int argc, char ** argv)
{
   QGuiApplication app(argc, argv);
   if (argc < 2) { std::fprintf(stderr, "usage: %s <output directory>\n", argv[0]); return 2; }
   QDir dir(QString::fromLocal8Bit(argv[1]));
   if (!dir.exists() && !dir.mkpath(QStringLiteral("."))) { return 1; }
   bool ok = true;
   ok = draw(dir.filePath(QStringLiteral("ok.png")), paintOk) && ok;
   ok = draw(dir.filePath(QStringLiteral("cancel.png")), paintCancel) && ok;
   ok = draw(dir.filePath(QStringLiteral("cpp_export.png")), paintCppExport) && ok;
   ok = draw(dir.filePath(QStringLiteral("debug.png")), paintDebug) && ok;
   ok = draw(dir.filePath(QStringLiteral("help_manual.png")), paintHelpManual) && ok;
   return ok ? 0 : 1;
}
