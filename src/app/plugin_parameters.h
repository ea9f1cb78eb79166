#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace app {

// The command-line parameters of a plug-in as its help text (getCommandLineInfos) describes
// them, so that the host checks names and values without a list of its own.
class plugin_parameters
{
public:
   enum enum_kind { kind_text, kind_flag, kind_number };

   struct item
   {
      QString name;           // "--Plugin_parameter"
      enum_kind kind = kind_text;
      QStringList choices;    // listed values of a number ("0", "1"...), "0" and "1" of a flag
      QString choiceText;     // the listing as the help shows it ("0=a, 1=b")
      bool file = false;      // a file to read
      bool directory = false; // the export directory
   };

private:
   QString m_sPrefix;
   QList<item> m_lst;

public:
   plugin_parameters(const QString & pluginName, const QString & commandLineInfos);

   // True when arg ("--name=value") is addressed to this plug-in.
   bool concerns(const QString & arg) const;
   const item * find(const QString & name) const;
   QStringList names() const;
   const QList<item> & items() const { return m_lst; }

   // Usage error of one argument addressed to this plug-in (unknown name, no value, value of the
   // wrong form); empty when it is fine or the argument is not this plug-in's.
   QString usageError(const QString & arg) const;
   // Why arg, a plug-in parameter this plug-in does not concern, is refused: another plug-in's
   // (lstOthers holds every plug-in found), a wrong letter case, or no plug-in's at all.
   QString foreignError(const QString & arg, const QList<plugin_parameters> & lstOthers) const;
   // A well-formed value that still cannot give a complete export (a number outside the listed
   // values, a file that cannot be read, an export directory that is a file); empty when none.
   // resolveDir turns an export directory as given into the path used.
   QString exportError(const QString & arg, const std::function<QString(const QString &)> & resolveDir) const;

   static QString nameOf(const QString & arg) { return arg.section('=', 0, 0); }
   static QString valueOf(const QString & arg) { return (arg.contains('=') ? arg.section('=', 1) : QString()); }
   // Why a file cannot serve as a template (missing, a directory, unreadable, empty); empty when it can.
   static QString unreadableFile(const QString & path);
};

} // namespace app
