-- A small orchard cooperative: every column form the SQL export must give back as it was read.
CREATE TABLE district (id INTEGER PRIMARY KEY AUTOINCREMENT, name VARCHAR(40) NOT NULL DEFAULT '', code CHAR(3) UNIQUE);
CREATE TABLE barn (id INTEGER PRIMARY KEY, label TEXT DEFAULT '', storeys SMALLINT NOT NULL DEFAULT 1);
CREATE TABLE grower (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, district_id INTEGER NOT NULL DEFAULT 1 REFERENCES district (id),
  score NUMERIC(3,1), joined TIMESTAMP DEFAULT CURRENT_TIMESTAMP);
CREATE INDEX grower_district ON grower (district_id);
CREATE TABLE fruit (id INTEGER PRIMARY KEY AUTOINCREMENT, title VARCHAR(80) NOT NULL, price NUMERIC(10,2) NOT NULL DEFAULT 0, weight DOUBLE,
  crates SMALLINT NOT NULL DEFAULT 1, barn_id INTEGER DEFAULT 1 REFERENCES barn (id), grower_id INTEGER REFERENCES grower (id),
  batch CHAR(12) NOT NULL UNIQUE, picture BLOB, organic BOOLEAN NOT NULL DEFAULT 1);
CREATE INDEX fruit_barn ON fruit (barn_id);
CREATE TABLE label (id INTEGER PRIMARY KEY, word VARCHAR(30) NOT NULL UNIQUE);
CREATE TABLE fruit_label (fruit_id INTEGER NOT NULL REFERENCES fruit (id), label_id INTEGER NOT NULL REFERENCES label (id),
  PRIMARY KEY (fruit_id, label_id));
CREATE TABLE buyer (id INTEGER PRIMARY KEY AUTOINCREMENT, email VARCHAR(120) NOT NULL UNIQUE, nickname TEXT NOT NULL DEFAULT '', born DATE,
  district_id INTEGER REFERENCES district (id));
CREATE TABLE sale (id INTEGER PRIMARY KEY AUTOINCREMENT, buyer_id INTEGER NOT NULL REFERENCES buyer (id), sold DATETIME NOT NULL,
  total NUMERIC(12,2) NOT NULL DEFAULT 0, remark TEXT DEFAULT '');
CREATE INDEX sale_buyer ON sale (buyer_id);
CREATE TABLE sale_line (id INTEGER PRIMARY KEY AUTOINCREMENT, sale_id INTEGER NOT NULL REFERENCES sale (id), fruit_id INTEGER NOT NULL REFERENCES fruit (id),
  crates SMALLINT NOT NULL DEFAULT 1, unit_price NUMERIC(10,2) NOT NULL);
CREATE TABLE cold_store (id INTEGER PRIMARY KEY AUTOINCREMENT, name VARCHAR(60) NOT NULL UNIQUE, opens TIME, capacity BIGINT);
CREATE TABLE transfer (id INTEGER PRIMARY KEY AUTOINCREMENT, cold_store_id INTEGER NOT NULL REFERENCES cold_store (id),
  fruit_id INTEGER NOT NULL REFERENCES fruit (id), moved DATETIME, amount INT NOT NULL DEFAULT 0);
CREATE INDEX transfer_fruit ON transfer (fruit_id);
CREATE TABLE voucher (code VARCHAR(16) PRIMARY KEY, percent REAL NOT NULL DEFAULT 5.5, expires DATE);
CREATE TABLE worker (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, lead_id INTEGER REFERENCES worker (id), wage NUMERIC(9,2));
CREATE TABLE preference (name VARCHAR(40) PRIMARY KEY, value TEXT NOT NULL DEFAULT '', enabled BOOLEAN DEFAULT 0);
CREATE TABLE harvest_note (id INTEGER PRIMARY KEY, written TIMESTAMP NOT NULL DEFAULT CURRENT_TIMESTAMP, body TEXT NOT NULL DEFAULT '',
  severity INT NOT NULL DEFAULT 0);
CREATE TABLE inspection (id INTEGER PRIMARY KEY AUTOINCREMENT, barn_id INTEGER NOT NULL DEFAULT 2 REFERENCES barn (id), held DATE NOT NULL,
  passed BOOLEAN NOT NULL DEFAULT 0, remarks VARCHAR(200) DEFAULT '');
CREATE UNIQUE INDEX inspection_barn ON inspection (barn_id);
CREATE TABLE grower_profile (grower_id INTEGER PRIMARY KEY REFERENCES grower (id), bio TEXT NOT NULL DEFAULT '');
CREATE INDEX sale_line_pair ON sale_line (sale_id, fruit_id);
CREATE UNIQUE INDEX transfer_once ON transfer (cold_store_id, fruit_id, moved);

-- A stock row per barn and fruit with its own count, a keyless price log and a view over fruit.
CREATE TABLE crate_stock (barn_id INTEGER NOT NULL REFERENCES barn (id), fruit_id INTEGER NOT NULL REFERENCES fruit (id),
  crates INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (barn_id, fruit_id));
CREATE TABLE price_log (fruit_id INTEGER REFERENCES fruit (id), old_price NUMERIC(10,2), changed TIMESTAMP);
CREATE VIEW cheap_fruit AS SELECT id, title FROM fruit WHERE price < 1;
-- rows
INSERT INTO district (id, name, code) VALUES (1, 'Hillside', 'HIL');
INSERT INTO district (name, code) VALUES ('Riverbank', 'RIV');
INSERT INTO barn (id, label) VALUES (1, 'North barn');
INSERT INTO barn (id, label, storeys) VALUES (2, 'South barn', 2);
INSERT INTO grower (name, district_id, score) VALUES ('Ottilie Varga', 1, 4.5);
INSERT INTO grower (name, score) VALUES ('Bram Keldor', 3.0);
INSERT INTO fruit (title, price, weight, grower_id, batch) VALUES ('Winter pear', 2.40, 0.18, 1, 'B-0001');
INSERT INTO fruit (title, barn_id, batch, organic) VALUES ('Quince', 2, 'B-0002', 0);
INSERT INTO label (id, word) VALUES (1, 'sweet');
INSERT INTO label (id, word) VALUES (2, 'tart');
INSERT INTO fruit_label (fruit_id, label_id) VALUES (1, 1);
INSERT INTO fruit_label (fruit_id, label_id) VALUES (2, 2);
INSERT INTO buyer (email, born, district_id) VALUES ('juniper@example.org', '1990-04-02', 2);
INSERT INTO sale (buyer_id, sold, total) VALUES (1, '2024-09-01 10:30:00', 12.00);
INSERT INTO sale_line (sale_id, fruit_id, crates, unit_price) VALUES (1, 1, 5, 2.40);
INSERT INTO cold_store (name, opens, capacity) VALUES ('Cellar one', '06:00:00', 40000);
INSERT INTO transfer (cold_store_id, fruit_id, moved, amount) VALUES (1, 2, '2024-09-02 08:00:00', 3);
INSERT INTO voucher (code, expires) VALUES ('AUTUMN', '2024-11-30');
INSERT INTO worker (id, name) VALUES (1, 'Ines Maro');
INSERT INTO worker (name, lead_id, wage) VALUES ('Tobin Alder', 1, 1800.50);
INSERT INTO preference (name) VALUES ('currency');
INSERT INTO harvest_note (body, severity) VALUES ('Frost on the lower slope', 2);
INSERT INTO inspection (held) VALUES ('2024-08-15');
INSERT INTO grower_profile (grower_id, bio) VALUES (1, 'Third generation on the hill');
