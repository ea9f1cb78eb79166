-- Two schemas, a foreign key between them.
CREATE SCHEMA stock;
CREATE SCHEMA sales;
CREATE TABLE stock.item (id BIGINT PRIMARY KEY, name VARCHAR(40) NOT NULL);
CREATE TABLE sales.invoice (id BIGINT PRIMARY KEY, item_id BIGINT REFERENCES stock.item (id), total NUMERIC(10,2));
CREATE TABLE public.note (id BIGINT PRIMARY KEY, body TEXT);
