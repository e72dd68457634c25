#include "tests/e2e/StoreView.h"

#include "platform/store/StoreUrl.h"

#include <QRegularExpression>

#include <libpq-fe.h>
#include <sqlite3.h>

namespace orvo::test {

class StoreView::Reader {
public:
    virtual ~Reader() = default;
    virtual QVector<QStringList> rows(const QString& sql) = 0;
    virtual QString ownWords(const QString& sql) const { return sql; }
};

class StoreView::SqliteReader : public Reader {
public:
    explicit SqliteReader(const std::string& file) {
        sqlite3* db = nullptr;
        if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
            qFatal("%s: %s", file.c_str(), sqlite3_errmsg(db));
        sqlite3_busy_timeout(db, 5000);
        m_db.reset(db);
    }

    QVector<QStringList> rows(const QString& sql) override {
        sqlite3_stmt* raw = nullptr;
        if (sqlite3_prepare_v2(m_db.get(), sql.toUtf8().constData(), -1, &raw, nullptr) !=
            SQLITE_OK)
            qFatal("%s: %s", qUtf8Printable(sql), sqlite3_errmsg(m_db.get()));
        const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(
            raw, sqlite3_finalize);
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

private:
    struct Close {
        void operator()(sqlite3* db) const { sqlite3_close(db); }
    };
    std::unique_ptr<sqlite3, Close> m_db;
};

class StoreView::PostgresReader : public Reader {
public:
    explicit PostgresReader(const std::string& url) : m_connection(PQconnectdb(url.c_str())) {
        if (PQstatus(m_connection.get()) != CONNECTION_OK)
            qFatal("%s", PQerrorMessage(m_connection.get()));
    }

    QVector<QStringList> rows(const QString& sql) override {
        std::unique_ptr<PGresult, Clear> result = run(sql);
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) { // the server was away
            PQreset(m_connection.get());
            result = run(sql);
        }
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK)
            qFatal("%s: %s", qUtf8Printable(sql), PQerrorMessage(m_connection.get()));
        constexpr Oid booleanType = 16;
        QVector<QStringList> all;
        for (int i = 0; i < PQntuples(result.get()); ++i) {
            QStringList row;
            for (int column = 0; column < PQnfields(result.get()); ++column) {
                QString text = QString::fromUtf8(PQgetvalue(result.get(), i, column));
                if (PQftype(result.get(), column) == booleanType)
                    text = text == "t" ? "1" : "0";
                row << (PQgetisnull(result.get(), i, column) ? QString() : text);
            }
            all << row;
        }
        return all;
    }

    /// Names with a capital in quotes, outside of literals and quotes.
    QString ownWords(const QString& sql) const override {
        static const QRegularExpression part("'(?:[^']|'')*'|\"[^\"]*\"|\\b[A-Za-z_]+\\b");
        QString out;
        int end = 0;
        for (auto match = part.globalMatch(sql); match.hasNext();) {
            const QRegularExpressionMatch one = match.next();
            const QString text = one.captured();
            out += sql.mid(end, one.capturedStart() - end);
            const bool name = text[0].isLetter() && text != text.toLower();
            out += name ? '"' + text + '"' : text;
            end = one.capturedEnd();
        }
        return out + sql.mid(end);
    }

private:
    struct Clear {
        void operator()(PGresult* result) const { PQclear(result); }
    };
    std::unique_ptr<PGresult, Clear> run(const QString& sql) {
        return std::unique_ptr<PGresult, Clear>(
            PQexec(m_connection.get(), ownWords(sql).toUtf8().constData()));
    }
    struct Finish {
        void operator()(PGconn* connection) const { PQfinish(connection); }
    };
    std::unique_ptr<PGconn, Finish> m_connection;
};

StoreView::StoreView(std::unique_ptr<store::test::StoreKind> kind) : m_kind(std::move(kind)) {
    store::StoreUrl url;
    if (const store::Status status = url.parse(m_kind->url()); !status.ok())
        qFatal("%s", status.text.c_str());
    if (!url.file().empty())
        m_reader = std::make_unique<SqliteReader>(url.file());
    else
        m_reader = std::make_unique<PostgresReader>(m_kind->url());
}

StoreView::~StoreView() = default;

QString StoreView::url() const {
    return QString::fromStdString(m_kind->url());
}

QVector<QStringList> StoreView::rows(const QString& sql) const {
    return m_reader->rows(sql);
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
    QByteArray words;
    const bool done = m_kind->byHand((m_reader->ownWords(sql) + ';').toUtf8(), &words);
    if (!done)
        qWarning("%s", words.constData());
    return done;
}

QString quoted(const QString& text) {
    return '\'' + QString(text).replace('\'', "''") + '\'';
}

} // namespace orvo::test
