#pragma once

#include <QByteArray>
#include <QIODevice>

#include "model/model_fwd.h"

namespace storage {
namespace json_write {

// The JSON model document of a project: a fixed field order, non-default values only (ids and
// names always), one property or enumeration value per line so that dumps diff well.
QByteArray projectText(const model::project & project);
// The same text written to a device item by item; false when a write fails.
bool writeProject(const model::project & project, QIODevice & out);

} // namespace json_write
} // namespace storage
