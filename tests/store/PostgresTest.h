// PostgresTest.h: the ground of the cases that only a server can be put to.
#ifndef ORVO_TESTS_STORE_POSTGRESTEST_H
#define ORVO_TESTS_STORE_POSTGRESTEST_H

#include "PostgresCluster.h"
#include "StoreTest.h"

#include <memory>

namespace orvo::store::test {

/// One server for the cases of a program, with a fresh store for each.
class PostgresTest : public QObject {
    Q_OBJECT
protected:
    std::unique_ptr<Store> opened(const std::string& user = "postgres", Status* status = nullptr) {
        Status own;
        auto store = open(m_cluster->url(m_database.toStdString(), user), {}, &own);
        if (status != nullptr)
            *status = own;
        else if (!store)
            qWarning("%s", own.text.c_str());
        return store;
    }
    /// Makes a login on the server, once.
    bool login(const std::string& name, bool viewer = false, const std::string& password = {}) {
        User user;
        user.login = name;
        user.viewer = viewer;
        user.password = password;
        const Status status = m_store->userAdd(user);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return status.ok();
    }
    bool byHand(const QByteArray& sql, QByteArray* output = nullptr,
                const QString& user = "postgres") const {
        return m_cluster->shell(m_database, sql, output, user);
    }
    bool terminateAll() const { return m_cluster->terminateAll(); }

    std::unique_ptr<PostgresCluster> m_cluster;
    QString m_database;
    std::unique_ptr<Store> m_store;

protected slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
    }
    void init() {
        m_database = QString("orvo%1").arg(++m_number);
        Status status;
        m_store = open(m_cluster->url(m_database.toStdString()), {{}, true}, &status);
        QVERIFY2(m_store, status.text.c_str());
    }
    void cleanup() { m_store.reset(); }

private:
    int m_number = 0;
};

} // namespace orvo::store::test

#endif
