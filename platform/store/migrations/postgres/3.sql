-- The store has an identity, and a lock that only its writers can take.
ALTER TABLE public."NciStore" ADD COLUMN "identity" text NOT NULL DEFAULT gen_random_uuid();
ALTER TABLE public."NciStore" ALTER COLUMN "identity" DROP DEFAULT;
CREATE TABLE public."NciLock" ();
