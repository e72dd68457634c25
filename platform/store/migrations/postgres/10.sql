-- Changes of a table are found however many others there are.
CREATE INDEX ON public."NciEvent" ("tableName", "id");
