#include <gtest/gtest.h>

#include "storage/json_layout.h"
#include "storage/project_storage.h"
#include "model/project.h"
#include "test_support.h"

namespace {

// Reads a document both ways: piece by piece (files) and whole (the fallback); the results
// must agree.
struct both_reads
{
   zy::ZyBool pieces, whole;
   model::project_ptr pPieces, pWhole;

   explicit both_reads(const QByteArray & json)
   {
      pieces = storage::project_storage::parseJson(json, "model.json", pPieces);
      whole = storage::json_layout::parseWhole(json, "model.json", pWhole);
   }
};

} // namespace

// Editors find the model's schema through "$schema"; the reader takes the key and ignores it.
TEST(StorageJsonSchemaKey, SchemaKeyIsAccepted)
{
   const both_reads r(R"J({"$schema": "file:///usr/share/tavrel/tavrel-model.schema.json", "name": "Pond",
                           "entities": [{"name": "Fish", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})J");
   ASSERT_TRUE(r.pieces) << r.pieces.getDesc().toStdString();
   ASSERT_TRUE(r.whole) << r.whole.getDesc().toStdString();
   EXPECT_EQ(r.pPieces->getName(), "Pond");
   EXPECT_EQ(r.pWhole->getListOfAllEntities()->size(), 1);
}

TEST(StorageJsonSchemaKey, SchemaKeyMustBeText)
{
   const both_reads r(R"J({"name": "Pond", "$schema": 12})J");
   EXPECT_FALSE(r.pieces);
   EXPECT_EQ(r.pieces.getDesc(), "model.json: $schema: expected a string, got a number");
   EXPECT_EQ(r.whole.getDesc(), "model.json: $schema: expected a string, got a number");
}

TEST(StorageJsonSchemaKey, SchemaKeyOnlyAtTheTop)
{
   const both_reads r(R"J({"name": "Pond", "entities": [{"name": "Fish", "$schema": "x"}]})J");
   EXPECT_EQ(r.pieces.getDesc(), "model.json: entities[0].$schema: unknown field");
   EXPECT_EQ(r.whole.getDesc(), "model.json: entities[0].$schema: unknown field");
}
