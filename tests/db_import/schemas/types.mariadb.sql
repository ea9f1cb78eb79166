-- Every row of the type table, as this database writes it.
CREATE TABLE all_types (
  id INT PRIMARY KEY,
  c_small SMALLINT,
  c_int INT,
  c_big BIGINT,
  c_bool BOOLEAN,
  c_real FLOAT,
  c_double DOUBLE,
  c_numeric DECIMAL(12,3),
  c_text TEXT,
  c_varchar VARCHAR(30) NOT NULL DEFAULT 'it''s',
  c_char CHAR(3),
  c_blob BLOB,
  c_date DATE,
  c_time TIME,
  c_timestamp DATETIME,
  c_uuid UUID,
  c_json JSON,
  c_other POINT
);
