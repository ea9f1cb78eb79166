// A model of a million entities holds millions of properties: the fields most properties leave
// unset must not cost room in each of them, and must read and copy as plain members would.

#include <QByteArray>

#include <gtest/gtest.h>

#include "model/project.h"
#include "model/property.h"
#include "storage/project_storage.h"

TEST(ModelPropertyFields, UnsetRareFieldsTakeNoRoomInTheProperty)
{
   // The twelve rarely set texts and values (24 to 32 bytes each) live apart, so that a
   // property of a large model stays small.
   EXPECT_LE(sizeof(model::property), sizeof(void *) * 28);
}

TEST(ModelPropertyFields, RareFieldsReadAsSetAndKeepNullApartFromEmpty)
{
   model::property p;
   EXPECT_TRUE(p.getColumnName().isNull());
   EXPECT_FALSE(p.getMinValue().isValid());
   p.setColumnName(QString(""));
   EXPECT_FALSE(p.getColumnName().isNull());
   EXPECT_TRUE(p.getColumnName().isEmpty());
   EXPECT_TRUE(p.getRegExp().isNull());
   p.setMinValue(QVariant(qlonglong(3)));
   p.setMaxLength(QVariant(QString("MAX_NAME")));
   p.setFormat("%.2f");
   EXPECT_EQ(p.getMinValue(), QVariant(qlonglong(3)));
   EXPECT_EQ(p.getMaxLength(), QVariant(QString("MAX_NAME")));
   EXPECT_EQ(p.getFormat(), QString("%.2f"));
   p.setFormat(QString());
   EXPECT_TRUE(p.getFormat().isNull());
}

TEST(ModelPropertyFields, CopyOfAPropertyOwnsItsRareFields)
{
   model::property p;
   p.setEnumerationKey("ns::Status");
   model::property copy(p);
   copy.setEnumerationKey("ns::Other");
   EXPECT_EQ(p.getEnumerationKey(), QString("ns::Status"));
   EXPECT_EQ(copy.getEnumerationKey(), QString("ns::Other"));
   model::property assigned;
   assigned = p;
   p.setEnumerationKey(QString());
   EXPECT_EQ(assigned.getEnumerationKey(), QString("ns::Status"));
   EXPECT_TRUE(p.getEnumerationKey().isNull());
}

// The import takes the text it is given, so that it can free it once the document is parsed.
TEST(ModelPropertyFields, JsonImportTakesTheTextItIsGiven)
{
   QByteArray text(R"({"name": "p", "entities": [{"name": "A", "properties": [{"name": "id", "type": "long", "primary_key": true}]}]})");
   model::project_ptr pProject;
   const zy::ZyBool ok = storage::project_storage::parseJson(std::move(text), "p.json", pProject);
   ASSERT_TRUE(static_cast<bool>(ok)) << ok.getDesc().toStdString();
   EXPECT_TRUE(text.isEmpty());
   ASSERT_TRUE(pProject);
   EXPECT_EQ(pProject->getListOfAllEntities()->size(), 1);
}
