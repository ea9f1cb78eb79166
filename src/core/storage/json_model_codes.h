#pragma once

#include <QString>

// Names of the coded values of the JSON model document, shared by the reader and the writer.
namespace storage {
namespace json_model_codes {

// Index = code; -1 when the name is unknown.
int accessibilityCode(const QString & s);
int decorationCode(const QString & s);
int collectionCode(const QString & s);
int relationCode(const QString & s);
QString accessibilityName(int i);
QString decorationName(int i);
QString collectionName(int i);
QString relationName(int i);

} // namespace json_model_codes
} // namespace storage
