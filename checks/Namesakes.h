// Namesakes.h: finds records that share what should tell them apart: logins, extensions, places of
// folders, names of resources, places in the order of a menu.
//
// Invariants: 1 each record with an identity that was added is in exactly one chain, that of its
// hash; 2 there are at least as many chains as records.
#ifndef ORVO_CHECKS_NAMESAKES_H
#define ORVO_CHECKS_NAMESAKES_H

#include "checks/Fields.h"

#include <cstdint>
#include <functional>
#include <string>
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
    void add(const Record& record);
    /// Nothing happens if it was not added.
    void remove(uint32_t number);
    /// The records of that identity, in no order.
    void forEach(const Catalogue& records, const std::string& identity,
                 const std::function<void(const Record&)>& each) const;
    /// The one with the lowest key, which has the right to it; and the next one. None: there is
    /// none.
    struct First {
        Record owner, next;
    };
    First first(const Catalogue& records, const std::string& identity) const;

private:
    static constexpr uint32_t none = 0xffffffffU;
    struct Node {
        uint32_t hash = 0, next = none, previous = none;
        bool used = false;
    };
    void link(uint32_t number);
    void grow();

    std::vector<Node> m_nodes; ///< by number of the record
    std::vector<uint32_t> m_chains;
    size_t m_count = 0;
};

} // namespace orvo::checks

#endif
