#include "models/RowSearch.h"

#include "frame/CodePage.h"
#include "frame/FindBytes.h"

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_set>

namespace orvo {

namespace {

constexpr int blockSize = 1024;
constexpr char separator = '\xff'; ///< no letter's code
constexpr char noCode = 0;

/// One code for all letters that compare equal without regard to case, for every letter that a text
/// of the tables can have: those of Windows-1251.
class LetterCodes {
public:
    LetterCodes() {
        std::array<char, units> ofFolded{};
        char last = noCode;
        for (int byte = 0; byte < 256; ++byte) {
            const QChar letter(codepage::letterOf(static_cast<char>(byte)));
            char& code = ofFolded[letter.toCaseFolded().unicode()];
            if (code == noCode)
                code = ++last;
        }
        for (size_t unit = 0; unit < units; ++unit)
            m_codes[unit] = ofFolded[QChar(static_cast<ushort>(unit)).toCaseFolded().unicode()];
    }
    /// Adds the codes of a text. False, and nothing added, if a letter has none.
    bool append(const QString& text, std::string& codes) const {
        const size_t before = codes.size();
        for (const QChar letter : text) {
            const char code = m_codes[letter.unicode()];
            if (code == noCode) {
                codes.resize(before);
                return false;
            }
            codes.push_back(code);
        }
        return true;
    }

private:
    static constexpr size_t units = std::numeric_limits<ushort>::max() + 1;
    std::array<char, units> m_codes;
};

const LetterCodes& letterCodes() {
    static const LetterCodes codes;
    return codes;
}

QString textOf(const TabRec& parent, int row, int column) {
    return parent.child(row)->data(column).toString();
}

} // namespace

RowSearch::RowSearch(const TreeModelCore<TabRec>& model, int keyColumn)
    : m_model(model)
    , m_keyColumn(keyColumn) {
    using Model = QAbstractItemModel;
    const auto follow = [&](auto signal, auto slot) {
        QObject::connect(&model, signal, &m_context, slot);
    };
    follow(&Model::dataChanged, [this](const QModelIndex& from, const QModelIndex& to) {
        if (!m_columns.empty())
            drop(from.parent(), from.row(), to.row(), from.column(), to.column());
    });
    follow(&Model::rowsInserted, [this](const QModelIndex& parent, int first, int last) {
        onRowsInserted(parent, first, last);
    });
    follow(&Model::rowsAboutToBeRemoved, [this](const QModelIndex& parent, int first, int last) {
        onRowsAboutToBeRemoved(parent, first, last);
    });
    follow(&Model::rowsRemoved,
           [this](const QModelIndex& parent, int first) { onRowsRemoved(parent, first); });
    follow(&Model::rowsAboutToBeMoved, [this] {
        keepKeys();
        dropAll();
    });
    for (const auto signal : {&Model::columnsInserted, &Model::columnsRemoved})
        follow(signal, [this] { dropAll(); });
    follow(&Model::modelAboutToBeReset, [this] {
        keepKeys();
        dropAll();
    });
}

// ---------------------------------------------------------------------------------------------
// Searching

/// The way through the tree, depth first, without recursion.
class RowSearch::Walk {
public:
    Walk(RowSearch& search, int column, const QString& text)
        : m_search(search)
        , m_column(column)
        , m_text(text)
        , m_blocks(search.m_columns[column]) {
        m_hasCodes = letterCodes().append(text, m_codes);
    }

    void run() {
        enter(m_search.record({}));
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            const bool folders = level.folder < level.folderCount();
            if (level.hit == level.hits.size() && !folders) {
                if (!nextBlock(level))
                    m_levels.pop_back();
                continue;
            }
            // A row comes before those below it.
            const int until = folders ? level.folderRow() : blockSize;
            for (; level.hit < level.hits.size() && level.hits[level.hit] <= until; ++level.hit)
                m_search.m_hits.push_back(level.child(level.hits[level.hit]));
            if (folders)
                enter(level.child(level.block->folders[level.folder++]));
        }
    }

private:
    struct Level {
        const TabRec* parent;
        Blocks* blocks;
        const Block* block = nullptr;
        size_t next = 0;            ///< number of the block behind this one
        std::vector<uint16_t> hits; ///< in this block
        size_t hit = 0, folder = 0; ///< those already passed

        size_t folderCount() const { return block ? block->folders.size() : 0; }
        uint16_t folderRow() const { return block->folders[folder]; }
        const TabRec* child(uint16_t row) const {
            return parent->child(static_cast<int>(next - 1) * blockSize + row);
        }
    };

    void enter(const TabRec* parent) {
        const auto count = static_cast<size_t>(parent->childCount());
        Blocks& blocks = m_blocks[parent];
        blocks.resize((count + blockSize - 1) / blockSize);
        m_levels.push_back({parent, &blocks, nullptr, 0, {}});
    }
    bool nextBlock(Level& level) {
        if (level.next == level.blocks->size())
            return false;
        const int first = static_cast<int>(level.next) * blockSize;
        Block& block = (*level.blocks)[level.next++];
        if (!block.made)
            m_search.make(block, *level.parent, first, m_column);
        level.block = &block;
        level.hits.clear();
        level.hit = level.folder = 0;
        if (m_hasCodes)
            findCodes(block, level.hits);
        findOthers(block, *level.parent, first, level.hits);
        return true;
    }
    void findCodes(const Block& block, std::vector<uint16_t>& rows) const {
        const char* begin = block.text.data();
        const char* end = begin + block.text.size();
        size_t row = 0;
        for (const char* at = begin; at < end; at = begin + block.ends[row++]) {
            const char* found = m_codes.empty() ? at : findBytes(at, end, m_codes);
            if (found == end)
                return;
            const auto offset = static_cast<size_t>(found - begin);
            while (block.ends[row] <= offset)
                ++row;
            rows.push_back(static_cast<uint16_t>(row));
        }
    }
    void findOthers(const Block& block, const TabRec& parent, int first,
                    std::vector<uint16_t>& rows) const {
        for (const uint16_t row : block.others)
            if (textOf(parent, first + row, m_column).contains(m_text, Qt::CaseInsensitive)) {
                const auto place = std::lower_bound(rows.begin(), rows.end(), row);
                if (place == rows.end() || *place != row)
                    rows.insert(place, row);
            }
    }

    RowSearch& m_search;
    const int m_column;
    const QString& m_text;
    Column& m_blocks;
    std::string m_codes;
    bool m_hasCodes = false; ///< otherwise only rows with such letters can have the text
    std::vector<Level> m_levels;
};

void RowSearch::find(int column, const QString& text) {
    m_hits.clear();
    m_hitKeys.clear();
    Walk(*this, column, text).run();
}

void RowSearch::make(Block& block, const TabRec& parent, int first, int column) const {
    block = {};
    const int count = std::min(blockSize, parent.childCount() - first);
    block.ends.reserve(static_cast<size_t>(count));
    for (int row = 0; row < count; ++row) {
        if (!letterCodes().append(textOf(parent, first + row, column), block.text))
            block.others.push_back(static_cast<uint16_t>(row));
        block.text.push_back(separator);
        block.ends.push_back(static_cast<uint32_t>(block.text.size()));
        if (parent.child(first + row)->childCount() > 0)
            block.folders.push_back(static_cast<uint16_t>(row));
    }
    block.text.shrink_to_fit();
    block.made = true;
}

// ---------------------------------------------------------------------------------------------
// Hits

int RowSearch::count() const {
    Q_ASSERT(m_hits.empty() || m_hitKeys.empty()); // 1
    return static_cast<int>(std::max(m_hits.size(), m_hitKeys.size()));
}

QModelIndex RowSearch::hit(int number) const {
    if (number < 0 || number >= count())
        return {};
    const auto place = static_cast<size_t>(number);
    return m_hitKeys.empty() ? indexOf(m_hits[place]) : m_model.findIndexByKey(m_hitKeys[place]);
}

QModelIndex RowSearch::indexOf(const TabRec* row) const {
    std::vector<int> path;
    for (; row->parent(); row = row->parent())
        path.push_back(row->childNumber());
    QModelIndex index;
    for (auto step = path.rbegin(); step != path.rend(); ++step)
        index = m_model.index(*step, 0, index);
    return index;
}

void RowSearch::keepKeys() {
    m_hitKeys.reserve(m_hits.size() + m_hitKeys.size());
    for (const TabRec* row : m_hits)
        m_hitKeys.push_back(row->data(m_keyColumn).toString());
    m_hits.clear();
}

const char* RowSearch::check() const {
    if (!m_hits.empty() && !m_hitKeys.empty())
        return "search 1: hits of two kinds";
    std::unordered_set<const TabRec*> rows{record({})};
    std::vector<const TabRec*> pending{record({})};
    while (!pending.empty()) {
        const TabRec* row = pending.back();
        pending.pop_back();
        for (int below = 0; below < row->childCount(); ++below) {
            pending.push_back(row->child(below));
            rows.insert(row->child(below));
        }
    }
    for (const TabRec* row : m_hits)
        if (rows.count(row) == 0)
            return "search 1: a hit that is no row";
    for (const auto& [column, parents] : m_columns) {
        for (const auto& [parent, blocks] : parents) {
            if (rows.count(parent) == 0)
                return "search 2: blocks of a row that is gone";
            if (blocks.size() > size_t(parent->childCount() + blockSize - 1) / blockSize)
                return "search 2: more blocks than rows fill";
            for (size_t i = 0; i < blocks.size(); ++i) {
                Block now;
                if (blocks[i].made)
                    make(now, *parent, static_cast<int>(i) * blockSize, column);
                if (blocks[i].made && !(blocks[i] == now))
                    return "search 3: a block that is not as it would be made";
            }
        }
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------
// Following the model

void RowSearch::drop(const QModelIndex& parent, int first, int last, int firstColumn,
                     int lastColumn) {
    for (auto& [column, blocks] : m_columns) {
        if (column < firstColumn || column > lastColumn)
            continue;
        const auto found = blocks.find(record(parent));
        if (found == blocks.end())
            continue;
        const auto behind = std::min(static_cast<size_t>(last) / blockSize + 1, //
                                     found->second.size());
        for (auto block = static_cast<size_t>(first) / blockSize; block < behind; ++block)
            found->second[block].made = false;
    }
}

void RowSearch::rowsShifted(const QModelIndex& parent, int first, bool whole) {
    const auto kept = whole ? 0 : static_cast<size_t>(first) / blockSize;
    for (auto& [column, blocks] : m_columns) {
        const auto found = blocks.find(record(parent));
        if (found != blocks.end() && found->second.size() > kept)
            found->second.resize(kept);
    }
    // Its own block tells whether there are rows below it.
    if (whole && parent.isValid())
        drop(parent.parent(), parent.row(), parent.row(), std::numeric_limits<int>::min(),
             std::numeric_limits<int>::max());
}

void RowSearch::onRowsInserted(const QModelIndex& parent, int first, int last) {
    if (!m_columns.empty())
        rowsShifted(parent, first, m_model.rowCount(parent) == last - first + 1);
}

void RowSearch::onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    if (!m_hits.empty())
        keepKeys();
    if (m_columns.empty())
        return;
    std::vector<const TabRec*> going;
    for (int row = first; row <= last; ++row)
        going.push_back(record(parent)->child(row));
    while (!going.empty()) {
        const TabRec* row = going.back();
        going.pop_back();
        for (auto& [column, blocks] : m_columns)
            blocks.erase(row);
        for (int below = 0; below < row->childCount(); ++below)
            going.push_back(row->child(below));
    }
}

void RowSearch::onRowsRemoved(const QModelIndex& parent, int first) {
    if (!m_columns.empty())
        rowsShifted(parent, first, m_model.rowCount(parent) == 0);
}

} // namespace orvo
