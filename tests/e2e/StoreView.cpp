#include "tests/e2e/StoreView.h"

#include <QProcess>

#include <sqlite3.h>

namespace orvo::test {

StoreView::StoreView(const QString& file) : path(file) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(file.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE, nullptr) !=
        SQLITE_OK)
        qFatal("%s: %s", qUtf8Printable(file), sqlite3_errmsg(db));
    sqlite3_busy_timeout(db, 5000);
    m_db.reset(db, sqlite3_close);
}

QVector<QStringList> StoreView::rows(const QString& sql) const {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(m_db.get(), sql.toUtf8().constData(), -1, &raw, nullptr) != SQLITE_OK)
        qFatal("%s: %s", qUtf8Printable(sql), sqlite3_errmsg(m_db.get()));
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw,
                                                                               sqlite3_finalize);
    QVector<QStringList> result;
    while (sqlite3_step(raw) == SQLITE_ROW) {
        QStringList row;
        for (int column = 0; column < sqlite3_column_count(raw); ++column) {
            const unsigned char* text = sqlite3_column_text(raw, column);
            row << (text ? QString::fromUtf8(reinterpret_cast<const char*>(text)) : QString());
        }
        result << row;
    }
    return result;
}

QString StoreView::value(const QString& sql) const {
    const QVector<QStringList> all = rows(sql);
    return all.isEmpty() ? QString() : all.first().value(0);
}

QStringList StoreView::tableLines(const QString& table, const QStringList& fields,
                                  const QString& where) const {
    QStringList names;
    for (const QString& field : fields)
        names << '"' + field + '"';
    QStringList lines;
    for (QStringList row :
         rows(QString("select %1 from \"%2\" where %3").arg(names.join(','), table, where))) {
        for (QString& cell : row)
            if (cell.isNull())
                cell = "\\N";
        lines << row.join('\t');
    }
    lines.sort();
    return lines;
}

bool StoreView::foreignWrite(const QString& sql) const {
    return QProcess::execute("sqlite3", {"-cmd", ".timeout 5000", path, sql}) == 0;
}

QString quoted(const QString& text) {
    return '\'' + QString(text).replace('\'', "''") + '\'';
}

} // namespace orvo::test
