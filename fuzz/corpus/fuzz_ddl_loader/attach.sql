CREATE TABLE item (id INTEGER PRIMARY KEY, name TEXT);
ATTACH DATABASE '/tmp/tavrel_fuzz_ddl_target.db' AS other;
CREATE TABLE other.stolen (id INTEGER);
DELETE FROM other.t_entity;
