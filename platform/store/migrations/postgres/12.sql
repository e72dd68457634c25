-- Most records have no link of some kind: they need no room in its index, and no time when many are
-- written at once.
DROP INDEX IF EXISTS public."Menu_left_idx", public."Menu_left_idx1", public."Menu_left_idx2",
  public."MenuFolder_left_idx", public."MenuResourceFolder_left_idx",
  public."MenuResource_left_idx";
CREATE INDEX ON public."Menu" (left("FolderKey", 100)) WHERE "FolderKey" IS NOT NULL;
CREATE INDEX ON public."Menu" (left(lower("MenuResourceKey"), 100))
  WHERE "MenuResourceKey" IS NOT NULL;
CREATE INDEX ON public."Menu" (left(lower("parent"), 100)) WHERE "parent" IS NOT NULL;
CREATE INDEX ON public."MenuFolder" (left(lower("ParentKey"), 100)) WHERE "ParentKey" IS NOT NULL;
CREATE INDEX ON public."MenuResourceFolder" (left(lower("ParentKey"), 100))
  WHERE "ParentKey" IS NOT NULL;
CREATE INDEX ON public."MenuResource" (left(lower("MenuResourceFolderKey"), 100))
  WHERE "MenuResourceFolderKey" IS NOT NULL;
