// StoreTest.h: the ground of the cases that run on every kind of store.
#ifndef ORVO_TESTS_STORE_STORETEST_H
#define ORVO_TESTS_STORE_STORETEST_H

#include "Batch.h"
#include "StoreKinds.h"

#include <QObject>
#include <QProcess>
#include <QtTest>

#include <memory>

namespace orvo::store::test {

/// Gives every case a fresh store, open as "tester".
class StoreTest : public QObject {
    Q_OBJECT
public:
    explicit StoreTest(StoreKind& kind) : m_kind(kind) {}

    /// A second, independent way into the same store.
    std::unique_ptr<Store> another(const char* login) const;
    int64_t position() const;

protected:
    StoreKind& m_kind;
    std::unique_ptr<Store> m_store;

protected slots:
    void init();
    void cleanup();
};

/// A process that opens the store, makes `count` updates of the caption of `key` ("login 0",
/// "login 1", ...) and exits. The program is the test itself.
std::unique_ptr<QProcess> startWriter(const std::string& url, const char* login, const char* key,
                                      int count);
/// Whether these arguments ask for that; then what main returns.
bool isWriter(int argc, char** argv, int* result);

template <typename Test>
int runOnAllKinds(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    int result = 0;
    if (isWriter(argc, argv, &result))
        return result;
    for (const auto& kind : storeKinds()) {
        qInfo("On %s:", kind->name().constData());
        Test test(*kind);
        result |= QTest::qExec(&test, argc, argv);
    }
    return result;
}

/// Compares a Status with Ok and shows its text.
#define ORVO_OK(expression)                                                                        \
    do {                                                                                           \
        const orvo::store::Status orvoStatus = (expression);                                       \
        QVERIFY2(orvoStatus.ok(), orvoStatus.text.c_str());                                        \
    } while (false)

/// Compares the code of a Status, which must come with one line of text.
#define ORVO_FAILS(expression, expected)                                                           \
    do {                                                                                           \
        const orvo::store::Status orvoStatus = (expression);                                       \
        QVERIFY2(orvoStatus.code == (expected),                                                    \
                 qPrintable(QString::number(orvoStatus.code) + " " +                               \
                            QString::fromStdString(orvoStatus.text)));                             \
        QVERIFY(!orvoStatus.text.empty());                                                         \
        QVERIFY(orvoStatus.text.find('\n') == std::string::npos);                                  \
    } while (false)

} // namespace orvo::store::test

#endif
