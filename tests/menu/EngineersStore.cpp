#include "tests/menu/EngineersStore.h"

#include "platform/store/PostgresApi.h"
#include "platform/store/Store.h"
#include "tests/store/PostgresCluster.h"
#include "tests/store/PostgresProxy.h"

#include <sqlite3.h>

namespace orvo::test {

using store::test::PostgresCluster;
using store::test::PostgresProxy;
namespace postgres = store::postgres;

class EngineersKind::Hand {
public:
    virtual ~Hand() = default;
    virtual bool begin(Fault fault) = 0;
    virtual void end() = 0;
    virtual std::string url() const = 0;
};

class EngineersKind::SqliteHand : public Hand {
public:
    explicit SqliteHand(const std::string& url) : m_url(url) {
        if (sqlite3_open(url.c_str() + sizeof "sqlite://" - 1, &m_database) != SQLITE_OK)
            qFatal("no second connection");
        sqlite3_busy_timeout(m_database, 5000);
    }
    ~SqliteHand() override { sqlite3_close(m_database); }
    std::string url() const override { return m_url; }

    bool begin(Fault fault) override {
        m_fault = fault;
        if (fault == Locked) {
            execute("BEGIN IMMEDIATE");
            return true;
        }
        if (fault != NoRight)
            return false;
        forEachVerb([](const QByteArray& trigger, const char* verb, const char* table) {
            return "CREATE TRIGGER " + trigger + " BEFORE " + verb + " ON \"" + table +
                   "\" BEGIN SELECT RAISE(ABORT, 'no right'); END;";
        });
        return true;
    }
    void end() override {
        if (m_fault == Locked)
            execute("ROLLBACK");
        else
            forEachVerb([](const QByteArray& trigger, const char*, const char*) {
                return "DROP TRIGGER " + trigger + ';';
            });
    }

private:
    /// Executes the statements for all writes of all tables in one transaction.
    template <class Statement>
    void forEachVerb(Statement statement) const {
        QByteArray sql = "BEGIN IMMEDIATE;";
        for (const char* table : {"Menu", "MenuFolder", "MenuResource", "MenuResourceFolder"})
            for (const char* verb : {"INSERT", "UPDATE", "DELETE"})
                sql += statement(QByteArray("\"no ") + verb + ' ' + table + '"', verb, table);
        execute(sql + "COMMIT");
    }
    void execute(const QByteArray& sql) const {
        if (sqlite3_exec(m_database, sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
            qFatal("%s: %s", sql.constData(), sqlite3_errmsg(m_database));
    }
    const std::string m_url;
    sqlite3* m_database = nullptr;
    Fault m_fault = Locked;
};

class EngineersKind::ServerHand : public Hand {
public:
    explicit ServerHand(const std::string& url) : m_proxy(PostgresCluster::shared()->directory()) {
        postgres::Url address;
        if (!address.parse(url).ok() || !m_server.open(address).ok())
            qFatal("no second connection");
        // The lock is held for as long as the clients under test need, on a busy machine too.
        execute("SET idle_in_transaction_session_timeout = 0");
        // The role belongs to the whole server, which serves other tests at the same time.
        execute("DO $$ BEGIN CREATE ROLE engineer LOGIN; EXCEPTION WHEN duplicate_object OR "
                "unique_violation THEN NULL; END $$");
        execute("GRANT orvo_engineer TO engineer");
        const size_t host = url.find("?host=");
        const size_t user = url.find("postgres@");
        if (host == std::string::npos || user == std::string::npos)
            qFatal("another kind of URL: %s", url.c_str());
        m_url = url.substr(0, host) + "?host=" + m_proxy.directory();
        m_url.replace(user, sizeof "postgres" - 1, "engineer");
    }
    std::string url() const override { return m_url; }

    bool begin(Fault fault) override {
        m_fault = fault;
        switch (fault) {
        case Locked:
            execute("BEGIN; LOCK TABLE public.\"NciLock\" IN ACCESS EXCLUSIVE MODE");
            break;
        case NoRight:
            for (const char* table : {"Menu", "MenuFolder", "MenuResource", "MenuResourceFolder"})
                execute(std::string("REVOKE INSERT, UPDATE, DELETE ON public.\"") + table +
                        "\" FROM orvo_engineer");
            break;
        case RequestLost:
            m_proxy.next(PostgresProxy::LoseRequest);
            break;
        case AnswerLost:
            m_proxy.next(PostgresProxy::LoseAnswers);
            break;
        }
        return true;
    }
    void end() override {
        m_proxy.next(PostgresProxy::Pass);
        if (m_fault == Locked)
            execute("ROLLBACK");
        if (m_fault == NoRight)
            for (const char* table : {"Menu", "MenuFolder", "MenuResource", "MenuResourceFolder"})
                execute(std::string("GRANT INSERT, UPDATE, DELETE ON public.\"") + table +
                        "\" TO orvo_engineer");
    }

private:
    void execute(const std::string& sql) {
        if (!postgres::succeeded(m_server.execute(sql).get()))
            qFatal("%s: %s", sql.c_str(), PQerrorMessage(m_server.get()));
    }
    PostgresProxy m_proxy;
    postgres::Connection m_server;
    std::string m_url;
    Fault m_fault = Locked;
};

EngineersKind::EngineersKind(std::unique_ptr<StoreKind> inner) : m_inner(std::move(inner)) {}

EngineersKind::~EngineersKind() = default;

bool EngineersKind::renew() {
    m_hand.reset();
    if (!m_inner->renew())
        return false;
    if (m_inner->name() == "sqlite")
        m_hand = std::make_unique<SqliteHand>(m_inner->url());
    else
        m_hand = std::make_unique<ServerHand>(m_inner->url());
    return true;
}

std::string EngineersKind::url() const {
    return m_admitted ? m_hand->url() : m_inner->url();
}

bool EngineersKind::begin(Fault fault) {
    return m_hand->begin(fault);
}

void EngineersKind::end() {
    m_hand->end();
}

} // namespace orvo::test
