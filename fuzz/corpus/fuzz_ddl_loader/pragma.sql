PRAGMA foreign_keys=OFF;
CREATE TABLE item (id INTEGER PRIMARY KEY, name TEXT);
PRAGMA writable_schema = ON;
PRAGMA journal_mode = WAL;
