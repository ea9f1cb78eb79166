#pragma once

#include <QByteArray>

#include "model/model_fwd.h"

namespace bench {

// A synthetic but realistic model: entities spread over several namespaces, each with 10 to 30
// properties of varied kinds (strings with defaults, bools, numbers, optional values,
// collections, enumerations), relations of every kind, inheritance from abstract bases and a
// share of triggers, validators, meta data and column names. The same seed gives the same model.
struct model_options
{
   int entities = 100;
   unsigned seed = 12345;
};

// The model as a JSON document in the import format.
QByteArray generateModelJson(const model_options & options);
// The same model read back through the import, so ids and links are those of a real project.
model::project_ptr generateModel(const model_options & options);
// The next version of a model: one data property in iEvery renamed, given another column type,
// made (not) nullable or (un)indexed, in turn. Returns how many were edited.
int editModel(model::project & project, int iEvery);

} // namespace bench
