-- Everything.
DO $orvo$ BEGIN
  IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'orvo_engineer') THEN
    CREATE ROLE orvo_engineer NOLOGIN;
  END IF;
EXCEPTION WHEN duplicate_object OR unique_violation THEN NULL;
END $orvo$;
DO $orvo$ BEGIN
  IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'orvo_viewer') THEN
    CREATE ROLE orvo_viewer NOLOGIN;
  END IF;
EXCEPTION WHEN duplicate_object OR unique_violation THEN NULL;
END $orvo$;

CREATE TABLE public."NciEvent" ("id" bigint PRIMARY KEY, "code" integer NOT NULL,
  "tableName" text NOT NULL, "key" text NOT NULL, "login" text NOT NULL,
  "time" double precision NOT NULL, "after" text NOT NULL, "before" text NOT NULL,
  "call" text NOT NULL);
CREATE SEQUENCE public."NciEventId" OWNED BY public."NciEvent"."id";
CREATE TABLE public."NciPruned" ("id" bigint NOT NULL);
INSERT INTO public."NciPruned" VALUES (0);
CREATE TABLE public."NciStore" ("version" integer NOT NULL);
INSERT INTO public."NciStore" VALUES (0);

CREATE TABLE public."Users" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "login_" text COLLATE "C",
  "lastName" text COLLATE "C",
  "firstName" text COLLATE "C",
  "midlName" text COLLATE "C",
  "program" boolean);
CREATE UNIQUE INDEX ON public."Users" (lower("KeyLink"));
CREATE TABLE public."MenuFileExt" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "fileExt" text COLLATE "C");
CREATE UNIQUE INDEX ON public."MenuFileExt" (lower("KeyLink"));
CREATE TABLE public."MenuResourceFolder" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "ParentKey" text COLLATE "C" CHECK ("ParentKey" <> ''),
  "type_" integer,
  "caption" text COLLATE "C");
CREATE UNIQUE INDEX ON public."MenuResourceFolder" (lower("KeyLink"));
CREATE TABLE public."MenuResource" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "MenuResourceFolderKey" text COLLATE "C" CHECK ("MenuResourceFolderKey" <> ''),
  "name_" text COLLATE "C",
  "type_" integer,
  "caption" text COLLATE "C",
  "params" text COLLATE "C",
  "ico" text COLLATE "C",
  "UsersKey" text COLLATE "C" CHECK ("UsersKey" <> ''),
  "dateTimeEdit" double precision CHECK (abs("dateTimeEdit") <= 1.7976931348623157e308));
CREATE UNIQUE INDEX ON public."MenuResource" (lower("KeyLink"));
CREATE TABLE public."MenuFolder" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "ParentKey" text COLLATE "C" CHECK ("ParentKey" <> ''),
  "caption" text COLLATE "C",
  "order_" text COLLATE "C",
  "isFolder" boolean);
CREATE UNIQUE INDEX ON public."MenuFolder" (lower("KeyLink"));
CREATE TABLE public."Menu" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "parent" text COLLATE "C" CHECK ("parent" <> ''),
  "FolderKey" text COLLATE "C",
  "caption" text COLLATE "C",
  "order_" integer,
  "ico" text COLLATE "C",
  "separator" boolean,
  "oneCopy" boolean,
  "MenuResourceKey" text COLLATE "C" CHECK ("MenuResourceKey" <> ''),
  "params" text COLLATE "C");
CREATE UNIQUE INDEX ON public."Menu" (lower("KeyLink"));
CREATE TABLE public."MenuResourceFile" (
  "KeyLink" text COLLATE "C" PRIMARY KEY CHECK ("KeyLink" ~ '^[ -~]+$'),
  "MenuResourceKey" text COLLATE "C" CHECK ("MenuResourceKey" <> ''),
  "name_" text COLLATE "C",
  "time" double precision CHECK (abs("time") <= 1.7976931348623157e308),
  "size" integer);
CREATE UNIQUE INDEX ON public."MenuResourceFile" (lower("KeyLink"));

CREATE TABLE public."MenuResourceFileData" (
  "KeyLink" text COLLATE "C" NOT NULL REFERENCES public."MenuResourceFile"
    ON UPDATE CASCADE ON DELETE CASCADE,
  "part" integer NOT NULL, "data" bytea NOT NULL, PRIMARY KEY ("KeyLink", "part"));
ALTER TABLE public."MenuResourceFileData" ALTER COLUMN "data" SET STORAGE EXTERNAL;
CREATE INDEX ON public."Menu" USING hash ("FolderKey");
CREATE INDEX ON public."Menu" USING hash (lower("MenuResourceKey"));
CREATE INDEX ON public."Menu" USING hash (lower("parent"));
CREATE INDEX ON public."MenuFolder" USING hash (lower("ParentKey"));
CREATE INDEX ON public."MenuResourceFolder" USING hash (lower("ParentKey"));
CREATE INDEX ON public."MenuResource" USING hash (lower("MenuResourceFolderKey"));
CREATE INDEX ON public."MenuResource" ("type_");
CREATE INDEX ON public."MenuResourceFile" USING hash (lower("MenuResourceKey"));
