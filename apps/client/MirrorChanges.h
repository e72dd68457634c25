// MirrorChanges.h: what of the file area has changed since a mirror looked at it.
#ifndef ORVO_APPS_CLIENT_MIRRORCHANGES_H
#define ORVO_APPS_CLIENT_MIRRORCHANGES_H

#include "platform/store/Store.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace orvo::app {

/// Which files are copied though size and time of the copy are right: after a change of a content
/// in an unknown place those without a time of their own, or all.
enum class Recopy { None, Untimed, All };

/// Gathered from the change log. An update tells what has changed and not of what kind the record
/// is: whoever looks asks the store for the few records named here, or compares the whole area.
///
/// Invariants; 1 and 2 are asserted in debug builds:
/// 1. If `whole`, no record is named.
/// 2. At most `most` records are named, and of each at most as many places: a comparison of
///    everything is cheaper than that.
/// 3. Once learn() was given all changes from since() on, a record's `Before` has every name and
///    folder that it had meanwhile: a comparison of everything may have copied it from any place on
///    its way, and not every change of a place is one of a file.
class MirrorChanges {
public:
    static constexpr size_t most = 100;

    /// What of a resource's place has changed, as it was.
    struct Before {
        std::set<std::string> names, folders;
        bool content = false; ///< its bytes are to be copied, whatever size and time say
    };

    static MirrorChanges everything(Recopy recopy = Recopy::None);
    /// False: the change has nothing to do with files, and nothing was gathered.
    bool add(const store::Change& change);
    /// Of a change since the first one here: tells where the resources named here were, and names
    /// no more.
    void learn(const store::Change& change);
    /// Adds those that came after the ones here.
    void merge(const MirrorChanges& later);
    void compareWhole();

    bool isWhole() const { return m_whole; }
    Recopy recopy() const { return m_recopy; } ///< for a comparison of everything
    const std::map<std::string, Before>& resources() const { return m_resources; } ///< by key
    int64_t since() const { return m_since; } ///< id of the first change added; 0: none was
    /// Keys of MenuResourceFolder whose kind is not told.
    const std::set<std::string>& folders() const { return m_folders; }

private:
    bool addFolder(const store::Change& change);
    bool addResource(const store::Change& change);
    void addContent(const store::Change& change);
    void limit();
    bool isLimited() const;

    bool m_whole = false;
    Recopy m_recopy = Recopy::None;
    int64_t m_since = 0;
    std::map<std::string, Before> m_resources;
    std::set<std::string> m_folders;
};

} // namespace orvo::app

#endif
