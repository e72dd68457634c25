// Namesakes.h: finds records that share what should tell them apart: logins, extensions, places of
// folders, names of resources, places in the order of a menu.
//
// Invariants, looked at by check(): 1 each record with an identity that was added is in exactly one
// chain, that of its hash, or in the crowd of its hash; 2 there are at least as many chains as
// records; 3 a hash that many records share has a crowd, ordered by their keys, so that the first
// ones are found without looking at all: thousands of elements in one place of the order are
// followed one by one.
#ifndef ORVO_CHECKS_NAMESAKES_H
#define ORVO_CHECKS_NAMESAKES_H

#include "checks/Fields.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvo::checks {

class Namesakes {
public:
    /// What the record shares with no other one, in a form in which it can be compared; empty: it
    /// has nothing of the kind.
    static std::string identityOf(const Record& record);
    /// The identity of a folder of resources.
    static std::string folderPlace(int kind, std::string_view above, std::string_view caption);
    /// ...of a file...
    static std::string filePlace(std::string_view folder, std::string_view name);
    /// ...and of the one that holds all resources of a kind but files.
    static std::string topPlace(int kind);

    void clear();
    /// The others that were added are in `records` as well.
    void add(const Catalogue& records, const Record& record);
    /// A record as it was added; nothing happens if it was not.
    void remove(const Record& record);
    /// The records of that identity; false from `each`: no more.
    void forEach(const Catalogue& records, const std::string& identity,
                 const std::function<bool(const Record&)>& each) const;
    /// The one with the lowest key, which has the right to it; and the next one. None: there is
    /// none.
    struct First {
        Record owner, next;
    };
    First first(const Catalogue& records, const std::string& identity) const;

    /// The first invariant that does not hold; null if all do. For tests: `records` are those that
    /// were added, and no others.
    const char* check(const Catalogue& records) const;

private:
    static constexpr uint32_t none = 0xffffffffU;
    struct Node {
        uint32_t hash = 0, next = none, previous = none;
        bool used = false, inCrowd = false;
    };
    using Crowd = std::set<std::pair<std::string, uint32_t>>; ///< folded keys and numbers
    void link(uint32_t number);
    void unlink(uint32_t number);
    void gather(const Catalogue& records, uint32_t hash);
    void scatter(uint32_t hash);
    void grow();

    std::vector<Node> m_nodes; ///< by number of the record
    std::vector<uint32_t> m_chains;
    std::unordered_map<uint32_t, Crowd> m_crowds; ///< by hash
    size_t m_count = 0;
};

} // namespace orvo::checks

#endif
