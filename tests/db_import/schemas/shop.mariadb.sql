-- A small shop: keys, a keyword table name, a join table, a view.
CREATE TABLE customer (
  id BIGINT AUTO_INCREMENT PRIMARY KEY,
  name VARCHAR(80) NOT NULL,
  email VARCHAR(120) UNIQUE,
  vip BOOLEAN NOT NULL DEFAULT 0,
  created_at TIMESTAMP DEFAULT CURRENT_TIMESTAMP
);
CREATE TABLE category (
  id BIGINT AUTO_INCREMENT PRIMARY KEY,
  title VARCHAR(60) NOT NULL,
  position INT DEFAULT 100
);
CREATE TABLE product (
  id BIGINT AUTO_INCREMENT PRIMARY KEY,
  sku CHAR(12) NOT NULL UNIQUE,
  title VARCHAR(100) NOT NULL,
  price NUMERIC(10,2) NOT NULL DEFAULT 0,
  stock INT DEFAULT 10,
  note TEXT DEFAULT 'none yet'
);
CREATE INDEX product_title ON product (title);
CREATE TABLE category_product (
  category_id BIGINT NOT NULL REFERENCES category (id),
  product_id BIGINT NOT NULL REFERENCES product (id),
  PRIMARY KEY (category_id, product_id)
);
CREATE TABLE `order` (
  id BIGINT AUTO_INCREMENT PRIMARY KEY,
  number VARCHAR(20) NOT NULL UNIQUE,
  customer_id BIGINT NOT NULL REFERENCES customer (id),
  ordered_on DATE,
  paid BOOLEAN DEFAULT 0
);
CREATE TABLE order_item (
  id BIGINT AUTO_INCREMENT PRIMARY KEY,
  order_id BIGINT NOT NULL REFERENCES `order` (id),
  product_id BIGINT REFERENCES product (id),
  quantity INT NOT NULL DEFAULT 1,
  unit_price DOUBLE PRECISION
);
CREATE VIEW order_total AS
  SELECT o.id AS order_id, SUM(i.quantity * i.unit_price) AS total FROM `order` o JOIN order_item i ON i.order_id = o.id GROUP BY o.id;
