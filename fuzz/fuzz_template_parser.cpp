// Cuts random text as a template: the two lists must stay parallel, every piece must carry the
// code the classifier gives it, and joining the pieces with the separator must give back the
// input with CR LF turned into LF.

#include <QString>

#include <cstddef>
#include <cstdint>

#include "fuzz_support.h"
#include "cpp_export/tools/template_parser.h"

namespace {

// Written apart from the parser on purpose: one left-to-right pass, like QString::replace.
QString normalised(const QString & text)
{
   QString result;
   result.reserve(text.size());
   for (qsizetype i = 0; i < text.size(); ++i)
   {
      if ((text.at(i) == QLatin1Char('\r')) && ((i + 1) < text.size()) && (text.at(i + 1) == QLatin1Char('\n'))) { continue; }
      result.append(text.at(i));
   }
   return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t * data, size_t size)
{
   using tools::template_parser;
   const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
   const template_parser parser(text);
   const QString expected = normalised(text);

   fuzz_support::check(parser.getInputText() == expected, "input text is not the normalised input");
   fuzz_support::check(parser.getInputTextSize() == expected.size(), "input size differs");
   const QList<QString> & pieces = parser.textList();
   const QList<template_parser::enum_action> & actions = parser.actionList();
   fuzz_support::check(pieces.size() == actions.size(), "lists of different lengths");
   fuzz_support::check(! pieces.isEmpty(), "no piece at all");
   fuzz_support::check(pieces.join(parser.getSeparator()) == expected, "pieces don't join back to the input", expected);
   fuzz_support::check(parser.getListOfText() == pieces, "copied list of text differs");
   fuzz_support::check(parser.getListOfAction() == actions, "copied list of actions differs");

   for (qsizetype i = 0; i < pieces.size(); ++i)
   {
      const QString & piece = pieces.at(i);
      const template_parser::enum_action action = actions.at(i);
      fuzz_support::check(! piece.contains(parser.getSeparator()), "a piece holds the separator", piece);
      fuzz_support::check(action == template_parser::classify(piece), "action differs from the classifier", piece);
      if ((action != template_parser::action_none) && (action != template_parser::action_CUSTOM))
      { fuzz_support::check(template_parser::keywordName(action) == piece, "keyword piece is not its keyword's name", piece); }
      if (action == template_parser::action_CUSTOM)
      { fuzz_support::check(piece.startsWith(template_parser::customPrefix()), "user keyword without its prefix", piece); }
      if (action == template_parser::action_none)
      { fuzz_support::check(! piece.startsWith(template_parser::customPrefix()), "literal piece with the user prefix", piece); }
   }

   // Parsing is a pure function of the text.
   const template_parser again(text);
   fuzz_support::check(again.textList() == pieces && again.actionList() == actions, "second parse differs");
   return 0;
}
