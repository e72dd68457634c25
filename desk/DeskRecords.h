// DeskRecords.h: the records that one desktop is made of: its elements, and of the resources those
// that they name. Nothing else of an installation is read, however large it is.
//
// Invariants; 1 and 2 are asserted in debug builds, of the element that is concerned:
//  1. The table holds elements of the open desktop only, with the keys 0 `KeyLink` and 1
//     "parent;order_".
//  2. Of an element that is edited and new to the store there is a record of ours, until that of
//     the store comes or the edit ends.
//  3. Resources are asked for all at once when the desktop is opened; one that was not there then,
//     or was forgotten, is asked for when an element that names it is looked at. Until the server
//     answers, what was known of it stays.
#ifndef ORVO_DESK_DESKRECORDS_H
#define ORVO_DESK_DESKRECORDS_H

#include "frame/Launch.h"
#include "frame/OrvoClient.h"

#include <QHash>
#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>
#include <optional>

namespace orvo {
class Notification;
}

namespace orvo::desk {

/// A desktop as an operator or an engineer names it.
struct FoundDesktop {
    QString key;
    QString caption;
    int count = 0; ///< how many bear the name; the others stand only if it is 1
};

class DeskRecords {
public:
    explicit DeskRecords(COrvoCliMod& module) : m_module(module) {}

    /// Finds a desktop by key, by path ("Участок / КС-3", blanks around the slashes do not count)
    /// or by caption, in this order, without regard to case. False, and `error` set, if the server
    /// does not answer.
    bool find(const QString& name, FoundDesktop* found, QString* error);
    /// Reads the elements of a desktop in place of what is there. False, and all as it was, if the
    /// server does not answer.
    bool open(const QString& desktopKey);
    const QString& desktop() const { return m_desktop; }

    /// Values of a row, by DeskColumn.
    QVector<QVariant> values(const MDRData* element);
    /// Keys of the elements below `parent` (empty: at the top), in the order of the menu.
    QStringList children(const QString& parent) const;
    /// Keys of all elements.
    QStringList keys() const;
    /// Keys of the elements that name a resource.
    QStringList elementsOf(const QString& resourceKey) const;
    MDRData* element(const QString& key) const;
    /// Key of the element above; empty at the top.
    QString parentOf(const MDRData* element) const;
    /// Place among its siblings, from 0.
    int position(const MDRData* element) const;
    /// The folders of a file: captions joined by "/".
    QString pathOf(const QString& resourceKey);

    /// Takes a notification about `Menu` in. True if an element of this desktop is concerned; it
    /// may be gone then.
    bool take(const Notification& change);
    /// Whether an element was looked at that names it.
    bool knowsResource(const QString& key) const {
        return m_resources.contains(key.toCaseFolded());
    }
    /// The resource has changed or gone, or come: it is asked for again.
    void forgetResource(const QString& key) {
        KnownResource& known = m_resources[key.toCaseFolded()];
        known.isRead = false;
        known.refusal.reset();
    }
    /// From now on elements get a note if this gives a reason why they cannot be opened. It is
    /// asked once for each resource, and again after the resource has changed, or after
    /// forgetChecks.
    void setCheck(std::function<QString(const LaunchRequest&)> check) {
        m_check = std::move(check);
    }
    void forgetChecks();

    /// An element that is edited elsewhere and not saved: these values, by the names of the fields,
    /// are shown in place of its own. No key: none is.
    void setUnsaved(const QString& key, bool isNew, const QVariantMap& values);
    const QString& unsavedKey() const { return m_unsavedKey; }

    /// Whether the server left a question unanswered since the desktop was opened: something may be
    /// shown as it was, or not at all.
    bool hasGaps() const { return m_hasGaps; }

private:
    struct Resource {
        int kind = 0;
        QString name;
        QString icon;
        QString params;
        QString folder;
    };
    struct KnownResource {
        std::optional<Resource> resource; ///< nullopt: not there, as far as is known
        bool isRead = false;              ///< false: to be asked for when it is looked at
        std::optional<QString> refusal;   ///< of the check; nullopt: not asked yet
    };
    void check(const QString& key) const;
    void readResources();
    static Resource resourceIn(const MDRData* record);
    const KnownResource& resource(const QString& key);
    QString refusal(const QString& resourceKey);
    enum class Answer { None, NoRecord, Record };
    /// The record of that key as the store has it.
    Answer fetch(const char* table, const QString& key, CMDArray* into);

    COrvoCliMod& m_module;
    QString m_desktop;
    CMDArray m_elements;
    QHash<QString, KnownResource> m_resources; ///< by folded key
    bool m_hasGaps = false;
    std::function<QString(const LaunchRequest&)> m_check; ///< null: nothing is checked
    QString m_unsavedKey;
    QVariantMap m_unsaved;
    bool m_unsavedIsOurs = false; ///< there is a record of it that the store does not have
};

} // namespace orvo::desk

#endif
