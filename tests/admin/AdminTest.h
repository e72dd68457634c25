// AdminTest.h: the ground of the cases that run the command on every kind of store.
#ifndef ORVO_TESTS_ADMIN_ADMINTEST_H
#define ORVO_TESTS_ADMIN_ADMINTEST_H

#include "AdminRun.h"
#include "tests/store/Batch.h"
#include "tests/store/StoreKinds.h"

#include "platform/store/Maintenance.h"

#include <QtTest>

#include <memory>
#include <vector>

/// Gives every case a fresh store with the starting folders of the command. `other` is another kind
/// of store, unless only one kind is asked for.
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
        using namespace orvo::store;
        m_admin = std::make_unique<AdminRun>();
        QVERIFY(m_kind.renew());
        // A run of the command takes as long as many a case: what it made of the first store is
        // written into the others as it wrote it.
        static QStringList made;
        if (made.isEmpty()) {
            const AdminResult result = run({"init"});
            QVERIFY2(result.code == 0, qPrintable(result.err));
            made = test::dump(*open(), "MenuResourceFolder", {"KeyLink", "type_", "caption"})
                       .split('\n', Qt::SkipEmptyParts);
            QVERIFY(!made.isEmpty());
            return;
        }
        Status status;
        const auto store = openMaintained(m_kind.url(), {"admin", false, "orvo-admin"}, &status);
        QVERIFY2(store, status.text.c_str());
        test::Batch folders("MenuResourceFolder");
        for (const QString& line : made) {
            const QStringList values = line.split('|');
            folders.insert(values[0].toUtf8().constData(),
                           {{"type_", values[1].toInt()}, {"caption", values[2]}});
        }
        status = folders.send(*store);
        QVERIFY2(status.ok(), status.text.c_str());
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
