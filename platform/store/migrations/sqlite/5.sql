-- Changes know their group, and where they were made.
ALTER TABLE "NciEvent" ADD COLUMN "group" INTEGER NOT NULL DEFAULT 0;
ALTER TABLE "NciEvent" ADD COLUMN "client" TEXT NOT NULL DEFAULT '';
ALTER TABLE "NciEvent" ADD COLUMN "place" TEXT NOT NULL DEFAULT '';
ALTER TABLE "NciEvent" ADD COLUMN "undoes" TEXT NOT NULL DEFAULT '';
ALTER TABLE "NciWriter" ADD COLUMN "group" INTEGER;
ALTER TABLE "NciWriter" ADD COLUMN "client" TEXT NOT NULL DEFAULT '';
ALTER TABLE "NciWriter" ADD COLUMN "place" TEXT NOT NULL DEFAULT '';
-- Which changes one call made was not kept: those of one login at one moment are taken together.
UPDATE "NciEvent" SET "group" = g."first" FROM (SELECT "id", max("begins") OVER (ORDER BY "id")
  AS "first" FROM (SELECT "id", CASE WHEN "login" = lag("login") OVER w AND
    "time" = lag("time") OVER w THEN 0 ELSE "id" END AS "begins" FROM "NciEvent"
    WINDOW w AS (ORDER BY "id"))) AS g WHERE g."id" = "NciEvent"."id";
CREATE INDEX "NciEvent.group" ON "NciEvent" ("group");
CREATE INDEX "NciEvent.key" ON "NciEvent" (lower("key"));
CREATE INDEX "NciEvent.login" ON "NciEvent" ("login");
CREATE INDEX "NciEvent.time" ON "NciEvent" ("time");
CREATE INDEX "NciEvent.undoes" ON "NciEvent" ("id") WHERE "undoes" <> '';
