-- The store has an identity.
CREATE TABLE "NciStore" ("identity" TEXT NOT NULL) STRICT;
INSERT INTO "NciStore" SELECT lower(substr(h, 1, 8) || '-' || substr(h, 9, 4) || '-4' ||
  substr(h, 14, 3) || '-8' || substr(h, 18, 3) || '-' || substr(h, 21, 12))
  FROM (SELECT hex(randomblob(16)) AS h);
