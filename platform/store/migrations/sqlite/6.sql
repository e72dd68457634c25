-- Bytes of contents that are replaced or deleted are kept.
CREATE TABLE "NciVersion" ("id" INTEGER PRIMARY KEY AUTOINCREMENT, "event" INTEGER,
  "login" TEXT NOT NULL DEFAULT '', "time" REAL NOT NULL,
  "KeyLink" TEXT COLLATE NOCASE NOT NULL, "MenuResourceKey" TEXT COLLATE NOCASE, "name_" TEXT,
  "fileTime" REAL, "size" INTEGER NOT NULL, "sha256" TEXT, "data" BLOB NOT NULL) STRICT;
CREATE INDEX "NciVersion.KeyLink" ON "NciVersion" (lower("KeyLink"));
CREATE INDEX "NciVersion.MenuResourceKey" ON "NciVersion" (lower("MenuResourceKey"));
CREATE INDEX "NciVersion.pending" ON "NciVersion" ("KeyLink") WHERE "event" IS NULL;
