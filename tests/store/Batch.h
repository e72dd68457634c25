// Batch.h: records on their way into a store, and tables as text.
#ifndef ORVO_TESTS_STORE_BATCH_H
#define ORVO_TESTS_STORE_BATCH_H

#include "platform/store/Store.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <initializer_list>
#include <utility>

namespace orvo::store::test {

/// The scratch table of one update call. A field's value is a text, an int, a bool, a double, or an
/// invalid QVariant for NULL. The array has no keys, so a key may come several times.
class Batch {
public:
    using Fields = std::initializer_list<std::pair<const char*, QVariant>>;
    explicit Batch(const char* table);

    Batch& insert(const char* key, Fields fields = {}) { return add(MDX_INSERT, key, fields); }
    Batch& update(const char* key, Fields fields = {}) { return add(MDX_UPDATE, key, fields); }
    Batch& remove(const char* key) { return add(MDX_DELETE, key, {}); }
    Batch& add(int flag, const char* key, Fields fields);
    /// One more field of the record that was added last.
    Batch& set(const char* field, const QVariant& value);

    Status send(Store& store, UpdateGuard* guard = nullptr) {
        return store.update(m_table, array.array, guard);
    }

    CMDArray array;

private:
    const char* m_table;
    MDRData* m_last = nullptr; ///< of the array
};

/// All records of a table in the order of their keys, a line each: the values of the fields joined
/// by "|"; NULL is "-". Without fields all of them. A failure gives its text.
QString dump(Store& store, const char* table, const QStringList& fields = {});
QString dump(const MDArray* array, const QStringList& fields = {});

/// The log after a cursor, a line each: "code table key login after before".
QString log(Store& store, int64_t cursor = 0);

} // namespace orvo::store::test

#endif
