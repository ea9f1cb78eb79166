CREATE TABLE item (id INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE copy AS SELECT load_extension('/tmp/tavrel_fuzz_ddl_target.so') AS x;
CREATE VIEW v AS SELECT load_extension('libc.so.6') AS x;
