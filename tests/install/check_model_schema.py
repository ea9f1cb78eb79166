#!/usr/bin/env python3
"""Usage: check_model_schema.py TAVREL SOURCE_DIR WORK_DIR

The model schema accepts every example and test model, and refuses the documents that
'tavrel import' refuses for their shape; each refused document is first shown to be refused by
the import itself, so that both stay in step."""
import glob
import json
import os
import shutil
import subprocess
import sys

import jsonschema

tavrel, source, work = sys.argv[1:4]
schema_path = os.path.join(source, "share", "schema", "tavrel-model.schema.json")
with open(schema_path, encoding="utf-8") as f:
    schema = json.load(f)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failures = []

shutil.rmtree(work, ignore_errors=True)
os.makedirs(work)
env = dict(os.environ, HOME=work, XDG_CONFIG_HOME=os.path.join(work, "config"), QT_QPA_PLATFORM="offscreen")


def imports(document, name):
    """Whether 'tavrel import' takes the document (written as it is)."""
    path = os.path.join(work, name + ".json")
    with open(path, "w", encoding="utf-8") as f:
        f.write(document if isinstance(document, str) else json.dumps(document, indent=1))
    run = subprocess.run([tavrel, "import", path, os.path.join(work, name + ".tavrel")], env=env,
                         capture_output=True, text=True, timeout=120)
    return run.returncode == 0, run.stderr.strip()


# Every model of the repository: examples and the models the tests read.
models = sorted(glob.glob(os.path.join(source, "examples", "*.json")))
for pattern in ("tests/*/data/*.json", "tests/*/*.json", "tests/install/consumer/*.json"):
    models += sorted(p for p in glob.glob(os.path.join(source, pattern)) if not p.endswith(".dump.json"))
if len(models) < 4:
    failures.append(f"found only {len(models)} models to validate")
for path in models:
    with open(path, encoding="utf-8") as f:
        document = json.load(f)
    errors = list(validator.iter_errors(document))
    if errors:
        failures.append(f"{os.path.relpath(path, source)} does not validate: {errors[0].message}")

# A model naming its schema is a model the import takes.
with open(os.path.join(source, "examples", "shop.json"), encoding="utf-8") as f:
    shop = json.load(f)
named = {"$schema": "../share/schema/tavrel-model.schema.json", **shop}
if list(validator.iter_errors(named)):
    failures.append("the schema refuses a model with \"$schema\"")
ok, why = imports(named, "named_schema")
if not ok:
    failures.append(f"the import refuses a model with \"$schema\": {why}")


def wrap_property(prop):
    return {"name": "Orchard", "entities": [{"name": "Tree", "properties": [prop]}]}


refused = {
    "schema key not a text": {"$schema": 7, "name": "Orchard"},
    "project name missing": {"entities": []},
    "project name not an identifier": {"name": "two words"},
    "unknown top-level field": {"name": "Orchard", "owner": "someone"},
    "entities not an array": {"name": "Orchard", "entities": {"name": "Tree"}},
    "entity not an object": {"name": "Orchard", "entities": ["Tree"]},
    "entity name missing": {"name": "Orchard", "entities": [{"namespace": "farm"}]},
    "entity name empty": {"name": "Orchard", "entities": [{"name": ""}]},
    "entity name a keyword": {"name": "Orchard", "entities": [{"name": "struct"}]},
    "unknown entity field": {"name": "Orchard", "entities": [{"name": "Tree", "height": "tall"}]},
    "abstract not a boolean": {"name": "Orchard", "entities": [{"name": "Tree", "abstract": "no"}]},
    "version not an integer": {"name": "Orchard", "entities": [{"name": "Tree", "version": 2.5}]},
    "negative id": {"name": "Orchard", "entities": [{"name": "Tree", "id": -3}]},
    "namespace part not an identifier": {"name": "Orchard", "entities": [{"name": "Tree", "namespace": "farm::north side"}]},
    "namespace part a keyword": {"name": "Orchard", "entities": [{"name": "Tree", "namespace": "farm::class"}]},
    "unknown trigger": {"name": "Orchard", "entities": [{"name": "Tree", "triggers": ["on_bloom"]}]},
    "repeated trigger": {"name": "Orchard", "entities": [{"name": "Tree", "triggers": ["after_insert", "after_insert"]}]},
    "meta value not a text": {"name": "Orchard", "entities": [{"name": "Tree", "meta": {"rows": 4}}]},
    "validator not an identifier": {"name": "Orchard", "entities": [{"name": "Tree", "validator_method": "check-it"}]},
    "properties not an array": {"name": "Orchard", "entities": [{"name": "Tree", "properties": {}}]},
    "property name missing": wrap_property({"type": "int"}),
    "unknown property field": wrap_property({"name": "age", "type": "int", "nullable": False}),
    "property type not a text": wrap_property({"name": "age", "type": 3}),
    "decoration unknown": wrap_property({"name": "age", "type": "int", "decoration": "raw_pointer"}),
    "collection code out of range": wrap_property({"name": "age", "type": "int", "collection": 5}),
    "accessibility unknown": wrap_property({"name": "age", "type": "int", "accessibility": "internal"}),
    "max_length a fraction": wrap_property({"name": "label", "type": "QString", "max_length": 7.5}),
    "min_value a boolean": wrap_property({"name": "age", "type": "int", "min_value": False}),
    "decoration without a type": wrap_property({"name": "age", "decoration": "optional"}),
    "default without a type": wrap_property({"name": "age", "default": "1"}),
    "relation kind missing": {"name": "Orchard", "entities": [
        {"name": "Tree", "properties": [{"name": "rows", "relation": {"target": "Tree"}}]}]},
    "relation kind unknown": {"name": "Orchard", "entities": [
        {"name": "Tree", "properties": [{"name": "rows", "relation": {"kind": "few_to_few", "target": "Tree"}}]}]},
    "relation target empty": {"name": "Orchard", "entities": [
        {"name": "Tree", "properties": [{"name": "rows", "relation": {"kind": "one_to_many", "target": ""}}]}]},
    "unknown relation field": {"name": "Orchard", "entities": [
        {"name": "Tree", "properties": [{"name": "rows", "relation": {"kind": 1, "target": "Tree", "lazy": True}}]}]},
    "enumeration value key missing": {"name": "Orchard", "enumerations": [{"name": "Season", "values": [{"value": "1"}]}]},
    "enumeration value not a text": {"name": "Orchard", "enumerations": [{"name": "Season", "values": [{"key": "Spring", "value": 1}]}]},
    "enumeration key not an identifier": {"name": "Orchard", "enumerations": [{"name": "Season", "values": [{"key": "2nd"}]}]},
    "unknown enumeration field": {"name": "Orchard", "enumerations": [{"name": "Season", "colour": "green"}]},
    "use_qt_enum not a boolean": {"name": "Orchard", "enumerations": [{"name": "Season", "use_qt_enum": 1}]},
}
for i, (label, document) in enumerate(refused.items()):
    ok, _ = imports(document, f"refused_{i}")
    if ok:
        failures.append(f"{label}: the import takes it, so the case proves nothing")
    if not list(validator.iter_errors(document)):
        failures.append(f"{label}: the schema accepts what the import refuses")

if failures:
    print("\n".join("FAILED: " + f for f in failures), file=sys.stderr)
    sys.exit(1)
print(f"schema: {len(models)} models valid, {len(refused)} refused documents refused")
