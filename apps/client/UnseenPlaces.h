// UnseenPlaces.h: tells the user of changes that put a record where the open resource editor shows
// no row for it, or shows its row in a wrong place: a folder that another client has made since the
// editor was opened and what is below it, a file or folder at the top of its area, or what is below
// a folder that is gone. The editor puts such rows right when it is opened anew, and not before;
// those without a folder it leaves out then, and what cures them is named instead.
//
// Invariants; 1 is asserted in debug builds:
// 1. The editor is looked at as long as a record waits for it.
// 2. What is told was so in the editor's tree after it had taken the change.
// 3. Of the records without a row only the first ones of a folder are told, once for each opening
//    of the editor: their folder is what is missed.
//
// Lives on the GUI thread; names are looked up on the thread of the store.
#ifndef ORVO_APPS_CLIENT_UNSEENPLACES_H
#define ORVO_APPS_CLIENT_UNSEENPLACES_H

#include "apps/client/StoreThread.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/store/Schema.h"

#include <QTimer>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo::app {

class UnseenPlaces : public QObject {
    Q_OBJECT
public:
    /// How often is looked whether the editor has taken a change.
    static constexpr int lookMs = 200;

    /// Both outlive it.
    UnseenPlaces(StoreThread& thread, const client::ModuleRegistry& modules);

    /// A change of the store, as NotificationPump::changed tells it.
    void changed(const store::Change& change);

signals:
    /// What is not where it belongs, and what shows it there.
    void told(const QString& text);

private:
    struct Placed {
        int64_t change = 0;
        const store::TableDef* table = nullptr;
        std::string key;
        std::string folder; ///< empty: the top
        bool isNew = false; ///< not moved
        bool isFile = false;

        /// The folded key of what the editor lacks: its folder, or the record itself.
        std::string missed() const;
    };
    /// What the user is to be told of.
    struct Unseen {
        std::vector<Placed> misplaced, hidden;
    };

    COrvoCliMod* editor() const;
    void look();
    void tell(const std::shared_ptr<const Unseen>& unseen);

    StoreThread& m_thread;
    const client::ModuleRegistry& m_modules;
    QTimer m_look;
    /// Where the editor may not have put them yet, by table and folded key.
    std::map<std::pair<const store::TableDef*, std::string>, Placed> m_placed;
    std::set<std::string> m_toldFolders; ///< Placed::missed()
    QPointer<COrvoCliMod> m_toldOf;      ///< the editor that lacks them
};

} // namespace orvo::app

#endif
