// EachStore.h: one test on each kind of store.
//
//     void rowsMove_data() { m_stores.addRows(); }
//     void rowsMove() { TestStore store(m_stores.renewed()); ... }
#ifndef ORVO_TESTS_RESOURCES_EACHSTORE_H
#define ORVO_TESTS_RESOURCES_EACHSTORE_H

#include "tests/store/StoreKinds.h"

#include <QTest>

namespace orvo::test {

class EachStore {
public:
    void addRows() {
        m_kinds = store::test::storeKinds();
        QTest::addColumn<int>("kind");
        for (size_t i = 0; i < m_kinds.size(); ++i)
            QTest::newRow(m_kinds[i]->name().constData()) << static_cast<int>(i);
    }
    /// The row's kind, not yet renewed, once for each row.
    std::unique_ptr<store::test::StoreKind> taken() {
        QFETCH(int, kind);
        return std::move(m_kinds[static_cast<size_t>(kind)]);
    }
    /// An empty store of the row's kind, once for each row.
    std::unique_ptr<store::test::StoreKind> renewed() {
        auto store = taken();
        if (!store || !store->renew())
            qFatal("no store");
        return store;
    }

private:
    std::vector<std::unique_ptr<store::test::StoreKind>> m_kinds;
};

} // namespace orvo::test

#endif
