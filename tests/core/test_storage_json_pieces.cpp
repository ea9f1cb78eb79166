#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "storage/json_key_table.h"
#include "storage/json_layout.h"
#include "storage/project_storage.h"
#include "model/project.h"
#include "test_support.h"

using storage::json_layout::layout;
using storage::json_layout::split;

namespace {

bool splits(const QByteArray & text, layout & out) { return split(text.constData(), text.size(), out); }
bool splits(const QByteArray & text) { layout out; return splits(text, out); }
QByteArray spanText(const QByteArray & text, const storage::json_layout::span & s) { return text.mid(s.iBegin, s.iEnd - s.iBegin); }

// Both readings of one document: same outcome, same messages, same dump.
void expectSameImport(const QByteArray & text, const std::string & sWhat)
{
   model::project_ptr pPieces, pWhole;
   const zy::ZyBool okPieces = storage::project_storage::parseJson(text, "m.json", pPieces);
   const zy::ZyBool okWhole = storage::json_layout::parseWhole(text, "m.json", pWhole);
   ASSERT_EQ(bool(okPieces), bool(okWhole)) << sWhat << "\n" << okWhole.getDesc().toStdString();
   EXPECT_EQ(okPieces.getDesc().toStdString(), okWhole.getDesc().toStdString()) << sWhat;
   ASSERT_EQ(pPieces == nullptr, pWhole == nullptr) << sWhat;
   if (pPieces) { EXPECT_EQ(storage::project_storage::toJson(* pPieces).toStdString(), storage::project_storage::toJson(* pWhole).toStdString()) << sWhat; }
}

QList<QByteArray> modelFiles()
{
   QList<QByteArray> lst;
   const QStringList lstPaths = { "examples/shop.json", "examples/library.json", "tests/app/data/import_dump_model.json",
                                  "tests/cpp_export/golden_model_shop.json" };
   for (const QString & s : lstPaths) { lst.append(test_support::readAll(test_support::sourceDir() + "/" + s)); }
   const QDir seeds(test_support::sourceDir() + "/fuzz/corpus/fuzz_json_import");
   for (const QString & s : seeds.entryList({ "*.json" }, QDir::Files, QDir::Name)) { lst.append(test_support::readAll(seeds.filePath(s))); }
   return lst;
}

const QByteArray k_baseDoc = R"J({
  "name": "Shop",
  "entities": [
    {"name": "Base", "namespace": "shop", "properties": [{"name": "id", "type": "long", "primary_key": true}]},
    {"name": "Order", "namespace": "shop", "parent": "shop::Base", "description": "Say \"hi\" \\ [x] {y}",
     "properties": [{"name": "state", "enumeration": "shop::State"}, {"name": "items", "type": "long", "collection": "list"}]}
  ],
  "enumerations": [{"name": "State", "namespace": "shop", "values": [{"key": "Open", "value": "1"}]}]
})J";

} // namespace

TEST(JsonImportPieces, SplitFindsEachItem)
{
   layout out;
   ASSERT_TRUE(splits(k_baseDoc, out));
   EXPECT_EQ(spanText(k_baseDoc, out.name), "\"Shop\"");
   ASSERT_TRUE(out.bEntities);
   ASSERT_TRUE(out.bEnumerations);
   ASSERT_EQ(out.lstEntities.size(), 2);
   ASSERT_EQ(out.lstEnumerations.size(), 1);
   EXPECT_TRUE(spanText(k_baseDoc, out.lstEntities.at(0)).startsWith("{\"name\": \"Base\""));
   EXPECT_TRUE(spanText(k_baseDoc, out.lstEntities.at(1)).endsWith("\"collection\": \"list\"}]}"));
   EXPECT_TRUE(spanText(k_baseDoc, out.lstEnumerations.at(0)).endsWith("\"value\": \"1\"}]}"));

   ASSERT_TRUE(splits(" {\"entities\": [ ],\r\n\t\"name\": \"A\"} \n", out));
   EXPECT_TRUE(out.bEntities);
   EXPECT_FALSE(out.bEnumerations);
   EXPECT_TRUE(out.lstEntities.isEmpty());
}

TEST(JsonImportPieces, SplitDeclinesAnythingUnusual)
{
   const QList<QByteArray> lst = {
      "",
      "[]",
      "{}",
      "{\"entities\": []}",                                     // no name
      "{\"name\": \"A\", \"name\": \"B\"}",                     // repeated member
      "{\"name\": \"A\", \"other\": 1}",                        // unknown member
      "{\"na\\u006de\": \"A\"}",                                // escaped key
      "{\"name\": 1}",
      "{\"name\": \"A\", \"entities\": {}}",
      "{\"name\": \"A\", \"entities\": [1]}",                   // not an object
      "{\"name\": \"A\", \"entities\": [{},]}",                 // trailing comma
      "{\"name\": \"A\", \"entities\": [{} {}]}",
      "{\"name\": \"A\", \"entities\": [{\"x\": \"}\"]}",       // unbalanced
      "{\"name\": \"A\",}",
      "{\"name\": \"A\"} x",
      "{\"name\": \"A\"}}",
      "{\"name\": \"A\"",
      "{\"name\": \"A",
      "{\"name\": \"A\", \"entities\": [{\"a\": " + QByteArray(70, '[') + QByteArray(70, ']') + "}]}",   // deeper than split() goes
      "{\"name\": \"A\"\f}",                                    // not a JSON blank
   };
   for (const QByteArray & s : lst) { EXPECT_FALSE(splits(s)) << s.toStdString(); }
}

TEST(JsonImportPieces, SameModelAndMessagesAsTheWholeDocument)
{
   QList<QByteArray> lst = modelFiles();
   lst.append(k_baseDoc);
   // Broken in one item only: the whole document's messages, positions and paths are expected.
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "properties": []}, {"name": "C" "x": 1}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B"}, {"name": "C", "d": tru}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "name": "C", "description": "x", "description": "y"}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "colour": 1, "properties": [{"name": "p", "typo": "int"}]}]})J");
   lst.append(R"J({"name": "1A", "entities": [{"name": "B"}, {"name": "B"}, {"namespace": "x"}], "enumerations": [{"name": "B"}]})J");
   lst.append(R"J({"name": "A", "entities": [{"id": 3, "name": "B", "parent": "C"}, {"id": 3, "name": "C", "parent": "B"}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "properties": [{"name": "p", "enumeration": "E"}]}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "description": "bad \u0000"}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "description": "bad)J" "\x01" R"J("}]})J");
   lst.append(R"J({"name": "A", "entities": [{"name": "B", "table": "t\"); x"}]})J");
   lst.append("{\"name\": \"A\", \"entities\": [{\"name\": \"B\", \"description\": \"\xC3\x28\"}]}");
   lst.append("\xEF\xBB\xBF" + k_baseDoc);

   QList<QByteArray> lstMutated;
   for (const QByteArray & s : lst)
   {
      // Cut short, a byte dropped, a stray byte: syntax errors anywhere in the text.
      for (qsizetype i = 1; i < s.size(); i += 37)
      {
         lstMutated.append(s.left(i));
         lstMutated.append(s.left(i) + s.mid(i + 1));
         lstMutated.append(s.left(i) + "," + s.mid(i));
      }
   }
   lst.append(lstMutated);
   qsizetype iSplit = 0;
   for (const QByteArray & s : lst)
   {
      if (splits(s)) { ++iSplit; }
      expectSameImport(s, s.left(300).toStdString());
   }
   // The comparison is only worth something if the item-by-item reading ran on many of them.
   EXPECT_GT(iSplit, 100);
}

TEST(JsonImportPieces, FileReadAsTheTextIs)
{
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QList<QByteArray> lst = { k_baseDoc, "\xEF\xBB\xBF" + k_baseDoc, k_baseDoc.left(200), "" };
   for (const QByteArray & s : lst)
   {
      const QString sFile = dir.filePath("m.json");
      ASSERT_TRUE(test_support::writeAll(sFile, s));
      model::project_ptr pFile, pWhole;
      const zy::ZyBool okFile = storage::project_storage::readJsonFile(sFile, pFile);
      const zy::ZyBool okWhole = storage::json_layout::parseWhole(s, sFile, pWhole);
      ASSERT_EQ(bool(okFile), bool(okWhole)) << s.toStdString();
      EXPECT_EQ(okFile.getDesc().toStdString(), okWhole.getDesc().toStdString());
      if (pFile && pWhole) { EXPECT_EQ(storage::project_storage::toJson(* pFile).toStdString(), storage::project_storage::toJson(* pWhole).toStdString()); }
   }
}

TEST(JsonImportPieces, KeyTableFindsTheFirstIndexOfEachKey)
{
   QStringList lstKeys;
   int iAsked = 0;
   storage::json_key_table table([& lstKeys, & iAsked](qint32 i) { ++iAsked; return lstKeys.at(i); });
   EXPECT_EQ(table.find("a"), -1);
   for (qint32 i = 0; i < 5000; ++i)
   {
      const QString sKey = QString("ns::Item%1").arg(i);
      ASSERT_EQ(table.find(sKey), -1) << i;
      table.insert(sKey, qint32(lstKeys.size()), i * 2);
      lstKeys.append(sKey);
   }
   for (qint32 i = 0; i < 5000; ++i) { EXPECT_EQ(table.find(QString("ns::Item%1").arg(i)), i * 2) << i; }
   EXPECT_FALSE(table.contains("ns::Item5000"));
   EXPECT_FALSE(table.contains("ns::item1"));
   EXPECT_FALSE(table.contains(QString()));
   // Only keys with an equal hash are asked for: about one per lookup, not one per item.
   iAsked = 0;
   for (qint32 i = 0; i < 5000; ++i) { table.find(QString("ns::Item%1").arg(i)); }
   EXPECT_LT(iAsked, 5100);
}

TEST(JsonImportPieces, LargeFileReadAfterItsPagesWereGivenBack)
{
   // Over the 8 MB slice, so that pages are given back before the last items are read, and
   // read again by the whole-document parse when the last item is broken.
   QByteArray text("{\"name\": \"Big\", \"entities\": [\n");
   const QByteArray sFill(400, 'x');
   for (int i = 0; i < 24000; ++i) { text += "{\"name\": \"Item" + QByteArray::number(i) + "\", \"description\": \"" + sFill + "\"},\n"; }
   const QByteArray valid = text + "{\"name\": \"Last\"}]}\n";
   const QByteArray broken = text + "{\"name\": \"Last\" 1}]}\n";
   ASSERT_GT(valid.size(), 9 * 1024 * 1024);
   QTemporaryDir dir;
   ASSERT_TRUE(dir.isValid());
   const QString sFile = dir.filePath("big.json");
   for (const QByteArray & s : { valid, broken })
   {
      ASSERT_TRUE(test_support::writeAll(sFile, s));
      model::project_ptr pFile, pWhole;
      const zy::ZyBool okFile = storage::project_storage::readJsonFile(sFile, pFile);
      const zy::ZyBool okWhole = storage::json_layout::parseWhole(s, sFile, pWhole);
      ASSERT_EQ(bool(okFile), bool(okWhole));
      EXPECT_EQ(okFile.getDesc().toStdString(), okWhole.getDesc().toStdString());
      if (pFile && pWhole) { EXPECT_TRUE(storage::project_storage::toJson(* pFile) == storage::project_storage::toJson(* pWhole)); }
   }
   model::project_ptr p;
   EXPECT_FALSE(storage::project_storage::readJsonFile(sFile, p));
   EXPECT_TRUE(p == nullptr);
}
