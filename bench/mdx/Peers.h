// Peers.h: what the record library is measured against.
#ifndef ORVO_BENCH_MDX_PEERS_H
#define ORVO_BENCH_MDX_PEERS_H

#include "Rows.h"

#include <absl/container/btree_set.h>
#include <boost/multi_index/identity.hpp>
#include <boost/multi_index/ranked_index.hpp>
#include <boost/multi_index_container.hpp>
#include <sqlite3.h>

#include <memory>

namespace bench {

namespace mi = boost::multi_index;

/// Row pointers under four ranked indices.
using Ranked =
    mi::multi_index_container<const Row*,
                              mi::indexed_by<mi::ranked_unique<mi::identity<const Row*>, Less<0>>,
                                             mi::ranked_unique<mi::identity<const Row*>, Less<1>>,
                                             mi::ranked_unique<mi::identity<const Row*>, Less<2>>,
                                             mi::ranked_unique<mi::identity<const Row*>, Less<3>>>>;

template <int key>
using Btree = absl::btree_set<const Row*, Less<key>>;

/// The rows in an SQLite database in memory.
class Sqlite {
public:
    explicit Sqlite(const std::vector<Row>& rows);
    void run(const char* sql);
    void createIndexes();
    void dropIndexes();
    /// Rowid of the row with that key.
    int64_t seek(const std::string& key);
    void insert(const Row& row);
    void erase(const std::string& key);

private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;
    Statement prepare(const char* sql);
    static void bind(sqlite3_stmt* statement, int at, const std::string& text);

    std::unique_ptr<sqlite3, Close> m_database;
    Statement m_insert, m_seek, m_erase;
};

} // namespace bench

#endif
