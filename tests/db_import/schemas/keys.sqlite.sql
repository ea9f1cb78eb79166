-- Names that would give a property the name of a class, keys over several columns, tables and
-- views without a key, nullable columns with defaults.
CREATE TABLE Author (AuthorId INTEGER PRIMARY KEY, Name TEXT NOT NULL, Country TEXT DEFAULT '');
CREATE TABLE Book (BookId INTEGER PRIMARY KEY, Title TEXT, AuthorId INTEGER REFERENCES Author (AuthorId), Pages INTEGER DEFAULT 100, Price NUMERIC DEFAULT 9.5);
CREATE TABLE Employee (EmployeeId INTEGER PRIMARY KEY, LastName TEXT NOT NULL, ReportsTo INTEGER REFERENCES Employee (EmployeeId), Active BOOLEAN DEFAULT TRUE);
CREATE TABLE Tag (TagId INTEGER PRIMARY KEY, Label TEXT);
CREATE TABLE BookTag (BookId INTEGER NOT NULL REFERENCES Book (BookId), TagId INTEGER NOT NULL REFERENCES Tag (TagId), PRIMARY KEY (BookId, TagId));
CREATE TABLE Review (ReviewId INTEGER PRIMARY KEY, Book INTEGER REFERENCES Book (BookId), Author TEXT);
CREATE TABLE order_item (order_id INTEGER NOT NULL, item_no INTEGER NOT NULL, sku TEXT NOT NULL, qty INTEGER DEFAULT 1, PRIMARY KEY (order_id, item_no));
CREATE TABLE loan (book_id INTEGER NOT NULL REFERENCES Book (BookId), member_code TEXT NOT NULL, day DATE NOT NULL, note TEXT DEFAULT '', PRIMARY KEY (book_id, member_code, day));
CREATE TABLE event_log (at DATETIME, message TEXT);
CREATE TABLE country (iso TEXT NOT NULL UNIQUE, name TEXT);
CREATE VIEW book_list AS SELECT b.BookId, b.Title, a.Name FROM Book b LEFT JOIN Author a ON a.AuthorId = b.AuthorId;
CREATE VIEW dangling AS SELECT * FROM gone;
