#include "storage/json_model_codes.h"

#include <QStringList>

namespace storage {
namespace json_model_codes {

namespace {

const QStringList & accessibilityNames() { static const QStringList s = { "public", "protected", "private" }; return s; }
const QStringList & decorationNames() { static const QStringList s = { "none", "shared_ptr", "qsharedpointer", "optional" }; return s; }
const QStringList & collectionNames() { static const QStringList s = { "none", "qlist", "std_vector" }; return s; }
const QStringList & relationNames() { static const QStringList s = { "one_to_one", "one_to_many", "many_to_one", "many_to_many" }; return s; }

QString nameAt(const QStringList & lst, int i) { return (((i >= 0) && (i < lst.size())) ? lst.at(i) : QString()); }

} // namespace

int accessibilityCode(const QString & s) { return int(accessibilityNames().indexOf(s)); }
int decorationCode(const QString & s) { return int(decorationNames().indexOf(s)); }
int collectionCode(const QString & s) { return int(collectionNames().indexOf(s)); }
int relationCode(const QString & s) { return int(relationNames().indexOf(s)); }
QString accessibilityName(int i) { return nameAt(accessibilityNames(), i); }
QString decorationName(int i) { return nameAt(decorationNames(), i); }
QString collectionName(int i) { return nameAt(collectionNames(), i); }
QString relationName(int i) { return nameAt(relationNames(), i); }

} // namespace json_model_codes
} // namespace storage
