// StoreKinds.h: the kinds of store that the common cases run on.
#ifndef ORVO_TESTS_STORE_STOREKINDS_H
#define ORVO_TESTS_STORE_STOREKINDS_H

#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

namespace orvo::store::test {

class StoreKind {
public:
    virtual ~StoreKind() = default;
    virtual QByteArray name() const = 0;
    /// Makes a fresh, empty store; false if that failed.
    virtual bool renew() = 0;
    /// Makes the store that a program of that version left, with records and contents (data/).
    virtual bool renewAsOf(int /*version*/) { return false; }
    /// Tables, columns, indexes, triggers, functions and rights as text, alike for stores that are
    /// alike.
    virtual QByteArray structure() { return {}; }
    /// The URL of that store.
    virtual std::string url() const = 0;
    /// Writes past the store, as an administrator would, with the database's own shell. False, with
    /// the shell's words in `output`, if it refused.
    virtual bool byHand(const QByteArray& sql, QByteArray* output = nullptr) = 0;
    /// The login in the log of what is written by hand.
    virtual QByteArray handLogin() const = 0;
    /// A text of any bytes as an SQL expression.
    virtual QByteArray rawText(const QByteArray& bytes) const = 0;
};

/// All kinds, or the one that ORVO_STORE_KIND names, for a closer look.
std::vector<std::unique_ptr<StoreKind>> storeKinds();

/// The kind that ORVO_STORE_KIND names; SQLite by default.
std::unique_ptr<StoreKind> storeKind();

class PostgresCluster;
/// A database of a server that the test may do anything to; renew makes the store if there is none.
/// By hand it is written at whichever of the ports 5432 and 5433 answers.
std::unique_ptr<StoreKind> kindOn(const PostgresCluster& cluster, const QByteArray& database,
                                  const std::string& url);

} // namespace orvo::store::test

#endif
