CREATE TABLE item (id INTEGER PRIMARY KEY, name TEXT);
VACUUM INTO 'copy.db';
VACUUM INTO '/tmp/tavrel_fuzz_ddl_target.db';
