// LargeGroup.h: the words for a group that was counted instead of read whole (Group::counts).
//
// What is said holds for all its changes: how many there are of which kind is counted, and of the
// records only those are named that were read.
#ifndef ORVO_HISTORY_LARGEGROUP_H
#define ORVO_HISTORY_LARGEGROUP_H

#include "history/LoggedChange.h"
#include "history/Reading.h"

#include <QString>

#include <vector>

namespace orvo::history {

class LargeGroup {
public:
    /// Both outlive it. `isTakenBack`: the words are to tell that its changes were taken back.
    LargeGroup(const Group& group, RecordSource& source, bool isTakenBack = false);

    /// "Удалён элемент меню «Агрегаты» и ещё 2500 записей".
    QString line() const;
    /// "удалить «Агрегаты» и ещё 2500 записей".
    QString command() const;
    /// Where the records stand, as far as that is known of all.
    QString place() const;

private:
    struct Kind {
        const store::ChangeCount* count = nullptr;
        LoggedChange top;
        bool follows = false;
        int64_t number = 0; ///< of its records, less those that the group has written again
    };

    /// The change that the words begin with.
    const LoggedChange& first() const { return m_kinds.front().top; }
    bool isCut() const;
    /// Of a deletion of most leaves out what was written again.
    void leaveOutWrittenAgain();
    /// Of these, how many records at least are not.
    int64_t gone() const;
    bool isFlat() const;
    size_t total() const;
    QString names() const;
    /// " вместе с тем, что внутри: «a» …"; empty if nothing moved along with what was cut.
    QString along() const;

    const Group& m_group;
    RecordSource& m_source;
    std::vector<Kind> m_kinds; ///< what the words are about; at least one
    bool m_cut = false;
    const bool m_isTakenBack;
    bool m_replaced = false;
};

} // namespace orvo::history

#endif
