// StoreView.h: what the store holds, read past all of this project's own code, and a foreign hand
// that writes into it with the database's own shell.
//
// Statements are those of SQLite; names with a capital need no quotes in either kind of store.
#ifndef ORVO_TESTS_E2E_STOREVIEW_H
#define ORVO_TESTS_E2E_STOREVIEW_H

#include "tests/store/StoreKinds.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

namespace orvo::test {

class StoreView {
public:
    /// Of a store that was made already.
    explicit StoreView(std::unique_ptr<store::test::StoreKind> kind);
    ~StoreView();

    /// The URL, for programs.
    QString url() const;
    /// The rows of a query; NULL comes as a null string, a truth value as "1" or "0".
    QVector<QStringList> rows(const QString& sql) const;
    /// The first value of the first row; a null string if there is none.
    QString value(const QString& sql) const;
    /// The lines that `table NAME` of --inspect must give, sorted; `where` for the rows wanted.
    QStringList tableLines(const QString& table, const QStringList& fields,
                           const QString& where = "1 = 1") const;

    /// Runs the database's shell; false if it fails.
    bool foreignWrite(const QString& sql) const;

private:
    class Reader;
    class SqliteReader;
    class PostgresReader;
    std::unique_ptr<store::test::StoreKind> m_kind;
    std::unique_ptr<Reader> m_reader;
};

/// The text as an SQL literal.
QString quoted(const QString& text);

} // namespace orvo::test

#endif
