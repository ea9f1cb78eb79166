-- A made-up application schema (music shop, staff, stock, courses, projects) in the shapes real
-- databases have: PascalCase and snake_case names, self references, composite keys, join tables
-- with and without extra columns, views, keyless log tables, binary keys, reserved words as names,
-- empty-string defaults and foreign keys of several columns (one on key columns); here also ENUM
-- and SET columns, unsigned keys and prefix indexes. Every table holds a few rows.
CREATE TABLE Genre (GenreId INTEGER PRIMARY KEY, Name VARCHAR(200) NOT NULL DEFAULT '');
CREATE TABLE MediaKind (MediaKindId INTEGER PRIMARY KEY, Name TEXT NOT NULL);
CREATE TABLE Artist (ArtistId INTEGER PRIMARY KEY, Name TEXT NOT NULL, Country VARCHAR(200) DEFAULT '');
CREATE TABLE Album (AlbumId INTEGER PRIMARY KEY, Title TEXT NOT NULL, ArtistId INTEGER NOT NULL REFERENCES Artist (ArtistId), ReleasedOn DATE);
CREATE TABLE Track (
  TrackId INTEGER PRIMARY KEY,
  Name TEXT NOT NULL,
  AlbumId INTEGER REFERENCES Album (AlbumId) ON DELETE SET NULL,
  MediaKindId INTEGER NOT NULL REFERENCES MediaKind (MediaKindId),
  GenreId INTEGER REFERENCES Genre (GenreId),
  Composer VARCHAR(200) DEFAULT '',
  Milliseconds INTEGER NOT NULL,
  UnitPrice NUMERIC(10,2) NOT NULL DEFAULT 0.99
);
CREATE TABLE Playlist (PlaylistId INTEGER PRIMARY KEY, Name TEXT);
CREATE TABLE PlaylistTrack (
  PlaylistId INTEGER NOT NULL REFERENCES Playlist (PlaylistId),
  TrackId INTEGER NOT NULL REFERENCES Track (TrackId),
  PRIMARY KEY (PlaylistId, TrackId)
);
CREATE TABLE Staff (
  StaffId INTEGER PRIMARY KEY,
  LastName TEXT NOT NULL,
  FirstName TEXT NOT NULL,
  Title TEXT,
  ReportsTo INTEGER REFERENCES Staff (StaffId),
  HiredOn DATETIME,
  Email VARCHAR(80) UNIQUE
);
CREATE TABLE Customer (
  CustomerId INTEGER PRIMARY KEY,
  FirstName TEXT NOT NULL,
  LastName TEXT NOT NULL,
  Company VARCHAR(200) DEFAULT '',
  Email TEXT NOT NULL,
  SupportRepId INTEGER REFERENCES Staff (StaffId)
);
CREATE TABLE Invoice (
  InvoiceId INTEGER PRIMARY KEY,
  CustomerId INTEGER NOT NULL REFERENCES Customer (CustomerId),
  InvoiceDate DATETIME NOT NULL,
  BillingCity TEXT,
  Total NUMERIC(10,2) NOT NULL
);
CREATE TABLE InvoiceLine (
  InvoiceLineId INTEGER PRIMARY KEY,
  InvoiceId INTEGER NOT NULL REFERENCES Invoice (InvoiceId),
  TrackId INTEGER NOT NULL REFERENCES Track (TrackId),
  UnitPrice NUMERIC(10,2) NOT NULL,
  Quantity INTEGER NOT NULL
);
CREATE TABLE country (code CHAR(2) PRIMARY KEY, name VARCHAR(60) NOT NULL, phone_prefix VARCHAR(6) DEFAULT '');
CREATE TABLE city (city_id INTEGER PRIMARY KEY, name VARCHAR(60) NOT NULL, country_code CHAR(2) NOT NULL REFERENCES country (code));
CREATE TABLE address (
  address_id INTEGER PRIMARY KEY,
  line1 VARCHAR(80) NOT NULL,
  line2 VARCHAR(80) NOT NULL DEFAULT '',
  postal_code VARCHAR(10),
  city_id INTEGER NOT NULL REFERENCES city (city_id)
);
CREATE TABLE supplier (supplier_id INTEGER PRIMARY KEY, name VARCHAR(80) NOT NULL, address_id INTEGER REFERENCES address (address_id));
CREATE TABLE warehouse (warehouse_id INTEGER PRIMARY KEY, label VARCHAR(40) NOT NULL, address_id INTEGER REFERENCES address (address_id));
CREATE TABLE product_category (category_id INTEGER PRIMARY KEY, name VARCHAR(40) NOT NULL, parent_id INTEGER REFERENCES product_category (category_id));
CREATE TABLE product (
  product_id INTEGER PRIMARY KEY,
  sku VARCHAR(20) NOT NULL UNIQUE,
  name VARCHAR(80) NOT NULL,
  category_id INTEGER REFERENCES product_category (category_id),
  supplier_id INTEGER REFERENCES supplier (supplier_id),
  list_price NUMERIC(10,2),
  discontinued BOOLEAN NOT NULL DEFAULT FALSE
);
CREATE INDEX product_name_idx ON product (name);
CREATE TABLE tag (tag_id INTEGER PRIMARY KEY, label VARCHAR(30) NOT NULL UNIQUE);
CREATE TABLE product_tag (
  product_id INTEGER NOT NULL REFERENCES product (product_id),
  tag_id INTEGER NOT NULL REFERENCES tag (tag_id),
  PRIMARY KEY (product_id, tag_id)
);
CREATE TABLE stock_level (
  warehouse_id INTEGER NOT NULL REFERENCES warehouse (warehouse_id),
  product_id INTEGER NOT NULL REFERENCES product (product_id),
  quantity INTEGER NOT NULL DEFAULT 0,
  counted_at DATETIME,
  PRIMARY KEY (warehouse_id, product_id)
);
CREATE TABLE purchase_order (po_id INTEGER PRIMARY KEY, supplier_id INTEGER NOT NULL REFERENCES supplier (supplier_id), ordered_on DATE NOT NULL, note VARCHAR(200) NOT NULL DEFAULT '');
CREATE TABLE purchase_order_line (
  po_id INTEGER NOT NULL REFERENCES purchase_order (po_id),
  line_no INTEGER NOT NULL,
  product_id INTEGER NOT NULL REFERENCES product (product_id),
  quantity INTEGER NOT NULL,
  PRIMARY KEY (po_id, line_no)
);
CREATE TABLE `order` (id INTEGER PRIMARY KEY, `from` VARCHAR(40), `to` VARCHAR(40), placed DATETIME);
CREATE TABLE `group` (id INTEGER PRIMARY KEY, name VARCHAR(40) NOT NULL, `desc` VARCHAR(200) DEFAULT '');
CREATE TABLE user_account (user_id INTEGER PRIMARY KEY, login VARCHAR(30) NOT NULL UNIQUE, display_name VARCHAR(60) NOT NULL DEFAULT '', created_at DATETIME);
CREATE TABLE group_member (
  group_id INTEGER NOT NULL REFERENCES `group` (id),
  user_id INTEGER NOT NULL REFERENCES user_account (user_id),
  joined_at DATETIME,
  is_admin BOOLEAN NOT NULL DEFAULT FALSE,
  PRIMARY KEY (group_id, user_id)
);
CREATE TABLE audit_log (happened_at DATETIME NOT NULL, user_id INTEGER, action VARCHAR(20) NOT NULL, detail TEXT);
CREATE TABLE login_event (event_uuid VARCHAR(36) NOT NULL UNIQUE, user_id INTEGER, at DATETIME NOT NULL, ok BOOLEAN);
CREATE TABLE page_view (path VARCHAR(200), viewed_at DATETIME, referrer VARCHAR(200));
CREATE TABLE file_blob (digest VARBINARY(32) PRIMARY KEY, size INTEGER NOT NULL, mime VARCHAR(60) NOT NULL DEFAULT '');
CREATE TABLE attachment (attachment_id INTEGER PRIMARY KEY, digest VARBINARY(32) NOT NULL REFERENCES file_blob (digest), file_name VARCHAR(120) NOT NULL);
CREATE TABLE setting (`key` VARCHAR(40) PRIMARY KEY, `value` VARCHAR(200) NOT NULL DEFAULT '', `default` TEXT);
CREATE TABLE department (department_id INTEGER PRIMARY KEY, name VARCHAR(40) NOT NULL, head_id INTEGER REFERENCES Staff (StaffId));
CREATE TABLE project (project_id INTEGER PRIMARY KEY, name VARCHAR(60) NOT NULL, department_id INTEGER REFERENCES department (department_id) ON DELETE SET NULL ON UPDATE CASCADE, starts DATE, ends DATE);
CREATE TABLE staff_project (
  staff_id INTEGER NOT NULL REFERENCES Staff (StaffId),
  project_id INTEGER NOT NULL REFERENCES project (project_id),
  role VARCHAR(20) NOT NULL DEFAULT '',
  PRIMARY KEY (staff_id, project_id)
);
CREATE TABLE task (
  task_id INTEGER PRIMARY KEY,
  project_id INTEGER NOT NULL REFERENCES project (project_id),
  parent_task_id INTEGER REFERENCES task (task_id),
  title VARCHAR(80) NOT NULL,
  done BOOLEAN NOT NULL DEFAULT FALSE
);
CREATE TABLE time_entry (entry_id INTEGER PRIMARY KEY, task_id INTEGER NOT NULL REFERENCES task (task_id) ON DELETE CASCADE, staff_id INTEGER NOT NULL REFERENCES Staff (StaffId), minutes INTEGER NOT NULL, note VARCHAR(200) DEFAULT '');
CREATE TABLE currency (code CHAR(3) PRIMARY KEY, name VARCHAR(40) NOT NULL, symbol VARCHAR(4) DEFAULT '');
CREATE TABLE exchange_rate (
  currency_code CHAR(3) NOT NULL REFERENCES currency (code),
  day DATE NOT NULL,
  rate DOUBLE NOT NULL,
  PRIMARY KEY (currency_code, day)
);
CREATE TABLE student (student_id INTEGER PRIMARY KEY, full_name VARCHAR(80) NOT NULL, email VARCHAR(80));
CREATE TABLE course (course_id INTEGER PRIMARY KEY, code VARCHAR(10) NOT NULL UNIQUE, title VARCHAR(80) NOT NULL);
CREATE TABLE course_prerequisite (
  course_id INTEGER NOT NULL REFERENCES course (course_id),
  required_id INTEGER NOT NULL REFERENCES course (course_id),
  PRIMARY KEY (course_id, required_id)
);
CREATE TABLE enrollment (
  student_id INTEGER NOT NULL REFERENCES student (student_id),
  course_id INTEGER NOT NULL REFERENCES course (course_id),
  term VARCHAR(6) NOT NULL,
  grade VARCHAR(2) DEFAULT '',
  PRIMARY KEY (student_id, course_id, term)
);
CREATE TABLE review (review_id INTEGER PRIMARY KEY, product_id INTEGER NOT NULL REFERENCES product (product_id), user_id INTEGER REFERENCES user_account (user_id), stars INTEGER NOT NULL, body VARCHAR(200) NOT NULL DEFAULT '');
CREATE TABLE shipment (shipment_id INTEGER PRIMARY KEY, po_id INTEGER NOT NULL, line_no INTEGER NOT NULL, shipped_on DATE, FOREIGN KEY (po_id, line_no) REFERENCES purchase_order_line (po_id, line_no));
CREATE TABLE import_batch (batch_id INTEGER AUTO_INCREMENT PRIMARY KEY, started_at DATETIME NOT NULL DEFAULT CURRENT_TIMESTAMP, label VARCHAR(40) NOT NULL DEFAULT '',
  run_on DATE NOT NULL DEFAULT (CURDATE()), sample DOUBLE DEFAULT (RAND()));
CREATE INDEX time_entry_staff_task_idx ON time_entry (staff_id, task_id);
CREATE FULLTEXT INDEX review_body_search ON review (body);
CREATE UNIQUE INDEX project_department_name_ux ON project (department_id, name);
CREATE TABLE line_note (
  po_id INTEGER NOT NULL,
  line_no INTEGER NOT NULL,
  note_no INTEGER NOT NULL,
  body VARCHAR(200) NOT NULL,
  PRIMARY KEY (po_id, line_no, note_no),
  FOREIGN KEY (po_id, line_no) REFERENCES purchase_order_line (po_id, line_no) ON DELETE CASCADE
);
CREATE TABLE comment (comment_id INTEGER PRIMARY KEY, review_id INTEGER NOT NULL REFERENCES review (review_id), reply_to_id INTEGER REFERENCES comment (comment_id), body TEXT NOT NULL);
CREATE VIEW album_summary AS SELECT a.AlbumId, a.Title, r.Name AS ArtistName FROM Album a JOIN Artist r ON r.ArtistId = a.ArtistId;
CREATE VIEW invoice_total AS SELECT CustomerId, SUM(Total) AS spent FROM Invoice GROUP BY CustomerId;
CREATE VIEW open_task AS SELECT task_id, title, project_id FROM task WHERE NOT done;

INSERT INTO Genre VALUES (1, 'Rock'), (2, 'Jazz'), (3, '');
INSERT INTO MediaKind VALUES (1, 'Lossless file'), (2, 'Compressed file');
INSERT INTO Artist VALUES (1, 'The Quiet Hours', 'NZ'), (2, 'Marla Veen', '');
INSERT INTO Album VALUES (1, 'Low Tide', 1, '2019-03-01'), (2, 'Paper Suns', 2, NULL);
INSERT INTO Track VALUES (1, 'Harbour', 1, 1, 1, 'A. Moss', 201000, 0.99), (2, 'Kelp', 1, 2, 1, '', 187000, 0.99), (3, 'Folded', 2, 1, 2, NULL, 240500, 1.29);
INSERT INTO Playlist VALUES (1, 'Mornings'), (2, NULL);
INSERT INTO PlaylistTrack VALUES (1, 1), (1, 3), (2, 2);
INSERT INTO Staff VALUES (1, 'Okafor', 'Dana', 'Manager', NULL, '2015-06-01 09:00:00', 'dana@example.test'), (2, 'Lind', 'Per', 'Clerk', 1, '2018-01-15 09:00:00', NULL);
INSERT INTO Customer VALUES (1, 'Ira', 'Basso', '', 'ira@example.test', 2), (2, 'Noor', 'Haddad', 'Tidewell', 'noor@example.test', NULL);
INSERT INTO Invoice VALUES (1, 1, '2024-02-03 10:00:00', 'Harbourtown', 1.98), (2, 2, '2024-02-04 11:30:00', NULL, 1.29);
INSERT INTO InvoiceLine VALUES (1, 1, 1, 0.99, 1), (2, 1, 2, 0.99, 1), (3, 2, 3, 1.29, 1);
INSERT INTO country VALUES ('NZ', 'New Zealand', '+64'), ('XX', 'Nowhere', '');
INSERT INTO city VALUES (1, 'Harbourtown', 'NZ'), (2, 'Dryvale', 'XX');
INSERT INTO address VALUES (1, '1 Quay Road', '', '9010', 1), (2, '7 Dust Lane', 'Unit 2', NULL, 2);
INSERT INTO supplier VALUES (1, 'Crate & Co', 1), (2, 'Dryvale Goods', NULL);
INSERT INTO warehouse VALUES (1, 'North', 1), (2, 'South', 2);
INSERT INTO product_category VALUES (1, 'Audio', NULL), (2, 'Cables', 1);
INSERT INTO product VALUES (1, 'CAB-1', 'Patch cable', 2, 1, 4.50, FALSE), (2, 'AMP-9', 'Small amplifier', 1, 2, 120.00, TRUE);
INSERT INTO tag VALUES (1, 'sale'), (2, 'new');
INSERT INTO product_tag VALUES (1, 1), (2, 2);
INSERT INTO stock_level VALUES (1, 1, 40, '2024-01-01 08:00:00'), (2, 2, 3, NULL);
INSERT INTO purchase_order VALUES (1, 1, '2024-01-05', ''), (2, 2, '2024-01-09', 'rush');
INSERT INTO purchase_order_line VALUES (1, 1, 1, 100), (1, 2, 2, 2), (2, 1, 2, 1);
INSERT INTO `order` VALUES (1, 'Harbourtown', 'Dryvale', '2024-03-01 12:00:00'), (2, NULL, NULL, NULL);
INSERT INTO `group` VALUES (1, 'admins', ''), (2, 'editors', 'may edit pages');
INSERT INTO user_account VALUES (1, 'dana', 'Dana O.', '2020-01-01 00:00:00'), (2, 'per', '', NULL);
INSERT INTO group_member VALUES (1, 1, '2020-01-02 00:00:00', TRUE), (2, 2, NULL, FALSE);
INSERT INTO audit_log VALUES ('2024-03-01 12:00:00', 1, 'login', NULL), ('2024-03-01 12:05:00', 1, 'edit', 'page 4');
INSERT INTO login_event VALUES ('2b0c5c1e-0000-4000-8000-000000000001', 1, '2024-03-01 12:00:00', TRUE), ('2b0c5c1e-0000-4000-8000-000000000002', 2, '2024-03-02 08:00:00', FALSE);
INSERT INTO page_view VALUES ('/', '2024-03-01 12:00:01', NULL), ('/shop', '2024-03-01 12:00:09', '/');
INSERT INTO file_blob VALUES (X'0a1b2c3d', 1024, 'image/png'), (X'ffee0011', 20, '');
INSERT INTO attachment VALUES (1, X'0a1b2c3d', 'cover.png'), (2, X'ffee0011', 'notes.txt');
INSERT INTO setting VALUES ('theme', 'dark', 'light'), ('motd', '', NULL);
INSERT INTO department VALUES (1, 'Sales', 1), (2, 'Stock', NULL);
INSERT INTO project VALUES (1, 'Spring catalogue', 1, '2024-01-01', NULL), (2, 'Recount', 2, NULL, NULL);
INSERT INTO staff_project VALUES (1, 1, 'lead'), (2, 2, '');
INSERT INTO task VALUES (1, 1, NULL, 'Pick photos', FALSE), (2, 1, 1, 'Crop photos', TRUE), (3, 2, NULL, 'Count shelf A', FALSE);
INSERT INTO time_entry VALUES (1, 1, 1, 90, ''), (2, 3, 2, 45, 'half done');
INSERT INTO currency VALUES ('NZD', 'New Zealand dollar', '$'), ('XXX', 'No currency', '');
INSERT INTO exchange_rate VALUES ('NZD', '2024-01-01', 1.0), ('NZD', '2024-01-02', 1.01);
INSERT INTO student VALUES (1, 'Ana Pereira', NULL), (2, 'Tom Ueda', 'tom@example.test');
INSERT INTO course VALUES (1, 'MUS101', 'Listening'), (2, 'MUS201', 'Arranging');
INSERT INTO course_prerequisite VALUES (2, 1);
INSERT INTO enrollment VALUES (1, 1, '2024S1', 'A'), (2, 1, '2024S1', ''), (2, 2, '2024S2', NULL);
INSERT INTO review VALUES (1, 1, 1, 5, 'Does the job'), (2, 2, NULL, 2, '');
INSERT INTO shipment VALUES (1, 1, 1, '2024-01-10'), (2, 1, 2, NULL);
INSERT INTO import_batch (label) VALUES ('first'), ('second');
INSERT INTO line_note VALUES (1, 1, 1, 'Left at the door'), (1, 1, 2, 'Signed for');
INSERT INTO comment VALUES (1, 1, NULL, 'Agreed'), (2, 1, 1, 'Same here');

CREATE TABLE ticket (
  ticket_id INT UNSIGNED AUTO_INCREMENT PRIMARY KEY,
  state ENUM('open', 'waiting', 'closed') NOT NULL DEFAULT 'open',
  flags SET('urgent', 'billing', 'hardware') NOT NULL DEFAULT '',
  subject VARCHAR(120) NOT NULL DEFAULT ''
);
CREATE TABLE ticket_note (
  note_id BIGINT UNSIGNED AUTO_INCREMENT PRIMARY KEY,
  ticket_id INT UNSIGNED NOT NULL REFERENCES ticket (ticket_id),
  body TEXT NOT NULL,
  INDEX ticket_note_body (body(20))
);
CREATE INDEX product_name_prefix ON product (name(8));
INSERT INTO ticket (state, flags, subject) VALUES ('open', 'urgent,billing', 'Cable too short'), ('closed', '', '');
INSERT INTO ticket_note (ticket_id, body) VALUES (1, 'Sent a longer one'), (2, 'Nothing to do');
