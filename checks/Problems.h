// Problems.h: everything that is wrong with an installation, kept up to date: of a change only what
// it touches is looked at again.
//
// In the thread of its catalogue.
//
// Invariants, looked at by check():
// 1. When nothing is due, the findings are those that a fresh look gives.
// 2. A record without findings takes no room here.
// 3. errors() and warnings() are the numbers of the findings.
#ifndef ORVO_CHECKS_PROBLEMS_H
#define ORVO_CHECKS_PROBLEMS_H

#include "checks/Rules.h"
#include "platform/store/Store.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvo::checks {

class Problems : public catalogue::Listener {
public:
    /// Knows nothing before the catalogue is loaded, or lookAtAll. The catalogue outlives it; it is
    /// for the caller to add it as a listener.
    explicit Problems(const Catalogue& records) : m_records(records) {}

    /// Looks at everything again.
    void lookAtAll();
    /// Looks again at what the changes since have touched, until that time. False: not all of it.
    bool settle(std::chrono::steady_clock::time_point until);
    void settle();

    /// Which files have content: their places, as Store::fileArea tells them. Before this is known
    /// no file is missed.
    struct FilePlace {
        std::string path, name;
    };
    void setContents(const std::vector<FilePlace>& places);
    /// Content of a file was stored or deleted.
    void contentChanged(const std::string& resource, bool stored);

    /// All findings, by table, key and kind.
    Findings all() const;
    /// Whether that is so, as far as was looked.
    bool holds(const Finding& finding) const;
    size_t errors() const { return m_errors; }
    size_t warnings() const { return m_warnings; }
    /// The records whose findings have changed since this was asked last: what they are now.
    using Changed = std::map<std::pair<const store::TableDef*, std::string>, Findings>;
    Changed takeChanged() { return std::exchange(m_changed, {}); }

    /// The first invariant that does not hold; null if all do. For tests: it looks at everything.
    const char* check() const;

    const Catalogue& records() const { return m_records; }
    const Namesakes& namesakes() const { return m_namesakes; }
    /// The folder that holds all resources of a kind but files; none if it is missing.
    Record topFolder(int kind) const;

    // Listener
    void recordChanged(const Catalogue& records, const Record& before,
                       const Record& after) override;
    void loaded(const Catalogue& records) override;

private:
    Scene scene() const { return {m_records, m_namesakes, m_contents ? &*m_contents : nullptr}; }
    Findings findingsOf(const Record& record) const;
    void lookAt(uint32_t number);
    void replace(uint32_t number, const store::TableDef* table, const std::string& key,
                 Findings findings);
    void count(const Findings& findings, int sign);
    void findCircles();

    struct Version; ///< of a record, and the other one, between which it was changed
    void touchNamesakes(const Record& version);
    void touchNamers(const Version& version);
    void touchIcons(const Version& version);
    void touchCircle(const Record& before, const Record& after);
    void due(const Record& record) { m_due.insert(record.number()); }

    const Catalogue& m_records;
    Namesakes m_namesakes;
    /// By number. A hash table would be rebuilt at times, within one change.
    std::map<uint32_t, Findings> m_found;
    Findings m_tops;
    size_t m_errors = 0, m_warnings = 0;
    std::unordered_set<uint32_t> m_inCircle; ///< every member of one
    std::optional<std::unordered_set<uint32_t>> m_contents;
    std::map<std::string, bool> m_contentChanges; ///< by folded key of the resource; all seen
    std::unordered_set<uint32_t> m_due;
    bool m_topsDue = false;
    Changed m_changed;
};

/// The places of all stored files.
store::Status readContents(store::Store& store, std::vector<Problems::FilePlace>* places);

} // namespace orvo::checks

#endif
