// Planning.h: the steps in which an inverse is found. Of Inverse.cpp alone. Places and contents
// have files of their own.
#ifndef ORVO_HISTORY_PLANNING_H
#define ORVO_HISTORY_PLANNING_H

#include "history/Fitting.h"
#include "history/Inverse.h"
#include "history/Locks.h"
#include "history/Standing.h"

#include <bitset>
#include <functional>
#include <map>
#include <memory_resource>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvo::store {
class NamePlaces;
}

namespace orvo::history {

/// To be called in the order in which the steps stand here; those from placeRestored to
/// keepNamesApart once more while one of the last two changes anything.
class Planning {
public:
    /// All of these outlive it.
    Planning(store::MaintainedStore& store, const Standing& standing, const Choices& choices,
             const Selection& selection, Inverse& inverse);

    /// Finds the records that the actions have changed, and all that happened to them.
    store::Status collect();
    /// What each of them should be.
    store::Status decide();
    /// Finds which records were written again by a cut, and from which.
    void findCuts();
    /// Leaves cuts as they are whose records others have deleted or cut again since.
    store::Status keepCutsThatWentOn();
    /// If what others have built on is to go, it goes back with a cut: what they have changed in
    /// the record that it made is put into the one that it took away.
    void followCuts();
    /// Leaves out deletions of forms that another user has taken into work; decideContents() what
    /// is done to their contents.
    store::Status keepLocked();
    /// Leaves out the removal of users who would keep their rights, and tells whose are missing.
    void keepRights();
    /// Leaves the folders at the top of the resources their names and places.
    void keepTopFolders();
    /// Leaves out restored records without a place, and elements without their resource.
    store::Status placeRestored();
    /// Leaves out deletions of what others have built on, and resources of elements into which they
    /// have put others. What stands below a record that a cut has made goes back with the cut.
    store::Status keepWhatIsBuiltOn(bool* changed);
    /// Leaves out what would bear a name that another record has, or names it otherwise.
    store::Status keepNamesApart(bool* changed);
    /// Releases the forms that users hold who go: nobody else would.
    store::Status releaseForms();
    /// Leaves icons as they are whose former files are gone, and tells of those that come back so.
    store::Status keepIcons();
    /// Finds the bytes that contents are to have again.
    store::Status decideContents();
    void compose();

private:
    /// Editors do not follow contents: by the echo of its record they show a resource anew whose
    /// bytes come back.
    void echoResources();
    void findBranches();

    static constexpr size_t mostFields = 64;
    using Fields = std::bitset<mostFields>; ///< by their numbers in the table
    struct Event {
        const store::Change* change;
        Values after, before; ///< the latter until work()
    };
    struct Record {
        std::string key;               ///< as it is spelled
        std::vector<Event> events;     ///< all since Standing::begin
        Fields fields;                 ///< that the actions have changed
        bool present = false;          ///< is stored
        bool wasMadeOrDeleted = false; ///< by the actions
        bool presentThen = false;      ///< is to be stored
        Values now;
        Values then;                            ///< until they are in `values`
        int flag = 0;                           ///< what is to be done; 0: nothing
        bool isWanted = false;                  ///< there was a flag before any was left out
        int64_t version = 0;                    ///< of a content: whose bytes it is to have
        Values values;                          ///< to be written
        const store::Change* builtOn = nullptr; ///< somebody's change of what is to be deleted
    };
    using Records = std::pmr::map<std::string, Record>; ///< by folded key
    /// A link by which a record that is to be written stands below another one.
    struct Placement {
        const store::TableDef* table;
        Record* record; ///< in m_records
        int field;
        const store::TableDef* above;
        int bond = -1; ///< bondField()
    };

    bool isConcerned(const Event& event) const {
        return m_concerned.count(event.change->group) != 0;
    }
    /// Whether what is asked for has to do with the record; else it went with the answer, or is
    /// what m_beside changed.
    bool isAsked(const Record& record) const;
    bool counts(const Event& event) const;
    void work(Record& record) const;
    /// After which change others have built on a record that is to be deleted: the first of the
    /// actions, or their last deletion of it that stands, with which went what there was. Null:
    /// none of them changed it.
    const Event* builtOnSince(const Record& record) const;
    /// Whether it is of an undo of this user's that is to hold again: what it took along was asked
    /// for then.
    bool holdsAgain(const Event& event) const;
    bool wasTakenBackBeside(const Record& record) const;
    /// The change by which such an undo has deleted that, or taken it out of what it deleted, with
    /// the work of others; 0: none did, or somebody has changed it since.
    int64_t wentAlong(const Record* below, int link) const;
    bool isLaterWork(const Event& event) const;
    /// Adds of these forms and files, by folded key, the last change of others to what they hold.
    store::Status uploadsInto(const std::vector<std::string>& keys,
                              std::map<std::string, int64_t>* last);
    void update(const store::TableDef& table, Record& record);
    bool isSelected(const store::TableDef& table, const std::string& key) const;
    void addMakings(const Record& record, std::set<int64_t>* groups) const;
    /// Leaves out what those actions have done.
    void leaveOut(const std::set<int64_t>& stuck, bool* changed);
    /// The record that is to come back in place of this one, through all the cuts in between; null:
    /// none.
    Record* cutFrom(const Record& made) const;
    /// The first of those from which it was cut, and of which that is true.
    Record* cutFrom(const Record& made, const std::function<bool(const Record&)>& isMeant) const;
    /// What an action has deleted, and written, with the same content; in the same order.
    struct Halves {
        std::vector<std::string> gone, made; ///< folded keys
    };
    /// Of the action that has deleted a record those alike; null: it was no cut.
    store::Status halvesOf(const store::TableDef& table, const store::Change& deletion,
                           const Halves** halves);
    /// Says that the record is not there any more. `deletion`: may be null.
    store::Status tellGone(const store::TableDef& table, const Record& record,
                           const store::Change* deletion);
    /// Where that record is to be found, if a cut or the taking back of one has written it again;
    /// else empty. The keys are folded.
    store::Status whereCutTo(const store::TableDef& table, std::string key, std::string* found);
    /// Leaves a cut as it is if something of what it made stays, or what it took away has no place.
    void keepCutsWhole(bool* changed);
    void remark(Remark::Why why, const store::TableDef& table, const Record& record, int field = -1,
                const store::Change* change = nullptr);

    /// Null: the plan has nothing to do with that record. The key is folded.
    const Record* planned(const store::TableDef& table, const std::string& key) const;

    std::vector<Placement> placements();
    /// Reads what the records are to stand below, and what was chosen instead.
    store::Status readAbove(const std::vector<Placement>& placements);
    store::Status parentOf(const Placement& of, const std::string& key, std::string* parent);
    /// Whether the record can stand below that one; `isChosen`: by the user.
    store::Status canStand(const Placement& placement, const std::string& key, bool isChosen,
                           std::optional<Remark::Why>* whyNot);
    /// The same of what the one has become, which is there: a folder, on another desktop. `since`:
    /// the change that made it so; of a place that is not chosen, it is one of the last ones.
    store::Status canHold(const Placement& placement, const std::string& key, bool isChosen,
                          std::optional<Remark::Why>* whyNot, const store::Change** since);
    store::Status misfitSince(const Placement& placement, const std::string& key, Misfit misfit,
                              const store::Change** since);
    /// The values that a record will have.
    static Values valuesThen(const Record& record);
    Values valuesThen(const store::TableDef& table, const std::string& key);
    static const store::Value& bondOf(const Placement& placement);
    store::Status placeAfterCut(const Placement& placement, const std::string& missing,
                                std::string* cutTo, Misfit* misfit);
    store::Status keepResources(bool* changed);
    /// Leaves the link out if the record cannot stand there.
    store::Status place(const Placement& placement, bool* changed);
    /// The change that deleted a record that is missing; null if none did.
    store::Status deletionOf(const store::TableDef& table, const std::string& key,
                             const store::Change** deletion);

    /// Takes locks out of what is to be taken back.
    void dropLocks();
    std::string ownerKey(const Record& content) const;
    bool remarkLocked(const std::string& resource, Remark::Why why = Remark::ContentLocked);
    /// Says why nothing is to be written, if nothing else does.
    void tellNothingLeft();
    /// Actions that did nothing but that are not counted as taken back.
    void forgetLockActions();
    void forgetWhatStays();
    void forgetRemarksOfDeleted();

    /// What will have become of the resource of a content.
    enum class Owner {
        Missing,
        There,
        Kept, ///< although it was to be deleted
    };
    store::Status ownerOf(const Record& content, Owner* owner);
    /// The bytes that the changes that stand have left to a content: those that it has, if there
    /// is no version; false if nobody knows them any more.
    bool bytesOf(const Record& record, const std::map<int64_t, store::KeptVersion>& kept,
                 std::optional<store::KeptVersion>* version) const;
    store::Status forgetSameBytes(const Record& record, std::optional<store::KeptVersion>* version);
    /// Files that others have put into a form that is to be deleted would go with it.
    store::Status findUploadsInto(Records& resources);
    /// An upload that is done again would have nowhere to go.
    void keepOwnersOfUploads(bool* changed);

    std::map<std::string, Record*> newPlaces(const store::NamePlaces& names, Records& records,
                                             std::map<std::string, std::string>* goesTo,
                                             std::vector<std::pair<Record*, std::string>>* holders);
    store::Status leaveTaken(const store::TableDef& table, const store::NamePlaces& names,
                             Record& record, const std::string& holder);
    void giveFreeName(const store::TableDef& table, const store::NamePlaces& names, Record& record,
                      std::unordered_set<std::string>* taken);

    /// A field by which records of `below` name those of a table.
    struct Link {
        const store::TableDef* below;
        int field;
        bool places; ///< by it they stand below them
    };
    static std::vector<Link> linksTo(const store::TableDef& table);
    static bool comesBelow(const Record& record, int link, const std::string& key);
    void addPlanned(const Link& link, const std::vector<std::string>& deleted,
                    std::vector<std::pair<std::string, std::string>>* children);
    std::vector<std::string>
    wentAlong(const Link& link,
              const std::vector<std::pair<std::string, std::string>>& children) const;
    store::Status lookBelow(const store::TableDef& table, const Link& link,
                            const std::vector<std::string>& deleted, bool* changed);
    /// What stands below, or names, what a cut has made.
    struct Follower {
        std::string key; ///< as it is spelled
        Record* made;
        Record* origin;
    };
    store::Status keepFolders(bool* changed);
    /// What stands below what goes back to another desktop with its place goes there as well.
    store::Status moveBranches();
    /// Icons that others have given to something stay.
    store::Status keepUsedIcons(bool* changed);
    /// Of these names those that no icon will have.
    store::Status withoutIcon(std::set<std::string>* names);
    /// Where a record stood before, the last one first; of all fields by which records stand
    /// somewhere.
    struct Former {
        bool isOlder = false; ///< than what it stands in now
        std::vector<Values> places;
        std::optional<store::Change> moving; ///< the last change of these
    };
    store::Status formerPlaces(const store::TableDef& table, const Record& record, int64_t since,
                               Former* former);
    store::Status fits(const store::TableDef& table, Record& record, const Values& place,
                       bool* can);
    store::Status moveBack(const store::TableDef& table, Record& record, const Former& former,
                           bool* moved);
    /// What stands in a record that is to go, or to hold nothing any more.
    struct Inside {
        std::string key; ///< as it is spelled
        Record* above;
        Record* inside = nullptr; ///< of what is `staying`
    };
    /// Deletes that, but for what is older: this goes back to where it stood, or is `staying`.
    store::Status clear(const store::TableDef& table, const std::vector<Inside>& inside,
                        std::vector<Inside>* staying, bool* changed);
    void tellMovedBack();
    /// Forms that another user has taken into work stay.
    store::Status deleteBelow(const store::TableDef& table, const std::vector<std::string>& keys);
    /// The plan's record, read from the store.
    store::Status planStored(const store::TableDef& table, const std::vector<std::string>& keys,
                             std::vector<Record*>* records);
    /// Lets them go back with the cut; those that cannot are in m_stayingBelow then.
    store::Status moveAlong(const Link& link, const std::vector<Follower>& followers,
                            bool* changed);
    store::Status changeDesktop(const std::vector<std::string>& tops, const Follower& of);
    void moveAlong(Record& record, int field, store::Value value);
    /// Until it is found anew what goes back with which cut.
    void forgetMovedAlong();
    bool keepAlong();
    /// Moves the values into the writes.
    void part(const store::TableDef& table, int flag);

    store::MaintainedStore& m_store;
    const Standing& m_standing;
    const Choices& m_choices;
    const Selection& m_selection;
    Inverse& m_inverse;
    const int64_t m_answered; ///< what took them back before and was itself taken back; 0: nothing
    const std::set<int64_t> m_asked;     ///< the actions, and what they take back
    const std::set<int64_t> m_concerned; ///< these, and the answer with what took it back
    std::set<int64_t> m_beside; ///< what the answer took back beside the actions; nobody was asked
                                ///< whether that goes with them
    std::vector<std::vector<store::Change>> m_changes; ///< that the events are about
    std::pmr::monotonic_buffer_resource m_memory;      ///< records in order lie in order there
    std::pmr::map<const store::TableDef*, Records> m_records{&m_memory};
    bool m_alone = false;            ///< nothing was written since the actions but by them
    bool m_leftOut = false;          ///< the actions have changed other records than are selected
    std::set<const Record*> m_kept;  ///< deletions that are left out
    std::vector<Record*> m_branches; ///< whose desktop changed with the place, by an undo
    std::map<const Record*, Record*> m_cutFrom; ///< what a cut has written; what it deleted for it
    /// Of actions, by table and content.
    std::map<int64_t, std::map<std::pair<const store::TableDef*, std::string>, Halves>> m_halves;
    std::vector<std::pair<Record*, int>> m_movedAlong; ///< with cuts, and by which field
    struct MovedBack {
        const store::TableDef* table;
        Record* record;
        store::Change moving; ///< what is made up for
    };
    std::vector<MovedBack> m_movedBack; ///< of m_movedAlong
    /// What others have put there, and goes only with that record, which has this flag then.
    std::map<Record*, std::pair<const Record*, int>> m_along;
    std::set<const Record*> m_stayingBelow; ///< what a cut has made; or what is above it
    bool m_foundUploads = false;
    int64_t m_forgotten = 0;                  ///< versions of changes up to this one may be missing
    std::map<std::string, FormLock> m_locked; ///< by others; by the folded key of the form
    std::set<std::string> m_toldLocks;        ///< of these, those that a remark names
    std::set<int64_t> m_lockOnly; ///< of the actions those that only took or released locks

    // Of the places; by table and folded key.
    std::map<const store::TableDef*, std::map<std::string, std::vector<store::Value>>> m_above;
    /// Of missing ones.
    std::map<std::pair<const store::TableDef*, std::string>, std::optional<store::Change>>
        m_deletions;
    std::set<const Record*> m_unplaced; ///< not restored for that
    /// By table and field of the link, and the key above. The last changes of a decisive field.
    std::map<std::tuple<const store::TableDef*, int, std::string>, std::optional<store::Change>>
        m_decisive;
    /// Links, as they are spelled, that records which are restored can have as they had them, by
    /// table and field; with the bond that they have then.
    std::map<std::pair<const store::TableDef*, int>, std::unordered_map<std::string, store::Value>>
        m_fine;
};

} // namespace orvo::history

#endif
