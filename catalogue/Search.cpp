#include "catalogue/Search.h"

#include "catalogue/SearchTexts.h"
#include "frame/FindBytes.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <QElapsedTimer>
#include <QStringList>

#include <algorithm>
#include <numeric>

namespace orvo::catalogue {

Found describe(const Catalogue& catalogue, const Record& record) {
    Found found;
    const history::Values values = record.values();
    const auto text = [&](const char* field) { return QString::fromStdString(record.text(field)); };
    found.table = QString::fromLatin1(record.table().name);
    found.key = QString::fromStdString(record.key());
    found.noun = history::nounOf(record.table(), values).one;
    found.name = record.name();
    found.path = catalogue.path(record);
    found.icon = text(field::ico);
    found.kind = record.integer(field::type_);
    found.isFolder = record.isIn(table::MenuResourceFolder) || record.integer(field::isFolder) != 0;
    if (record.isIn(table::Users)) {
        found.login = text(field::login_);
        const QString full =
            QStringList{text(field::lastName), text(field::firstName), text(field::midlName)}
                .join(QLatin1Char(' '))
                .simplified();
        if (!full.isEmpty())
            found.name = full;
        found.object = found.login;
    } else if (record.isIn(table::Menu)) {
        const Record object = catalogue.linked(record, record.table().find(field::MenuResourceKey));
        found.object = QString::fromStdString(object.text(resourceNameField()));
        found.kind = object.integer(field::type_);
        found.isFolder = record.isNull(record.table().find(field::MenuResourceKey));
        found.isSeparator = record.integer(field::separator) != 0;
    } else if (record.isIn(table::MenuResource)) {
        found.object = text(field::name_);
    }
    if (found.name.isEmpty())
        found.name = found.key;
    return found;
}

// ---------------------------------------------------------------------------------------------
// The copy of the texts

void Search::make(const Catalogue& catalogue, uint32_t number, Block& block) const {
    block.text.clear();
    block.ends.clear();
    block.above.clear();
    block.places.clear();
    const uint32_t first = number * blockSize;
    const uint32_t end = std::min(first + blockSize, catalogue.numberEnd());
    block.ends.reserve(end - first);
    block.above.reserve(end - first);
    for (uint32_t i = first; i < end; ++i) {
        const Record record = catalogue.at(i);
        uint32_t above = 0;
        if (isSearched(record)) {
            appendTexts(catalogue, record, block.text);
            if (const Record what = catalogue.above(record))
                above = what.number() + 1;
        }
        block.text.push_back(endOfRecord);
        block.ends.push_back(static_cast<uint32_t>(block.text.size()));
        block.above.push_back(above);
        block.places.push_back(placeOfTable(record));
    }
    block.text.shrink_to_fit();
    block.parts.assign((1U << partBits) / 64, 0);
    const auto mark = [&block](uint32_t part) { block.parts[part / 64] |= 1ULL << part % 64; };
    // The last text ends in a zero byte, so four bytes can be read wherever three letters are.
    for (size_t i = 0; i + 4 <= block.text.size(); ++i) {
        const uint32_t four = letters(block.text.data() + i);
        mark(partOfThree(four));
        mark(partOfFour(four));
    }
    block.made = true;
}

void Search::drop(uint32_t number) {
    const uint32_t place = number / blockSize;
    if (place >= m_blocks.size())
        m_blocks.resize(place + 1);
    else if (!m_blocks[place].made)
        return; // known
    m_blocks[place].made = false;
    m_dropped.push_back(place);
}

void Search::dropThoseNaming(const Catalogue& catalogue, const Record& record) {
    catalogue.forEachLink(record.table(), record.key(), [this](const Record& namer, int) {
        drop(namer.number());
        return true;
    });
}

void Search::recordChanged(const Catalogue& catalogue, const Record& before, const Record& after) {
    drop((after ? after : before).number());
    // What names it says its name, or stands in it.
    if (!before || !after)
        dropThoseNaming(catalogue, before ? before : after);
    else if (before.isIn(table::MenuResource) &&
             before.cp1251(resourceNameField()) != after.cp1251(resourceNameField()))
        dropThoseNaming(catalogue, after);
}

void Search::loaded(const Catalogue& catalogue) {
    m_blocks.clear();
    m_dropped.clear();
    m_blocks.resize((catalogue.numberEnd() + blockSize - 1) / blockSize);
    for (uint32_t i = 0; i < m_blocks.size(); ++i)
        m_dropped.push_back(i);
}

void Search::settled(const Catalogue& catalogue) {
    for (const uint32_t place : m_dropped)
        if (!m_blocks[place].made)
            make(catalogue, place, m_blocks[place]);
    m_dropped.clear();
}

const char* Search::check(const Catalogue& catalogue) const {
    for (uint32_t place = 0; place < m_blocks.size(); ++place) {
        if (!m_blocks[place].made)
            continue;
        Block now;
        make(catalogue, place, now);
        if (!(now == m_blocks[place]))
            return "a block is not what the records say";
    }
    return nullptr;
}

size_t Search::memory() const {
    size_t sum = m_blocks.capacity() * sizeof(Block);
    for (const Block& block : m_blocks)
        sum += block.text.capacity() + 4 * (block.ends.capacity() + block.above.capacity()) +
               block.places.capacity() + 8 * block.parts.capacity();
    return sum;
}

// ---------------------------------------------------------------------------------------------
// Searching

/// One search.
class Search::Run {
public:
    Run(const Search& search, const Catalogue& catalogue, const QString& text, size_t most)
        : m_search(search)
        , m_catalogue(catalogue)
        , m_most(most) {
        const QStringList words = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        m_unread = std::max<int>(0, words.size() - mostWords);
        for (const QString& word : words.mid(0, mostWords)) {
            const std::string utf8 = word.toStdString();
            if (!store::isShowable(utf8)) {
                m_words.clear(); // no record can have it
                return;
            }
            std::string codes;
            append(codes, mdx::toCp1251(utf8));
            m_words.push_back(std::move(codes));
        }
        // A longer word is rarer; each is looked for by itself, and of a record the first counts.
        std::stable_sort(m_words.begin(), m_words.end(),
                         [](const auto& a, const auto& b) { return a.size() > b.size(); });
        append(m_whole, mdx::toCp1251(text.simplified().toStdString()));
        for (const std::string& word : m_words)
            m_parts.push_back(partsOf(word));
        if (m_words.size() > 1)
            m_pathWords.resize(catalogue.numberEnd(), 0);
    }

    bool isEmpty() const { return m_words.empty(); }

    /// Looks through all; false if it was stopped. `pause` is called after each block.
    template <class Pause>
    bool go(const std::atomic<bool>& stop, Pause&& pause) {
        // In strides through all of them: whatever is looked for, some of it is met early.
        const auto count = static_cast<uint32_t>(m_search.m_blocks.size());
        uint32_t stride = count * 5 / 8 + 1;
        while (std::gcd(stride, count) != 1)
            ++stride;
        uint32_t place = 0;
        for (uint32_t i = 0; i < count; ++i, place = (place + stride) % count) {
            if (stop)
                return false;
            for (size_t word = 0; word < m_words.size(); ++word)
                if (mayHave(m_search.m_blocks[place], word))
                    scan(m_search.m_blocks[place], place * blockSize, word);
            pause();
        }
        return true;
    }

    Findings findings(bool whole) const {
        std::vector<Hit> hits = m_best;
        std::sort(hits.begin(), hits.end(), [this](const Hit& a, const Hit& b) {
            if (a.rank != b.rank)
                return a.rank < b.rank;
            const int order = mdx::compareText(nameOf(a.number), nameOf(b.number));
            return order != 0 ? order < 0 : a.number < b.number;
        });
        Findings found;
        found.count = m_count;
        found.whole = whole;
        found.unread = m_unread;
        found.best.reserve(static_cast<int>(hits.size()));
        for (const Hit& hit : hits)
            found.best.append(describe(m_catalogue, m_catalogue.at(hit.number)));
        return found;
    }
    bool hasAny() const { return m_count > 0; }

private:
    static constexpr uint16_t isKnown = 0x8000; ///< in m_pathWords, above a bit for each word
    static_assert(mostWords < 16);
    struct Hit {
        uint32_t rank; ///< less is better
        uint32_t number;
        bool operator<(const Hit& other) const {
            return rank != other.rank ? rank < other.rank : number < other.number;
        }
    };

    bool mayHave(const Block& block, size_t word) const {
        return std::all_of(m_parts[word].begin(), m_parts[word].end(), [&block](uint32_t part) {
            return (block.parts[part / 64] >> part % 64 & 1) != 0;
        });
    }
    void scan(const Block& block, uint32_t first, size_t word) {
        const char* begin = block.text.data();
        const char* end = begin + block.text.size();
        size_t record = 0;
        for (const char* at = begin; at < end; at = begin + block.ends[record++]) {
            const char* place = findBytes(at, end, m_words[word]);
            if (place == end)
                return;
            const auto offset = static_cast<size_t>(place - begin);
            while (block.ends[record] <= offset)
                ++record;
            const size_t from = record == 0 ? 0 : block.ends[record - 1];
            consider({begin + from, block.ends[record] - from - 1}, block, first, record, word);
        }
    }
    /// A record whose texts have that word.
    void consider(std::string_view text, const Block& block, uint32_t first, size_t record,
                  size_t word) {
        bool byPath = false;
        for (size_t other = 0; other < m_words.size(); ++other) {
            if (other == word)
                continue;
            const char* end = text.data() + text.size();
            if (findBytes(text.data(), end, m_words[other]) != end) {
                if (other < word)
                    return; // found by that one
            } else if (!isInPath(block.above[record], other)) {
                return;
            } else {
                byPath = true;
            }
        }
        ++m_count;
        const Hit hit{rank(text, byPath) * 8 + block.places[record],
                      static_cast<uint32_t>(first + record)};
        if (m_best.size() < m_most) {
            m_best.push_back(hit);
            std::push_heap(m_best.begin(), m_best.end());
        } else if (hit < m_best.front()) {
            std::pop_heap(m_best.begin(), m_best.end());
            m_best.back() = hit;
            std::push_heap(m_best.begin(), m_best.end());
        }
    }
    uint32_t rank(std::string_view text, bool byPath) const {
        enum { Whole, Beginning, Starts, InName, InTexts, ByPath };
        if (byPath)
            return ByPath;
        const std::string_view name = text.substr(0, text.find(endOfName));
        if (name == m_whole || (name.size() == m_whole.size() + 1 && name.back() == ' ' &&
                                name.substr(0, m_whole.size()) == m_whole))
            return Whole;
        if (name.substr(0, m_whole.size()) == m_whole)
            return Beginning;
        bool starts = true;
        for (const std::string& word : m_words) {
            const size_t place = name.find(word);
            if (place == std::string_view::npos)
                return InTexts;
            starts = starts && (place == 0 || name[place - 1] == ' ');
        }
        return starts ? Starts : InName;
    }
    bool isInPath(uint32_t above, size_t word) {
        return above != 0 && (pathWords(above - 1) >> word & 1) != 0;
    }
    /// Which words the names of a record and of what it stands in have, as bits.
    uint16_t pathWords(uint32_t number, int depth = 0) {
        constexpr int deepest = 64; // a circle ends here
        if (number >= m_pathWords.size() || depth > deepest)
            return 0;
        if (m_pathWords[number] & isKnown)
            return m_pathWords[number];
        const Block& block = m_search.m_blocks[number / blockSize];
        const size_t record = number % blockSize;
        const std::string_view name = nameOf(number);
        uint16_t words = isKnown;
        for (size_t i = 0; i < m_words.size(); ++i)
            if (name.find(m_words[i]) != std::string_view::npos)
                words |= static_cast<uint16_t>(1U << i);
        if (block.above[record] != 0)
            words |= pathWords(block.above[record] - 1, depth + 1);
        return m_pathWords[number] = words;
    }
    std::string_view nameOf(uint32_t number) const {
        const Block& block = m_search.m_blocks[number / blockSize];
        const size_t record = number % blockSize;
        const size_t from = record == 0 ? 0 : block.ends[record - 1];
        const std::string_view text(block.text.data() + from, block.ends[record] - from);
        return text.substr(0, text.find(endOfName));
    }

    const Search& m_search;
    const Catalogue& m_catalogue;
    const size_t m_most;
    std::vector<std::string> m_words;
    std::vector<std::vector<uint32_t>> m_parts; ///< of each word
    std::string m_whole;
    std::vector<uint16_t> m_pathWords; ///< by number, as far as asked for
    std::vector<Hit> m_best;           ///< a heap, the worst in front
    int m_count = 0;
    int m_unread = 0;
};

Findings Search::find(const Catalogue& catalogue, const QString& text, int most,
                      const std::atomic<bool>& stop, const Progress& progress) {
    QElapsedTimer elapsed;
    elapsed.start();
    settled(catalogue);
    Run run(*this, catalogue, text, static_cast<size_t>(std::max(most, 1)));
    if (run.isEmpty()) {
        Findings none;
        none.whole = true;
        return none;
    }
    bool isTold = !progress;
    const bool whole = run.go(stop, [&] {
        if (isTold || elapsed.elapsed() < progressAfterMs || !run.hasAny())
            return;
        isTold = true;
        progress(run.findings(false));
    });
    return run.findings(whole);
}

} // namespace orvo::catalogue
