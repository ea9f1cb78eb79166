// Imports random bytes as a JSON model. Whatever the input, the import must end with a model or
// an error text; a model must dump to a document that imports again to the same dump.

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

#include "fuzz_support.h"
#include "model/project.h"
#include "storage/project_storage.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
   fuzz_support::ensureApplication();
   return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t * data, size_t size)
{
   using storage::project_storage;
   const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
   model::project_ptr project;
   const zy::ZyBool ok = project_storage::parseJson(json, QStringLiteral("fuzz.json"), project);
   if (! ok)
   {
      fuzz_support::check(! project, "failed import still gives a model");
      fuzz_support::check(! ok.getDesc().isEmpty(), "failed import without a message");
      return 0;
   }
   fuzz_support::check(static_cast<bool>(project), "successful import without a model");
   // The schema check reads every number form the import let through: deep input must end in
   // an error, not a stack overflow.
   project->checkSchema();

   const QByteArray dump = project_storage::toJson(* project);
   model::project_ptr again;
   const zy::ZyBool okAgain = project_storage::parseJson(dump, QStringLiteral("dump.json"), again);
   fuzz_support::check(static_cast<bool>(okAgain) && again, "the dump of an imported model doesn't import",
                       okAgain.getDesc() + QStringLiteral("\n--- dump ---\n") + QString::fromUtf8(dump));
   const QByteArray dumpAgain = project_storage::toJson(* again);
   fuzz_support::check(dumpAgain == dump, "the dump changes through an import",
                       QString::fromUtf8(dump) + QStringLiteral("\n--- second dump ---\n") + QString::fromUtf8(dumpAgain));
   return 0;
}
