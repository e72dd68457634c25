// Search.h: finding records by words, while somebody types them.
//
// A record is found if each word occurs in its texts or in the names of what it stands in, and at
// least one in its texts: caption, name, object (the name of the resource that an element opens),
// parameters, key; of a person all names. Words are parts of text in any order, without regard to
// case, е being ё. No character means anything but itself.
//
// The texts are searched in a copy with the letters made equal, in blocks of records with
// neighbouring numbers; each knows which three or four letters in a row occur in it, so that a rare
// word is looked for in few of them. A change drops the block that it falls into; settled() makes
// it again, or the next search.
//
// All of it in the thread of the catalogue. Invariant, looked at by check(): a block that counts as
// made is what making it now would give.
#ifndef ORVO_CATALOGUE_SEARCH_H
#define ORVO_CATALOGUE_SEARCH_H

#include "catalogue/Catalogue.h"

#include <QString>
#include <QVector>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace orvo::catalogue {

/// What is shown of a record that was found.
struct Found {
    QString table, key;
    QString name;   ///< of a person first and last names; the key of a record without a name
    QString noun;   ///< "элемент меню"
    QString object; ///< of an element the resource's name; of a resource its own
    QString path;   ///< what it stands in, from the top
    QString icon;   ///< file name of its own icon
    QString login;  ///< of a person
    int kind = 0;   ///< orvo::Kind of a resource or its folder, or of the resource of an element
    bool isFolder = false;
    bool isSeparator = false;
    bool operator==(const Found&) const = default;
};
Found describe(const Catalogue& catalogue, const Record& record);

struct Findings {
    QVector<Found> best; ///< those that are shown, the best first
    int count = 0;       ///< of all that were found
    int unread = 0;      ///< words behind Search::mostWords, which were not looked for
    bool whole = false;  ///< nothing more is to come
};

class Search : public Listener {
public:
    /// Hears what has been found so far.
    using Progress = std::function<void(const Findings& sofar)>;
    /// When to tell of progress: once, so soon that the first ones show within a frame.
    static constexpr int progressAfterMs = 6;
    /// So many words of a text are looked for.
    static constexpr int mostWords = 15;

    /// Finds at most `most` to show, and counts all. `stop` ends it early (then not `whole`).
    Findings find(const Catalogue& catalogue, const QString& text, int most,
                  const std::atomic<bool>& stop, const Progress& progress = {});

    void recordChanged(const Catalogue& catalogue, const Record& before,
                       const Record& after) override;
    void loaded(const Catalogue& catalogue) override;
    void settled(const Catalogue& catalogue) override;

    const char* check(const Catalogue& catalogue) const;
    size_t memory() const;

private:
    static constexpr uint32_t blockSize = 1024;
    struct Block {
        std::string text;            ///< of each record its name, "\n", the rest, a zero byte
        std::vector<uint32_t> ends;  ///< where the next record's text begins
        std::vector<uint32_t> above; ///< 1 + number of what the record stands in; 0: nothing
        std::vector<uint8_t> places; ///< of its table in the order in which results are shown
        std::vector<uint64_t> parts; ///< bits of hashes: which three and four letters occur
        bool made = false;
        bool operator==(const Block&) const = default;
    };
    class Run;

    void make(const Catalogue& catalogue, uint32_t number, Block& block) const;
    void drop(uint32_t number);
    void dropThoseNaming(const Catalogue& catalogue, const Record& record);

    std::vector<Block> m_blocks;
    std::vector<uint32_t> m_dropped; ///< blocks that are not made
};

} // namespace orvo::catalogue

#endif
