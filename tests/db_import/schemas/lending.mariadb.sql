-- A lending library, loaded into the test server; dumps/ holds dump files of it.
CREATE TABLE branch (
  id int unsigned NOT NULL AUTO_INCREMENT PRIMARY KEY,
  city varchar(60) NOT NULL,
  code char(4) NOT NULL,
  opened date DEFAULT NULL,
  UNIQUE KEY branch_code (code)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE TABLE member (
  id bigint NOT NULL AUTO_INCREMENT PRIMARY KEY,
  branch_id int unsigned NOT NULL,
  full_name varchar(255) NOT NULL,
  email text,
  joined timestamp NOT NULL DEFAULT current_timestamp(),
  fee decimal(8,2) NOT NULL DEFAULT 0.00,
  active tinyint(1) NOT NULL DEFAULT 1,
  nick varchar(20) DEFAULT 'the  reader' COMMENT 'Shown at the desk; it''s short',
  level enum('basic','plus') NOT NULL DEFAULT 'basic',
  tags set('kids','adult','local') DEFAULT NULL,
  KEY member_name (full_name(190)),
  CONSTRAINT member_branch FOREIGN KEY (branch_id) REFERENCES branch (id) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COMMENT='People who borrow';
CREATE TABLE title (
  isbn varchar(17) NOT NULL PRIMARY KEY,
  name varchar(200) NOT NULL,
  pages smallint unsigned DEFAULT NULL
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE TABLE copy_item (
  branch_id int unsigned NOT NULL,
  copy_no int NOT NULL,
  isbn varchar(17) DEFAULT NULL,
  shelf varchar(10) DEFAULT NULL,
  PRIMARY KEY (branch_id, copy_no),
  CONSTRAINT copy_item_branch FOREIGN KEY (branch_id) REFERENCES branch (id),
  CONSTRAINT copy_item_title FOREIGN KEY (isbn) REFERENCES title (isbn)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE TABLE loan (
  id int NOT NULL AUTO_INCREMENT PRIMARY KEY,
  member_id bigint NOT NULL,
  branch_id int unsigned NOT NULL,
  copy_no int NOT NULL,
  due date NOT NULL,
  UNIQUE KEY loan_member_due (member_id, due),
  CONSTRAINT loan_member FOREIGN KEY (member_id) REFERENCES member (id),
  CONSTRAINT loan_copy FOREIGN KEY (branch_id, copy_no) REFERENCES copy_item (branch_id, copy_no) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE VIEW open_loan AS SELECT l.id, l.due, m.full_name FROM loan l JOIN member m ON m.id = l.member_id;
CREATE TRIGGER member_stamp BEFORE INSERT ON member FOR EACH ROW SET NEW.nick = COALESCE(NEW.nick, 'reader');
CREATE PROCEDURE drop_old_loans() DELETE FROM loan WHERE due < '2000-01-01';
