#include "plugin_parameters.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>

namespace app {

plugin_parameters::plugin_parameters(const QString & pluginName, const QString & commandLineInfos) : m_sPrefix("--" + pluginName + "_")
{
   // One parameter a line: --Plugin_name=VALUE : description
   const QRegularExpression line("^\\s*(" + QRegularExpression::escape(m_sPrefix) + "\\w+)(?:=(\"[^\"]*\"|<[^>]*>|\\S+))?\\s*:\\s*(.*)$");
   const QRegularExpression listing("\\((\\d+=\\w+(?:,\\s*\\d+=\\w+)*)\\)");
   for (const QString & text : commandLineInfos.split('\n'))
   {
      const QRegularExpressionMatch m = line.match(text);
      if (! m.hasMatch()) { continue; }
      item it;
      it.name = m.captured(1);
      const QString placeholder = m.captured(2);
      const QString description = m.captured(3);
      if (placeholder == QLatin1String("0/1"))
      {
         it.kind = kind_flag;
         it.choices = QStringList({ "0", "1" });
         it.choiceText = "0 or 1";
      }
      else if (placeholder.startsWith(QLatin1String("<numeric")))
      {
         it.kind = kind_number;
         const QRegularExpressionMatch l = listing.match(description);
         if (l.hasMatch())
         {
            it.choiceText = l.captured(1);
            for (const QString & pair : it.choiceText.split(',')) { it.choices.append(pair.trimmed().section('=', 0, 0)); }
         }
         else { it.choiceText = "a decimal number"; }
      }
      it.file = description.contains(QLatin1String("file path"), Qt::CaseInsensitive);
      it.directory = description.contains(QLatin1String("export path"), Qt::CaseInsensitive);
      m_lst.append(it);
   }
}

bool plugin_parameters::concerns(const QString & arg) const { return arg.startsWith(m_sPrefix); }

const plugin_parameters::item * plugin_parameters::find(const QString & name) const
{
   for (const item & it : m_lst) { if (it.name == name) { return & it; } }
   return nullptr;
}

QStringList plugin_parameters::names() const
{
   QStringList lst;
   for (const item & it : m_lst) { lst.append(it.name); }
   return lst;
}

QString plugin_parameters::usageError(const QString & arg) const
{
   if (! concerns(arg)) { return QString(); }
   const QString name = nameOf(arg);
   const item * p = find(name);
   if (! p) { return "unknown plug-in parameter '" + name + "' (accepted : " + names().join(", ") + ")"; }
   const QString value = valueOf(arg);
   // An empty value would silently keep the stored setting: the user meant something else.
   if (value.isEmpty()) { return "plug-in parameter " + name + " needs a value (" + name + "=" + (p->choiceText.isEmpty() ? QString("VALUE") : p->choiceText) + ")"; }
   if ((p->kind == kind_flag) && ! p->choices.contains(value))
   { return "bad value '" + value + "' for " + name + " (accepted : " + p->choiceText + ")"; }
   if (p->kind == kind_number)
   {
      bool ok = false;
      value.toInt(& ok, 10);
      if (! ok) { return "bad value '" + value + "' for " + name + " (accepted : " + p->choiceText + ")"; }
   }
   return QString();
}

QString plugin_parameters::foreignError(const QString & arg, const QList<plugin_parameters> & lstOthers) const
{
   const QString name = nameOf(arg);
   for (const plugin_parameters & other : lstOthers)
   {
      if ((other.m_sPrefix == m_sPrefix) || ! other.concerns(arg)) { continue; }
      const QString sOther = other.m_sPrefix.mid(2, other.m_sPrefix.size() - 3);
      return "plug-in parameter '" + name + "' belongs to the plug-in " + sOther + ", not to " + m_sPrefix.mid(2, m_sPrefix.size() - 3) +
             " (choose it with --plugin " + sOther + ")";
   }
   // A wrong letter case is the likeliest slip: name the parameter meant.
   for (const plugin_parameters & other : lstOthers)
   {
      for (const item & it : other.m_lst)
      {
         if (it.name.compare(name, Qt::CaseInsensitive) == 0) { return "unknown plug-in parameter '" + name + "' (did you mean " + it.name + "?)"; }
      }
   }
   return "unknown plug-in parameter '" + name + "' (accepted : " + names().join(", ") + ")";
}

QString plugin_parameters::exportError(const QString & arg, const std::function<QString(const QString &)> & resolveDir) const
{
   const item * p = find(nameOf(arg));
   const QString value = valueOf(arg);
   if (! p || value.isEmpty()) { return QString(); }
   if ((p->kind == kind_number) && ! p->choices.isEmpty() && ! p->choices.contains(QString::number(value.toInt(nullptr, 10))))
   { return p->name + "=" + value + " is none of the values it accepts (" + p->choiceText + ")"; }
   if (p->file)
   {
      const QString why = unreadableFile(value);
      if (! why.isEmpty()) { return p->name + " : the file '" + value + "' cannot be used : " + why; }
   }
   if (p->directory)
   {
      const QString dir = (resolveDir ? resolveDir(value) : value);
      const QFileInfo info(dir);
      if (info.exists() && ! info.isDir()) { return p->name + " : the export path '" + dir + "' is an existing file, not a directory"; }
   }
   return QString();
}

QString plugin_parameters::unreadableFile(const QString & path)
{
   const QFileInfo info(path);
   if (! info.exists()) { return QString::fromLocal8Bit(std::strerror(ENOENT)); }
   if (info.isDir()) { return QString::fromLocal8Bit(std::strerror(EISDIR)); }
   QFile file(path);
   if (! file.open(QIODevice::ReadOnly)) { return file.errorString(); }
   if (file.size() == 0 && file.read(1).isEmpty()) { return "the file is empty"; }
   return QString();
}

} // namespace app
