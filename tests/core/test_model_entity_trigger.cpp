#include <QSet>

#include <gtest/gtest.h>

#include "model/entity.h"
#include "model/entity_trigger.h"

// Each row of the trigger table reads and writes its own flag of the entity, and no other.
TEST(ModelEntityTrigger, EachRowOwnsOneFlag)
{
   QSet<QString> setKeys, setNames;
   for (const model::entity_trigger & t : model::entityTriggers())
   {
      model::entity e;
      EXPECT_FALSE(e.hasTriggers());
      (e.*t.set)(true);
      EXPECT_TRUE((e.*t.isSet)()) << t.key;
      EXPECT_TRUE(e.hasTriggers()) << t.key;
      EXPECT_EQ(model::triggerKeys(e), QStringList { QString::fromLatin1(t.key) }) << t.key;
      setKeys.insert(t.key);
      setNames.insert(t.cppName);
   }
   EXPECT_EQ(setKeys.size(), 8);
   EXPECT_EQ(setNames.size(), 8);
}

// Keys are the event in snake case, names the same event in Pascal case.
TEST(ModelEntityTrigger, KeyAndNameSpellTheSameEvent)
{
   for (const model::entity_trigger & t : model::entityTriggers())
   {
      EXPECT_EQ(QString::fromLatin1(t.key).remove('_'), QString::fromLatin1(t.cppName).toLower()) << t.key;
   }
   EXPECT_EQ(model::triggerKeys().first(), "before_fetch");
   EXPECT_EQ(model::triggerKeys().last(), "after_delete");
}
