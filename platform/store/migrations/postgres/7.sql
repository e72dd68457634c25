-- Bytes of contents that are replaced or deleted are kept.
CREATE TABLE public."NciVersion" ("id" bigint PRIMARY KEY, "event" bigint,
  "login" text NOT NULL DEFAULT '', "time" double precision NOT NULL,
  "KeyLink" text COLLATE "C" NOT NULL, "MenuResourceKey" text COLLATE "C",
  "name_" text COLLATE "C", "fileTime" double precision, "size" bigint NOT NULL,
  "sha256" text COLLATE "C");
CREATE SEQUENCE public."NciVersionId" OWNED BY public."NciVersion"."id";
CREATE TABLE public."NciVersionData" (
  "id" bigint NOT NULL REFERENCES public."NciVersion" ON DELETE CASCADE,
  "part" integer NOT NULL, "data" bytea NOT NULL, PRIMARY KEY ("id", "part"));
ALTER TABLE public."NciVersionData" ALTER COLUMN "data" SET STORAGE EXTERNAL;
CREATE INDEX ON public."NciVersion" (lower("KeyLink"));
CREATE INDEX ON public."NciVersion" (lower("MenuResourceKey"));
