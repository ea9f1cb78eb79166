#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include "tavrelcore_export.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

// Where the items of a model document are in its text, so that each can be parsed and freed on
// its own. Only a plain layout is accepted; anything else is left to the whole-document parser,
// whose messages are the reference.
namespace storage {
namespace json_layout {

struct span
{
   qsizetype iBegin = 0;
   qsizetype iEnd = 0;   // past the last byte
};

struct layout
{
   span name;                    // the value of "name", a string
   bool bEntities = false;       // "entities" given (then an array of objects)
   bool bEnumerations = false;
   QList<span> lstEntities;      // one object each
   QList<span> lstEnumerations;
};

// True when the text is one object holding "name" (a string) and optionally "entities" and
// "enumerations" (arrays of objects), each once and nothing else. Brackets and strings of the
// items are only balanced here, not checked: the caller parses each item.
TAVRELCORE_EXPORT bool split(const char * pText, qsizetype iSize, layout & out);

// The import parsing the whole document at once, as it does when split() declines: the
// reference the item-by-item reading is compared with.
TAVRELCORE_EXPORT zy::ZyBool parseWhole(const QByteArray & json, const QString & fileName, model::project_ptr & result);

} // namespace json_layout
} // namespace storage
