// StoreView.h: what the store file holds, read past all of this project's own code, and a foreign
// hand that writes into it with the sqlite3 command.
#ifndef ORVO_TESTS_E2E_STOREVIEW_H
#define ORVO_TESTS_E2E_STOREVIEW_H

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

struct sqlite3;

namespace orvo::test {

class StoreView {
public:
    explicit StoreView(const QString& path);

    /// The rows of a query; NULL comes as a null string.
    QVector<QStringList> rows(const QString& sql) const;
    /// The first value of the first row; a null string if there is none.
    QString value(const QString& sql) const;
    /// The lines that `table NAME` of --inspect must give, sorted; `where` for the rows wanted.
    QStringList tableLines(const QString& table, const QStringList& fields,
                           const QString& where = "1") const;

    /// Runs the sqlite3 command on the file; false if it fails.
    bool foreignWrite(const QString& sql) const;

    const QString path;

private:
    std::shared_ptr<sqlite3> m_db;
};

/// The text as an SQL literal.
QString quoted(const QString& text);

} // namespace orvo::test

#endif
