#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include "model/model_fwd.h"

namespace tools {

// What the script's read-only views of the model show: the field names of each kind of view,
// and the value of one field, read from the model when the script uses it.
namespace script_views {

// Kind ("project", "entity", "property", "enumeration") to the list of its field names.
QVariantMap fieldNames();

// The value of a field, an invalid QVariant for a name the kind doesn't have.
QVariant field(const model::project & p, const QString & name);
QVariant field(const model::entity & e, const QString & name);
QVariant field(const model::property & p, const QString & name);
QVariant field(const model::enumeration & e, const QString & name);

} // namespace script_views

} // namespace tools
