#include "model/model_text_rules.h"

#include <QRegularExpression>

namespace model {

namespace {

bool isControl(ushort c) { return ((c < 0x20) || (c == 0x7F)); }
bool isLineBreak(ushort c) { return ((c == '\n') || (c == '\r')); }
bool isIdentifierStart(ushort c) { return (((c >= 'a') && (c <= 'z')) || ((c >= 'A') && (c <= 'Z')) || (c == '_')); }
bool isDigit(ushort c) { return ((c >= '0') && (c <= '9')); }
bool isIdentifierChar(ushort c) { return (isIdentifierStart(c) || isDigit(c)); }

QString controlName(ushort c)
{
   if (c == 0) { return QStringLiteral("a NUL character"); }
   if (isLineBreak(c)) { return QStringLiteral("a line break"); }
   return QString("a control character (\\x%1)").arg(int(c), 2, 16, QLatin1Char('0'));
}

QString nulIn(const QString & s)
{
   return (s.contains(QChar(0)) ? QStringLiteral("holds a NUL character, which must not reach a generated file") : QString());
}

// Trigraphs as a compiler that still reads them (C++14 and older in strict modes) replaces them.
QString withTrigraphsReplaced(const QString & s)
{
   if (! s.contains(QLatin1String("??"))) { return s; }
   static const QString k_sFrom = QStringLiteral("=/'()!<>-");
   static const QString k_sTo = QStringLiteral("#\\^[]|{}~");
   QString out;
   out.reserve(s.size());
   for (qsizetype i = 0; i < s.size(); ++i)
   {
      const qsizetype k = (((i + 2 < s.size()) && (s.at(i) == QLatin1Char('?')) && (s.at(i + 1) == QLatin1Char('?'))) ? k_sFrom.indexOf(s.at(i + 2)) : -1);
      if (k >= 0) { out += k_sTo.at(k); i += 2; }
      else { out += s.at(i); }
   }
   return out;
}

bool hasTrigraph(const QString & s) { return (withTrigraphsReplaced(s).size() != s.size()); }

// A backslash that a compiler joins with the next line: at a line's end, blanks allowed after
// it, or at the text's end, where the generated line break follows.
bool hasLineSplice(const QString & s)
{
   const QString t = withTrigraphsReplaced(s);
   for (qsizetype i = t.indexOf(QLatin1Char('\\')); i >= 0; i = t.indexOf(QLatin1Char('\\'), i + 1))
   {
      qsizetype j = i + 1;
      while ((j < t.size()) && ((t.at(j) == QLatin1Char(' ')) || (t.at(j) == QLatin1Char('\t')))) { ++j; }
      if ((j >= t.size()) || isLineBreak(t.at(j).unicode())) { return true; }
   }
   return false;
}

// Source text as the compiler reads it after joining the lines that end with a backslash.
QString spliced(const QString & s)
{
   QString out = withTrigraphsReplaced(s);
   out.replace(QLatin1String("\\\r\n"), QString());
   out.replace(QLatin1String("\\\n"), QString());
   out.replace(QLatin1String("\\\r"), QString());
   return out;
}

// The raw string prefixes: R, LR, uR, UR, u8R.
bool isRawPrefix(const QString & sIdentifier)
{
   return ((sIdentifier == QLatin1String("R")) || (sIdentifier == QLatin1String("LR")) || (sIdentifier == QLatin1String("uR"))
           || (sIdentifier == QLatin1String("UR")) || (sIdentifier == QLatin1String("u8R")));
}

// Walks C++ text outside literals and comments and checks that the brackets (sOpeners, sClosers) nest
// within the text. Each step takes the token at the current place when it is of its kind; a
// problem ends the walk.
class code_walk
{
   const QString m_s;
   const qsizetype m_n;
   const QString & m_sOpeners;
   const QString & m_sClosers;
   const bool m_bDirectives;
   qsizetype m_i = 0;
   QString m_sProblem;
   QString m_sStack;
   int m_iConditionals = 0;

   ushort at(qsizetype i) const { return m_s.at(i).unicode(); }
   bool fail(const QString & sProblem) { m_sProblem = sProblem; return true; }

   bool comment(ushort c)
   {
      if ((c != '/') || (m_i + 1 >= m_n)) { return false; }
      if (m_s.at(m_i + 1) == QLatin1Char('/'))
      {
         const qsizetype iEnd = m_s.indexOf(QLatin1Char('\n'), m_i);
         if (iEnd < 0) { return fail(QStringLiteral("ends in a // comment, which would hide the closing bracket written after it")); }
         m_i = iEnd;
         return true;
      }
      if (m_s.at(m_i + 1) != QLatin1Char('*')) { return false; }
      const qsizetype iEnd = m_s.indexOf(QLatin1String("*/"), m_i + 2);
      if (iEnd < 0) { return fail(QStringLiteral("leaves a /* comment open")); }
      m_i = iEnd + 2;
      return true;
   }

   bool directive(ushort c, bool bAtLineStart)
   {
      if ((c != '#') || ! bAtLineStart || ! m_bDirectives) { return false; }
      qsizetype j = m_i + 1;
      while ((j < m_n) && ((m_s.at(j) == QLatin1Char(' ')) || (m_s.at(j) == QLatin1Char('\t')))) { ++j; }
      qsizetype k = j;
      while ((k < m_n) && isIdentifierChar(at(k))) { ++k; }
      const QString sDirective = m_s.mid(j, k - j);
      if (sDirective.startsWith(QLatin1String("if"))) { ++m_iConditionals; }
      else if (sDirective == QLatin1String("endif"))
      {
         if (m_iConditionals == 0) { return fail(QStringLiteral("has an #endif without its #if")); }
         --m_iConditionals;
      }
      else if (((sDirective == QLatin1String("else")) || sDirective.startsWith(QLatin1String("elif"))) && (m_iConditionals == 0))
      { return fail(QString("has an #%1 without its #if").arg(sDirective)); }
      m_i = k;
      return true;
   }

   // A number with its digit separators, exponent signs and suffix.
   bool number(ushort c)
   {
      if (! isDigit(c) && ! ((c == '.') && (m_i + 1 < m_n) && isDigit(at(m_i + 1)))) { return false; }
      ++m_i;
      while (m_i < m_n)
      {
         const ushort d = at(m_i);
         if (isIdentifierChar(d) || (d == '.')) { ++m_i; continue; }
         if ((d == '\'') && (m_i + 1 < m_n) && isIdentifierChar(at(m_i + 1))) { ++m_i; continue; }
         if (((d == '+') || (d == '-')) && QStringLiteral("eEpP").contains(m_s.at(m_i - 1))) { ++m_i; continue; }
         break;
      }
      return true;
   }

   // An identifier, with the raw string literal it may be the prefix of.
   bool identifier(ushort c)
   {
      if (! isIdentifierStart(c)) { return false; }
      const qsizetype iStart = m_i;
      while ((m_i < m_n) && isIdentifierChar(at(m_i))) { ++m_i; }
      if ((m_i >= m_n) || (m_s.at(m_i) != QLatin1Char('"')) || ! isRawPrefix(m_s.mid(iStart, m_i - iStart))) { return true; }
      const qsizetype iOpen = m_s.indexOf(QLatin1Char('('), m_i + 1);
      if ((iOpen < 0) || (iOpen - m_i - 1 > 16)) { return fail(QStringLiteral("leaves a raw string literal open")); }
      const QString sEnd = QLatin1Char(')') + m_s.mid(m_i + 1, iOpen - m_i - 1) + QLatin1Char('"');
      const qsizetype iEnd = m_s.indexOf(sEnd, iOpen + 1);
      if (iEnd < 0) { return fail(QStringLiteral("leaves a raw string literal open")); }
      m_i = iEnd + sEnd.size();
      return true;
   }

   bool literal(ushort c)
   {
      if ((c != '"') && (c != '\'')) { return false; }
      qsizetype j = m_i + 1;
      while ((j < m_n) && (at(j) != c) && ! isLineBreak(at(j)))
      {
         if (m_s.at(j) == QLatin1Char('\\')) { ++j; }
         ++j;
      }
      if ((j >= m_n) || (at(j) != c))
      { return fail((c == '"') ? QStringLiteral("leaves a string literal open") : QStringLiteral("leaves a character literal open")); }
      m_i = j + 1;
      return true;
   }

   void bracket(ushort c)
   {
      const qsizetype iOpener = m_sOpeners.indexOf(QChar(c));
      const qsizetype iCloser = m_sClosers.indexOf(QChar(c));
      if (iOpener >= 0) { m_sStack.append(QChar(c)); }
      else if (iCloser >= 0)
      {
         if (m_sStack.isEmpty() || (m_sStack.back() != m_sOpeners.at(iCloser)))
         { fail(QString("has a '%1' that does not close a bracket of its own, which would end the code it is written in early").arg(QChar(c))); return; }
         m_sStack.chop(1);
      }
      ++m_i;
   }

public:
   code_walk(const QString & s, const QString & sOpeners, const QString & sClosers, bool bDirectives)
      : m_s(s), m_n(s.size()), m_sOpeners(sOpeners), m_sClosers(sClosers), m_bDirectives(bDirectives) { ; }

   QString problem()
   {
      bool bLineStart = false;   // the first line follows the opening bracket, not a line start
      while ((m_i < m_n) && m_sProblem.isEmpty())
      {
         const ushort c = at(m_i);
         if (c == '\n') { bLineStart = true; ++m_i; continue; }
         if ((c == ' ') || (c == '\t') || (c == '\r') || (c == '\f') || (c == '\v')) { ++m_i; continue; }
         const bool bAtLineStart = bLineStart;
         bLineStart = false;
         if (comment(c) || directive(c, bAtLineStart) || number(c) || identifier(c) || literal(c)) { continue; }
         bracket(c);
      }
      if (! m_sProblem.isEmpty()) { return m_sProblem; }
      if (! m_sStack.isEmpty()) { return QString("leaves '%1' open").arg(m_sStack.back()); }
      if (m_iConditionals > 0) { return QStringLiteral("leaves an #if open"); }
      return QString();
   }
};

// Empty when the text can be pasted between an opening and a closing bracket.
QString codeProblem(const QString & sText, const QString & sOpeners, const QString & sClosers, bool bDirectives)
{
   const QString sNul = nulIn(sText);
   if (! sNul.isEmpty()) { return sNul; }
   return code_walk(spliced(sText), sOpeners, sClosers, bDirectives).problem();
}

// Tokens of a number form: literals, identifiers with "::", operators and parentheses.
class number_parser
{
   QString m_s;
   qsizetype m_i = 0;
   bool m_bIntegerOnly = false;
   QString m_sError;
   int m_iDepth = 0;

   void skipBlanks() { while ((m_i < m_s.size()) && ((m_s.at(m_i) == QLatin1Char(' ')) || (m_s.at(m_i) == QLatin1Char('\t')))) { ++m_i; } }
   bool peek(QChar c) { skipBlanks(); return ((m_i < m_s.size()) && (m_s.at(m_i) == c)); }
   bool fail(const QString & s) { if (m_sError.isEmpty()) { m_sError = s; } return false; }

   bool literal()
   {
      static const QRegularExpression rxInteger(QStringLiteral(
         R"(^(?:0[xX][0-9A-Fa-f](?:'?[0-9A-Fa-f])*|0[bB][01](?:'?[01])*|0(?:'?[0-7])*|[1-9](?:'?[0-9])*)(?:[uU](?:ll|LL|[lL])?|(?:ll|LL|[lL])[uU]?)?$)"));
      static const QRegularExpression rxFloat(QStringLiteral(
         R"(^(?:(?:[0-9](?:'?[0-9])*)?\.[0-9](?:'?[0-9])*(?:[eE][+-]?[0-9](?:'?[0-9])*)?|[0-9](?:'?[0-9])*\.(?:[eE][+-]?[0-9](?:'?[0-9])*)?|[0-9](?:'?[0-9])*[eE][+-]?[0-9](?:'?[0-9])*)[fFlL]?$)"));
      const qsizetype iStart = m_i;
      while (m_i < m_s.size())
      {
         const ushort d = m_s.at(m_i).unicode();
         if (isIdentifierChar(d) || (d == '.') || (d == '\'')) { ++m_i; continue; }
         if (((d == '+') || (d == '-')) && QStringLiteral("eE").contains(m_s.at(m_i - 1)) && ! m_s.mid(iStart, 2).startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
         { ++m_i; continue; }
         break;
      }
      const QString sLiteral = m_s.mid(iStart, m_i - iStart);
      if (rxInteger.match(sLiteral).hasMatch()) { return true; }
      if (rxFloat.match(sLiteral).hasMatch())
      {
         if (m_bIntegerOnly) { return fail(QString("holds '%1', which is not an integer").arg(sLiteral)); }
         return true;
      }
      return fail(QString("holds '%1', which is not a C++ numeric literal").arg(sLiteral));
   }

   bool name()
   {
      if (m_s.mid(m_i, 2) == QLatin1String("::")) { m_i += 2; }
      while (true)
      {
         if ((m_i >= m_s.size()) || ! isIdentifierStart(m_s.at(m_i).unicode())) { return fail(QStringLiteral("has a '::' that is not followed by a name")); }
         while ((m_i < m_s.size()) && isIdentifierChar(m_s.at(m_i).unicode())) { ++m_i; }
         if (m_s.mid(m_i, 2) != QLatin1String("::")) { return true; }
         m_i += 2;
      }
   }

   bool primary()
   {
      // Each unary sign and parenthesis is one level of recursion: deep input must not exhaust
      // the stack.
      if (++m_iDepth > model_text_rules::k_iMaxNesting)
      { return fail(QString("nests signs or parentheses deeper than %1 levels").arg(model_text_rules::k_iMaxNesting)); }
      struct leave { int & i; ~leave() { --i; } } guard { m_iDepth };
      skipBlanks();
      if (m_i >= m_s.size()) { return fail(QStringLiteral("ends where a number or a name is expected")); }
      const QChar c = m_s.at(m_i);
      if ((c == QLatin1Char('+')) || (c == QLatin1Char('-')) || (c == QLatin1Char('~'))) { ++m_i; return primary(); }
      if (c == QLatin1Char('('))
      {
         ++m_i;
         if (! expression()) { return false; }
         if (! peek(QLatin1Char(')'))) { return fail(QStringLiteral("leaves '(' open")); }
         ++m_i;
         return true;
      }
      if (isDigit(c.unicode()) || (c == QLatin1Char('.'))) { return literal(); }
      if (isIdentifierStart(c.unicode()) || (m_s.mid(m_i, 2) == QLatin1String("::"))) { return name(); }
      return fail(QString("has '%1' where a number or a name is expected").arg(c));
   }

   bool expression()
   {
      if (! primary()) { return false; }
      while (true)
      {
         skipBlanks();
         if (m_i >= m_s.size()) { return true; }
         const QStringView sRest = QStringView(m_s).mid(m_i);
         if (sRest.startsWith(u"<<") || sRest.startsWith(u">>")) { m_i += 2; }
         else if (QStringLiteral("+-*/%&|^").contains(sRest.front())) { ++m_i; }
         else { return true; }
         if (! primary()) { return false; }
      }
   }

public:
   number_parser(const QString & s, bool bIntegerOnly) : m_s(s), m_bIntegerOnly(bIntegerOnly) { ; }

   QString problem()
   {
      if (m_s.trimmed().isEmpty()) { return QStringLiteral("is empty where a number is expected"); }
      if (! expression()) { return m_sError; }
      skipBlanks();
      if (m_i < m_s.size())
      {
         const QString sWhat = (m_bIntegerOnly ? QStringLiteral("an integer literal") : QStringLiteral("a numeric literal"));
         return QString("has '%1' after a complete value: not %2 or a constant expression").arg(m_s.mid(m_i), sWhat);
      }
      return QString();
   }
};

} // namespace

QString model_text_rules::problem::detail() const { return QString("%1 '%2' %3").arg(sField, shown(sValue), sReason); }
QString model_text_rules::problem::message() const { return QString("%1 : %2").arg(sItem, detail()); }

QString model_text_rules::shown(const QString & s)
{
   const qsizetype k_iMax = 80;
   QString out;
   for (qsizetype i = 0; (i < s.size()) && (i < k_iMax); ++i)
   {
      const ushort c = s.at(i).unicode();
      if (c == '\n') { out += QLatin1String("\\n"); }
      else if (c == '\r') { out += QLatin1String("\\r"); }
      else if (c == '\t') { out += QLatin1String("\\t"); }
      else if (isControl(c)) { out += QString("\\x%1").arg(int(c), 2, 16, QLatin1Char('0')); }
      else { out += s.at(i); }
   }
   if (s.size() > k_iMax) { out += QLatin1String("..."); }
   return out;
}

QString model_text_rules::nulProblem(const QString & s) { return nulIn(s); }

QString model_text_rules::literalProblem(const QString & s)
{
   for (const QChar & ch : s)
   {
      const ushort c = ch.unicode();
      if (c == '"') { return QStringLiteral("holds a double quote, which would end the C++ string literal it is written in"); }
      if (c == '\\') { return QStringLiteral("holds a backslash, which would start an escape sequence in the C++ string literal it is written in"); }
      if (isControl(c)) { return QString("holds %1, which a C++ string literal cannot hold as written").arg(controlName(c)); }
   }
   if (hasTrigraph(s)) { return QStringLiteral("holds a trigraph (\"??\" and a sign), which a compiler may read as another character"); }
   return QString();
}

QString model_text_rules::typeProblem(const QString & s)
{
   const QString sNul = nulIn(s);
   if (! sNul.isEmpty()) { return sNul; }
   QString sStack;   // open '<' and '(' of template arguments
   bool bName = false;
   for (qsizetype i = 0; i < s.size(); ++i)
   {
      const ushort c = s.at(i).unicode();
      if (isIdentifierStart(c))
      {
         while ((i + 1 < s.size()) && isIdentifierChar(s.at(i + 1).unicode())) { ++i; }
         bName = true;
         continue;
      }
      if ((c == ' ') || (c == '\t') || (c == '*') || (c == '&')) { continue; }
      if (c == ':')
      {
         if ((i + 1 >= s.size()) || (s.at(i + 1) != QLatin1Char(':'))) { return QStringLiteral("holds a single ':', where a C++ type may only have '::'"); }
         ++i;
         continue;
      }
      if ((c == '<') || ((c == '(') && ! sStack.isEmpty()))
      {
         if (sStack.size() >= k_iMaxNesting) { return QString("nests template arguments deeper than %1 levels").arg(k_iMaxNesting); }
         sStack.append(QChar(c));
         continue;
      }
      if (c == '>')
      {
         if (sStack.isEmpty() || (sStack.back() != QLatin1Char('<'))) { return QStringLiteral("has a '>' that closes no '<'"); }
         sStack.chop(1);
         continue;
      }
      // Numbers, commas and parentheses only inside template arguments, where they can't end
      // the declaration the type is written in.
      if (! sStack.isEmpty())
      {
         if (isDigit(c) || (c == ',')) { continue; }
         if (c == ')')
         {
            if (sStack.back() != QLatin1Char('(')) { return QStringLiteral("has a ')' that closes no '('"); }
            sStack.chop(1);
            continue;
         }
      }
      const QString sChar = (isControl(c) ? controlName(c) : QString("'%1'").arg(QChar(c)));
      return QString("holds %1, where only a C++ type may be written: names with '::', template arguments in '<>', '*', '&' and blanks").arg(sChar);
   }
   if (! sStack.isEmpty()) { return QString("leaves '%1' open").arg(sStack.back()); }
   if (! bName) { return QStringLiteral("names no type"); }
   return QString();
}

QString model_text_rules::sqlNameProblem(const QString & s)
{
   const QString sLiteral = literalProblem(s);
   if (! sLiteral.isEmpty()) { return sLiteral; }
   if (s.contains(QLatin1Char(';'))) { return QStringLiteral("holds ';', which would end the SQL statement it is written in"); }
   if (s.contains(QLatin1Char('\'')) || s.contains(QLatin1Char('`'))) { return QStringLiteral("holds a quote, which would end the SQL name or string it is written in"); }
   if (s.contains(QLatin1String("--")) || s.contains(QLatin1String("/*"))) { return QStringLiteral("holds an SQL comment opener ('--' or '/*')"); }
   return QString();
}

QString model_text_rules::lineCommentProblem(const QString & s)
{
   for (const QChar & ch : s)
   {
      const ushort c = ch.unicode();
      if (isLineBreak(c)) { return QStringLiteral("holds a line break, which would end the one-line comment it is written in"); }
      if (isControl(c) && (c != '\t')) { return QString("holds %1, which a one-line comment cannot hold").arg(controlName(c)); }
   }
   if (s.contains(QLatin1String("?\?/"))) { return QStringLiteral("holds \"?\?/\", a trigraph a compiler may read as a backslash that carries the comment over to the next line"); }
   if (hasLineSplice(s))
   { return QStringLiteral("ends with a backslash, which would carry the one-line comment it is written in over to the next line"); }
   return QString();
}

QString model_text_rules::blockCommentProblem(const QString & s)
{
   if (s.contains(QLatin1String("*/"))) { return QStringLiteral("holds \"*/\", which would end the comment it is written in"); }
   if (s.contains(QLatin1String("?\?/"))) { return QStringLiteral("holds \"?\?/\", a trigraph a compiler may read as a backslash that joins two lines"); }
   if (hasLineSplice(s)) { return QStringLiteral("has a backslash at the end of a line, which a compiler joins with the next line"); }
   for (const QChar & ch : s)
   {
      const ushort c = ch.unicode();
      if (isControl(c) && (c != '\t') && ! isLineBreak(c)) { return QString("holds %1, which a comment cannot hold").arg(controlName(c)); }
   }
   return QString();
}

QString model_text_rules::numberTextProblem(const QString & s)
{
   int iDepth = 0;
   for (qsizetype i = 0; i < s.size(); ++i)
   {
      const ushort c = s.at(i).unicode();
      if (isIdentifierChar(c) || QStringLiteral(":.+-*%<>&|^~ \t").contains(QChar(c))) { continue; }
      if (c == '/')
      {
         if ((i + 1 < s.size()) && ((s.at(i + 1) == QLatin1Char('/')) || (s.at(i + 1) == QLatin1Char('*'))))
         { return QStringLiteral("holds a comment, where only a number or a constant expression may be written"); }
         continue;
      }
      if (c == '\'')
      {
         if ((i > 0) && (i + 1 < s.size()) && isIdentifierChar(s.at(i - 1).unicode()) && isIdentifierChar(s.at(i + 1).unicode())) { continue; }
         return QStringLiteral("holds a quote that is not a digit separator, where only a number or a constant expression may be written");
      }
      if (c == '(')
      {
         if (++iDepth > k_iMaxNesting) { return QString("nests parentheses deeper than %1 levels").arg(k_iMaxNesting); }
         continue;
      }
      if (c == ')')
      {
         if (iDepth == 0) { return QStringLiteral("holds a ')' without its '(', which would end the code it is written in early"); }
         --iDepth;
         continue;
      }
      const QString sChar = (isControl(c) ? controlName(c) : QString("'%1'").arg(QChar(c)));
      return QString("holds %1, where only a C++ numeric literal or a constant expression of names, numbers, operators and parentheses may be written").arg(sChar);
   }
   if (iDepth > 0) { return QStringLiteral("leaves '(' open"); }
   return QString();
}

QString model_text_rules::numberProblem(const QString & s, bool bIntegerOnly)
{
   const QString sText = numberTextProblem(s);
   if (! sText.isEmpty()) { return sText; }
   return number_parser(s, bIntegerOnly).problem();
}

QString model_text_rules::bodyProblem(const QString & s) { return codeProblem(s, QStringLiteral("{"), QStringLiteral("}"), true); }

QString model_text_rules::expressionProblem(const QString & s) { return codeProblem(s, QStringLiteral("([{"), QStringLiteral(")]}"), false); }

} // namespace model

namespace model {

QString model_text_rules::sqlTypeProblem(const QString & s)
{
   // Words that would make the rest of the column definition say more than its type.
   static const QStringList s_lstClauseWords {
      "always", "as", "auto_increment", "autoincrement", "cascade", "check", "collate", "comment", "constraint", "default",
      "delete", "drop", "foreign", "generated", "identity", "index", "key", "not", "null", "on", "primary", "references",
      "select", "stored", "table", "unique", "update", "virtual" };
   const qsizetype k_iMaxWords = 6;
   const qsizetype k_iMaxNumbers = 3;
   const qsizetype n = s.size();
   qsizetype i = 0, iWords = 0;
   bool bParameters = false, bArray = false;
   const auto blanks = [&]() { while ((i < n) && ((s.at(i) == QLatin1Char(' ')) || (s.at(i) == QLatin1Char('\t')))) { ++i; } };
   const auto digits = [&]() { const qsizetype iStart = i; while ((i < n) && isDigit(s.at(i).unicode())) { ++i; } return (i > iStart); };
   blanks();
   if (i >= n) { return QStringLiteral("is blank: an SQL type name is expected"); }
   while (i < n)
   {
      const ushort c = s.at(i).unicode();
      if (isIdentifierStart(c))
      {
         if (bArray) { return QStringLiteral("has a word after its array suffix: only an SQL type may be forced"); }
         const qsizetype iStart = i;
         while ((i < n) && isIdentifierChar(s.at(i).unicode())) { ++i; }
         const QString sWord = s.mid(iStart, i - iStart);
         if (s_lstClauseWords.contains(sWord.toLower()))
         { return QString("holds the word '%1', which would add a clause to the column: only an SQL type may be forced").arg(sWord); }
         if (++iWords > k_iMaxWords) { return QStringLiteral("has more words than an SQL type name"); }
      }
      else if ((c == '(') && (iWords > 0) && ! bParameters && ! bArray)
      {
         bParameters = true;
         ++i;
         for (qsizetype k = 0; ; ++k)
         {
            blanks();
            if ((k >= k_iMaxNumbers) || ! digits()) { return QStringLiteral("has parameters that are not one to three unsigned integers separated by commas"); }
            blanks();
            if ((i < n) && (s.at(i) == QLatin1Char(','))) { ++i; continue; }
            if ((i < n) && (s.at(i) == QLatin1Char(')'))) { ++i; break; }
            return QStringLiteral("has parameters that are not one to three unsigned integers separated by commas");
         }
      }
      else if ((c == '[') && (iWords > 0))
      {
         bArray = true;
         ++i;
         digits();
         if ((i >= n) || (s.at(i) != QLatin1Char(']'))) { return QStringLiteral("has an array suffix that is not '[]' or '[N]'"); }
         ++i;
      }
      else
      {
         const QString sChar = (isControl(c) ? controlName(c) : QString("'%1'").arg(QChar(c)));
         return QString("holds %1 where an SQL type's name, numeric parameters or array suffix is expected: only an SQL type may be forced").arg(sChar);
      }
      blanks();
   }
   return QString();
}

} // namespace model
