// What StoreCore makes of a database that fails: every call of the database, in turn, within every
// operation.
#include "Batch.h"
#include "MemoryStore.h"
#include "StoreTest.h"

#include "platform/store/Merge.h"

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

using Operation = std::function<Status(MemoryStore& store)>;

} // namespace

Q_DECLARE_METATYPE(Operation)

namespace {

/// A folder with a menu, a form and a file in their folders, and a user who holds nothing.
Status fill(MemoryStore& store) {
    Status status = Batch("MenuFolder")
                        .insert("hall", {{"caption", "Цех"}, {"order_", "1000"}})
                        .insert("old", {{"caption", "Старый"}, {"order_", "1000"}})
                        .send(store);
    if (status.ok())
        status = Batch("Menu")
                     .insert("pump", {{"caption", "Насос"}, {"FolderKey", "hall"}})
                     .insert("valve", {{"caption", "Кран"}, {"parent", "pump"}})
                     .send(store);
    if (status.ok())
        status = Batch("MenuFolder").remove("old").send(store);
    if (status.ok())
        status = Batch("MenuResourceFolder")
                     .insert("forms", {{"type_", 3}, {"caption", "формы отображения"}})
                     .insert("icons", {{"type_", 4}, {"caption", "icons"}})
                     .send(store);
    if (status.ok())
        status = store.formPut("", {{"", "scheme_", "<ui/>", {}}});
    return status.ok() ? store.filePut({{"icons", "pump.png", "png", {}}}) : status;
}

/// Takes everything, and says yes.
class Sink : public Receiver {
public:
    Status expect(uint64_t, uint64_t, uint64_t) override { return {}; }
    Status record(const TableDef&, const std::vector<Value>&, const std::string&) override {
        return {};
    }
    Status content(const std::vector<Value>&, const std::string&) override { return {}; }
    Status bytes(std::string_view) override { return {}; }
};

Status guardedUpdate(MemoryStore& store) {
    UpdateGuard guard;
    guard.seen = 0;
    return Batch("Menu")
        .update("pump", {{"caption", "Насос 2"}, {"parent", "valve2"}})
        .update("gone", {{"caption", "?"}})
        .insert("valve2", {{"caption", "Кран 2"}, {"FolderKey", "hall"}})
        .remove("valve")
        .send(store, &guard);
}

} // namespace

class TestStoreCore : public QObject {
    Q_OBJECT
private slots:
    void aFailureOfTheDatabaseIsReportedAndNothingIsLeft_data() {
        QTest::addColumn<Operation>("operation");
        const auto row = [](const char* name, Operation operation) {
            QTest::newRow(name) << std::move(operation);
        };
        row("update", [](MemoryStore& store) {
            return Batch("Menu").update("valve", {{"parent", "pump"}}).remove("pump").send(store);
        });
        row("guarded update", guardedUpdate);
        row("fetch", [](MemoryStore& store) {
            CMDArray rows;
            return store.fetch("Menu", rows.array);
        });
        row("fetchWhere", [](MemoryStore& store) {
            CMDArray rows;
            return store.fetchWhere("Menu", "FolderKey", "hall", rows.array);
        });
        row("fetchLinked", [](MemoryStore& store) {
            CMDArray rows;
            return store.fetchLinked("Menu", "parent", "PUMP", rows.array);
        });
        row("fetchKeys", [](MemoryStore& store) {
            CMDArray rows;
            return store.fetchKeys("Menu", {"pump"}, rows.array);
        });
        row("logEnd", [](MemoryStore& store) {
            LogCursor end;
            return store.logEnd(&end);
        });
        row("outcomeOf", [](MemoryStore& store) {
            Outcome outcome = Outcome::Unknown;
            return store.outcomeOf(store.lastWritten(), &outcome);
        });
        row("history", [](MemoryStore& store) {
            std::vector<Change> changes;
            return store.history({"Menu", {}, {}, {}, {}, 0}, 10, &changes);
        });
        row("formGet", [](MemoryStore& store) {
            std::vector<StoredFile> files;
            return store.formGet("scheme_", true, &files);
        });
        row("formPut", [](MemoryStore& store) {
            return store.formPut("", {{"", "scheme_", "<ui/>", {}}, {"", "scheme_1", "more", {}}});
        });
        row("new form", [](MemoryStore& store) {
            return store.formPut("", {{"", "other_", "<ui/>", {}}});
        });
        row("formDelete", [](MemoryStore& store) { return store.formDelete({"scheme_"}); });
        row("fileGet", [](MemoryStore& store) {
            std::vector<StoredFile> files;
            return store.fileGet("icons", "pump.png", true, &files);
        });
        row("filePut", [](MemoryStore& store) {
            return store.filePut({{"icons", "pump.png", "new", {}}, {"", "plan.txt", "plan", {}}});
        });
        row("fileDelete", [](MemoryStore& store) {
            return store.fileDelete({{"icons", "pump.png"}});
        });
        row("fileArea", [](MemoryStore& store) {
            return store.fileArea([](const std::string&, const StoredFile&) {});
        });
        row("userAdd", [](MemoryStore& store) { return store.userAdd({"petrov", "П", "П", "П"}); });
        row("writeOut", [](MemoryStore& store) {
            Sink sink;
            return store.writeOut(sink);
        });
        row("replaceAll", [](MemoryStore& store) {
            MemoryStore other;
            const Status filled = fill(other);
            return filled.ok() ? store.replaceAll(
                                     [&](Receiver& receiver) { return other.writeOut(receiver); })
                               : filled;
        });
    }

    void aFailureOfTheDatabaseIsReportedAndNothingIsLeft() {
        QFETCH(Operation, operation);
        for (int calls = 0;; ++calls) {
            QVERIFY(calls < 1000);
            MemoryStore store;
            ORVO_OK(fill(store));
            const MemoryStore::Content before = store.content();
            store.failAfter(calls);
            const Status status = operation(store);
            if (!store.hasFailed()) {
                ORVO_OK(status);
                QVERIFY(calls > 0);
                return;
            }
            QVERIFY2(
                status.code == Failed,
                qPrintable(
                    QString("call %1: %2").arg(calls).arg(QString::fromStdString(status.text))));
            QVERIFY2(store.content() == before, qPrintable(QString("call %1").arg(calls)));
            ORVO_OK(operation(store)); // and it can be done again
        }
    }

    void aCopyHoldsWhatTheStoreHolds() {
        MemoryStore store, copy;
        ORVO_OK(fill(store));
        ORVO_OK(copy.replaceAll([&](Receiver& receiver) { return store.writeOut(receiver); }));
        QVERIFY(copy.content().tables == store.content().tables);
        QVERIFY(copy.content().bytes == store.content().bytes);
    }
};

QTEST_GUILESS_MAIN(TestStoreCore)
#include "tst_store_core.moc"
