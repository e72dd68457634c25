-- Changes know their group, and where they were made.
ALTER TABLE public."NciEvent" ADD COLUMN "group" bigint, ADD COLUMN "xact" xid8,
  ADD COLUMN "client" text NOT NULL DEFAULT '', ADD COLUMN "place" text NOT NULL DEFAULT '',
  ADD COLUMN "undoes" text NOT NULL DEFAULT '';
UPDATE public."NciEvent" SET "group" = "id";
UPDATE public."NciEvent" e SET "group" = g."first" FROM (SELECT "call", min("id") AS "first"
  FROM public."NciEvent" WHERE "call" <> '' GROUP BY "call" HAVING count(*) > 1) g
  WHERE e."call" = g."call" AND e."id" <> g."first";
ALTER TABLE public."NciEvent" ALTER COLUMN "group" SET NOT NULL;
CREATE INDEX ON public."NciEvent" ("group", "id");
CREATE INDEX ON public."NciEvent" (lower("key"), "id");
CREATE INDEX ON public."NciEvent" ("login", "id");
CREATE INDEX ON public."NciEvent" ("time");
CREATE INDEX ON public."NciEvent" ("id") WHERE "undoes" <> '';
