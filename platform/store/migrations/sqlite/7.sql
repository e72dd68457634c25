-- Changes of a table are found however many others there are.
CREATE INDEX "NciEvent.tableName" ON "NciEvent" ("tableName");
