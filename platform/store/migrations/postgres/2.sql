-- Stored forms and files are found by their names, however many there are.
CREATE INDEX ON public."MenuResource" USING hash ((lower(translate("name_", 'АБВГҐЃДЂЕЁЄЖЗЅИІЇЙЈКЌЛЉМНЊОПРСТЋУЎФХЦЧЏШЩЪЫЬЭЮЯ', 'абвгґѓдђеёєжзѕиіїйјкќлљмнњопрстћуўфхцчџшщъыьэюя')))) WHERE "type_" = 3;
CREATE INDEX ON public."MenuResource" USING hash ((lower(coalesce("MenuResourceFolderKey", '')) || '/' || lower(translate("name_", 'АБВГҐЃДЂЕЁЄЖЗЅИІЇЙЈКЌЛЉМНЊОПРСТЋУЎФХЦЧЏШЩЪЫЬЭЮЯ', 'абвгґѓдђеёєжзѕиіїйјкќлљмнњопрстћуўфхцчџшщъыьэюя')))) WHERE "type_" = 4;
