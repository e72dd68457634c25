-- Everything.
-- AUTOINCREMENT: an id is not used again after the log was pruned.
CREATE TABLE "NciEvent" ("id" INTEGER PRIMARY KEY AUTOINCREMENT, "code" INTEGER NOT NULL,
  "tableName" TEXT NOT NULL, "key" TEXT NOT NULL, "login" TEXT NOT NULL, "time" REAL NOT NULL,
  "after" TEXT NOT NULL, "before" TEXT NOT NULL) STRICT;
CREATE TABLE "NciWriter" ("login" TEXT NOT NULL) STRICT;
INSERT INTO "NciWriter" VALUES ('');
CREATE TABLE "NciPruned" ("id" INTEGER NOT NULL) STRICT;
INSERT INTO "NciPruned" VALUES (0);
CREATE TABLE "NciReplaced" ("tableName" TEXT NOT NULL, "key" TEXT NOT NULL COLLATE NOCASE,
  "before" TEXT NOT NULL, PRIMARY KEY ("tableName", "key")) STRICT, WITHOUT ROWID;
CREATE TABLE "Users" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "login_" TEXT,
  "lastName" TEXT,
  "firstName" TEXT,
  "midlName" TEXT,
  "program" INTEGER CHECK ("program" IN (0, 1))) STRICT;
CREATE TABLE "MenuFileExt" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "fileExt" TEXT) STRICT;
CREATE TABLE "MenuResourceFolder" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "ParentKey" TEXT COLLATE NOCASE CHECK ("ParentKey" <> ''),
  "type_" INTEGER CHECK ("type_" BETWEEN -2147483648 AND 2147483647),
  "caption" TEXT) STRICT;
CREATE TABLE "MenuResource" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "MenuResourceFolderKey" TEXT COLLATE NOCASE CHECK ("MenuResourceFolderKey" <> ''),
  "name_" TEXT,
  "type_" INTEGER CHECK ("type_" BETWEEN -2147483648 AND 2147483647),
  "caption" TEXT,
  "params" TEXT,
  "ico" TEXT,
  "UsersKey" TEXT COLLATE NOCASE CHECK ("UsersKey" <> ''),
  "dateTimeEdit" REAL CHECK (abs("dateTimeEdit") <= 1.7976931348623157e308)) STRICT;
CREATE TABLE "MenuFolder" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "ParentKey" TEXT COLLATE NOCASE CHECK ("ParentKey" <> ''),
  "caption" TEXT,
  "order_" TEXT,
  "isFolder" INTEGER CHECK ("isFolder" IN (0, 1))) STRICT;
CREATE TABLE "Menu" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "parent" TEXT COLLATE NOCASE CHECK ("parent" <> ''),
  "FolderKey" TEXT,
  "caption" TEXT,
  "order_" INTEGER CHECK ("order_" BETWEEN -2147483648 AND 2147483647),
  "ico" TEXT,
  "separator" INTEGER CHECK ("separator" IN (0, 1)),
  "oneCopy" INTEGER CHECK ("oneCopy" IN (0, 1)),
  "MenuResourceKey" TEXT COLLATE NOCASE CHECK ("MenuResourceKey" <> ''),
  "params" TEXT) STRICT;
CREATE TABLE "MenuResourceFile" (
  "KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK ("KeyLink" <> '' AND "KeyLink" NOT GLOB '*[^ -~]*' AND length("KeyLink") = length(CAST("KeyLink" AS BLOB))),
  "MenuResourceKey" TEXT COLLATE NOCASE CHECK ("MenuResourceKey" <> ''),
  "name_" TEXT,
  "time" REAL CHECK (abs("time") <= 1.7976931348623157e308),
  "size" INTEGER CHECK ("size" BETWEEN -2147483648 AND 2147483647),
  "data" BLOB NOT NULL,
  CHECK ("size" IS length("data"))) STRICT;
CREATE INDEX "Menu.FolderKey" ON "Menu" ("FolderKey");
CREATE INDEX "Menu.MenuResourceKey" ON "Menu" ("MenuResourceKey");
CREATE INDEX "Menu.parent" ON "Menu" ("parent");
CREATE INDEX "MenuFolder.ParentKey" ON "MenuFolder" ("ParentKey");
CREATE INDEX "MenuResourceFolder.ParentKey" ON "MenuResourceFolder" ("ParentKey");
CREATE INDEX "MenuResource.MenuResourceFolderKey" ON "MenuResource" ("MenuResourceFolderKey");
CREATE INDEX "MenuResource.type_.name_" ON "MenuResource" ("type_", "name_");
CREATE INDEX "MenuResourceFile.MenuResourceKey" ON "MenuResourceFile" ("MenuResourceKey");
