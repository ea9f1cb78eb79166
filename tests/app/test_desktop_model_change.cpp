// The change an undo step keeps: only the runs of items an edit replaced, which turn the lists
// before into the lists after and back.

#include <gtest/gtest.h>

#include "desktop/model_edit.h"
#include "model/entity.h"
#include "model/enumeration.h"

namespace {

using desktop::model_change;
using desktop::model_state;

model_state stateOf(int n)
{
   model_state s;
   for (int i = 0; i < n; ++i)
   {
      s.entities.append(std::make_shared<model::entity>());
      s.entities.last()->setName(QString("E%1").arg(i));
   }
   s.enumerations.append(std::make_shared<model::enumeration>());
   return s;
}

// Applies the change both ways from copies of the two states and compares by identity.
void expectRoundTrip(const model_state & before, const model_state & after)
{
   const model_change change = model_change::between(before, after);
   model_state s = before;
   change.apply(s, true);
   EXPECT_EQ(s.entities, after.entities);
   EXPECT_EQ(s.enumerations, after.enumerations);
   change.apply(s, false);
   EXPECT_EQ(s.entities, before.entities);
   EXPECT_EQ(s.enumerations, before.enumerations);
}

} // namespace

TEST(DesktopModelChange, KeepsOnlyTheReplacedItems)
{
   const model_state before = stateOf(1000);
   model_state after = before;
   after.entities[10] = std::make_shared<model::entity>(* before.entities.at(10));
   after.entities[11] = std::make_shared<model::entity>(* before.entities.at(11));
   after.entities[700] = std::make_shared<model::entity>(* before.entities.at(700));
   const model_change change = model_change::between(before, after);
   ASSERT_EQ(change.entities.size(), 2);
   EXPECT_EQ(change.entities.at(0).at, 10);
   EXPECT_EQ(change.entities.at(0).before.size(), 2);
   EXPECT_EQ(change.entities.at(1).at, 700);
   EXPECT_EQ(change.entities.at(1).after.size(), 1);
   EXPECT_TRUE(change.enumerations.isEmpty());
   EXPECT_EQ(change.itemsPut(true).size(), 3);
   EXPECT_EQ(change.itemsPut(false).first(), before.entities.at(10).get());
   expectRoundTrip(before, after);
}

TEST(DesktopModelChange, InsertsRemovalsAndReplacementsGoBothWays)
{
   const model_state before = stateOf(50);
   model_state removed = before;
   removed.entities.removeAt(20);
   expectRoundTrip(before, removed);
   EXPECT_EQ(model_change::between(before, removed).entities.at(0).before.size(), 1);
   model_state added = before;
   added.entities.append(std::make_shared<model::entity>());
   added.enumerations.prepend(std::make_shared<model::enumeration>());
   expectRoundTrip(before, added);
   // A removal with a replacement elsewhere (a deleted entity and a relation that followed).
   model_state mixed = removed;
   mixed.entities[3] = std::make_shared<model::entity>();
   expectRoundTrip(before, mixed);
   expectRoundTrip(before, model_state());
   expectRoundTrip(model_state(), before);
   expectRoundTrip(before, before);
   EXPECT_TRUE(model_change::between(before, before).entities.isEmpty());
}
