#include "cli_diagram.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include "diagram/diagram_graph.h"
#include "diagram/diagram_layout.h"
#include "model/project.h"
#include "storage/project_storage.h"
#include "tools/terminal_text.h"

namespace app {

namespace {

// The format a file name asks for, empty when its suffix names none.
QString formatOfSuffix(const QString & sPath)
{
   const QString sSuffix = QFileInfo(sPath).suffix().toLower();
   if ((sSuffix == "gv") || (sSuffix == "dot")) { return "dot"; }
   if ((sSuffix == "mmd") || (sSuffix == "mermaid")) { return "mermaid"; }
   return (diagram::formats().contains(sSuffix) ? sSuffix : QString());
}

} // namespace

zy::ZyBool cli_diagram::readModel(const QString & sPath, model::project_ptr & pProject)
{
   const QFileInfo info(sPath);
   if (! info.isFile()) { return zy::ZyBool(false, QString("no such project file: '%1'").arg(sPath)); }
   if (info.suffix().toLower() == "json") { return storage::project_storage::readJsonFile(sPath, pProject); }
   return storage::project_storage::loadProject(sPath, pProject);
}

const char * cli_diagram::usageText()
{
   return "Usage: tavrel diagram PROJECT -o FILE [--format svg|png|pdf|dot|mermaid] [--namespace NS]\n"
          "Draws the entities of PROJECT (a .tavrel or .json file) with their relations and parents,\n"
          "laid out by Graphviz. The format defaults to FILE's suffix (.svg .png .pdf .dot .gv .mmd);\n"
          "FILE '-' prints the dot or mermaid text.\n";
}

int cli_diagram::usageError(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n" << "Try 'tavrel diagram --help'.\n";
   m_err.flush();
   return 2;
}

int cli_diagram::failure(const QString & text)
{
   m_err << "tavrel: " << tools::terminal_text::escape(text) << "\n";
   m_err.flush();
   return 1;
}

int cli_diagram::run(const QStringList & args)
{
   QCommandLineParser parser;
   parser.setApplicationDescription(usageText());
   parser.addOptions({
      { QStringList { "h", "help" }, "Show this help." },
      { QStringList { "o", "output" }, "The file to write ('-': standard output, dot and mermaid only).", "FILE" },
      { "format", "svg, png, pdf, dot or mermaid (default: from FILE's suffix).", "FORMAT" },
      { "namespace", "Only the entities of this namespace and the namespaces below it.", "NS" } });
   parser.addPositionalArgument("PROJECT", "Project file, .tavrel or .json.");
   if (! parser.parse(QStringList("tavrel") + args)) { return usageError(parser.errorText()); }
   if (parser.isSet("help")) { m_out << parser.helpText().section('\n', 1); m_out.flush(); return 0; }

   const QStringList lstPositional = parser.positionalArguments();
   if (lstPositional.size() != 1) { return usageError("diagram needs PROJECT"); }
   const QString sOut = parser.value("output");
   if (sOut.isEmpty()) { return usageError("diagram needs -o FILE"); }
   const QString sFormat = (parser.isSet("format") ? parser.value("format") : formatOfSuffix(sOut));
   if (sFormat.isEmpty()) { return usageError("no format given and none known for '" + sOut + "': use --format"); }
   if (! diagram::formats().contains(sFormat)) { return usageError("unknown format '" + sFormat + "' (svg, png, pdf, dot or mermaid)"); }
   if ((sOut == "-") && (sFormat != "dot") && (sFormat != "mermaid")) { return usageError("only dot and mermaid are printed; give -o FILE"); }

   model::project_ptr pProject;
   const zy::ZyBool ok = readModel(lstPositional.first(), pProject);
   if (! ok || ! pProject) { return failure(ok.getDesc().isEmpty() ? "cannot read '" + lstPositional.first() + "'" : ok.getDesc()); }
   const QString sNamespace = parser.value("namespace");
   const diagram::graph g = diagram::buildGraph(* pProject, sNamespace);
   if (g.boxes.isEmpty())
   { return failure(sNamespace.isEmpty() ? QString("the model has no entity to draw") : "no entity in namespace '" + sNamespace + "'"); }

   const bool bLaidOut = ((sFormat != "dot") && (sFormat != "mermaid"));
   if (bLaidOut)
   {
      const QString sTooLarge = diagram::layoutSizeProblem(g);
      if (! sTooLarge.isEmpty()) { return failure(sTooLarge); }
      // The layout is one Graphviz call without steps to report: say what it is busy with.
      m_err << "Laying out " << g.boxes.size() << " entities and " << g.edges.size() << " relations with Graphviz...\n";
      m_err.flush();
   }

   QString sError;
   if (sOut == "-")
   {
      QByteArray data;
      if (! diagram::renderData(g, sFormat, data, sError)) { return failure(sError); }
      m_out << QString::fromUtf8(data);
      m_out.flush();
      return 0;
   }
   if (! diagram::writeFile(g, sFormat, sOut, sError)) { return failure(sError); }
   m_out << "Wrote the diagram of " << g.boxes.size() << " entities and " << g.edges.size() << " edges to '"
         << tools::terminal_text::escape(QFileInfo(sOut).absoluteFilePath(), false) << "' (" << sFormat << ")\n";
   m_out.flush();
   return 0;
}

} // namespace app
