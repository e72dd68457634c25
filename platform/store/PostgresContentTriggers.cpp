// The triggers of a PostgreSQL store that keep the bytes of contents, and log when bytes change.
// They are written under the rules of PostgresTriggers.cpp.
#include "platform/store/PostgresTriggers.h"

#include "frame/Vocabulary.h"
#include "platform/store/ContentChecksum.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

/// Keeps the bytes of contents: before a content is deleted, and when parts of it were changed or
/// deleted. The change that takes them away is in the log already, if this transaction wrote the
/// content's row before, or comes and puts its id there.
constexpr const char* keepDeleted = R"(DECLARE
  v_id pg_catalog.int8 := pg_catalog.nextval('public."NciVersionId"');
BEGIN
  INSERT INTO public."NciVersion" VALUES (v_id, NULL, '',
    pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()), OLD."KeyLink",
    OLD."MenuResourceKey", OLD."name_", OLD."time",
    (SELECT coalesce(pg_catalog.sum(pg_catalog.octet_length("data")), 0)
      FROM public."MenuResourceFileData" WHERE "KeyLink" OPERATOR(pg_catalog.=) OLD."KeyLink"),
    (SELECT "sha256" FROM public."MenuResourceFileSum"
      WHERE "KeyLink" OPERATOR(pg_catalog.=) OLD."KeyLink"));
  INSERT INTO public."NciVersionData" SELECT v_id, "part", "data"
    FROM public."MenuResourceFileData" WHERE "KeyLink" OPERATOR(pg_catalog.=) OLD."KeyLink";
  RETURN OLD;
END )";
/// Of the content v_file: the change of this transaction that its bytes go with, and the time that
/// the file had before.
constexpr const char* findContentEvent = R"(    v_event := NULL;
    v_login := NULL;
    v_before := NULL;
    SELECT "id", "login", "before" INTO v_event, v_login, v_before FROM public."NciEvent"
      WHERE pg_catalog.lower("key") OPERATOR(pg_catalog.=) pg_catalog.lower(v_file."KeyLink")
        AND ("tableName" OPERATOR(pg_catalog.||) '') OPERATOR(pg_catalog.=) 'MenuResourceFile'
        AND "xact" OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id()
      ORDER BY "id" DESC LIMIT 1;
    IF pg_catalog.jsonb_exists(v_before::pg_catalog.jsonb, 'time') THEN
      v_file."time" :=
        pg_catalog.jsonb_extract_path_text(v_before::pg_catalog.jsonb, 'time')::pg_catalog.float8;
    END IF;
)";

std::string keepReplaced() {
    return R"sql(  FOR v_file IN SELECT f.* FROM public."MenuResourceFile" AS f
      WHERE f."KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM gone) LOOP
    IF TG_OP OPERATOR(pg_catalog.=) 'UPDATE' THEN
      CONTINUE WHEN NOT EXISTS (SELECT 1 FROM gone AS g
        WHERE g."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink" AND NOT EXISTS (SELECT 1
          FROM come AS c WHERE c."KeyLink" OPERATOR(pg_catalog.=) g."KeyLink"
            AND c."part" OPERATOR(pg_catalog.=) g."part"
            AND c."data" OPERATOR(pg_catalog.=) g."data"));
    END IF;
)sql" + std::string(findContentEvent) +
           R"sql(    v_id := pg_catalog.nextval('public."NciVersionId"');
    INSERT INTO public."NciVersion" VALUES (v_id, v_event, coalesce(v_login, ''),
      pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()), v_file."KeyLink",
      v_file."MenuResourceKey", v_file."name_", v_file."time", 0,
      (SELECT "sha256" FROM public."MenuResourceFileSum"
        WHERE "KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink"));
    INSERT INTO public."NciVersionData" SELECT v_id, "part", "data" FROM gone
      WHERE "KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink";
    IF TG_OP OPERATOR(pg_catalog.=) 'UPDATE' THEN
      INSERT INTO public."NciVersionData" SELECT v_id, "part", "data"
        FROM public."MenuResourceFileData" AS d
        WHERE d."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink" AND NOT EXISTS (SELECT 1
          FROM come AS c WHERE c."KeyLink" OPERATOR(pg_catalog.=) d."KeyLink"
            AND c."part" OPERATOR(pg_catalog.=) d."part");
    ELSE
      INSERT INTO public."NciVersionData" SELECT v_id, "part", "data"
        FROM public."MenuResourceFileData"
        WHERE "KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink";
    END IF;
    UPDATE public."NciVersion" SET )sql" +
           identifier(field::size) + R"sql( = (SELECT
        coalesce(pg_catalog.sum(pg_catalog.octet_length("data")), 0)
        FROM public."NciVersionData" AS d WHERE d."id" OPERATOR(pg_catalog.=) v_id)
      WHERE "id" OPERATOR(pg_catalog.=) v_id;
  END LOOP;
)sql";
}

/// A content without a byte has no part that could go: it is replaced when it gets its first ones,
/// unless it is new, or its bytes went before in this transaction.
std::string keepEmpty() {
    return R"sql(  FOR v_file IN SELECT f.* FROM public."MenuResourceFile" AS f
      WHERE f."KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM come) LOOP
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."MenuResourceFileData" AS d
      WHERE d."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink"
        AND d."part" OPERATOR(pg_catalog.<>) ALL (SELECT c."part" FROM come AS c
          WHERE c."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink"));
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."NciEvent"
      WHERE pg_catalog.lower("key") OPERATOR(pg_catalog.=) pg_catalog.lower(v_file."KeyLink")
        AND ("tableName" OPERATOR(pg_catalog.||) '') OPERATOR(pg_catalog.=) 'MenuResourceFile'
        AND "code" OPERATOR(pg_catalog.=) )sql" +
           std::to_string(OrvoEventInsert) + R"sql(
        AND "xact" OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id());
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."NciVersion" AS v
      WHERE pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(v_file."KeyLink")
        AND (v."event" IS NULL OR (SELECT "xact" FROM public."NciEvent" WHERE "id"
          OPERATOR(pg_catalog.=) v."event") OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id()));
)sql" + findContentEvent +
           R"sql(    INSERT INTO public."NciVersion" VALUES (
      pg_catalog.nextval('public."NciVersionId"'), v_event, coalesce(v_login, ''),
      pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()), v_file."KeyLink",
      v_file."MenuResourceKey", v_file."name_", v_file."time", 0, )sql" +
           literal(Checksum().text()) + R"sql();
  END LOOP;
)sql";
}

} // namespace

void addContentTriggers(Definitions& all, const TableDef& content) {
    const std::string data = "MenuResourceFileData";
    const auto touch = [&](const char* unless, const char* rows) {
        return std::string("  IF TG_OP OPERATOR(pg_catalog.<>) '") + unless +
               "' THEN\n    UPDATE " + qualified(content.name) +
               " SET \"KeyLink\" = \"KeyLink\"\n    WHERE xmin OPERATOR(pg_catalog.<>) "
               "pg_catalog.pg_current_xact_id()::pg_catalog.xid\n      AND \"KeyLink\" "
               "OPERATOR(pg_catalog.=) ANY (SELECT \"KeyLink\" FROM " +
               rows + ");\n  END IF;\n";
    };
    const std::string name = data + ".log";
    all.push_back(
        Function{name, "trigger",
                 std::string("DECLARE\n  v_file public.\"MenuResourceFile\";\n"
                             "  v_id pg_catalog.int8;\n  v_event pg_catalog.int8;\n"
                             "  v_login pg_catalog.text;\n  v_before pg_catalog.text;\n"
                             "BEGIN\n  IF TG_OP OPERATOR(pg_catalog.<>) 'INSERT' THEN\n") +
                     keepReplaced() + "  ELSE\n" + keepEmpty() + "  END IF;\n" +
                     touch("INSERT", "gone") + touch("DELETE", "come") + "  RETURN NULL;\nEND ",
                 true, true, true});
    all.push_back(Function{"NciKeep", "trigger", keepDeleted, true});
    all.push_back(Trigger{"keep", content.name, "BEFORE DELETE", "ROW", "NciKeep"});
    const auto after = [&](const char* trigger, const char* when, const char* rows) {
        all.push_back(Trigger{trigger, data, when, "STATEMENT", name, rows});
    };
    after("inserted", "AFTER INSERT", "REFERENCING NEW TABLE AS come ");
    after("deleted", "AFTER DELETE", "REFERENCING OLD TABLE AS gone ");
    after("updated", "AFTER UPDATE", "REFERENCING OLD TABLE AS gone NEW TABLE AS come ");
    all.push_back(
        Trigger{"lock", data, "BEFORE INSERT OR UPDATE OR DELETE", "STATEMENT", "NciLock"});
    all.push_back(Trigger{"truncate", data, "BEFORE TRUNCATE", "STATEMENT", "NciTruncate"});
}

} // namespace orvo::store::postgres
