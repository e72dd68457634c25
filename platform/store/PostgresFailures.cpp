// What a failure of the connection or the server means, in words and as a status.
#include "platform/store/PostgresApi.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"

namespace orvo::store::postgres {

namespace {

/// The codes of a server that goes away, or no longer takes writes because another one does now.
bool isBreak(std::string_view state) {
    return state.starts_with("08") || state.starts_with("57P0") || state == "25006" ||
           state == "25P03";
}

} // namespace

Status serverFailure(std::string_view what, std::string_view state, const std::string& message) {
    int code = Failed;
    std::string why = message;
    if (state == "23505") {
        code = Refused;
        why = StdText::tr("такой ключ уже есть");
    } else if (state == "42501") {
        code = Refused;
        why = StdText::tr("недостаточно прав (") + message + ")";
    } else if (state.starts_with("23") || state.starts_with("22")) {
        code = Refused;
        why = StdText::tr("нарушено правило таблицы (") + message + ")";
    } else if (state.starts_with("54")) {
        code = Refused;
        why = StdText::tr("значение слишком велико (") + message + ")";
    } else if (state == "55P03" || state.starts_with("40")) {
        code = Timeout;
        why = StdText::tr("база занята другой программой");
    } else if (state == "57014") {
        code = Timeout;
        why = StdText::tr(
            "сервер прервал команду: вышло отведённое ей время, или её отменил администратор");
    } else if (state == "53100") {
        why = StdText::tr("на диске сервера не осталось места");
    } else if (state.starts_with("53")) {
        why = StdText::tr("серверу не хватает ресурсов (") + message + ")";
    } else if (state == "XX001" || state == "XX002") {
        why = StdText::tr("база повреждена (") + message + ")";
    } else if (state.starts_with("XX")) {
        why = StdText::tr("внутренняя ошибка сервера (") + message + ")";
    }
    return {code, std::string(what) + ": " + why};
}

Status Connection::failure(std::string_view what, const PGresult* result) {
    const std::string state(stateOf(result));
    const char* primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    std::string message = primary != nullptr ? primary
                          : result != nullptr && *PQresultErrorMessage(result)
                              ? PQresultErrorMessage(result)
                          : get() != nullptr ? PQerrorMessage(get())
                                             : "";
    message = Url().withoutSecrets(std::move(message));
    int code = Failed;
    std::string why = message;
    if (m_end == End::GivenUp) {
        code = Timeout;
        why = StdText::tr("ожидание прервано");
    } else if (m_end == End::Silent) {
        code = ConnectionBroken;
        why = StdText::tr("сервер не отвечает");
    } else if (!usable() || isBreak(state)) {
        code = ConnectionBroken;
        why = StdText::tr("соединение с базой потеряно") +
              (message.empty() ? "" : " (" + message + ")");
        close();
    } else {
        return serverFailure(what, state, message);
    }
    return {code, std::string(what) + ": " + why};
}

std::string Connection::whoHolds(Wanted wanted) {
    // Nobody knows any more which lock it was. The one of the log explains most; then those that
    // shut out the most others.
    const Result result = query(
        std::string(
            "SELECT usename::text, l.pid::bigint FROM pg_locks l JOIN pg_stat_activity a ON "
            "a.pid = l.pid WHERE granted AND l.pid <> pg_backend_pid() AND ") +
            (wanted == Wanted::Rows ? "mode <> 'AccessShareLock' AND " : "") +
            "relation IN (SELECT oid FROM pg_class WHERE relnamespace = 'public'::regnamespace) "
            "AND l.database = (SELECT oid FROM pg_database WHERE datname = current_database()) "
            "ORDER BY relation = 'public.\"NciLock\"'::regclass DESC, mode = "
            "'AccessExclusiveLock' DESC, mode = 'ExclusiveLock' DESC, mode = 'AccessShareLock' "
            "LIMIT 1",
        {});
    if (!succeeded(result.get()) || PQntuples(result.get()) == 0)
        return {};
    return StdText::tr(": её держит незаконченная транзакция входа ") +
           shown(textAt(result.get(), 0, 0)) + StdText::tr(" (процесс сервера ") +
           std::to_string(integerAt(result.get(), 0, 1)) + ")";
}

} // namespace orvo::store::postgres
