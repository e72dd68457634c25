// AdminTest.h: the ground of the cases that run the command on every kind of store.
#ifndef ORVO_TESTS_ADMIN_ADMINTEST_H
#define ORVO_TESTS_ADMIN_ADMINTEST_H

#include "AdminRun.h"
#include "tests/store/StoreKinds.h"

#include "platform/store/Maintenance.h"

#include <QtTest>

#include <memory>
#include <vector>

/// Gives every case a fresh store with the starting folders. `other` is another kind of store,
/// unless only one kind is asked for.
class AdminTest : public QObject {
    Q_OBJECT
public:
    using Kind = orvo::store::test::StoreKind;
    AdminTest(Kind& kind, Kind& other) : m_kind(kind), m_other(other) {}

    /// Runs the command on the store, or on that of another kind.
    AdminResult run(const QStringList& arguments) const { return runOn(m_kind, arguments); }
    AdminResult runOn(const Kind& kind, const QStringList& arguments) const {
        return m_admin->plain(onStore(kind, arguments));
    }
    static QStringList onStore(const Kind& kind, const QStringList& arguments) {
        return QStringList{"--store", QString::fromStdString(kind.url())} + arguments;
    }
    /// The store as an export shows it.
    QByteArray content(const Kind& kind) const {
        const AdminResult result = runOn(kind, {"export", "-"});
        return result.code == 0 ? result.out.toUtf8() : "failed: " + result.err.toUtf8();
    }
    QByteArray content() const { return content(m_kind); }
    std::unique_ptr<orvo::store::MaintainedStore> open() const {
        orvo::store::Status status;
        auto store = orvo::store::openMaintained(m_kind.url(), {"tester", false}, &status);
        if (!store)
            qWarning("%s", status.text.c_str());
        return store;
    }
    bool isPostgres() const { return m_kind.name() == "postgresql"; }

protected:
    Kind& m_kind;
    Kind& m_other;
    std::unique_ptr<AdminRun> m_admin; ///< the directory of the case

protected slots:
    void init() {
        m_admin = std::make_unique<AdminRun>();
        QVERIFY(m_kind.renew());
        const AdminResult made = run({"init"});
        QVERIFY2(made.code == 0, qPrintable(made.err));
    }
};

template <typename Test>
int runOnAllKinds(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const auto kinds = orvo::store::test::storeKinds();
    int result = 0;
    for (size_t i = 0; i < kinds.size(); ++i) {
        qInfo("On %s:", kinds[i]->name().constData());
        Test test(*kinds[i], *kinds[(i + 1) % kinds.size()]);
        result |= QTest::qExec(&test, argc, argv);
    }
    return result;
}

#define ORVO_DONE(expression)                                                                      \
    do {                                                                                           \
        const AdminResult orvoResult = (expression);                                               \
        QVERIFY2(orvoResult.code == 0, qPrintable(orvoResult.err));                                \
        QVERIFY2(orvoResult.err.isEmpty(), qPrintable(orvoResult.err));                            \
    } while (false)

#define ORVO_REFUSED(expression, text)                                                             \
    do {                                                                                           \
        const AdminResult orvoResult = (expression);                                               \
        QVERIFY2(orvoResult.refused(text), qPrintable(orvoResult.out + orvoResult.err));           \
    } while (false)

#endif
