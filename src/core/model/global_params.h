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
   void setLumorPath(const QString & s) { m_sLumorPath = s; }
};

} // namespace model
