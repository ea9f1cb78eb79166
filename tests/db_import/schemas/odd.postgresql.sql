-- Names that are no C++ identifiers, self and cyclic keys, a composite key, a table without one.
CREATE TABLE "class" (
  id BIGINT PRIMARY KEY,
  "namespace" VARCHAR(10),
  "2fa" VARCHAR(10),
  "unit price" DOUBLE PRECISION,
  "café" VARCHAR(10)
);
CREATE TABLE "user group" (id BIGINT PRIMARY KEY, label VARCHAR(10));
CREATE TABLE user_group (id BIGINT PRIMARY KEY, label VARCHAR(10));
CREATE TABLE employee (
  id BIGINT PRIMARY KEY,
  manager_id BIGINT REFERENCES employee (id),
  mentor_id BIGINT REFERENCES employee (id)
);
CREATE TABLE team (id BIGINT PRIMARY KEY, lead_id BIGINT);
CREATE TABLE person (id BIGINT PRIMARY KEY, team_id BIGINT REFERENCES team (id));
ALTER TABLE team ADD FOREIGN KEY (lead_id) REFERENCES person (id);
CREATE TABLE order_line (
  order_no INT NOT NULL,
  line_no INT NOT NULL,
  amount DOUBLE PRECISION,
  PRIMARY KEY (order_no, line_no)
);
CREATE TABLE shipment (
  id BIGINT PRIMARY KEY,
  order_no INT,
  line_no INT,
  FOREIGN KEY (order_no, line_no) REFERENCES order_line (order_no, line_no)
);
CREATE TABLE log_entry (message TEXT, logged_at TIMESTAMP);
