-- Up to which change versions may be missing: before there were any, and where they were forgotten.
ALTER TABLE "NciPruned" ADD COLUMN "versions" INTEGER NOT NULL DEFAULT 0;
UPDATE "NciPruned" SET "versions" = coalesce((SELECT max("id") FROM "NciEvent"), 0);
