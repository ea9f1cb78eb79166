#include "test_support.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>

#include "storage/project_storage.h"

namespace test_support {

QString sourceDir() { return QString::fromUtf8(TAVREL_SOURCE_DIR); }
QString binaryDir() { return QString::fromUtf8(TAVREL_BINARY_DIR); }
QString examplePath(const QString & name) { return sourceDir() + "/examples/" + name; }

QByteArray readAll(const QString & path)
{
   QFile f(path);
   if (! f.open(QIODevice::ReadOnly)) { return QByteArray(); }
   return f.readAll();
}

bool writeAll(const QString & path, const QByteArray & data)
{
   QDir().mkpath(QFileInfo(path).absolutePath());
   QFile f(path);
   if (! f.open(QIODevice::WriteOnly | QIODevice::Truncate)) { return false; }
   return (f.write(data) == data.size());
}

QString withoutBannerDate(QString text)
{
   static const QRegularExpression reDate(R"(\(\d{4}/\d\d/\d\d \d\d:\d\d\))");
   return text.replace(reDate, "(@DATE@)");
}

cli_result runTavrel(const QStringList & args, const cli_options & options)
{
   QProcess proc;
   proc.setProgram(binaryDir() + "/bin/tavrel");
   proc.setArguments(args);
   if (! options.workDir.isEmpty()) { proc.setWorkingDirectory(options.workDir); }
   QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
   env.remove("LUMOR_DIR");
   env.insert("QT_QPA_PLATFORM", "offscreen");
   env.insert("XDG_CONFIG_HOME", options.configHome.isEmpty() ? (QDir::tempPath() + "/tavrel-test-config") : options.configHome);
   for (const QString & name : options.unset) { env.remove(name); }
   for (auto itr = options.env.cbegin(); itr != options.env.cend(); ++itr) { env.insert(itr.key(), itr.value()); }
   proc.setProcessEnvironment(env);
   proc.start();
   cli_result r;
   // Generous: a loaded machine may take long, and a hang must still end the test.
   if (! proc.waitForFinished(180000)) { proc.kill(); proc.waitForFinished(); return r; }
   r.code = ((proc.exitStatus() == QProcess::NormalExit) ? proc.exitCode() : -2);
   r.out = QString::fromUtf8(proc.readAllStandardOutput());
   r.err = QString::fromUtf8(proc.readAllStandardError());
   return r;
}

QStringList treeState(const QString & sRoot, const QStringList & lstSkip)
{
   const QDir root(sRoot);
   QStringList lst;
   QDirIterator itr(sRoot, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
   while (itr.hasNext())
   {
      itr.next();
      const QString rel = root.relativeFilePath(itr.filePath());
      bool bSkip = false;
      for (const QString & s : lstSkip) { bSkip = bSkip || (rel == s) || rel.startsWith(s + "/"); }
      if (bSkip) { continue; }
      const QFileInfo info = itr.fileInfo();
      QString line = rel + "|" + (info.isSymLink() ? ("link:" + info.symLinkTarget()) : (info.isDir() ? "dir" : "file"));
      if (info.isFile() && ! info.isSymLink()) { line += "|" + QString::fromLatin1(QCryptographicHash::hash(readAll(itr.filePath()), QCryptographicHash::Sha256).toHex()); }
      lst.append(line);
   }
   lst.sort();
   return lst;
}

bool execOnProject(const QString & sFile, const QString & sql, const QVariant & value)
{
   QSqlDatabase db;
   if (! storage::project_storage::openDatabase(sFile, db).getValue()) { return false; }
   bool bOk = false;
   {
      QSqlQuery q(db);
      bOk = (q.prepare(sql) && (q.addBindValue(value), q.exec()) && (q.numRowsAffected() == 1));
   }
   storage::project_storage::closeDatabase(db);
   return bOk;
}

QList<hostile_value> hostileValues()
{
   return {
      { "UPDATE t_entity SET table_name = ? WHERE name = 'Customer'", QString("t\"); system(\"id\"); //"),
        "Entity 'shop::Customer' : table name" },
      { "UPDATE t_entity SET description = ? WHERE name = 'Customer'", QString("ends here */ int injected;"),
        "Entity 'shop::Customer' : description" },
      { "UPDATE t_property SET description = ? WHERE name = 'bio'", QString("bio\n#error injected"),
        "Entity 'shop::CustomerProfile' : property 'bio' : description" },
      { "UPDATE t_property SET column_name = ? WHERE name = 'avatar_url'", QString("ava\"tar"),
        "Entity 'shop::CustomerProfile' : property 'avatar_url' : column name" },
      { "UPDATE t_property SET column_name = ? WHERE name = 'avatar_url'", QString("ava\\tar"),
        "Entity 'shop::CustomerProfile' : property 'avatar_url' : column name" },
      { "UPDATE t_property SET min_value = ? WHERE name = 'newsletter'", QString("\"1\\\"\""),
        "Entity 'shop::CustomerProfile' : property 'newsletter' : min value" },
      { "UPDATE t_enumeration_value SET value_text = ? WHERE value_key = 'Paid'", QString("1); system(\"x\"); int y = (2"),
        "Enumeration 'shop::sales::OrderStatus' : value of 'Paid'" },
      { "UPDATE t_property SET description = ? WHERE name = 'bio'", QString("nul") + QChar(0) + "inside",
        "Entity 'shop::CustomerProfile' : property 'bio' : description" },
      { "UPDATE t_property SET get_method = ? WHERE name = 'bio'", QString("return m_bio; } void evil() { system(\"x\");"),
        "Entity 'shop::CustomerProfile' : property 'bio' : get method" },
      { "UPDATE t_property SET set_method = ? WHERE name = 'bio'", QString("m_bio = val; } void evil() { system(\"x\");"),
        "Entity 'shop::CustomerProfile' : property 'bio' : set method" },
      // A backslash at a line's end joins the next line to the comment: "*" + "/" closes it.
      { "UPDATE t_entity SET description = ? WHERE name = 'Customer'", QString("a *\\\n/ static_assert(false, \"x\"); /*"),
        "Entity 'shop::Customer' : description" },
      { "UPDATE t_entity SET description = ? WHERE name = 'Customer'", QString("swallows the next line ?\?/"),
        "Entity 'shop::Customer' : description" },
      { "UPDATE t_property SET description = ? WHERE name = 'bio'", QString("carried over ?\?/"),
        "Entity 'shop::CustomerProfile' : property 'bio' : description" },
      { "UPDATE t_property SET type_text = ? WHERE name = 'bio'", QString("int; }; void evil() { system(\"id\"); } struct Z { int"),
        "Entity 'shop::CustomerProfile' : property 'bio' : type" },
      { "UPDATE t_property SET type_text = ? WHERE name = 'bio'", QString("int\n#define private public\n"),
        "Entity 'shop::CustomerProfile' : property 'bio' : type" },
      { "UPDATE t_property SET type_text = ? WHERE name = 'bio'", QString("int //"),
        "Entity 'shop::CustomerProfile' : property 'bio' : type" },
      { "UPDATE t_property SET column_name = ? WHERE name = 'avatar_url'", QString("ava?\?/"),
        "Entity 'shop::CustomerProfile' : property 'avatar_url' : column name" },
   };
}

} // namespace test_support
