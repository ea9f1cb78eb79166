#pragma once

#include <QByteArray>
#include <QIODevice>

#include "model/model_fwd.h"

namespace storage {
namespace json_write {

// The JSON model document of a project: a fixed field order, non-default values only (ids and
// names always), one property or enumeration value per line so that dumps diff well.
QByteArray projectText(const model::project & project);
// The text of one entity or enumeration as projectText writes it (at no indent), for whoever
// reads a model item by item; it only reads the item, so items may be written on any thread.
QByteArray itemText(const model::entity & entity);
QByteArray itemText(const model::enumeration & enumeration);
// The same text written to a device item by item; false when a write fails.
bool writeProject(const model::project & project, QIODevice & out);

} // namespace json_write
} // namespace storage
