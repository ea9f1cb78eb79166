-- Two databases, a foreign key between them.
CREATE TABLE stock.item (id BIGINT PRIMARY KEY, name VARCHAR(40) NOT NULL);
CREATE TABLE sales.invoice (id BIGINT PRIMARY KEY, item_id BIGINT REFERENCES stock.item (id), total NUMERIC(10,2));
