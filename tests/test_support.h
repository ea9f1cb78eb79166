#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace test_support {

QString sourceDir();
QString binaryDir();
QString examplePath(const QString & name);
QByteArray readAll(const QString & path);
bool writeAll(const QString & path, const QByteArray & data);

} // namespace test_support
