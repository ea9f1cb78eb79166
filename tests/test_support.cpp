#include "test_support.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace test_support {

QString sourceDir() { return QString::fromUtf8(TAVREL_SOURCE_DIR); }
QString binaryDir() { return QString::fromUtf8(TAVREL_BINARY_DIR); }
QString examplePath(const QString & name) { return sourceDir() + "/examples/" + name; }

QByteArray readAll(const QString & path)
{
   QFile f(path);
   if (! f.open(QIODevice::ReadOnly)) { return QByteArray(); }
   return f.readAll();
}

bool writeAll(const QString & path, const QByteArray & data)
{
   QDir().mkpath(QFileInfo(path).absolutePath());
   QFile f(path);
   if (! f.open(QIODevice::WriteOnly | QIODevice::Truncate)) { return false; }
   return (f.write(data) == data.size());
}

} // namespace test_support
