// AdminRun.h: runs the built orvo-admin, and looks into its stores behind its back.
#ifndef ORVO_TESTS_ADMIN_ADMINRUN_H
#define ORVO_TESTS_ADMIN_ADMINRUN_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// What one run gave.
struct AdminResult {
    int code = -1; ///< exit code; -1 if it did not end by itself
    QString out, err;
    QStringList lines() const { return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    /// Whether it failed as a failure should: code 2, nothing on standard output, and one line on
    /// standard error that holds the text.
    bool refused(const QString& text) const;
};

/// A temporary directory with at most one store in it.
class AdminRun {
public:
    AdminRun();
    /// Path below the directory.
    QString path(const QString& name = {}) const;
    QString storePath() const { return path(QStringLiteral("store.db")); }

    /// Runs the command with these arguments and nothing else; $XDG_DATA_HOME is the directory.
    AdminResult plain(const QStringList& arguments, const QByteArray& input = {}) const;
    /// The same on the store of the directory.
    AdminResult run(const QStringList& arguments) const;
    /// Makes the store; whether that went well.
    bool init() const { return run({QStringLiteral("init")}).code == 0; }

    /// Makes the store a copy of another one.
    void copyFrom(const AdminRun& other) const;

    /// Runs a statement on the store by hand; the first value of the first row as text. Fails the
    /// program loudly if the statement fails.
    QString sql(const QString& statement) const;
    int count(const QString& table) const;

    /// Writes a file below the directory and gives its path.
    QString write(const QString& name, const QByteArray& bytes) const;
    static QByteArray read(const QString& file);

private:
    QTemporaryDir dir_;
};

#endif
