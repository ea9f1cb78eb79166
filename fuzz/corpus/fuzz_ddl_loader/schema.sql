-- a small shop
CREATE TABLE customer (id BIGINT PRIMARY KEY, name VARCHAR(40) NOT NULL /* shown */, "odd ""name""" TEXT);
CREATE TABLE invoice (id BIGINT PRIMARY KEY, customer_id BIGINT REFERENCES customer (id), total DOUBLE);
CREATE INDEX invoice_customer ON invoice (customer_id);
CREATE VIEW big AS SELECT * FROM invoice WHERE total > 100;
CREATE TRIGGER stamp AFTER INSERT ON invoice BEGIN UPDATE invoice SET total = 0 WHERE id = new.id; END;
CREATE VIRTUAL TABLE notes USING fts5(title, body);
INSERT INTO customer VALUES (1, 'Ada', 'x');
