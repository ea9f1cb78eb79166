#pragma once

#include <memory>

#include "gui/plugin/base_interface.h"
#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace tools { class custom_javascript; }

namespace plugin {

class export_files;

// A plug-in that exports the opened project.
class TAVRELGUI_EXPORT export_interface : public base_interface
{
   Q_OBJECT

protected:
   std::shared_ptr<tools::custom_javascript> m_pCustomScript;
   export_files * m_pExportFiles = nullptr;

public:
   explicit export_interface(QObject * parent = nullptr);
   virtual ~export_interface();

   std::shared_ptr<tools::custom_javascript> getCustomScript() const { return m_pCustomScript; }
   void setCustomScript(const std::shared_ptr<tools::custom_javascript> & p) { m_pCustomScript = p; }
   // Where the next exports report their files (and whether they write); null: none, they write.
   export_files * getExportFiles() const { return m_pExportFiles; }
   void setExportFiles(export_files * p) { m_pExportFiles = p; }

public Q_SLOTS:
   virtual zy::ZyBool exportProject(model::project & project) = 0;
};

} // namespace plugin
