#pragma once

#include <gtest/gtest.h>

#include "db_server.h"

namespace db_support {

// One server of each kind per test program: started when a test first asks for it, stopped
// (and its folder removed) when the program ends, whether its tests passed or not.
class db_environment : public ::testing::Environment
{
public:
   void TearDown() override;

   // The running server, or null with the reason (a missing package is named) in sError.
   static db_server * server(db_server::enum_kind eKind, QString & sError);
   // Registers the environment with GoogleTest; returns it for a static initializer.
   static ::testing::Environment * install();
};

} // namespace db_support

// Declares pServer, the running server of that kind, or fails the test with the reason.
#define TAVREL_REQUIRE_DB_SERVER(pServer, eKind) \
   QString sServerError_##pServer; \
   db_support::db_server * pServer = db_support::db_environment::server((eKind), sServerError_##pServer); \
   ASSERT_NE(pServer, nullptr) << sServerError_##pServer.toStdString()
