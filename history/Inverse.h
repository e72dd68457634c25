// Inverse.h: what takes actions back, and leaves the work of others where it is.
//
// Every field gets the value that it has from the last change that still stands; so what somebody
// else has changed since is left alone, and comes out right when he takes his change back, too.
// Taking back an action that took others back does those again. Who has taken a form into work is
// no edit: locks are neither taken back nor done again, and of a form that another holds neither
// the contents change nor does it go. Only a user who goes leaves none behind.
//
// A plan is made from the log and the records as they are. It is written as one action, in one
// transaction, and only if none of its records was changed since it was made.
#ifndef ORVO_HISTORY_INVERSE_H
#define ORVO_HISTORY_INVERSE_H

#include "history/Locks.h"
#include "history/People.h"
#include "history/Reading.h"

#include <QString>

#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

/// Something that is left as it is, and why.
struct Remark {
    enum Why {
        ChangedSince,   ///< another action has changed the field since
        DeletedSince,   ///< another action has deleted the record since
        MovedSince,     ///< or cut it: it is another record now
        NoPlace,        ///< the record below which it stood was deleted: see Choices::places
        PlaceInside,    ///< or stands below it now: the same
        PlaceNoFolder,  ///< or holds nothing any more: the same
        PlaceElsewhere, ///< or is on another desktop, for resources of another kind: the same
        NoResource,     ///< the resource that the element opens was deleted since
        NoIcon,         ///< the file of its icon is gone: what comes back has no picture; a stored
                        ///< record keeps the icon that it has
        TopFolder,      ///< without that folder no editor loads the tree of resources
        BuiltOn,        ///< others have built on what would be deleted, or put something into what
                        ///< would open a resource: see Choices::othersWorkToo
        StillNamed,     ///< what stays opens the resource, or bears the icon, that would be deleted
                        ///< with the work of others
        MovedBack,      ///< what is older than what goes with the work of others, and was only
                        ///< moved into it, goes back to where it stood
        OlderInside,    ///< the same, but it has no place any more: what it stands in stays
        NameTaken,      ///< another record has the name by now: see Choices::otherNames
        CutChanged,     ///< others have changed what a cut has made: the same
        Locked,         ///< another user has taken the form into work
        ContentLocked,  ///< the same: only what the form holds is left
        LockStays,      ///< the action only took or released the form, which is not taken back
        NoRights,       ///< the user comes back, but the database has taken his rights from him
        RightsStay,     ///< he does not go: his rights would stay
        NoBytes,        ///< the bytes that a form or file had are not kept
        DamagedBytes,   ///< or no longer what they were
        Forgotten,      ///< the log does not tell of the action any more
        HalfForgotten,  ///< nor of its beginning; the rest is taken back
        AlreadyDone,    ///< the action has been taken back before
        OnlyPart,       ///< of some actions only what the selection has of them
        // If nothing is left to be written for another reason:
        NothingDone,  ///< the action has changed no value
        GoneBefore,   ///< what it made was deleted
        MakingUndone, ///< or went when its making was taken back
        SameBefore,   ///< the record is as it was before the action
    };
    Why why = ChangedSince;
    const store::TableDef* table = nullptr; ///< null: of a whole action
    std::string key;
    int field = -1;      ///< ChangedSince, asksForPlace(), StillNamed, OlderInside; NoResource,
                         ///< NameTaken, NoIcon, BuiltOn, TopFolder: of a stored one
    std::string missing; ///< asksForPlace(), NoResource: the key that the field would name;
                         ///< OlderInside: the one that it names;
                         ///< StillNamed, BuiltOn: that of what names it; NameTaken, NoIcon: the
                         ///< name;
                         ///< NoRights, RightsStay: the login
    std::string login;   ///< Locked, ContentLocked: who holds it; else whose action it was, if
                         ///< another one is the reason
    double time = 0;     ///< and when, or since when
    int64_t group = 0;   ///< that action; of a whole action: the one that was asked for
    /// StillNamed; BuiltOn, if it opens the resource or bears the icon: the table of `missing`.
    const store::TableDef* namedBy = nullptr;
    /// asksForPlace(): why the place that was chosen is none either, and its key; empty: the top.
    std::optional<Why> whyNotChosen;
    std::string chosen;

    /// Whether Choices::places can help.
    bool asksForPlace() const {
        return why == NoPlace || why == PlaceInside || why == PlaceNoFolder ||
               why == PlaceElsewhere;
    }
    /// Whether Choices::othersWorkToo can.
    bool asksForOthers() const { return why == CutChanged || (why == BuiltOn && !namedBy); }
    /// Whether Choices::otherNames can.
    bool asksForName() const;
};

/// What a user has decided about remarks of an earlier plan.
struct Choices {
    bool othersWorkToo = false; ///< delete what others have built on as well, with what is below
                                ///< it, but no resource that an element opens which stays, nor
                                ///< what was there before; of a cut, take back with it what they
                                ///< have changed
    bool otherNames = false;    ///< give what has no name any more a free one: "a (2).png"
    bool partly = false; ///< go on without what has no place, resource or name, or others built on
    /// Another parent for each missing one, by its folded key; empty: at the top. One that is not
    /// stored, or stands below what is to be placed there, is none; nor is the top one for what
    /// cannot be there: a form, an element without its desktop.
    std::map<std::string, std::string> places;
};

/// That the form is held, and why it, or only what it holds, is left.
Remark lockRemark(const FormLock& lock, Remark::Why why = Remark::ContentLocked);

/// What is to be taken back.
struct Selection {
    std::vector<int64_t> groups;
    /// Of the groups only what they did to these records: names of tables and folded keys. If they
    /// wrote others as well, the inverse is an action of its own, which undoes none of them.
    std::optional<std::set<std::pair<std::string, std::string>>> only;

    Selection() = default;
    Selection(std::vector<int64_t> all) : groups(std::move(all)) {} // NOLINT: they are whole
    Selection(std::initializer_list<int64_t> all) : groups(all) {}
};

struct Inverse {
    std::vector<store::TableWrites> parts; ///< in the order in which they are to be applied
    std::vector<store::Change> preview; ///< as the log would tell of them, the first some thousand
    size_t count = 0;                   ///< records that are written
    /// What gets a free name in place of one that is taken: by table and folded key.
    std::map<std::pair<std::string, std::string>, std::string> freeNames;
    std::vector<Remark> remarks;
    std::vector<int64_t> undoes; ///< empty as well if only a part of them is taken back
    int64_t seen = 0;            ///< the log had this newest change
    bool written = false;

    /// Whether a remark wants a choice. Without one nothing is to be written: an action counts as
    /// taken back as a whole.
    bool asks() const;
};

/// What takes these groups back, together.
store::Status planInverse(store::MaintainedStore& store, const Selection& selection,
                          const Choices& choices, Inverse* inverse);
/// Writes a plan as it is, for instance as it was shown. Outdated, and nothing is written, if the
/// store is no longer that for which it was made; the text says who has changed what.
store::Status writeInverse(store::MaintainedStore& store, Inverse* plan);
/// Plans and writes, unless there is nothing to write or something to be asked that the choices do
/// not answer. Plans again if others have written meanwhile. `done` is the last plan.
store::Status undo(store::MaintainedStore& store, const Selection& selection,
                   const Choices& choices, Inverse* done);

/// " под именем «a (2).png»" for a change of the preview that gives a free name; else empty.
QString freeNameWords(const Inverse& plan, const store::Change& change);
/// A remark as a sentence: what was left, and why.
QString remarkWords(const Remark& remark, RecordSource& source, const PersonNames& names = {});

} // namespace orvo::history

#endif
