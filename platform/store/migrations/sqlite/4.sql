-- Contents have a checksum of their bytes, beside them. The function is the program's.
CREATE TABLE "MenuResourceFileSum" ("KeyLink" TEXT COLLATE NOCASE NOT NULL PRIMARY KEY,
  "sha256" TEXT NOT NULL) STRICT;
INSERT INTO "MenuResourceFileSum" SELECT "KeyLink", orvo_sha256("data") FROM "MenuResourceFile";
