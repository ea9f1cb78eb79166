#include "cpp_export/plugin/generators/generators.h"

#include <QSet>
#include <QStringBuilder>
#include <QStringList>

#include <mutex>

#include "context/ctx_global.h"
#include "model/entity.h"
#include "model/enumeration.h"
#include "model/project.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"
#include "cpp_export/plugin/cpp_builder.h"

namespace plugin {
namespace generators {

namespace {

std::function<QDateTime()> s_fctClock;
// Local time goes through the C library's time-zone state: the export's workers take turns.
std::mutex s_clockMutex;

QString bannerDate()
{
   if (s_fctClock)
   {
      const std::lock_guard<std::mutex> lock(s_clockMutex);
      return s_fctClock().toString(QStringLiteral("yyyy/MM/dd hh:mm"));
   }
   // The text changes once a minute (time-zone offsets are whole minutes), so it is formatted once
   // per minute rather than for each of the thousands of files of a large export.
   thread_local qint64 s_iMinute = -1;
   thread_local QString s_sText;
   const qint64 iNow = QDateTime::currentMSecsSinceEpoch();
   const qint64 iMinute = ((iNow >= 0) ? (iNow / 60000) : -2);
   if ((iMinute != s_iMinute) || (iMinute < 0))
   {
      const std::lock_guard<std::mutex> lock(s_clockMutex);
      s_sText = QDateTime::fromMSecsSinceEpoch(iNow).toString(QStringLiteral("yyyy/MM/dd hh:mm"));
      s_iMinute = iMinute;
   }
   return s_sText;
}

QString bannerApp() { return context::ctx_global::getAppName() % QLatin1Char(' ') % context::ctx_global::getAppVersionStr(); }

// Removes the base-class text that a template wrote just before a keyword of a class without
// base: " : public ", ": public " or ", public ".
void removeInheritance(QString & out)
{
   if (out.endsWith(QLatin1String(" : public "))) { out.chop(10); }
   else if (out.endsWith(QLatin1String(": public "))) { out.chop(9); }
   else if (out.endsWith(QLatin1String(", public "))) { out.chop(9); }
}

void appendBaseOrDefault(QString & out, model::project & p, model::entity & e, const char * sDefault)
{
   model::entity_ptr pParent = savedParent(p, e);
   out += (pParent ? pParent->getKey() : QString::fromLatin1(sDefault));
}

// Includes of the related entities' headers, each key once, in property order.
void appendRelatedIncludes(QString & out, model::entity & e, QStringList & lstDone)
{
   const model::list_of_property lst = e.getListOfProperty(false, true, false);
   for (const model::property_ptr & pProp : lst)
   {
      if (! pProp || ! pProp->hasRelationship()) { continue; }
      model::entity_ptr pTarget = pProp->getRelation()->getEntityTarget();
      if (! pTarget) { continue; }
      const QString sKey = pTarget->getKey();
      if (lstDone.contains(sKey)) { continue; }
      out += "#include \"../include/" + flatKey(sKey) + ".gen.h\"\n";
      lstDone.append(sKey);
   }
}

} // namespace

void setBannerClock(const std::function<QDateTime()> & clock) { s_fctClock = clock; }

// Each banner is appended in one piece: they head every generated file.
void COMMENT_FILE_CREATED_BY(QString & out)
{
   static const QString sRule(96, QLatin1Char('*'));
   out += QLatin1Char('/') % sRule % QLatin1String("\n** File created by ") % bannerApp() % QLatin1String(" (") % bannerDate()
          % QLatin1String(") : please, do NOT modify this file ! **\n") % sRule % QLatin1String("/\n");
}

void COMMENT_PRO_FILE_CREATED_BY(QString & out)
{
   static const QString sRule(97, QLatin1Char('#'));
   out += sRule % QLatin1String("\n## File created by ") % bannerApp() % QLatin1String(" (") % bannerDate()
          % QLatin1String(") : please, do NOT modify this file ! ##\n") % sRule % QLatin1Char('\n');
}

void INCLUDE_MACRO_GUARD(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{
   out += "_" + p.getName().toUpper() + "_" + flatKey(e.getKey().toUpper()) + "_H_";
}

void NAMESPACE_BEGIN(const cpp_builder &, QString & out, model::project &, model::entity & e) { out += namespaceBegin(e.getNamespace()); }
void NAMESPACE_END(const cpp_builder &, QString & out, model::project &, model::entity & e) { out += namespaceEnd(e.getNamespace()); }

void INHERIT_FROM(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{
   model::entity_ptr pParent = savedParent(p, e);
   if (pParent) { out += pParent->getKey(); }
   else { removeInheritance(out); }
}

void INHERIT_FROM_IX_PERSISTABLE(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{ appendBaseOrDefault(out, p, e, "zy::IxPersistable"); }
void INHERIT_FROM_ZY_PERSISTABLE(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{ appendBaseOrDefault(out, p, e, "zy::ZyPersistable"); }
void INHERIT_FROM_IX_PERSISTABLE_AND_Q_OBJECT(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{ appendBaseOrDefault(out, p, e, "QObject, public zy::IxPersistable"); }

void ZY_REGISTER_BASE_CLASS(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{
   model::entity_ptr pParent = savedParent(p, e);
   if (pParent) { out += pParent->getKey(); }
   else if (out.contains(QLatin1String("Q_OBJECT\n"))) { out += "QObject"; }
   else { out += "zy::trait::no_base_class_defined"; }
}

void ZY_REGISTER_PRIMARY_KEY_TYPE(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   model::property_ptr pId = e.getPropertyId(true);
   if (! pId) { return; }
   QString T = pId->getTypeDesc(false, false, QString());
   if (T.isEmpty()) { return; }
   if (T.contains(QLatin1Char(',')))
   {
      const QString A = "type_" + flatKey(e.getKey()) + "_primary_key";
      out += "typedef " + T + " " + A + ";\n";
      T = A;
   }
   if (T == QLatin1String("long")) { return; }
   out += "ZY_REGISTER_PRIMARY_KEY(" + e.getKey() + ", " + T + ")";
}

void IMPL_CONSTRUCTOR_WITH_PRIMARY_KEY(const cpp_builder & b, QString & out, model::project & p, model::entity & e)
{
   model::entity_ptr pParent = resolvedParent(p, e);
   model::property_ptr pId = e.getPropertyId(true);
   const QString K = (pId ? pId->getTypeDesc(false, false, QString()) : QStringLiteral("long"));
   const QString N = e.getName();
   out += N + "::" + N + "(const " + K + " & id)";
   bool bFirst = true;
   if (pParent) { out += " : " + pParent->getKey() + "(id)"; bFirst = false; }
   if (isPImpl(b))
   {
      out += (bFirst ? " : " : ", ") + QString("m_pImpl(new ") + N + "_impl(id)) { ; }";
      return;
   }
   appendMemberInitialisers(out, e, bFirst, pId);
   out += " { ; }";
}

void LIST_INCLUDE_DEPENDENCIES(const cpp_builder &, QString & out, model::project & p, model::entity & e)
{
   model::entity_ptr pParent = savedParent(p, e);
   if (pParent) { out += "#include \"../include/" + flatKey(pParent->getKey()) + ".gen.h\"\n"; }
   QStringList lstDone;
   const model::list_of_property lst = e.getListOfProperty(false, true, false);
   for (const model::property_ptr & pProp : lst)
   {
      model::property_type_ptr pType = (pProp ? pProp->getType() : model::property_type_ptr());
      model::enumeration_ptr pEnum = (pType ? pType->getEnumeration() : model::enumeration_ptr());
      if (! pEnum) { continue; }
      model::enumeration_ptr pFound = p.getEnumerationById(pEnum->getId());
      if (! pFound || (pFound->getId() == 0)) { continue; }
      const QString sKey = pFound->getKey();
      if (lstDone.contains(sKey)) { continue; }
      out += "#include \"../include/" + flatKey(sKey) + ".gen.h\"\n";
      lstDone.append(sKey);
   }
}

void LIST_INCLUDE_DEPENDENCIES_CPP(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   out += "#include \"../include/" + flatKey(e.getKey()) + ".gen.h\"\n";
   QStringList lstDone(e.getKey());
   appendRelatedIncludes(out, e, lstDone);
}

void INCLUDE_FORWARD_DECLARATION(const cpp_builder &, QString & out, model::project &, model::entity & e)
{
   QStringList lstDone;
   appendRelatedIncludes(out, e, lstDone);
}

} // namespace generators
} // namespace plugin
