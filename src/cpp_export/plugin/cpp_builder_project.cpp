#include "cpp_export/plugin/cpp_builder.h"

#include <QDir>
#include <QFileInfo>

#include "model/project.h"
#include "cpp_export/plugin/cpp_export.h"

namespace plugin {

namespace {
const QString k_sDocuments = QStringLiteral(":/cpp_export/documents/");
} // namespace

cpp_builder::parser_ptr cpp_builder::projectParser(const QString & resource)
{
   parser_ptr & pParser = m_hashProjectParsers[resource];
   if (! pParser) { pParser = parserFromResource(k_sDocuments + resource); }
   return pParser;
}

zy::ZyBool cpp_builder::buildProjectFile(model::project & project, const QString & resource, const QString & relativePath)
{
   if (! m_pCppExport) { return zy::ZyBool(false, k_sNoPlugin); }
   const QDir dir(m_pCppExport->getCppExportPath(true));
   return build_Generic(project, projectParser(resource), dir.absoluteFilePath(relativePath), nullptr, nullptr);
}

zy::ZyBool cpp_builder::build_ProFile(model::project & project)
{ return buildProjectFile(project, "template_qmake_pro.pro", project.getName() + ".gen.pro"); }
zy::ZyBool cpp_builder::build_CMakeListsFile(model::project & project)
{ return buildProjectFile(project, "template_cmake_lists.txt", "CMakeLists.txt"); }
zy::ZyBool cpp_builder::build_AllCppFile(model::project & project)
{ return buildProjectFile(project, "template_all.cpp", "src/" + project.getName() + "_all.gen.cpp"); }
zy::ZyBool cpp_builder::build_ExportFile(model::project & project)
{ return buildProjectFile(project, "template_export.h", "include/" + project.getName() + "_export.gen.h"); }
zy::ZyBool cpp_builder::build_MainFile(model::project & project)
{ return buildProjectFile(project, "template_dll_main.cpp", "src/" + project.getName() + "_main.gen.cpp"); }
zy::ZyBool cpp_builder::build_AllIcludes(model::project & project)
{ return buildProjectFile(project, "template_all_include.h", "include/" + project.getName() + "_all_include.gen.h"); }

zy::ZyBool cpp_builder::build_PriFile(model::project & project)
{
   if (! m_pCppExport) { return zy::ZyBool(false, k_sNoPlugin); }
   const QDir dir(m_pCppExport->getCppExportPath(true));
   const QString sName = project.getName();
   zy::ZyBool ok = build_Generic(project, projectParser("template_qmake_pri.pri"), dir.absoluteFilePath(sName + ".gen.pri"), nullptr, nullptr);
   if (! ok) { return ok; }
   if (! makeDirectory(dir.absoluteFilePath("custom"))) { return zy::ZyBool(false, "Cannot create 'custom' directory"); }
   const QString sCompanion = dir.absoluteFilePath("custom/" + sName + ".pri");
   if (userFileExists(sCompanion)) { return zy::ZyBool(true); }
   return build_Generic(project, projectParser("template_custom_qmake_pri.pri"), sCompanion, nullptr, nullptr);
}

zy::ZyBool cpp_builder::build_PrecompiledHeader(model::project & project)
{
   if (! m_pCppExport) { return zy::ZyBool(false, k_sNoPlugin); }
   const QDir dir(m_pCppExport->getCppExportPath(true));
   const QString sName = project.getName();
   zy::ZyBool ok = build_Generic(project, projectParser("template_precompiled_header.h"), dir.absoluteFilePath("include/" + sName + "_precompiled_header.gen.h"), nullptr, nullptr);
   if (! ok) { return ok; }
   if (! makeDirectory(dir.absoluteFilePath("custom/include"))) { return zy::ZyBool(false, "Cannot create 'custom/include' directory"); }
   const QString sCompanion = dir.absoluteFilePath("custom/include/" + sName + "_precompiled_header.h");
   if (userFileExists(sCompanion)) { return zy::ZyBool(true); }
   return build_Generic(project, projectParser("template_custom_precompiled_header.h"), sCompanion, nullptr, nullptr);
}

} // namespace plugin
