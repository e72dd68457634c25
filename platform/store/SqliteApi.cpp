#include "platform/store/SqliteApi.h"

#include "frame/StdText.h"
#include "platform/store/SqliteDamage.h"

#include <cassert>
#include <cerrno>
#include <cstring>

namespace orvo::store::sqlite {

namespace {

/// errno behind an input or output error. SQLite's own note of it may be gone by the time its
/// message is asked for; the files keep theirs.
int systemErrorOf(sqlite3* connection) {
    int error = sqlite3_system_errno(connection);
    sqlite3_file* log = nullptr;
    if (error == 0 &&
        sqlite3_file_control(connection, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log) == SQLITE_OK &&
        log != nullptr && log->pMethods != nullptr)
        log->pMethods->xFileControl(log, SQLITE_FCNTL_LAST_ERRNO, &error);
    if (error == 0)
        sqlite3_file_control(connection, "main", SQLITE_FCNTL_LAST_ERRNO, &error);
    return error;
}

/// A statement that fails leaves no trace: SQLite keeps the pages as they were before it. What a
/// record with its triggers touches exceeds the 64 KB that it keeps in memory by itself, and from
/// the first such record on a transaction would write them into a file. Less than 128 KiB, which is
/// the most that SQLite writes in one go: when the pages go into the file after all, a larger
/// portion would pass for a full disk.
constexpr int statementJournalBytes = 120 * 1024;

void prepareLibrary() {
    static const int result [[maybe_unused]] =
        sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, statementJournalBytes);
    // Refused if somebody else in the process was first: then it is merely slower.
}

/// So long the check of the file may take that a failed call waits for.
constexpr int64_t checkMilliseconds = 3000;

/// What is to be said of a database that SQLite could make no sense of. That may be damage, or
/// another program's doing: only the check of the whole, log included, tells.
std::string damageWords(sqlite3* connection, const std::string& message) {
    const auto damages = findDamages(connection, 1, checkMilliseconds);
    if (!damages)
        return StdText::tr("база не читается (") + message +
               StdText::tr("); повреждена ли она, скажет orvo-admin check");
    if (damages->empty())
        return StdText::tr("база не читалась (") + message +
               StdText::tr("), но её проверка повреждений не нашла; повторите попытку");
    return StdText::tr("файл базы повреждён (") + damages->front() +
           StdText::tr(
               "); ничего не удаляйте: данные извлекает sqlite3 ФАЙЛ .recover, см. руководство "
               "администратора, «Повреждённый файл SQLite»");
}

} // namespace

void Statement::bind(int parameter, std::string_view text) {
    // A null pointer would bind NULL.
    const int result = sqlite3_bind_text64(get(), parameter, text.empty() ? "" : text.data(),
                                           text.size(), SQLITE_STATIC, SQLITE_UTF8);
    if (result != SQLITE_OK)
        m_bindError = result;
}

void Statement::bind(int parameter, int64_t number) {
    const int result = sqlite3_bind_int64(get(), parameter, number);
    if (result != SQLITE_OK)
        m_bindError = result;
}

void Statement::bind(int parameter, const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        bind(parameter, std::string_view(*text));
        return;
    }
    int result = SQLITE_OK;
    if (const auto* number = std::get_if<int64_t>(&value))
        result = sqlite3_bind_int64(get(), parameter, *number);
    else if (const auto* real = std::get_if<double>(&value))
        result = sqlite3_bind_double(get(), parameter, *real);
    else
        result = sqlite3_bind_null(get(), parameter);
    if (result != SQLITE_OK)
        m_bindError = result;
}

void Statement::bindRoom(int parameter, uint64_t size) {
    const int result = sqlite3_bind_zeroblob64(get(), parameter, size);
    if (result != SQLITE_OK)
        m_bindError = result;
}

int Statement::step() {
    return m_bindError != SQLITE_OK ? m_bindError : sqlite3_step(get());
}

void Statement::reset() noexcept {
    if (!m_statement)
        return;
    sqlite3_reset(get());
    sqlite3_clear_bindings(get());
    m_bindError = SQLITE_OK;
}

std::string_view Statement::text(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(get(), column));
    const int size = sqlite3_column_bytes(get(), column);
    return data != nullptr ? std::string_view(data, static_cast<size_t>(size)) : std::string_view();
}

Value Statement::value(int column) const {
    switch (sqlite3_column_type(get(), column)) {
    case SQLITE_INTEGER:
        return integer(column);
    case SQLITE_FLOAT:
        return real(column);
    case SQLITE_TEXT:
    case SQLITE_BLOB:
        return std::string(text(column));
    default:
        return std::monostate();
    }
}

int Connection::open(const char* name, int flags) {
    prepareLibrary();
    sqlite3* raw = nullptr;
    const int result =
        sqlite3_open_v2(name, &raw, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    m_connection.reset(raw); // also a failed one has to be closed
    if (result == SQLITE_OK) {
        // A misspelt "name" must not turn into a text.
        sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
        sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    }
    return result;
}

sqlite3_file* Connection::file() const {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

Statement Connection::prepare(std::string_view sql) const {
    Statement statement;
    sqlite3_stmt* raw = nullptr;
    sqlite3_prepare_v3(get(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                       &raw, nullptr);
    statement.m_statement.reset(raw);
    return statement;
}

int Connection::execute(const char* sql) const {
    return sqlite3_exec(get(), sql, nullptr, nullptr, nullptr);
}

int Connection::integer(const char* sql, int64_t* result) const {
    Statement statement = prepare(sql);
    if (!statement)
        return sqlite3_extended_errcode(get());
    const int code = statement.step();
    if (code == SQLITE_ROW)
        *result = statement.integer(0);
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

Status Connection::failure(std::string_view what) const {
    const int extended = get() != nullptr ? sqlite3_extended_errcode(get()) : SQLITE_NOMEM;
    const std::string message = get() != nullptr ? sqlite3_errmsg(get()) : "";
    const int system = (extended & 0xFF) == SQLITE_IOERR      ? systemErrorOf(get())
                       : (extended & 0xFF) == SQLITE_CANTOPEN ? sqlite3_system_errno(get())
                                                              : 0;
    int code = Failed;
    std::string why;
    switch (extended & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        code = Timeout;
        why = StdText::tr("база занята другой программой");
        break;
    case SQLITE_FULL:
        why = StdText::tr("на диске не осталось места");
        break;
    case SQLITE_READONLY:
        why = StdText::tr("база доступна только для чтения");
        break;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        why = damageWords(get(), message);
        break;
    case SQLITE_IOERR:
        if (system == ENOSPC || system == EDQUOT || system == EFBIG)
            why = StdText::tr("на диске не осталось места");
        else
            why = StdText::tr("файл базы не читается или не пишется");
        if (system != 0)
            why += std::string(" (") + std::strerror(system) + ")";
        break;
    case SQLITE_CONSTRAINT:
        code = Refused;
        why = extended == SQLITE_CONSTRAINT_PRIMARYKEY || extended == SQLITE_CONSTRAINT_UNIQUE
                  ? StdText::tr("такой ключ уже есть")
                  : StdText::tr("нарушено правило таблицы (") + message + ")";
        break;
    case SQLITE_NOMEM:
        code = NoMemory;
        why = StdText::tr("не хватает памяти");
        break;
    case SQLITE_CANTOPEN:
        code = CannotConnect;
        why = StdText::tr("файл базы не открывается");
        if (system != 0)
            why += std::string(" (") + std::strerror(system) + ")";
        break;
    case SQLITE_TOOBIG:
        code = Refused;
        why = StdText::tr("значение слишком велико");
        break;
    default:
        why = message;
    }
    return {code, std::string(what) + ": " + why};
}

Transaction::Transaction(const Connection& connection, Kind kind)
    : m_connection(connection)
    , m_begun(connection.execute(kind == Write ? "BEGIN IMMEDIATE" : "BEGIN")) {
    // A second BEGIN is refused, but the rollback of the object that tried it would end the first.
    assert(m_begun != SQLITE_ERROR || sqlite3_get_autocommit(connection.get()) != 0);
}

Transaction::~Transaction() {
    // A grave error may have rolled back already.
    if (m_begun == SQLITE_OK && sqlite3_get_autocommit(m_connection.get()) == 0)
        m_connection.execute("ROLLBACK");
}

int Transaction::commit() {
    return m_connection.execute("COMMIT");
}

} // namespace orvo::store::sqlite
