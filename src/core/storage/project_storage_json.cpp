#include "storage/project_storage.h"

#include <QFileInfo>

#include "model/project.h"
#include "storage/json_layout.h"
#include "storage/json_reader.h"
#include "storage/json_text.h"
#include "storage/json_writer.h"

namespace storage {

zy::ZyBool project_storage::parseJson(const QByteArray & json, const QString & fileName, model::project_ptr & result)
{
   return parseJson(QByteArray(json), fileName, result);
}

zy::ZyBool project_storage::parseJson(QByteArray && json, const QString & fileName, model::project_ptr & result)
{
   json_text text(std::move(json));
   return json_read::parseText(text, fileName, result, true);
}

zy::ZyBool json_layout::parseWhole(const QByteArray & json, const QString & fileName, model::project_ptr & result)
{
   json_text text { QByteArray(json) };
   return json_read::parseText(text, fileName, result, false);
}

zy::ZyBool project_storage::readJsonFile(const QString & jsonFile, model::project_ptr & result)
{
   result.reset();
   json_text text;
   QString sError;
   if (! text.open(jsonFile, sError)) { return zy::ZyBool(false, QString("%1: cannot read the file: %2").arg(jsonFile, sError)); }
   zy::ZyBool ok = json_read::parseText(text, jsonFile, result, true);
   if (ok && result) { result->setLocation(QFileInfo(jsonFile).absolutePath()); }
   return ok;
}

QByteArray project_storage::toJson(const model::project & project)
{
   return json_write::projectText(project);
}

bool project_storage::writeJson(const model::project & project, QIODevice & out)
{
   return json_write::writeProject(project, out);
}

} // namespace storage
