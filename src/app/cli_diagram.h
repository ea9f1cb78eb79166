#pragma once

#include <QStringList>
#include <QTextStream>

#include "model/model_fwd.h"
#include "zy/ZyBool.h"

namespace app {

// "tavrel diagram PROJECT -o FILE [--format F] [--namespace NS]": the model as a picture (SVG,
// PNG, PDF rendered by Graphviz) or as text (Graphviz dot, Mermaid erDiagram).
class cli_diagram
{
   QTextStream & m_out;
   QTextStream & m_err;

public:
   cli_diagram(QTextStream & out, QTextStream & err) : m_out(out), m_err(err) { ; }

   // The arguments after the command name; returns the exit code (0, 1 failure, 2 usage).
   int run(const QStringList & args);

   static const char * usageText();
   // A .tavrel project, or a .json model read in memory (no project file is written beside it).
   static zy::ZyBool readModel(const QString & sPath, model::project_ptr & pProject);

private:
   int usageError(const QString & text);
   int failure(const QString & text);
};

} // namespace app
