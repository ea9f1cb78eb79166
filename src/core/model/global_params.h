#pragma once

#include <QString>

#include "tavrelcore_export.h"

namespace model {

// Application-wide settings that are not part of a project.
class TAVRELCORE_EXPORT global_params
{
   QString m_sLumorPath;

public:
   // With false the path as written (it may hold "$$(NAME)"); with true the environment
   // references "$$(NAME)", "${NAME}" and "$NAME" expanded and the path made absolute.
   QString getLumorPath(bool bResolved) const;
   // Why the path cannot be written into generated CMake and qmake files (empty when it can):
   // a character that would end the text it is written in ('"', ')', a line break, '#', a '$'
   // that is not an environment reference), also in the expanded path, or a reference to an
   // environment variable that is not set.
   QString getLumorPathProblem() const;
   void setLumorPath(const QString & s) { m_sLumorPath = s; }
};

} // namespace model
