// Catalogue.h: all records of an installation in memory, found by their keys and by what they name.
// Search and checks look at it instead of asking the store.
//
// A record takes about 150 bytes beside its texts. Values of all tables that the store lists
// (store::tables()) are kept, the contents of forms and files are not.
//
// Texts are kept in Windows-1251, as records carry them; UTF-8 in the parameters and results unless
// the name says otherwise. Keys, links and names are compared without regard to case.
//
// One thread at a time. LiveCatalogue.h keeps one on a thread of its own, up to date by the change
// log; whoever needs it only once calls load() where he is.
//
// Invariants, looked at by check(), and in debug builds after load():
//  1. A number belongs to one record from its insertion to its deletion, and then may be reused.
//  2. A key of a table belongs to at most one record.
//  3. Each value of an indexed field is in exactly one list, that of its text, and each element of
//     a list is such a value.
//  4. A text is held exactly as long as a record has it as its key or in an indexed field.
#ifndef ORVO_CATALOGUE_CATALOGUE_H
#define ORVO_CATALOGUE_CATALOGUE_H

#include "history/RecordSource.h"
#include "platform/store/Store.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::catalogue {

class Catalogue;

/// A record's values: a cheap handle, valid until the catalogue is changed next.
class Record {
public:
    Record() = default;
    explicit operator bool() const { return m_block != nullptr; }

    const store::TableDef& table() const;
    bool isIn(const char* table) const; ///< one of orvo::table
    uint32_t number() const { return m_number; }
    std::string key() const;
    /// A text; empty for NULL and for a field that the table lacks. Fields are numbers of the
    /// TableDef or names; a loop over a million records looks the numbers up beforehand.
    std::string text(int field) const;
    std::string text(const char* field) const;
    std::string_view cp1251(int field) const;
    /// An integer or boolean; 0 for NULL.
    int integer(int field) const;
    int integer(const char* field) const;
    bool isNull(int field) const;
    /// All fields, NULL included.
    history::Values values() const;
    /// Its caption, else its name, login or extension; empty if it has none.
    QString name() const;

private:
    friend class Catalogue;
    Record(const Catalogue* owner, const char* block, uint32_t number)
        : m_owner(owner)
        , m_block(block)
        , m_number(number) {}
    const Catalogue* m_owner = nullptr;
    const char* m_block = nullptr;
    uint32_t m_number = 0;
};

/// Hears what becomes of the records, in the thread of the catalogue.
class Listener {
public:
    virtual ~Listener() = default;
    /// A record was inserted (`before` is none), updated or deleted (`after` is none). The
    /// catalogue is already as after the change; `before` lives for this call.
    virtual void recordChanged(const Catalogue& catalogue, const Record& before,
                               const Record& after) = 0;
    /// Everything is different now: loaded for the first time, or again.
    virtual void loaded(const Catalogue& catalogue) = 0;
    /// Nothing more waits to be applied at the moment: time for what the next question would have
    /// to wait for. Told by LiveCatalogue only.
    virtual void settled(const Catalogue& /*catalogue*/) {}
};

class Catalogue {
public:
    Catalogue();
    ~Catalogue();
    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;

    /// Reads everything again. On failure, and with code Stopped once `stop` is set, it is empty.
    /// Changes that are committed meanwhile may be missed: whoever follows the log takes its cursor
    /// before and applies what comes after it. That may repeat changes which load has seen; when
    /// the last of them is applied all is as stored.
    store::Status load(store::Store& store, const std::atomic<bool>* stop = nullptr);
    /// Applies a change of the log. False if it concerns no record here.
    bool apply(const store::Change& change);

    /// Not owned; hears of every change until removed.
    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    // Records ------------------------------------------------------------------------------------

    size_t count() const;
    size_t count(const store::TableDef& table) const;
    /// The record of that key; none if there is none.
    Record find(const store::TableDef& table, std::string_view key) const;
    Record find(const char* table, std::string_view key) const;
    /// The record of that number; none if there is none. Numbers are 0 .. numberEnd() - 1.
    Record at(uint32_t number) const;
    uint32_t numberEnd() const { return static_cast<uint32_t>(m_blocks.size()); }
    /// All records of a table, in no order.
    void forEach(const store::TableDef& table,
                 const std::function<void(const Record&)>& each) const;

    // Who names whom -----------------------------------------------------------------------------
    // Indexed are all links, and Menu.FolderKey, which name records by their keys; further ico,
    // name_, login_ and fileExt by their text.

    using Each = std::function<bool(const Record& namer, int field)>; ///< false: no more of them

    /// The records of a table whose indexed field holds that text: children of a folder, elements
    /// of a desktop, users of an icon, resources of a name. In no order.
    void forEachWith(const char* table, const char* field, std::string_view text,
                     const Each& each) const;
    /// The records with a link to this one, or that would have one if it were there.
    void forEachLink(const store::TableDef& table, std::string_view key, const Each& each) const;
    /// The record that a link of this one names; none for NULL and for a dead link.
    Record linked(const Record& record, int field) const;
    /// What the record stands in: its folder, or the desktop of an element outside of folders.
    Record above(const Record& record) const;

    /// Names of what stands above the record, from the top, joined by " / ".
    QString path(const Record& record) const;

    // For tests and figures ----------------------------------------------------------------------

    /// The first invariant that does not hold; null if all do. Looks at everything.
    const char* check() const;
    /// Bytes that the records take beside the bytes of their texts, and these.
    struct Memory {
        size_t beside = 0, texts = 0;
    };
    Memory memory() const;

private:
    friend class Record;
    struct Layout; ///< of a table: what its fields are here
    struct Draft;  ///< a record's values on their way into a block
    /// A key or a value of an indexed field, held once for all that are spelled alike.
    struct Text {
        std::unique_ptr<char[]> bytes; ///< up to a zero byte; null: the place is free
        uint32_t next = 0;             ///< in its bucket; 0: none
        uint32_t owner = 0;            ///< 1 + number of the record whose key it is; 0: none
        uint32_t first = 0;            ///< node of the values that are this text; 0: none
        uint8_t domain = 0;            ///< what it is a key or a name of
    };
    using Block = std::unique_ptr<char[]>;
    using Node = uint32_t; ///< 8 * (1 + number of a record) + place among its indexed values

    static const std::vector<Layout>& layouts();
    static const Layout& layoutOf(const store::TableDef& table);

    void clear();
    Block pack(const Draft& draft);
    void place(uint32_t number, Block block);
    void link(uint32_t number);
    void unlink(uint32_t number);
    void release(const char* block);
    bool remove(const Record& record);
    void tell(const Record& before, const Record& after) const;
    /// The two nodes before and behind a node in its list.
    uint32_t* neighbours(Node node) const;

    uint32_t intern(std::string_view text, uint8_t domain);
    /// The next text that is equal without regard to case, behind `after` if that is not 0.
    uint32_t findText(std::string_view text, uint8_t domain, uint32_t after = 0) const;
    void releaseText(uint32_t text);
    void growBuckets();
    void walk(uint8_t domain, std::string_view text, const Each& each, const Layout* table,
              int field) const;

    std::vector<Block> m_blocks; ///< by number
    std::vector<uint32_t> m_freeNumbers;
    std::vector<size_t> m_counts; ///< by table
    std::vector<Text> m_texts;    ///< by number; 0 is none
    std::vector<uint32_t> m_freeTexts;
    std::vector<uint32_t> m_buckets; ///< first texts, by hash
    size_t m_textCount = 0;
    std::vector<Listener*> m_listeners; ///< not owned
};

/// A letter in the form in which texts are compared without regard to case; Windows-1251.
uint8_t foldedByte(uint8_t letter);

/// What a catalogue knows, for the words of the history.
class CatalogueRecords : public history::RecordSource {
public:
    explicit CatalogueRecords(const Catalogue& catalogue) : m_catalogue(catalogue) {}
    history::Values valuesOf(const store::TableDef& table, const std::string& key) override;

private:
    const Catalogue& m_catalogue;
};

} // namespace orvo::catalogue

#endif
