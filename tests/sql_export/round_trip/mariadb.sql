-- A small orchard cooperative: every column form the SQL export must give back as it was read.
CREATE TABLE district (id int unsigned NOT NULL AUTO_INCREMENT PRIMARY KEY, name varchar(40) NOT NULL DEFAULT '', code char(3) UNIQUE);
CREATE TABLE barn (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, label text DEFAULT '', storeys smallint NOT NULL DEFAULT 1);
CREATE TABLE grower (id bigint NOT NULL AUTO_INCREMENT PRIMARY KEY, name text NOT NULL, district_id int unsigned NOT NULL DEFAULT 1,
  score decimal(3,1), joined timestamp NULL DEFAULT current_timestamp(), since year,
  CONSTRAINT grower_district_fk FOREIGN KEY (district_id) REFERENCES district (id));
CREATE INDEX grower_district ON grower (district_id);
CREATE TABLE fruit (id bigint NOT NULL AUTO_INCREMENT PRIMARY KEY, title varchar(80) NOT NULL, price decimal(10,2) NOT NULL DEFAULT 0.00, weight float,
  crates smallint NOT NULL DEFAULT 1, barn_id int DEFAULT 1, grower_id bigint, batch char(12) NOT NULL UNIQUE, picture mediumblob,
  organic tinyint(1) NOT NULL DEFAULT 1, stage enum('green','ready','over') NOT NULL DEFAULT 'green', fingerprint varbinary(190) UNIQUE,
  CONSTRAINT fruit_barn_fk FOREIGN KEY (barn_id) REFERENCES barn (id), CONSTRAINT fruit_grower_fk FOREIGN KEY (grower_id) REFERENCES grower (id));
CREATE TABLE label (id int NOT NULL PRIMARY KEY, word varchar(30) NOT NULL UNIQUE);
CREATE TABLE fruit_label (fruit_id bigint NOT NULL, label_id int NOT NULL, PRIMARY KEY (fruit_id, label_id),
  CONSTRAINT fruit_label_fruit_fk FOREIGN KEY (fruit_id) REFERENCES fruit (id), CONSTRAINT fruit_label_label_fk FOREIGN KEY (label_id) REFERENCES label (id));
CREATE TABLE buyer (id int unsigned NOT NULL AUTO_INCREMENT PRIMARY KEY, email varchar(120) NOT NULL UNIQUE, nickname varchar(60) NOT NULL DEFAULT '',
  born date, district_id int unsigned, rank_level tinyint unsigned NOT NULL DEFAULT 0,
  CONSTRAINT buyer_district_fk FOREIGN KEY (district_id) REFERENCES district (id));
CREATE TABLE sale (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, buyer_id int unsigned NOT NULL, sold datetime NOT NULL,
  total decimal(12,2) NOT NULL DEFAULT 0.00, remark longtext, visits mediumint NOT NULL DEFAULT 0,
  CONSTRAINT sale_buyer_fk FOREIGN KEY (buyer_id) REFERENCES buyer (id));
CREATE TABLE sale_line (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, sale_id int NOT NULL, fruit_id bigint NOT NULL,
  crates smallint NOT NULL DEFAULT 1, unit_price decimal(10,2) NOT NULL,
  CONSTRAINT sale_line_sale_fk FOREIGN KEY (sale_id) REFERENCES sale (id), CONSTRAINT sale_line_fruit_fk FOREIGN KEY (fruit_id) REFERENCES fruit (id));
CREATE TABLE cold_store (id smallint unsigned NOT NULL AUTO_INCREMENT PRIMARY KEY, name varchar(60) NOT NULL UNIQUE, opens time, capacity bigint unsigned);
CREATE TABLE transfer (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, cold_store_id smallint unsigned NOT NULL, fruit_id bigint NOT NULL,
  moved datetime, amount int NOT NULL DEFAULT 0,
  CONSTRAINT transfer_store_fk FOREIGN KEY (cold_store_id) REFERENCES cold_store (id), CONSTRAINT transfer_fruit_fk FOREIGN KEY (fruit_id) REFERENCES fruit (id));
CREATE TABLE voucher (code varchar(16) NOT NULL PRIMARY KEY, percent double NOT NULL DEFAULT 5.5, expires date);
CREATE TABLE worker (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, name text NOT NULL, lead_id int, wage decimal(9,2),
  CONSTRAINT worker_lead_fk FOREIGN KEY (lead_id) REFERENCES worker (id));
CREATE TABLE preference (name varchar(40) NOT NULL PRIMARY KEY, value varchar(255) NOT NULL DEFAULT '', enabled tinyint(1) DEFAULT 0);
CREATE TABLE harvest_note (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, written datetime NOT NULL DEFAULT current_timestamp(), body mediumtext NOT NULL,
  severity tinyint NOT NULL DEFAULT 0);
CREATE TABLE inspection (id int NOT NULL AUTO_INCREMENT PRIMARY KEY, barn_id int NOT NULL DEFAULT 2, held date NOT NULL,
  passed tinyint(1) NOT NULL DEFAULT 0, remarks varchar(200) DEFAULT '', CONSTRAINT inspection_barn_fk FOREIGN KEY (barn_id) REFERENCES barn (id));
CREATE UNIQUE INDEX inspection_barn ON inspection (barn_id);
CREATE TABLE grower_profile (grower_id bigint NOT NULL PRIMARY KEY, bio text NOT NULL,
  CONSTRAINT grower_profile_fk FOREIGN KEY (grower_id) REFERENCES grower (id));
CREATE INDEX sale_line_pair ON sale_line (sale_id, fruit_id);
CREATE UNIQUE INDEX transfer_once ON transfer (cold_store_id, fruit_id, moved);
CREATE UNIQUE INDEX buyer_nickname ON buyer (nickname(20));
CREATE INDEX worker_name ON worker (name(50));

-- A stock row per barn and fruit with its own count, a keyless price log and a view over fruit.
CREATE TABLE crate_stock (barn_id int NOT NULL, fruit_id bigint NOT NULL, crates int NOT NULL DEFAULT 0, PRIMARY KEY (barn_id, fruit_id),
  FOREIGN KEY (barn_id) REFERENCES barn (id), FOREIGN KEY (fruit_id) REFERENCES fruit (id));
CREATE TABLE price_log (fruit_id bigint, old_price decimal(10,2), changed datetime, FOREIGN KEY (fruit_id) REFERENCES fruit (id));
CREATE VIEW cheap_fruit AS SELECT id, title FROM fruit WHERE price < 1;
-- rows
INSERT INTO district (id, name, code) VALUES (1, 'Hillside', 'HIL');
INSERT INTO district (name, code) VALUES ('Riverbank', 'RIV');
INSERT INTO barn (id, label) VALUES (1, 'North barn');
INSERT INTO barn (id, label, storeys) VALUES (2, 'South barn', 2);
INSERT INTO grower (name, district_id, score, since) VALUES ('Ottilie Varga', 1, 4.5, 1998);
INSERT INTO grower (name, score) VALUES ('Bram Keldor', 3.0);
INSERT INTO fruit (title, price, weight, grower_id, batch, stage, fingerprint) VALUES ('Winter pear', 2.40, 0.18, 1, 'B-0001', 'ready', x'0a0b0c');
INSERT INTO fruit (title, barn_id, batch, organic) VALUES ('Quince', 2, 'B-0002', 0);
INSERT INTO label (id, word) VALUES (1, 'sweet');
INSERT INTO label (id, word) VALUES (2, 'tart');
INSERT INTO fruit_label (fruit_id, label_id) VALUES (1, 1);
INSERT INTO fruit_label (fruit_id, label_id) VALUES (2, 2);
INSERT INTO buyer (email, born, district_id, rank_level) VALUES ('juniper@example.org', '1990-04-02', 2, 200);
INSERT INTO sale (buyer_id, sold, total, remark) VALUES (1, '2024-09-01 10:30:00', 12.00, 'paid in coins');
INSERT INTO sale_line (sale_id, fruit_id, crates, unit_price) VALUES (1, 1, 5, 2.40);
INSERT INTO cold_store (name, opens, capacity) VALUES ('Cellar one', '06:00:00', 18446744073709551615);
INSERT INTO transfer (cold_store_id, fruit_id, moved, amount) VALUES (1, 2, '2024-09-02 08:00:00', 3);
INSERT INTO voucher (code, expires) VALUES ('AUTUMN', '2024-11-30');
INSERT INTO worker (id, name) VALUES (1, 'Ines Maro');
INSERT INTO worker (name, lead_id, wage) VALUES ('Tobin Alder', 1, 1800.50);
INSERT INTO preference (name) VALUES ('currency');
INSERT INTO harvest_note (body, severity) VALUES ('Frost on the lower slope', 2);
INSERT INTO inspection (held) VALUES ('2024-08-15');
INSERT INTO grower_profile (grower_id, bio) VALUES (1, 'Third generation on the hill');
