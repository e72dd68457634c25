-- A session that waits for a lock in this database gives up in the end: others wait behind it.
-- The functions hold whoever writes to limits.
DO $orvo$ BEGIN
  EXECUTE format('ALTER DATABASE %I SET lock_timeout = %L', current_database(), '30s');
EXCEPTION WHEN insufficient_privilege THEN NULL;
END $orvo$;
