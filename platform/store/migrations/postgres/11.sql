-- Up to which change versions may be missing: before there were any, of contents without a byte, and
-- where they were forgotten.
ALTER TABLE public."NciPruned" ADD COLUMN IF NOT EXISTS "versions" bigint NOT NULL DEFAULT 0;
UPDATE public."NciPruned" SET "versions" = coalesce((SELECT max("id") FROM public."NciEvent"), 0);
