-- Links are found by B-trees: in a hash index all records of one folder share a chain of pages, which
-- every new one walks. A link may be longer than an index takes, so its first hundred characters
-- stand there.
DROP INDEX IF EXISTS public."Menu_FolderKey_idx", public."Menu_lower_idx1", public."Menu_lower_idx2",
  public."MenuFolder_lower_idx1", public."MenuResourceFolder_lower_idx1",
  public."MenuResource_lower_idx1";
CREATE INDEX ON public."Menu" (left("FolderKey", 100));
CREATE INDEX ON public."Menu" (left(lower("MenuResourceKey"), 100));
CREATE INDEX ON public."Menu" (left(lower("parent"), 100));
CREATE INDEX ON public."MenuFolder" (left(lower("ParentKey"), 100));
CREATE INDEX ON public."MenuResourceFolder" (left(lower("ParentKey"), 100));
CREATE INDEX ON public."MenuResource" (left(lower("MenuResourceFolderKey"), 100));
