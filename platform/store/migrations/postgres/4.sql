-- Contents have a checksum of their bytes, beside them.
CREATE TABLE public."MenuResourceFileSum" (
  "KeyLink" text COLLATE "C" PRIMARY KEY REFERENCES public."MenuResourceFile"
    ON UPDATE CASCADE ON DELETE CASCADE,
  "sha256" text COLLATE "C" NOT NULL);
INSERT INTO public."MenuResourceFileSum" SELECT f."KeyLink", encode(sha256(coalesce(
    (SELECT string_agg(d."data", '' ORDER BY d."part") FROM public."MenuResourceFileData" d
      WHERE d."KeyLink" = f."KeyLink"), '')), 'hex') FROM public."MenuResourceFile" f;
-- A session that went idle in a transaction keeps everybody from writing.
DO $orvo$ BEGIN
  EXECUTE format('ALTER DATABASE %I SET idle_in_transaction_session_timeout = %L',
    current_database(), '5min');
EXCEPTION WHEN insufficient_privilege THEN NULL;
END $orvo$;
