// TextMatch.h: finds the changes in which a text is to be read, as a line of the history shows
// them: in the name of the record, in its old and new values, and in the names of the records that
// these name. Keys, which no line shows, do not count.
//
// Names are looked up for many changes at once and remembered, so a search may go on through all of
// a log.
#ifndef ORVO_HISTORY_TEXTMATCH_H
#define ORVO_HISTORY_TEXTMATCH_H

#include "history/LoggedChange.h"

#include <QString>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

class TextMatch {
public:
    /// `text` is found without regard to case; not empty. The store outlives the object.
    TextMatch(store::MaintainedStore& store, QString text);

    /// Of the changes that pass so far, those pass that hold the text. Names are looked up for no
    /// others.
    void keep(const std::vector<store::Change>& changes, std::vector<bool>* pass);

private:
    using Record = std::pair<const store::TableDef*, std::string>; ///< with the folded key
    struct Candidate {
        bool holds = false;
        std::vector<Record> named; ///< that it would hold it by
    };

    Candidate look(const store::Change& change) const;
    bool lookAt(const LoggedChange& read, int field, const store::Value& value,
                std::vector<Record>* named) const;
    void readNames(const std::vector<Candidate>& candidates);

    store::MaintainedStore& m_store;
    const QString m_text;
    std::map<Record, bool> m_names; ///< whether the name holds the text
};

} // namespace orvo::history

#endif
