#include "history/TextMatch.h"

#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <set>

namespace orvo::history {

namespace {

/// Beyond so many names they are looked up anew.
constexpr size_t mostNames = 200000;

} // namespace

TextMatch::TextMatch(store::MaintainedStore& store, QString text)
    : m_store(store)
    , m_text(std::move(text)) {}

/// Whether a value holds the text; if its record's name may, that is noted.
bool TextMatch::lookAt(const LoggedChange& read, int field, const store::Value& value,
                       std::vector<Record>* named) const {
    const store::FieldDef& def = read.table->fields[static_cast<size_t>(field)];
    if (const store::TableDef* target = targetOf(*read.table, def)) {
        const std::string& key = store::textOf(value);
        if (store::isKey(key))
            named->emplace_back(target, store::foldedKey(key));
        return false;
    }
    const auto* text = std::get_if<std::string>(&value);
    const QString shown =
        text ? QString::fromStdString(*text) : valueWords(*read.table, field, value, nullptr);
    return field != 0 && shown.contains(m_text, Qt::CaseInsensitive);
}

TextMatch::Candidate TextMatch::look(const store::Change& change) const {
    Candidate found;
    const LoggedChange read = logged(change);
    if (!read.table) {
        for (const std::string* json : {&change.after, &change.before})
            found.holds =
                found.holds || QString::fromStdString(*json).contains(m_text, Qt::CaseInsensitive);
        return found;
    }
    for (const Values* values : {&read.after, &read.before})
        for (const auto& [field, value] : *values)
            if (!std::holds_alternative<std::monostate>(value))
                found.holds = found.holds || lookAt(read, field, value, &found.named);
    if (change.code == OrvoEventUpdate) // others tell it themselves
        found.named.emplace_back(read.table, store::foldedKey(change.key));
    return found;
}

void TextMatch::readNames(const std::vector<Candidate>& candidates) {
    if (m_names.size() > mostNames)
        m_names.clear();
    std::map<const store::TableDef*, std::set<std::string>> wanted;
    for (const Candidate& candidate : candidates)
        if (!candidate.holds)
            for (const Record& record : candidate.named)
                if (m_names.count(record) == 0)
                    wanted[record.first].insert(record.second);
    LoggedRecords source(m_store);
    for (const auto& [table, keys] : wanted) {
        source.prepare(*table, {keys.begin(), keys.end()});
        for (const std::string& key : keys)
            m_names[{table, key}] =
                nameOf(*table, source.valuesOf(*table, key)).contains(m_text, Qt::CaseInsensitive);
    }
}

void TextMatch::keep(const std::vector<store::Change>& changes, std::vector<bool>* pass) {
    std::vector<Candidate> candidates(changes.size());
    for (size_t i = 0; i < changes.size(); ++i)
        if ((*pass)[i])
            candidates[i] = look(changes[i]);
    readNames(candidates);
    for (size_t i = 0; i < changes.size(); ++i)
        (*pass)[i] = candidates[i].holds ||
                     std::any_of(candidates[i].named.begin(), candidates[i].named.end(),
                                 [&](const Record& record) { return m_names.at(record); });
}

} // namespace orvo::history
