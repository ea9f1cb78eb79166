#pragma once

// Shared set-up of the fuzz targets: a Qt application object (some code paths ask it for
// names and paths) and an abort that libFuzzer records as a crash with the failed invariant.

#include <QCoreApplication>
#include <QString>

#include <cstdio>
#include <cstdlib>

namespace fuzz_support {

inline void ensureApplication()
{
   static int argc = 1;
   static char name[] = "tavrel-fuzz";
   static char * argv[] = { name, nullptr };
   if (! QCoreApplication::instance()) { static QCoreApplication app(argc, argv); }
}

[[noreturn]] inline void fail(const char * what, const QString & detail = QString())
{
   std::fprintf(stderr, "invariant broken: %s\n%s\n", what, detail.toUtf8().constData());
   std::abort();
}

inline void check(bool condition, const char * what, const QString & detail = QString())
{
   if (! condition) { fail(what, detail); }
}

} // namespace fuzz_support
