--
-- PostgreSQL database dump
--


-- Dumped from database version 15.18 (Debian 15.18-0+deb12u1)
-- Dumped by pg_dump version 15.18 (Debian 15.18-0+deb12u1)

SET statement_timeout = 0;
SET lock_timeout = 0;
SET idle_in_transaction_session_timeout = 0;
SET client_encoding = 'UTF8';
SET standard_conforming_strings = on;
SELECT pg_catalog.set_config('search_path', '', false);
SET check_function_bodies = false;
SET xmloption = content;
SET client_min_messages = warning;
SET row_security = off;

--
-- Name: Menu.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."Menu.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'Menu',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"parent":', coalesce(pg_catalog.to_json(OLD."parent")::pg_catalog.text, 'null'), ',"FolderKey":', coalesce(pg_catalog.to_json(OLD."FolderKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(OLD."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(OLD."order_")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(OLD."ico")::pg_catalog.text, 'null'), ',"separator":', coalesce(pg_catalog.to_json(OLD."separator")::pg_catalog.text, 'null'), ',"oneCopy":', coalesce(pg_catalog.to_json(OLD."oneCopy")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(OLD."MenuResourceKey")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(OLD."params")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'Menu',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"parent":', coalesce(pg_catalog.to_json(NEW."parent")::pg_catalog.text, 'null'), ',"FolderKey":', coalesce(pg_catalog.to_json(NEW."FolderKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(NEW."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(NEW."order_")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(NEW."ico")::pg_catalog.text, 'null'), ',"separator":', coalesce(pg_catalog.to_json(NEW."separator")::pg_catalog.text, 'null'), ',"oneCopy":', coalesce(pg_catalog.to_json(NEW."oneCopy")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(NEW."MenuResourceKey")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(NEW."params")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'Menu',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"parent":', coalesce(pg_catalog.to_json(n."parent")::pg_catalog.text, 'null'), ',"FolderKey":', coalesce(pg_catalog.to_json(n."FolderKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(n."order_")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(n."ico")::pg_catalog.text, 'null'), ',"separator":', coalesce(pg_catalog.to_json(n."separator")::pg_catalog.text, 'null'), ',"oneCopy":', coalesce(pg_catalog.to_json(n."oneCopy")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(n."MenuResourceKey")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(n."params")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'Menu',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"parent":', coalesce(pg_catalog.to_json(o."parent")::pg_catalog.text, 'null'), ',"FolderKey":', coalesce(pg_catalog.to_json(o."FolderKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(o."order_")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(o."ico")::pg_catalog.text, 'null'), ',"separator":', coalesce(pg_catalog.to_json(o."separator")::pg_catalog.text, 'null'), ',"oneCopy":', coalesce(pg_catalog.to_json(o."oneCopy")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(o."MenuResourceKey")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(o."params")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'Menu',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."parent" OPERATOR(pg_catalog.=) n."parent", o."parent" IS NULL AND n."parent" IS NULL) THEN '' ELSE pg_catalog.concat(',"parent":', coalesce(pg_catalog.to_json(n."parent")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."FolderKey" OPERATOR(pg_catalog.=) n."FolderKey", o."FolderKey" IS NULL AND n."FolderKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"FolderKey":', coalesce(pg_catalog.to_json(n."FolderKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."order_" OPERATOR(pg_catalog.=) n."order_", o."order_" IS NULL AND n."order_" IS NULL) THEN '' ELSE pg_catalog.concat(',"order_":', coalesce(pg_catalog.to_json(n."order_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."ico" OPERATOR(pg_catalog.=) n."ico", o."ico" IS NULL AND n."ico" IS NULL) THEN '' ELSE pg_catalog.concat(',"ico":', coalesce(pg_catalog.to_json(n."ico")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."separator" OPERATOR(pg_catalog.=) n."separator", o."separator" IS NULL AND n."separator" IS NULL) THEN '' ELSE pg_catalog.concat(',"separator":', coalesce(pg_catalog.to_json(n."separator")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."oneCopy" OPERATOR(pg_catalog.=) n."oneCopy", o."oneCopy" IS NULL AND n."oneCopy" IS NULL) THEN '' ELSE pg_catalog.concat(',"oneCopy":', coalesce(pg_catalog.to_json(n."oneCopy")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."MenuResourceKey" OPERATOR(pg_catalog.=) n."MenuResourceKey", o."MenuResourceKey" IS NULL AND n."MenuResourceKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceKey":', coalesce(pg_catalog.to_json(n."MenuResourceKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."params" OPERATOR(pg_catalog.=) n."params", o."params" IS NULL AND n."params" IS NULL) THEN '' ELSE pg_catalog.concat(',"params":', coalesce(pg_catalog.to_json(n."params")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."parent" OPERATOR(pg_catalog.=) n."parent", o."parent" IS NULL AND n."parent" IS NULL) THEN '' ELSE pg_catalog.concat(',"parent":', coalesce(pg_catalog.to_json(o."parent")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."FolderKey" OPERATOR(pg_catalog.=) n."FolderKey", o."FolderKey" IS NULL AND n."FolderKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"FolderKey":', coalesce(pg_catalog.to_json(o."FolderKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."order_" OPERATOR(pg_catalog.=) n."order_", o."order_" IS NULL AND n."order_" IS NULL) THEN '' ELSE pg_catalog.concat(',"order_":', coalesce(pg_catalog.to_json(o."order_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."ico" OPERATOR(pg_catalog.=) n."ico", o."ico" IS NULL AND n."ico" IS NULL) THEN '' ELSE pg_catalog.concat(',"ico":', coalesce(pg_catalog.to_json(o."ico")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."separator" OPERATOR(pg_catalog.=) n."separator", o."separator" IS NULL AND n."separator" IS NULL) THEN '' ELSE pg_catalog.concat(',"separator":', coalesce(pg_catalog.to_json(o."separator")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."oneCopy" OPERATOR(pg_catalog.=) n."oneCopy", o."oneCopy" IS NULL AND n."oneCopy" IS NULL) THEN '' ELSE pg_catalog.concat(',"oneCopy":', coalesce(pg_catalog.to_json(o."oneCopy")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."MenuResourceKey" OPERATOR(pg_catalog.=) n."MenuResourceKey", o."MenuResourceKey" IS NULL AND n."MenuResourceKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceKey":', coalesce(pg_catalog.to_json(o."MenuResourceKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."params" OPERATOR(pg_catalog.=) n."params", o."params" IS NULL AND n."params" IS NULL) THEN '' ELSE pg_catalog.concat(',"params":', coalesce(pg_catalog.to_json(o."params")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: MenuFileExt.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuFileExt.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuFileExt',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"fileExt":', coalesce(pg_catalog.to_json(OLD."fileExt")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuFileExt',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"fileExt":', coalesce(pg_catalog.to_json(NEW."fileExt")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuFileExt',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"fileExt":', coalesce(pg_catalog.to_json(n."fileExt")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuFileExt',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"fileExt":', coalesce(pg_catalog.to_json(o."fileExt")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'MenuFileExt',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."fileExt" OPERATOR(pg_catalog.=) n."fileExt", o."fileExt" IS NULL AND n."fileExt" IS NULL) THEN '' ELSE pg_catalog.concat(',"fileExt":', coalesce(pg_catalog.to_json(n."fileExt")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."fileExt" OPERATOR(pg_catalog.=) n."fileExt", o."fileExt" IS NULL AND n."fileExt" IS NULL) THEN '' ELSE pg_catalog.concat(',"fileExt":', coalesce(pg_catalog.to_json(o."fileExt")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: MenuFolder.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuFolder.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuFolder',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(OLD."ParentKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(OLD."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(OLD."order_")::pg_catalog.text, 'null'), ',"isFolder":', coalesce(pg_catalog.to_json(OLD."isFolder")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuFolder',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(NEW."ParentKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(NEW."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(NEW."order_")::pg_catalog.text, 'null'), ',"isFolder":', coalesce(pg_catalog.to_json(NEW."isFolder")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuFolder',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(n."ParentKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(n."order_")::pg_catalog.text, 'null'), ',"isFolder":', coalesce(pg_catalog.to_json(n."isFolder")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuFolder',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(o."ParentKey")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null'), ',"order_":', coalesce(pg_catalog.to_json(o."order_")::pg_catalog.text, 'null'), ',"isFolder":', coalesce(pg_catalog.to_json(o."isFolder")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'MenuFolder',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."ParentKey" OPERATOR(pg_catalog.=) n."ParentKey", o."ParentKey" IS NULL AND n."ParentKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"ParentKey":', coalesce(pg_catalog.to_json(n."ParentKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."order_" OPERATOR(pg_catalog.=) n."order_", o."order_" IS NULL AND n."order_" IS NULL) THEN '' ELSE pg_catalog.concat(',"order_":', coalesce(pg_catalog.to_json(n."order_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."isFolder" OPERATOR(pg_catalog.=) n."isFolder", o."isFolder" IS NULL AND n."isFolder" IS NULL) THEN '' ELSE pg_catalog.concat(',"isFolder":', coalesce(pg_catalog.to_json(n."isFolder")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."ParentKey" OPERATOR(pg_catalog.=) n."ParentKey", o."ParentKey" IS NULL AND n."ParentKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"ParentKey":', coalesce(pg_catalog.to_json(o."ParentKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."order_" OPERATOR(pg_catalog.=) n."order_", o."order_" IS NULL AND n."order_" IS NULL) THEN '' ELSE pg_catalog.concat(',"order_":', coalesce(pg_catalog.to_json(o."order_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."isFolder" OPERATOR(pg_catalog.=) n."isFolder", o."isFolder" IS NULL AND n."isFolder" IS NULL) THEN '' ELSE pg_catalog.concat(',"isFolder":', coalesce(pg_catalog.to_json(o."isFolder")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: MenuResource.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuResource.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET extra_float_digits TO '1'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResource',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(OLD."MenuResourceFolderKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(OLD."name_")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(OLD."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(OLD."caption")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(OLD."params")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(OLD."ico")::pg_catalog.text, 'null'), ',"UsersKey":', coalesce(pg_catalog.to_json(OLD."UsersKey")::pg_catalog.text, 'null'), ',"dateTimeEdit":', coalesce(pg_catalog.to_json(OLD."dateTimeEdit")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResource',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(NEW."MenuResourceFolderKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(NEW."name_")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(NEW."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(NEW."caption")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(NEW."params")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(NEW."ico")::pg_catalog.text, 'null'), ',"UsersKey":', coalesce(pg_catalog.to_json(NEW."UsersKey")::pg_catalog.text, 'null'), ',"dateTimeEdit":', coalesce(pg_catalog.to_json(NEW."dateTimeEdit")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    UPDATE public."MenuResourceFile"
      SET "MenuResourceKey" = NEW."KeyLink"
      WHERE pg_catalog.lower("MenuResourceKey")
        OPERATOR(pg_catalog.=) pg_catalog.lower(OLD."KeyLink");
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResource',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(n."MenuResourceFolderKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(n."name_")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(n."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(n."params")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(n."ico")::pg_catalog.text, 'null'), ',"UsersKey":', coalesce(pg_catalog.to_json(n."UsersKey")::pg_catalog.text, 'null'), ',"dateTimeEdit":', coalesce(pg_catalog.to_json(n."dateTimeEdit")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    DELETE FROM public."MenuResourceFile"
      WHERE pg_catalog.lower("MenuResourceKey") OPERATOR(pg_catalog.=) ANY
        (SELECT pg_catalog.lower("KeyLink") FROM gone);
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResource',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(o."MenuResourceFolderKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(o."name_")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(o."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null'), ',"params":', coalesce(pg_catalog.to_json(o."params")::pg_catalog.text, 'null'), ',"ico":', coalesce(pg_catalog.to_json(o."ico")::pg_catalog.text, 'null'), ',"UsersKey":', coalesce(pg_catalog.to_json(o."UsersKey")::pg_catalog.text, 'null'), ',"dateTimeEdit":', coalesce(pg_catalog.to_json(o."dateTimeEdit")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'MenuResource',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."MenuResourceFolderKey" OPERATOR(pg_catalog.=) n."MenuResourceFolderKey", o."MenuResourceFolderKey" IS NULL AND n."MenuResourceFolderKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(n."MenuResourceFolderKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."name_" OPERATOR(pg_catalog.=) n."name_", o."name_" IS NULL AND n."name_" IS NULL) THEN '' ELSE pg_catalog.concat(',"name_":', coalesce(pg_catalog.to_json(n."name_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."type_" OPERATOR(pg_catalog.=) n."type_", o."type_" IS NULL AND n."type_" IS NULL) THEN '' ELSE pg_catalog.concat(',"type_":', coalesce(pg_catalog.to_json(n."type_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."params" OPERATOR(pg_catalog.=) n."params", o."params" IS NULL AND n."params" IS NULL) THEN '' ELSE pg_catalog.concat(',"params":', coalesce(pg_catalog.to_json(n."params")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."ico" OPERATOR(pg_catalog.=) n."ico", o."ico" IS NULL AND n."ico" IS NULL) THEN '' ELSE pg_catalog.concat(',"ico":', coalesce(pg_catalog.to_json(n."ico")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."UsersKey" OPERATOR(pg_catalog.=) n."UsersKey", o."UsersKey" IS NULL AND n."UsersKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"UsersKey":', coalesce(pg_catalog.to_json(n."UsersKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."dateTimeEdit" OPERATOR(pg_catalog.=) n."dateTimeEdit", o."dateTimeEdit" IS NULL AND n."dateTimeEdit" IS NULL) THEN '' ELSE pg_catalog.concat(',"dateTimeEdit":', coalesce(pg_catalog.to_json(n."dateTimeEdit")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."MenuResourceFolderKey" OPERATOR(pg_catalog.=) n."MenuResourceFolderKey", o."MenuResourceFolderKey" IS NULL AND n."MenuResourceFolderKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceFolderKey":', coalesce(pg_catalog.to_json(o."MenuResourceFolderKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."name_" OPERATOR(pg_catalog.=) n."name_", o."name_" IS NULL AND n."name_" IS NULL) THEN '' ELSE pg_catalog.concat(',"name_":', coalesce(pg_catalog.to_json(o."name_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."type_" OPERATOR(pg_catalog.=) n."type_", o."type_" IS NULL AND n."type_" IS NULL) THEN '' ELSE pg_catalog.concat(',"type_":', coalesce(pg_catalog.to_json(o."type_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."params" OPERATOR(pg_catalog.=) n."params", o."params" IS NULL AND n."params" IS NULL) THEN '' ELSE pg_catalog.concat(',"params":', coalesce(pg_catalog.to_json(o."params")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."ico" OPERATOR(pg_catalog.=) n."ico", o."ico" IS NULL AND n."ico" IS NULL) THEN '' ELSE pg_catalog.concat(',"ico":', coalesce(pg_catalog.to_json(o."ico")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."UsersKey" OPERATOR(pg_catalog.=) n."UsersKey", o."UsersKey" IS NULL AND n."UsersKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"UsersKey":', coalesce(pg_catalog.to_json(o."UsersKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."dateTimeEdit" OPERATOR(pg_catalog.=) n."dateTimeEdit", o."dateTimeEdit" IS NULL AND n."dateTimeEdit" IS NULL) THEN '' ELSE pg_catalog.concat(',"dateTimeEdit":', coalesce(pg_catalog.to_json(o."dateTimeEdit")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: MenuResourceFile.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuResourceFile.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET extra_float_digits TO '1'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    WITH logged AS (INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResourceFile',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(OLD."MenuResourceKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(OLD."name_")::pg_catalog.text, 'null'), ',"time":', coalesce(pg_catalog.to_json(OLD."time")::pg_catalog.text, 'null'), ',"size":', coalesce(pg_catalog.to_json(OLD."size")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END RETURNING "id", "key")
    UPDATE public."NciVersion" AS v SET "event" = l."id", "login" = v_login FROM logged AS l
      WHERE v."event" IS NULL
        AND pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(l."key");
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResourceFile',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(NEW."MenuResourceKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(NEW."name_")::pg_catalog.text, 'null'), ',"time":', coalesce(pg_catalog.to_json(NEW."time")::pg_catalog.text, 'null'), ',"size":', coalesce(pg_catalog.to_json(NEW."size")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResourceFile',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(n."MenuResourceKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(n."name_")::pg_catalog.text, 'null'), ',"time":', coalesce(pg_catalog.to_json(n."time")::pg_catalog.text, 'null'), ',"size":', coalesce(pg_catalog.to_json(n."size")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    WITH logged AS (INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResourceFile',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"MenuResourceKey":', coalesce(pg_catalog.to_json(o."MenuResourceKey")::pg_catalog.text, 'null'), ',"name_":', coalesce(pg_catalog.to_json(o."name_")::pg_catalog.text, 'null'), ',"time":', coalesce(pg_catalog.to_json(o."time")::pg_catalog.text, 'null'), ',"size":', coalesce(pg_catalog.to_json(o."size")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o RETURNING "id", "key")
    UPDATE public."NciVersion" AS v SET "event" = l."id", "login" = v_login FROM logged AS l
      WHERE v."event" IS NULL
        AND pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(l."key");
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    WITH logged AS (INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'MenuResourceFile',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."MenuResourceKey" OPERATOR(pg_catalog.=) n."MenuResourceKey", o."MenuResourceKey" IS NULL AND n."MenuResourceKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceKey":', coalesce(pg_catalog.to_json(n."MenuResourceKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."name_" OPERATOR(pg_catalog.=) n."name_", o."name_" IS NULL AND n."name_" IS NULL) THEN '' ELSE pg_catalog.concat(',"name_":', coalesce(pg_catalog.to_json(n."name_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."time" OPERATOR(pg_catalog.=) n."time", o."time" IS NULL AND n."time" IS NULL) THEN '' ELSE pg_catalog.concat(',"time":', coalesce(pg_catalog.to_json(n."time")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."size" OPERATOR(pg_catalog.=) n."size", o."size" IS NULL AND n."size" IS NULL) THEN '' ELSE pg_catalog.concat(',"size":', coalesce(pg_catalog.to_json(n."size")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."MenuResourceKey" OPERATOR(pg_catalog.=) n."MenuResourceKey", o."MenuResourceKey" IS NULL AND n."MenuResourceKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"MenuResourceKey":', coalesce(pg_catalog.to_json(o."MenuResourceKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."name_" OPERATOR(pg_catalog.=) n."name_", o."name_" IS NULL AND n."name_" IS NULL) THEN '' ELSE pg_catalog.concat(',"name_":', coalesce(pg_catalog.to_json(o."name_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."time" OPERATOR(pg_catalog.=) n."time", o."time" IS NULL AND n."time" IS NULL) THEN '' ELSE pg_catalog.concat(',"time":', coalesce(pg_catalog.to_json(o."time")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."size" OPERATOR(pg_catalog.=) n."size", o."size" IS NULL AND n."size" IS NULL) THEN '' ELSE pg_catalog.concat(',"size":', coalesce(pg_catalog.to_json(o."size")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink" RETURNING "id", "key")
    UPDATE public."NciVersion" AS v SET "event" = l."id", "login" = v_login FROM logged AS l
      WHERE v."event" IS NULL
        AND pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(l."key");
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: MenuResourceFileData.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuResourceFileData.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET extra_float_digits TO '1'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $$
DECLARE
  v_file public."MenuResourceFile";
  v_id pg_catalog.int8;
  v_event pg_catalog.int8;
  v_login pg_catalog.text;
  v_before pg_catalog.text;
BEGIN
  IF TG_OP OPERATOR(pg_catalog.<>) 'INSERT' THEN
  FOR v_file IN SELECT f.* FROM public."MenuResourceFile" AS f
      WHERE f."KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM gone) LOOP
    IF TG_OP OPERATOR(pg_catalog.=) 'UPDATE' THEN
      CONTINUE WHEN NOT EXISTS (SELECT 1 FROM gone AS g
        WHERE g."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink" AND NOT EXISTS (SELECT 1
          FROM come AS c WHERE c."KeyLink" OPERATOR(pg_catalog.=) g."KeyLink"
            AND c."part" OPERATOR(pg_catalog.=) g."part"
            AND c."data" OPERATOR(pg_catalog.=) g."data"));
    END IF;
    v_event := NULL;
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
    v_id := pg_catalog.nextval('public."NciVersionId"');
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
    UPDATE public."NciVersion" SET "size" = (SELECT
        coalesce(pg_catalog.sum(pg_catalog.octet_length("data")), 0)
        FROM public."NciVersionData" AS d WHERE d."id" OPERATOR(pg_catalog.=) v_id)
      WHERE "id" OPERATOR(pg_catalog.=) v_id;
  END LOOP;
  ELSE
  FOR v_file IN SELECT f.* FROM public."MenuResourceFile" AS f
      WHERE f."KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM come) LOOP
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."MenuResourceFileData" AS d
      WHERE d."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink"
        AND d."part" OPERATOR(pg_catalog.<>) ALL (SELECT c."part" FROM come AS c
          WHERE c."KeyLink" OPERATOR(pg_catalog.=) v_file."KeyLink"));
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."NciEvent"
      WHERE pg_catalog.lower("key") OPERATOR(pg_catalog.=) pg_catalog.lower(v_file."KeyLink")
        AND ("tableName" OPERATOR(pg_catalog.||) '') OPERATOR(pg_catalog.=) 'MenuResourceFile'
        AND "code" OPERATOR(pg_catalog.=) 601
        AND "xact" OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id());
    CONTINUE WHEN EXISTS (SELECT 1 FROM public."NciVersion" AS v
      WHERE pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(v_file."KeyLink")
        AND (v."event" IS NULL OR (SELECT "xact" FROM public."NciEvent" WHERE "id"
          OPERATOR(pg_catalog.=) v."event") OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id()));
    v_event := NULL;
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
    INSERT INTO public."NciVersion" VALUES (
      pg_catalog.nextval('public."NciVersionId"'), v_event, coalesce(v_login, ''),
      pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()), v_file."KeyLink",
      v_file."MenuResourceKey", v_file."name_", v_file."time", 0, 'e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855');
  END LOOP;
  END IF;
  IF TG_OP OPERATOR(pg_catalog.<>) 'INSERT' THEN
    UPDATE public."MenuResourceFile" SET "KeyLink" = "KeyLink"
    WHERE xmin OPERATOR(pg_catalog.<>) pg_catalog.pg_current_xact_id()::pg_catalog.xid
      AND "KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM gone);
  END IF;
  IF TG_OP OPERATOR(pg_catalog.<>) 'DELETE' THEN
    UPDATE public."MenuResourceFile" SET "KeyLink" = "KeyLink"
    WHERE xmin OPERATOR(pg_catalog.<>) pg_catalog.pg_current_xact_id()::pg_catalog.xid
      AND "KeyLink" OPERATOR(pg_catalog.=) ANY (SELECT "KeyLink" FROM come);
  END IF;
  RETURN NULL;
END $$;


--
-- Name: MenuResourceFolder.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."MenuResourceFolder.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResourceFolder',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(OLD."ParentKey")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(OLD."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(OLD."caption")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResourceFolder',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(NEW."ParentKey")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(NEW."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(NEW."caption")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'MenuResourceFolder',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(n."ParentKey")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(n."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'MenuResourceFolder',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"ParentKey":', coalesce(pg_catalog.to_json(o."ParentKey")::pg_catalog.text, 'null'), ',"type_":', coalesce(pg_catalog.to_json(o."type_")::pg_catalog.text, 'null'), ',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'MenuResourceFolder',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."ParentKey" OPERATOR(pg_catalog.=) n."ParentKey", o."ParentKey" IS NULL AND n."ParentKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"ParentKey":', coalesce(pg_catalog.to_json(n."ParentKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."type_" OPERATOR(pg_catalog.=) n."type_", o."type_" IS NULL AND n."type_" IS NULL) THEN '' ELSE pg_catalog.concat(',"type_":', coalesce(pg_catalog.to_json(n."type_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(n."caption")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."ParentKey" OPERATOR(pg_catalog.=) n."ParentKey", o."ParentKey" IS NULL AND n."ParentKey" IS NULL) THEN '' ELSE pg_catalog.concat(',"ParentKey":', coalesce(pg_catalog.to_json(o."ParentKey")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."type_" OPERATOR(pg_catalog.=) n."type_", o."type_" IS NULL AND n."type_" IS NULL) THEN '' ELSE pg_catalog.concat(',"type_":', coalesce(pg_catalog.to_json(o."type_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."caption" OPERATOR(pg_catalog.=) n."caption", o."caption" IS NULL AND n."caption" IS NULL) THEN '' ELSE pg_catalog.concat(',"caption":', coalesce(pg_catalog.to_json(o."caption")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


--
-- Name: NciKeep(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciKeep"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
DECLARE
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
END $$;


--
-- Name: NciLock(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciLock"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
DECLARE
  v_idle pg_catalog.interval :=
    pg_catalog.current_setting('idle_in_transaction_session_timeout')::pg_catalog.interval;
BEGIN
  LOCK TABLE public."NciLock" IN EXCLUSIVE MODE;
  IF v_idle OPERATOR(pg_catalog.=) '0'::pg_catalog.interval
      OR v_idle OPERATOR(pg_catalog.>) '1 min'::pg_catalog.interval THEN
    PERFORM pg_catalog.set_config('idle_in_transaction_session_timeout', '60s', true);
  END IF;
  IF pg_catalog.current_setting('statement_timeout') OPERATOR(pg_catalog.=) '0' THEN
    PERFORM pg_catalog.set_config('statement_timeout', '10min', true);
  END IF;
  IF pg_catalog.pg_notification_queue_usage() OPERATOR(pg_catalog.<) 0.5::pg_catalog.float8 THEN
    PERFORM pg_catalog.pg_notify('orvo', '');
  END IF;
  RETURN NULL;
END $$;


--
-- Name: NciPrune(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciPrune"() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
BEGIN
  IF TG_OP OPERATOR(pg_catalog.=) 'TRUNCATE' THEN
    DELETE FROM public."NciEvent";
  ELSE
    UPDATE public."NciPruned" SET "id" = greatest("id", (SELECT pg_catalog.max("id") FROM gone));
  END IF;
  RETURN NULL;
END $$;


--
-- Name: NciRefuse(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciRefuse"() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
BEGIN
  RAISE EXCEPTION 'the log gives its ids itself' USING ERRCODE = 'insufficient_privilege';
END $$;


--
-- Name: NciTakeLock(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciTakeLock"() RETURNS void
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
DECLARE
  v_idle pg_catalog.interval :=
    pg_catalog.current_setting('idle_in_transaction_session_timeout')::pg_catalog.interval;
BEGIN
  LOCK TABLE public."NciLock" IN EXCLUSIVE MODE;
  IF v_idle OPERATOR(pg_catalog.=) '0'::pg_catalog.interval
      OR v_idle OPERATOR(pg_catalog.>) '1 min'::pg_catalog.interval THEN
    PERFORM pg_catalog.set_config('idle_in_transaction_session_timeout', '60s', true);
  END IF;
  IF pg_catalog.current_setting('statement_timeout') OPERATOR(pg_catalog.=) '0' THEN
    PERFORM pg_catalog.set_config('statement_timeout', '10min', true);
  END IF;
  IF pg_catalog.pg_notification_queue_usage() OPERATOR(pg_catalog.<) 0.5::pg_catalog.float8 THEN
    PERFORM pg_catalog.pg_notify('orvo', '');
  END IF;
END $$;


--
-- Name: NciTruncate(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."NciTruncate"() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path TO 'pg_catalog', 'pg_temp'
    AS $$
BEGIN
  EXECUTE pg_catalog.format('DELETE FROM %I.%I', TG_TABLE_SCHEMA, TG_TABLE_NAME);
  RETURN NULL;
END $$;


--
-- Name: Users.log(); Type: FUNCTION; Schema: public; Owner: -
--

CREATE FUNCTION public."Users.log"() RETURNS trigger
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path TO 'pg_catalog', 'pg_temp'
    SET enable_seqscan TO 'off'
    SET jit TO 'off'
    AS $_$
DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
  IF TG_LEVEL OPERATOR(pg_catalog.=) 'ROW' THEN
    v_id := pg_catalog.nextval('public."NciEventId"');
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'Users',
      OLD."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(OLD."KeyLink")::pg_catalog.text, 'null'), ',"login_":', coalesce(pg_catalog.to_json(OLD."login_")::pg_catalog.text, 'null'), ',"lastName":', coalesce(pg_catalog.to_json(OLD."lastName")::pg_catalog.text, 'null'), ',"firstName":', coalesce(pg_catalog.to_json(OLD."firstName")::pg_catalog.text, 'null'), ',"midlName":', coalesce(pg_catalog.to_json(OLD."midlName")::pg_catalog.text, 'null'), ',"program":', coalesce(pg_catalog.to_json(OLD."program")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
    v_id := pg_catalog.nextval('public."NciEventId"');
    v_undoes := '';
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'Users',
      NEW."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(NEW."KeyLink")::pg_catalog.text, 'null'), ',"login_":', coalesce(pg_catalog.to_json(NEW."login_")::pg_catalog.text, 'null'), ',"lastName":', coalesce(pg_catalog.to_json(NEW."lastName")::pg_catalog.text, 'null'), ',"firstName":', coalesce(pg_catalog.to_json(NEW."firstName")::pg_catalog.text, 'null'), ',"midlName":', coalesce(pg_catalog.to_json(NEW."midlName")::pg_catalog.text, 'null'), ',"program":', coalesce(pg_catalog.to_json(NEW."program")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'INSERT' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 601, 'Users',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(n."KeyLink")::pg_catalog.text, 'null'), ',"login_":', coalesce(pg_catalog.to_json(n."login_")::pg_catalog.text, 'null'), ',"lastName":', coalesce(pg_catalog.to_json(n."lastName")::pg_catalog.text, 'null'), ',"firstName":', coalesce(pg_catalog.to_json(n."firstName")::pg_catalog.text, 'null'), ',"midlName":', coalesce(pg_catalog.to_json(n."midlName")::pg_catalog.text, 'null'), ',"program":', coalesce(pg_catalog.to_json(n."program")::pg_catalog.text, 'null'), '}'),
      '{}', v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM come AS n;
  ELSIF TG_OP OPERATOR(pg_catalog.=) 'DELETE' THEN
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM gone LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 603, 'Users',
      o."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      '{}',
      pg_catalog.concat('{"KeyLink":', coalesce(pg_catalog.to_json(o."KeyLink")::pg_catalog.text, 'null'), ',"login_":', coalesce(pg_catalog.to_json(o."login_")::pg_catalog.text, 'null'), ',"lastName":', coalesce(pg_catalog.to_json(o."lastName")::pg_catalog.text, 'null'), ',"firstName":', coalesce(pg_catalog.to_json(o."firstName")::pg_catalog.text, 'null'), ',"midlName":', coalesce(pg_catalog.to_json(o."midlName")::pg_catalog.text, 'null'), ',"program":', coalesce(pg_catalog.to_json(o."program")::pg_catalog.text, 'null'), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM gone AS o;
  ELSE
    SELECT pg_catalog.nextval('public."NciEventId"') INTO v_id FROM come LIMIT 1;
    IF v_id IS NULL THEN
      RETURN NULL;
    END IF;
    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
    INSERT INTO public."NciEvent" SELECT
      CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_id ELSE pg_catalog.nextval('public."NciEventId"') END, 602, 'Users',
      n."KeyLink", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."login_" OPERATOR(pg_catalog.=) n."login_", o."login_" IS NULL AND n."login_" IS NULL) THEN '' ELSE pg_catalog.concat(',"login_":', coalesce(pg_catalog.to_json(n."login_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."lastName" OPERATOR(pg_catalog.=) n."lastName", o."lastName" IS NULL AND n."lastName" IS NULL) THEN '' ELSE pg_catalog.concat(',"lastName":', coalesce(pg_catalog.to_json(n."lastName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."firstName" OPERATOR(pg_catalog.=) n."firstName", o."firstName" IS NULL AND n."firstName" IS NULL) THEN '' ELSE pg_catalog.concat(',"firstName":', coalesce(pg_catalog.to_json(n."firstName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."midlName" OPERATOR(pg_catalog.=) n."midlName", o."midlName" IS NULL AND n."midlName" IS NULL) THEN '' ELSE pg_catalog.concat(',"midlName":', coalesce(pg_catalog.to_json(n."midlName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."program" OPERATOR(pg_catalog.=) n."program", o."program" IS NULL AND n."program" IS NULL) THEN '' ELSE pg_catalog.concat(',"program":', coalesce(pg_catalog.to_json(n."program")::pg_catalog.text, 'null')) END), 2), '}'),
      pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(CASE WHEN coalesce(o."login_" OPERATOR(pg_catalog.=) n."login_", o."login_" IS NULL AND n."login_" IS NULL) THEN '' ELSE pg_catalog.concat(',"login_":', coalesce(pg_catalog.to_json(o."login_")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."lastName" OPERATOR(pg_catalog.=) n."lastName", o."lastName" IS NULL AND n."lastName" IS NULL) THEN '' ELSE pg_catalog.concat(',"lastName":', coalesce(pg_catalog.to_json(o."lastName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."firstName" OPERATOR(pg_catalog.=) n."firstName", o."firstName" IS NULL AND n."firstName" IS NULL) THEN '' ELSE pg_catalog.concat(',"firstName":', coalesce(pg_catalog.to_json(o."firstName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."midlName" OPERATOR(pg_catalog.=) n."midlName", o."midlName" IS NULL AND n."midlName" IS NULL) THEN '' ELSE pg_catalog.concat(',"midlName":', coalesce(pg_catalog.to_json(o."midlName")::pg_catalog.text, 'null')) END,
      CASE WHEN coalesce(o."program" OPERATOR(pg_catalog.=) n."program", o."program" IS NULL AND n."program" IS NULL) THEN '' ELSE pg_catalog.concat(',"program":', coalesce(pg_catalog.to_json(o."program")::pg_catalog.text, 'null')) END), 2), '}'), v_call,
      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, CASE pg_catalog.row_number() OVER () WHEN 1 THEN v_undoes ELSE '' END
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink";
  END IF;
  RETURN NULL;
END $_$;


SET default_tablespace = '';

SET default_table_access_method = heap;

--
-- Name: Menu; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."Menu" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    parent text COLLATE pg_catalog."C",
    "FolderKey" text COLLATE pg_catalog."C",
    caption text COLLATE pg_catalog."C",
    order_ integer,
    ico text COLLATE pg_catalog."C",
    separator boolean,
    "oneCopy" boolean,
    "MenuResourceKey" text COLLATE pg_catalog."C",
    params text COLLATE pg_catalog."C",
    CONSTRAINT "Menu_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text)),
    CONSTRAINT "Menu_MenuResourceKey_check" CHECK (("MenuResourceKey" <> ''::text)),
    CONSTRAINT "Menu_parent_check" CHECK ((parent <> ''::text))
);


--
-- Name: MenuFileExt; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuFileExt" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "fileExt" text COLLATE pg_catalog."C",
    CONSTRAINT "MenuFileExt_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text))
);


--
-- Name: MenuFolder; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuFolder" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "ParentKey" text COLLATE pg_catalog."C",
    caption text COLLATE pg_catalog."C",
    order_ text COLLATE pg_catalog."C",
    "isFolder" boolean,
    CONSTRAINT "MenuFolder_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text)),
    CONSTRAINT "MenuFolder_ParentKey_check" CHECK (("ParentKey" <> ''::text))
);


--
-- Name: MenuResource; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuResource" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "MenuResourceFolderKey" text COLLATE pg_catalog."C",
    name_ text COLLATE pg_catalog."C",
    type_ integer,
    caption text COLLATE pg_catalog."C",
    params text COLLATE pg_catalog."C",
    ico text COLLATE pg_catalog."C",
    "UsersKey" text COLLATE pg_catalog."C",
    "dateTimeEdit" double precision,
    CONSTRAINT "MenuResource_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text)),
    CONSTRAINT "MenuResource_MenuResourceFolderKey_check" CHECK (("MenuResourceFolderKey" <> ''::text)),
    CONSTRAINT "MenuResource_UsersKey_check" CHECK (("UsersKey" <> ''::text)),
    CONSTRAINT "MenuResource_dateTimeEdit_check" CHECK ((abs("dateTimeEdit") <= ('179769313486231570000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000'::numeric)::double precision))
);


--
-- Name: MenuResourceFile; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuResourceFile" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "MenuResourceKey" text COLLATE pg_catalog."C",
    name_ text COLLATE pg_catalog."C",
    "time" double precision,
    size integer,
    CONSTRAINT "MenuResourceFile_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text)),
    CONSTRAINT "MenuResourceFile_MenuResourceKey_check" CHECK (("MenuResourceKey" <> ''::text)),
    CONSTRAINT "MenuResourceFile_time_check" CHECK ((abs("time") <= ('179769313486231570000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000'::numeric)::double precision))
);


--
-- Name: MenuResourceFileData; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuResourceFileData" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    part integer NOT NULL,
    data bytea NOT NULL
);
ALTER TABLE ONLY public."MenuResourceFileData" ALTER COLUMN data SET STORAGE EXTERNAL;


--
-- Name: MenuResourceFileSum; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuResourceFileSum" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    sha256 text NOT NULL COLLATE pg_catalog."C"
);


--
-- Name: MenuResourceFolder; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."MenuResourceFolder" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "ParentKey" text COLLATE pg_catalog."C",
    type_ integer,
    caption text COLLATE pg_catalog."C",
    CONSTRAINT "MenuResourceFolder_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text)),
    CONSTRAINT "MenuResourceFolder_ParentKey_check" CHECK (("ParentKey" <> ''::text))
);


--
-- Name: NciEvent; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciEvent" (
    id bigint NOT NULL,
    code integer NOT NULL,
    "tableName" text NOT NULL,
    key text NOT NULL,
    login text NOT NULL,
    "time" double precision NOT NULL,
    after text NOT NULL,
    before text NOT NULL,
    call text NOT NULL,
    "group" bigint NOT NULL,
    xact xid8,
    client text DEFAULT ''::text NOT NULL,
    place text DEFAULT ''::text NOT NULL,
    undoes text DEFAULT ''::text NOT NULL
);


--
-- Name: NciEventId; Type: SEQUENCE; Schema: public; Owner: -
--

CREATE SEQUENCE public."NciEventId"
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1;


--
-- Name: NciEventId; Type: SEQUENCE OWNED BY; Schema: public; Owner: -
--

ALTER SEQUENCE public."NciEventId" OWNED BY public."NciEvent".id;


--
-- Name: NciLock; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciLock" (
);


--
-- Name: NciPruned; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciPruned" (
    id bigint NOT NULL,
    versions bigint DEFAULT 0 NOT NULL
);


--
-- Name: NciStore; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciStore" (
    version integer NOT NULL,
    identity text NOT NULL
);


--
-- Name: NciVersion; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciVersion" (
    id bigint NOT NULL,
    event bigint,
    login text DEFAULT ''::text NOT NULL,
    "time" double precision NOT NULL,
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    "MenuResourceKey" text COLLATE pg_catalog."C",
    name_ text COLLATE pg_catalog."C",
    "fileTime" double precision,
    size bigint NOT NULL,
    sha256 text COLLATE pg_catalog."C"
);


--
-- Name: NciVersionData; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."NciVersionData" (
    id bigint NOT NULL,
    part integer NOT NULL,
    data bytea NOT NULL
);
ALTER TABLE ONLY public."NciVersionData" ALTER COLUMN data SET STORAGE EXTERNAL;


--
-- Name: NciVersionId; Type: SEQUENCE; Schema: public; Owner: -
--

CREATE SEQUENCE public."NciVersionId"
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1;


--
-- Name: NciVersionId; Type: SEQUENCE OWNED BY; Schema: public; Owner: -
--

ALTER SEQUENCE public."NciVersionId" OWNED BY public."NciVersion".id;


--
-- Name: Users; Type: TABLE; Schema: public; Owner: -
--

CREATE TABLE public."Users" (
    "KeyLink" text NOT NULL COLLATE pg_catalog."C",
    login_ text COLLATE pg_catalog."C",
    "lastName" text COLLATE pg_catalog."C",
    "firstName" text COLLATE pg_catalog."C",
    "midlName" text COLLATE pg_catalog."C",
    program boolean,
    CONSTRAINT "Users_KeyLink_check" CHECK (("KeyLink" ~ '^[ -~]+$'::text))
);


--
-- Data for Name: Menu; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."Menu" ("KeyLink", parent, "FolderKey", caption, order_, ico, separator, "oneCopy", "MenuResourceKey", params) FROM stdin;
m2	m1	mf2	План	2000	a.png	t	\N	R2	\N
m1	\N	mf2	Щит ГЩУ	1000	\N	f	t	r1	a=1
\.


--
-- Data for Name: MenuFileExt; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuFileExt" ("KeyLink", "fileExt") FROM stdin;
e1	ui
\.


--
-- Data for Name: MenuFolder; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuFolder" ("KeyLink", "ParentKey", caption, order_, "isFolder") FROM stdin;
mf1	\N	КС-3	1000	t
mf2	mf1	Диспетчер	2000	f
\.


--
-- Data for Name: MenuResource; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuResource" ("KeyLink", "MenuResourceFolderKey", name_, type_, caption, params, ico, "UsersKey", "dateTimeEdit") FROM stdin;
r1	rf1	Щит_	3	Щит	\N	\N	u1	45000.125
r2	rf2	план.txt	4	план.txt		a.png	\N	\N
\.


--
-- Data for Name: MenuResourceFile; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuResourceFile" ("KeyLink", "MenuResourceKey", name_, "time", size) FROM stdin;
c1	r1	Щит_	1700000000.5	10
c2	r2	план.txt	\N	0
\.


--
-- Data for Name: MenuResourceFileData; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuResourceFileData" ("KeyLink", part, data) FROM stdin;
c1	0	\\xd0a4d0be
c1	1	\\xd180d0bcd0b0
\.


--
-- Data for Name: MenuResourceFileSum; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuResourceFileSum" ("KeyLink", sha256) FROM stdin;
c1	b26b88d6d29bce09dcd0d5825b35025cd41e8d00aff11f5fddf685bc9e0b2f80
c2	e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855
\.


--
-- Data for Name: MenuResourceFolder; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."MenuResourceFolder" ("KeyLink", "ParentKey", type_, caption) FROM stdin;
rf1	\N	3	Формы
rf2	\N	4	Файлы
\.


--
-- Data for Name: NciEvent; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciEvent" (id, code, "tableName", key, login, "time", after, before, call, "group", xact, client, place, undoes) FROM stdin;
1	601	Users	u1	postgres	1795304492.902703	{"KeyLink":"u1","login_":"anna","lastName":"Петрова","firstName":"Анна","midlName":"Олеговна","program":false}	{}		1	\N			
2	601	MenuFileExt	e1	postgres	1795304492.904065	{"KeyLink":"e1","fileExt":"ui"}	{}		2	\N			
3	601	MenuResourceFolder	rf1	postgres	1795304492.905163	{"KeyLink":"rf1","ParentKey":null,"type_":3,"caption":"Формы"}	{}		3	\N			
4	601	MenuResourceFolder	rf2	postgres	1795304492.905343	{"KeyLink":"rf2","ParentKey":null,"type_":4,"caption":"Файлы"}	{}		4	\N			
5	601	MenuResource	r1	postgres	1795304492.906792	{"KeyLink":"r1","MenuResourceFolderKey":"rf1","name_":"Щит_","type_":3,"caption":"Щит","params":null,"ico":null,"UsersKey":"u1","dateTimeEdit":45000.125}	{}		5	\N			
6	601	MenuResource	r2	postgres	1795304492.906954	{"KeyLink":"r2","MenuResourceFolderKey":"rf2","name_":"план.txt","type_":4,"caption":"план.txt","params":"","ico":"a.png","UsersKey":null,"dateTimeEdit":null}	{}		6	\N			
7	601	MenuFolder	mf1	postgres	1795304492.911142	{"KeyLink":"mf1","ParentKey":null,"caption":"КС-3","order_":"1000","isFolder":true}	{}		7	\N			
8	601	MenuFolder	mf2	postgres	1795304492.911235	{"KeyLink":"mf2","ParentKey":"mf1","caption":"Диспетчер","order_":"2000","isFolder":false}	{}		8	\N			
9	601	Menu	m1	postgres	1795304492.912615	{"KeyLink":"m1","parent":null,"FolderKey":"mf2","caption":"Щит","order_":1000,"ico":null,"separator":false,"oneCopy":true,"MenuResourceKey":"r1","params":"a=1"}	{}		9	\N			
10	601	Menu	m2	postgres	1795304492.912724	{"KeyLink":"m2","parent":"m1","FolderKey":"mf2","caption":"План","order_":2000,"ico":"a.png","separator":true,"oneCopy":null,"MenuResourceKey":"R2","params":null}	{}		10	\N			
11	602	Menu	m1	postgres	1795304492.918796	{"caption":"Щит ГЩУ"}	{"caption":"Щит"}		11	\N			
12	601	MenuFileExt	e2	postgres	1795304492.919107	{"KeyLink":"e2","fileExt":"png"}	{}		12	\N			
13	603	MenuFileExt	e2	postgres	1795304492.92607	{}	{"KeyLink":"e2","fileExt":"png"}		13	\N			
14	601	MenuResourceFile	c1	postgres	1795304492.927302	{"KeyLink":"c1","MenuResourceKey":"r1","name_":"Щит_","time":1700000000.5,"size":10}	{}		14	\N			
15	601	MenuResourceFile	c2	postgres	1795304492.927388	{"KeyLink":"c2","MenuResourceKey":"r2","name_":"план.txt","time":null,"size":0}	{}		15	\N			
\.


--
-- Data for Name: NciLock; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciLock"  FROM stdin;
\.


--
-- Data for Name: NciPruned; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciPruned" (id, versions) FROM stdin;
0	15
\.


--
-- Data for Name: NciStore; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciStore" (version, identity) FROM stdin;
12	ce771a37-b5c9-4516-92c0-32fb46687a76
\.


--
-- Data for Name: NciVersion; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciVersion" (id, event, login, "time", "KeyLink", "MenuResourceKey", name_, "fileTime", size, sha256) FROM stdin;
\.


--
-- Data for Name: NciVersionData; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."NciVersionData" (id, part, data) FROM stdin;
\.


--
-- Data for Name: Users; Type: TABLE DATA; Schema: public; Owner: -
--

COPY public."Users" ("KeyLink", login_, "lastName", "firstName", "midlName", program) FROM stdin;
u1	anna	Петрова	Анна	Олеговна	f
\.


--
-- Name: NciEventId; Type: SEQUENCE SET; Schema: public; Owner: -
--

SELECT pg_catalog.setval('public."NciEventId"', 15, true);


--
-- Name: NciVersionId; Type: SEQUENCE SET; Schema: public; Owner: -
--

SELECT pg_catalog.setval('public."NciVersionId"', 1, false);


--
-- Name: MenuFileExt MenuFileExt_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuFileExt"
    ADD CONSTRAINT "MenuFileExt_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuFolder MenuFolder_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuFolder"
    ADD CONSTRAINT "MenuFolder_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuResourceFileData MenuResourceFileData_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFileData"
    ADD CONSTRAINT "MenuResourceFileData_pkey" PRIMARY KEY ("KeyLink", part);


--
-- Name: MenuResourceFileSum MenuResourceFileSum_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFileSum"
    ADD CONSTRAINT "MenuResourceFileSum_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuResourceFile MenuResourceFile_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFile"
    ADD CONSTRAINT "MenuResourceFile_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuResourceFolder MenuResourceFolder_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFolder"
    ADD CONSTRAINT "MenuResourceFolder_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuResource MenuResource_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResource"
    ADD CONSTRAINT "MenuResource_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: Menu Menu_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."Menu"
    ADD CONSTRAINT "Menu_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: NciEvent NciEvent_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."NciEvent"
    ADD CONSTRAINT "NciEvent_pkey" PRIMARY KEY (id);


--
-- Name: NciVersionData NciVersionData_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."NciVersionData"
    ADD CONSTRAINT "NciVersionData_pkey" PRIMARY KEY (id, part);


--
-- Name: NciVersion NciVersion_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."NciVersion"
    ADD CONSTRAINT "NciVersion_pkey" PRIMARY KEY (id);


--
-- Name: Users Users_pkey; Type: CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."Users"
    ADD CONSTRAINT "Users_pkey" PRIMARY KEY ("KeyLink");


--
-- Name: MenuFileExt_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "MenuFileExt_lower_idx" ON public."MenuFileExt" USING btree (lower("KeyLink"));


--
-- Name: MenuFolder_left_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuFolder_left_idx" ON public."MenuFolder" USING btree ("left"(lower("ParentKey"), 100)) WHERE ("ParentKey" IS NOT NULL);


--
-- Name: MenuFolder_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "MenuFolder_lower_idx" ON public."MenuFolder" USING btree (lower("KeyLink"));


--
-- Name: MenuResourceFile_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "MenuResourceFile_lower_idx" ON public."MenuResourceFile" USING btree (lower("KeyLink"));


--
-- Name: MenuResourceFile_lower_idx1; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResourceFile_lower_idx1" ON public."MenuResourceFile" USING hash (lower("MenuResourceKey"));


--
-- Name: MenuResourceFolder_left_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResourceFolder_left_idx" ON public."MenuResourceFolder" USING btree ("left"(lower("ParentKey"), 100)) WHERE ("ParentKey" IS NOT NULL);


--
-- Name: MenuResourceFolder_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "MenuResourceFolder_lower_idx" ON public."MenuResourceFolder" USING btree (lower("KeyLink"));


--
-- Name: MenuResource_expr_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResource_expr_idx" ON public."MenuResource" USING hash ((((lower(COALESCE("MenuResourceFolderKey", ''::text)) || '/'::text) || lower(translate(name_, 'АБВГҐЃДЂЕЁЄЖЗЅИІЇЙЈКЌЛЉМНЊОПРСТЋУЎФХЦЧЏШЩЪЫЬЭЮЯ'::text, 'абвгґѓдђеёєжзѕиіїйјкќлљмнњопрстћуўфхцчџшщъыьэюя'::text))))) WHERE (type_ = 4);


--
-- Name: MenuResource_left_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResource_left_idx" ON public."MenuResource" USING btree ("left"(lower("MenuResourceFolderKey"), 100)) WHERE ("MenuResourceFolderKey" IS NOT NULL);


--
-- Name: MenuResource_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "MenuResource_lower_idx" ON public."MenuResource" USING btree (lower("KeyLink"));


--
-- Name: MenuResource_lower_idx2; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResource_lower_idx2" ON public."MenuResource" USING hash (lower(translate(name_, 'АБВГҐЃДЂЕЁЄЖЗЅИІЇЙЈКЌЛЉМНЊОПРСТЋУЎФХЦЧЏШЩЪЫЬЭЮЯ'::text, 'абвгґѓдђеёєжзѕиіїйјкќлљмнњопрстћуўфхцчџшщъыьэюя'::text))) WHERE (type_ = 3);


--
-- Name: MenuResource_type__idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "MenuResource_type__idx" ON public."MenuResource" USING btree (type_);


--
-- Name: Menu_left_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "Menu_left_idx" ON public."Menu" USING btree ("left"("FolderKey", 100)) WHERE ("FolderKey" IS NOT NULL);


--
-- Name: Menu_left_idx1; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "Menu_left_idx1" ON public."Menu" USING btree ("left"(lower("MenuResourceKey"), 100)) WHERE ("MenuResourceKey" IS NOT NULL);


--
-- Name: Menu_left_idx2; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "Menu_left_idx2" ON public."Menu" USING btree ("left"(lower(parent), 100)) WHERE (parent IS NOT NULL);


--
-- Name: Menu_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "Menu_lower_idx" ON public."Menu" USING btree (lower("KeyLink"));


--
-- Name: NciEvent_group_id_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_group_id_idx" ON public."NciEvent" USING btree ("group", id);


--
-- Name: NciEvent_id_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_id_idx" ON public."NciEvent" USING btree (id) WHERE (undoes <> ''::text);


--
-- Name: NciEvent_login_id_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_login_id_idx" ON public."NciEvent" USING btree (login, id);


--
-- Name: NciEvent_lower_id_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_lower_id_idx" ON public."NciEvent" USING btree (lower(key), id);


--
-- Name: NciEvent_tableName_id_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_tableName_id_idx" ON public."NciEvent" USING btree ("tableName", id);


--
-- Name: NciEvent_time_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciEvent_time_idx" ON public."NciEvent" USING btree ("time");


--
-- Name: NciVersion_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciVersion_lower_idx" ON public."NciVersion" USING btree (lower("KeyLink"));


--
-- Name: NciVersion_lower_idx1; Type: INDEX; Schema: public; Owner: -
--

CREATE INDEX "NciVersion_lower_idx1" ON public."NciVersion" USING btree (lower("MenuResourceKey"));


--
-- Name: Users_lower_idx; Type: INDEX; Schema: public; Owner: -
--

CREATE UNIQUE INDEX "Users_lower_idx" ON public."Users" USING btree (lower("KeyLink"));


--
-- Name: Menu deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."Menu" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."Menu.log"();


--
-- Name: MenuFileExt deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuFileExt" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFileExt.log"();


--
-- Name: MenuFolder deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuFolder" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFolder.log"();


--
-- Name: MenuResource deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuResource" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResource.log"();


--
-- Name: MenuResourceFile deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuResourceFile" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFile.log"();


--
-- Name: MenuResourceFileData deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuResourceFileData" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFileData.log"();


--
-- Name: MenuResourceFolder deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."MenuResourceFolder" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFolder.log"();


--
-- Name: Users deleted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER deleted AFTER DELETE ON public."Users" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."Users.log"();


--
-- Name: Menu inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."Menu" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."Menu.log"();


--
-- Name: MenuFileExt inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuFileExt" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFileExt.log"();


--
-- Name: MenuFolder inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuFolder" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFolder.log"();


--
-- Name: MenuResource inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuResource" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResource.log"();


--
-- Name: MenuResourceFile inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuResourceFile" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFile.log"();


--
-- Name: MenuResourceFileData inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuResourceFileData" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFileData.log"();


--
-- Name: MenuResourceFolder inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."MenuResourceFolder" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFolder.log"();


--
-- Name: Users inserted; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER inserted AFTER INSERT ON public."Users" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."Users.log"();


--
-- Name: MenuResourceFile keep; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER keep BEFORE DELETE ON public."MenuResourceFile" FOR EACH ROW EXECUTE FUNCTION public."NciKeep"();


--
-- Name: Menu lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."Menu" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuFileExt lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuFileExt" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuFolder lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuFolder" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuResource lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuResource" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuResourceFile lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuResourceFile" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuResourceFileData lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuResourceFileData" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: MenuResourceFolder lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."MenuResourceFolder" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: Users lock; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER lock BEFORE INSERT OR DELETE OR UPDATE ON public."Users" FOR EACH STATEMENT EXECUTE FUNCTION public."NciLock"();


--
-- Name: NciEvent number; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER number BEFORE INSERT OR UPDATE OF id ON public."NciEvent" FOR EACH STATEMENT WHEN ((pg_trigger_depth() = 0)) EXECUTE FUNCTION public."NciRefuse"();


--
-- Name: NciEvent pruned; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER pruned AFTER DELETE ON public."NciEvent" REFERENCING OLD TABLE AS gone FOR EACH STATEMENT EXECUTE FUNCTION public."NciPrune"();


--
-- Name: Menu rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."Menu" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."Menu.log"();


--
-- Name: MenuFileExt rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."MenuFileExt" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."MenuFileExt.log"();


--
-- Name: MenuFolder rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."MenuFolder" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."MenuFolder.log"();


--
-- Name: MenuResource rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."MenuResource" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."MenuResource.log"();


--
-- Name: MenuResourceFile rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."MenuResourceFile" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."MenuResourceFile.log"();


--
-- Name: MenuResourceFolder rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."MenuResourceFolder" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."MenuResourceFolder.log"();


--
-- Name: Users rekeyed; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER rekeyed AFTER UPDATE ON public."Users" FOR EACH ROW WHEN ((old."KeyLink" <> new."KeyLink")) EXECUTE FUNCTION public."Users.log"();


--
-- Name: Menu truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."Menu" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuFileExt truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuFileExt" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuFolder truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuFolder" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuResource truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuResource" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuResourceFile truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuResourceFile" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuResourceFileData truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuResourceFileData" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: MenuResourceFolder truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."MenuResourceFolder" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: NciEvent truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."NciEvent" FOR EACH STATEMENT EXECUTE FUNCTION public."NciPrune"();


--
-- Name: Users truncate; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER truncate BEFORE TRUNCATE ON public."Users" FOR EACH STATEMENT EXECUTE FUNCTION public."NciTruncate"();


--
-- Name: Menu updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."Menu" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."Menu.log"();


--
-- Name: MenuFileExt updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuFileExt" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFileExt.log"();


--
-- Name: MenuFolder updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuFolder" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuFolder.log"();


--
-- Name: MenuResource updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuResource" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResource.log"();


--
-- Name: MenuResourceFile updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuResourceFile" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFile.log"();


--
-- Name: MenuResourceFileData updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuResourceFileData" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFileData.log"();


--
-- Name: MenuResourceFolder updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."MenuResourceFolder" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."MenuResourceFolder.log"();


--
-- Name: Users updated; Type: TRIGGER; Schema: public; Owner: -
--

CREATE TRIGGER updated AFTER UPDATE ON public."Users" REFERENCING OLD TABLE AS gone NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION public."Users.log"();


--
-- Name: MenuResourceFileData MenuResourceFileData_KeyLink_fkey; Type: FK CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFileData"
    ADD CONSTRAINT "MenuResourceFileData_KeyLink_fkey" FOREIGN KEY ("KeyLink") REFERENCES public."MenuResourceFile"("KeyLink") ON UPDATE CASCADE ON DELETE CASCADE;


--
-- Name: MenuResourceFileSum MenuResourceFileSum_KeyLink_fkey; Type: FK CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."MenuResourceFileSum"
    ADD CONSTRAINT "MenuResourceFileSum_KeyLink_fkey" FOREIGN KEY ("KeyLink") REFERENCES public."MenuResourceFile"("KeyLink") ON UPDATE CASCADE ON DELETE CASCADE;


--
-- Name: NciVersionData NciVersionData_id_fkey; Type: FK CONSTRAINT; Schema: public; Owner: -
--

ALTER TABLE ONLY public."NciVersionData"
    ADD CONSTRAINT "NciVersionData_id_fkey" FOREIGN KEY (id) REFERENCES public."NciVersion"(id) ON DELETE CASCADE;


--
-- Name: SCHEMA public; Type: ACL; Schema: -; Owner: -
--

GRANT USAGE ON SCHEMA public TO orvo_engineer;
GRANT USAGE ON SCHEMA public TO orvo_viewer;


--
-- Name: FUNCTION "Menu.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."Menu.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuFileExt.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuFileExt.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuFolder.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuFolder.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuResource.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuResource.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuResourceFile.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuResourceFile.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuResourceFileData.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuResourceFileData.log"() FROM PUBLIC;


--
-- Name: FUNCTION "MenuResourceFolder.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."MenuResourceFolder.log"() FROM PUBLIC;


--
-- Name: FUNCTION "NciKeep"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciKeep"() FROM PUBLIC;


--
-- Name: FUNCTION "NciLock"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciLock"() FROM PUBLIC;


--
-- Name: FUNCTION "NciPrune"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciPrune"() FROM PUBLIC;


--
-- Name: FUNCTION "NciRefuse"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciRefuse"() FROM PUBLIC;


--
-- Name: FUNCTION "NciTakeLock"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciTakeLock"() FROM PUBLIC;
GRANT ALL ON FUNCTION public."NciTakeLock"() TO orvo_engineer;


--
-- Name: FUNCTION "NciTruncate"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."NciTruncate"() FROM PUBLIC;


--
-- Name: FUNCTION "Users.log"(); Type: ACL; Schema: public; Owner: -
--

REVOKE ALL ON FUNCTION public."Users.log"() FROM PUBLIC;


--
-- Name: TABLE "Menu"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."Menu" TO orvo_engineer;
GRANT SELECT ON TABLE public."Menu" TO orvo_viewer;


--
-- Name: TABLE "MenuFileExt"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuFileExt" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuFileExt" TO orvo_viewer;


--
-- Name: TABLE "MenuFolder"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuFolder" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuFolder" TO orvo_viewer;


--
-- Name: TABLE "MenuResource"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuResource" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuResource" TO orvo_viewer;


--
-- Name: TABLE "MenuResourceFile"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuResourceFile" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuResourceFile" TO orvo_viewer;


--
-- Name: TABLE "MenuResourceFileData"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuResourceFileData" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuResourceFileData" TO orvo_viewer;


--
-- Name: TABLE "MenuResourceFileSum"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,UPDATE ON TABLE public."MenuResourceFileSum" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuResourceFileSum" TO orvo_viewer;


--
-- Name: TABLE "MenuResourceFolder"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT,INSERT,DELETE,UPDATE ON TABLE public."MenuResourceFolder" TO orvo_engineer;
GRANT SELECT ON TABLE public."MenuResourceFolder" TO orvo_viewer;


--
-- Name: TABLE "NciEvent"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."NciEvent" TO orvo_engineer;
GRANT SELECT ON TABLE public."NciEvent" TO orvo_viewer;


--
-- Name: SEQUENCE "NciEventId"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON SEQUENCE public."NciEventId" TO orvo_engineer;
GRANT SELECT ON SEQUENCE public."NciEventId" TO orvo_viewer;


--
-- Name: TABLE "NciPruned"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."NciPruned" TO orvo_engineer;
GRANT SELECT ON TABLE public."NciPruned" TO orvo_viewer;


--
-- Name: TABLE "NciStore"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."NciStore" TO orvo_engineer;
GRANT SELECT ON TABLE public."NciStore" TO orvo_viewer;


--
-- Name: TABLE "NciVersion"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."NciVersion" TO orvo_engineer;
GRANT SELECT ON TABLE public."NciVersion" TO orvo_viewer;


--
-- Name: TABLE "NciVersionData"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."NciVersionData" TO orvo_engineer;
GRANT SELECT ON TABLE public."NciVersionData" TO orvo_viewer;


--
-- Name: TABLE "Users"; Type: ACL; Schema: public; Owner: -
--

GRANT SELECT ON TABLE public."Users" TO orvo_engineer;
GRANT SELECT ON TABLE public."Users" TO orvo_viewer;


--
-- PostgreSQL database dump complete
--


-- A dump leaves out the rights on the database itself.
DO $$ BEGIN
  EXECUTE format('REVOKE ALL ON DATABASE %1$I FROM PUBLIC; '
                 'GRANT CONNECT ON DATABASE %1$I TO orvo_engineer, orvo_viewer', current_database());
END $$;
