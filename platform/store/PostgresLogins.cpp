// The logins of users at a PostgreSQL server.
#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

std::string named(const std::string& login) {
    return StdText::tr("Пользователь ") + shown(login);
}

} // namespace

/// " PASSWORD ..." for a statement about a role.
Status PostgresStore::passwordClause(const std::string& login, const std::string& password,
                                     std::string* clause) {
    // Scrambled here: the password itself enters no statement, and so no log of the server.
    struct Free {
        void operator()(char* text) const { PQfreemem(text); }
    };
    const std::unique_ptr<char, Free> scrambled(PQencryptPasswordConn(
        m_connection.get(), password.c_str(), login.c_str(), "scram-sha-256"));
    if (!scrambled)
        return {Failed, named(login) + StdText::tr(": пароль не принят")};
    *clause = " PASSWORD " + literal(scrambled.get());
    return {};
}

Status PostgresStore::hasRole(const std::string& login, bool* has) {
    const Result present =
        m_connection.query("SELECT FROM pg_roles WHERE rolname = $1", Parameters().text(login));
    if (!succeeded(present.get()))
        return m_connection.failure(named(login), present.get());
    *has = PQntuples(present.get()) != 0;
    return {};
}

Status PostgresStore::makeLogin(const User& user) {
    const std::string what = named(user.login);
    // Longer names would be cut.
    if (user.login.size() > 63 || !isText(user.login) || user.login.starts_with("pg_"))
        return {Refused, what + StdText::tr(": такое имя не годится для входа на сервер")};
    bool exists = false;
    Status status = drainPipeline();
    if (status.ok())
        status = hasRole(user.login, &exists);
    if (!status.ok())
        return status;
    if (exists && !user.password.empty())
        return {Refused,
                what + StdText::tr(": такой вход на сервере уже есть, его пароль не меняется")};
    const std::string role = identifier(user.login);
    std::string sql = exists ? "" : "CREATE ROLE " + role + " LOGIN";
    if (!user.password.empty()) {
        std::string clause;
        status = passwordClause(user.login, user.password, &clause);
        if (!status.ok())
            return status;
        sql += clause;
    }
    sql += std::string("; GRANT ") + (user.viewer ? viewerRole : engineerRole) + " TO " + role;
    const Result made = m_connection.execute(sql);
    return succeeded(made.get()) ? Status() : m_connection.failure(what, made.get());
}

Status PostgresStore::changeLogin(const std::string& login, const UserChange& change) {
    bool exists = false;
    Status status = drainPipeline();
    if (status.ok())
        status = hasRole(login, &exists);
    if (!status.ok())
        return status;
    if (!exists)
        return {Refused,
                named(login) + StdText::tr(": входа на этом сервере нет; его даёт user login")};
    const std::string role = identifier(login);
    std::string sql;
    if (!change.password.empty()) {
        std::string clause;
        status = passwordClause(login, change.password, &clause);
        if (!status.ok())
            return status;
        sql = "ALTER ROLE " + role + clause + ";";
    }
    if (change.viewer) {
        bool owns = false;
        status = revokeRoles(login, &owns);
        if (!status.ok())
            return status;
        if (owns)
            return {Refused, named(login) + StdText::tr(" владеет хранилищем: его прав не меняют")};
        sql += std::string("GRANT ") + (*change.viewer ? viewerRole : engineerRole) + " TO " + role;
    }
    const Result made = m_connection.execute(sql);
    return succeeded(made.get()) ? Status() : m_connection.failure(named(login), made.get());
}

/// Of our two roles those that the login was given. Who owns the store keeps them: he gives them to
/// others.
Status PostgresStore::revokeRoles(const std::string& login, bool* owns) {
    const Result given = m_connection.query(
        "SELECT r.rolname, pg_has_role(u.oid, c.relowner, 'MEMBER') FROM pg_auth_members m "
        "JOIN pg_roles r ON r.oid = m.roleid JOIN pg_roles u ON u.oid = m.member, pg_class c "
        "WHERE u.rolname = $1 AND r.rolname IN ('" +
            std::string(engineerRole) + "', '" + viewerRole +
            "') AND c.oid = 'public.\"NciEvent\"'::regclass",
        Parameters().text(login));
    if (!succeeded(given.get()))
        return m_connection.failure(named(login), given.get());
    std::string sql;
    for (int row = 0; row < PQntuples(given.get()); ++row) {
        *owns = *owns || booleanAt(given.get(), row, 1);
        sql += "REVOKE " + identifier(std::string(textAt(given.get(), row, 0))) + " FROM " +
               identifier(login) + ";";
    }
    if (sql.empty() || *owns)
        return {};
    const Result made = m_connection.execute(sql);
    return succeeded(made.get()) ? Status() : m_connection.failure(named(login), made.get());
}

Status PostgresStore::removeLogin(const std::string& login) {
    bool owns = false;
    const Status status = drainPipeline();
    return status.ok() ? revokeRoles(login, &owns) : status;
}

Status PostgresStore::missingLogins(std::vector<std::string>* logins) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        const Result result = m_connection.query(
            "SELECT \"login_\" FROM public.\"Users\" u WHERE \"login_\" <> '' AND NOT EXISTS "
            "(SELECT "
            "FROM pg_catalog.pg_roles WHERE rolname = u.\"login_\" AND rolcanlogin) ORDER BY 1",
            {});
        if (!succeeded(result.get()))
            return m_connection.failure(StdText::tr("Входы на сервер"), result.get());
        logins->clear();
        for (int row = 0; row < PQntuples(result.get()); ++row)
            logins->emplace_back(textAt(result.get(), row, 0));
        return {};
    });
}

} // namespace orvo::store::postgres
