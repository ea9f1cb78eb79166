#pragma once

#include <QString>

#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace storage {

class json_text;

namespace json_read {

// Whole-document parse, or item by item when the layout of the text allows it (bPiecewise);
// both give the same model and the same messages. The text is released once read.
zy::ZyBool parseText(json_text & text, const QString & fileName, model::project_ptr & result, bool bPiecewise);

} // namespace json_read
} // namespace storage
