// Opening and making a store in a PostgreSQL database.
#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

/// Makes the database of the URL from the server's empty one.
Status createDatabase(const Url& url) {
    Url server = url;
    server.set("dbname", "postgres");
    Connection connection;
    const Status status = connection.open(server);
    if (!status.ok())
        return status;
    const Result made = connection.execute("CREATE DATABASE " + identifier(url.get("dbname")) +
                                           " TEMPLATE template0 ENCODING 'UTF8' LOCALE 'C'");
    // Another process may have made it in the meantime.
    if (!succeeded(made.get()) && stateOf(made.get()) != "42P04")
        return connection.failure(StdText::tr("База ") + shown(url.get("dbname")) +
                                      StdText::tr(" не создана"),
                                  made.get());
    return {};
}

} // namespace

Status parseUrl(const std::string& text, Location* location) {
    Url url;
    const Status status = url.parse(text);
    if (status.ok())
        *location = {url.displayName(), {}};
    return status;
}

std::unique_ptr<MaintainedStore> openStore(const std::string& location, const OpenOptions& options,
                                           Status* status) {
    Url url;
    *status = url.parse(location);
    if (!status->ok())
        return nullptr;
    Connection connection;
    *status = connection.open(url);
    if (status->code == UnknownName && options.create) {
        *status = createDatabase(url);
        if (status->ok())
            *status = connection.open(url);
    }
    if (status->code == UnknownName)
        status->code = CannotConnect;
    if (!status->ok())
        return nullptr;
    const std::string what = StdText::tr("Хранилище ") + shown(url.displayName());
    *status = migrate(connection, options.create);
    if (!status->ok()) {
        if (status->code == Timeout)
            status->text += connection.whoHolds(Connection::Wanted::Tables);
        status->text = what + ": " + status->text;
        return nullptr;
    }
    const Result who = connection.query(
        "SELECT session_user::text, pg_has_role(session_user, (SELECT relowner FROM pg_class "
        "WHERE oid = 'public.\"NciEvent\"'::regclass), 'MEMBER')",
        {});
    if (!succeeded(who.get())) {
        *status = connection.failure(what, who.get());
        return nullptr;
    }
    std::string login(textAt(who.get(), 0, 0));
    const bool asAnother = booleanAt(who.get(), 0, 1) && !options.login.empty() &&
                           options.login != login && isText(options.login);
    if (asAnother)
        login = options.login;
    auto store = std::make_unique<PostgresStore>(std::move(url), std::move(connection), login,
                                                 asAnother, options);
    *status = store->start();
    if (!status->ok())
        return nullptr;
    return store;
}

} // namespace orvo::store::postgres
