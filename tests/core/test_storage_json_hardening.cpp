// Inputs found by fuzzing the JSON import: each once went wrong in the import itself.

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include "model/project.h"
#include "storage/project_storage.h"

namespace {

QString importError(const QByteArray & json)
{
   model::project_ptr project;
   const zy::ZyBool ok = storage::project_storage::parseJson(json, "model.json", project);
   EXPECT_FALSE(static_cast<bool>(ok));
   EXPECT_FALSE(project);
   return ok.getDesc();
}

} // namespace

// A whole code too large for any integer was converted to one to be quoted (undefined behaviour).
TEST(StorageJsonHardening, HugeCodeIsQuotedAsWritten)
{
   EXPECT_EQ(importError(R"J({"name": "X", "entities": [{"name": "A", "properties": [{"name": "p", "type": "int", "accessibility": 5.88889e+64}]}]})J"),
             "model.json: entities[0].properties[0].accessibility: unknown code 5.88889e+64, expected one of \"public\", \"protected\", "
             "\"private\" (or a code from 0 to 2)");
   EXPECT_EQ(importError(R"J({"name": "X", "entities": [{"name": "A", "properties": [{"name": "p", "type": "int", "collection": -1e300}]}]})J"),
             "model.json: entities[0].properties[0].collection: unknown code -1e+300, expected one of \"none\", \"qlist\", \"std_vector\" "
             "(or a code from 0 to 2)");
   EXPECT_EQ(importError(R"J({"name": "X", "entities": [{"name": "A", "properties": [{"name": "p", "type": "int", "collection": 9007199254740992}]}]})J"),
             "model.json: entities[0].properties[0].collection: unknown code 9007199254740992, expected one of \"none\", \"qlist\", \"std_vector\" "
             "(or a code from 0 to 2)");
}
