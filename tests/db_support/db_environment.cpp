#include "db_environment.h"

#include <map>
#include <memory>

namespace db_support {

namespace {

struct server_slot
{
   std::unique_ptr<db_server> pServer;
   QString sError;
};

std::map<int, server_slot> & serverSlots()
{
   static std::map<int, server_slot> s_serverSlots;
   return s_serverSlots;
}

} // namespace

void db_environment::TearDown()
{
   serverSlots().clear();
}

db_server * db_environment::server(db_server::enum_kind eKind, QString & sError)
{
   auto it = serverSlots().find(int(eKind));
   if (it == serverSlots().end())
   {
      // A server that failed to start is not tried again by every test.
      server_slot slot;
      slot.pServer = std::make_unique<db_server>(eKind);
      if (! slot.pServer->start(slot.sError)) { slot.pServer.reset(); }
      it = serverSlots().emplace(int(eKind), std::move(slot)).first;
   }
   sError = it->second.sError;
   return it->second.pServer.get();
}

::testing::Environment * db_environment::install()
{
   return ::testing::AddGlobalTestEnvironment(new db_environment());
}

} // namespace db_support
