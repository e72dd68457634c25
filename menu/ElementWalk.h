// ElementWalk.h: a menu element with all that lies below it, from the records of a table with the
// keys 0 KeyLink and 1 parent;order_. Copying, pasting and deleting go down the same way. And the
// new keys of what is pasted.
#ifndef ORVO_MENU_ELEMENTWALK_H
#define ORVO_MENU_ELEMENTWALK_H

#include "frame/FolderWalk.h"
#include "frame/OrvoClient.h"
#include "frame/Records.h"
#include "frame/Vocabulary.h"

#include <QMap>
#include <QString>

#include <utility>
#include <vector>

namespace orvo::menu {

/// What makes an element a folder is the NULL in its resource key.
inline bool isFolderRecord(const MDRData* record) {
    return isNull(record, orvo::field::MenuResourceKey);
}

/// New keys for all records of a table, which are to be written once more as others.
inline QMap<QString, QString> newKeysFor(const CMDArray& table) {
    QMap<QString, QString> keys;
    walkAll(table, 0, [&](const MDRData* record) {
        keys.insert(textOf(record, orvo::field::KeyLink).toCaseFolded(),
                    QString::fromLatin1(GenGuid32()));
        return true;
    });
    return keys;
}

/// The new key for an old one, without regard to case as all keys; the null string if the table had
/// no such record.
inline QString newKeyOf(const QMap<QString, QString>& keys, const QString& oldKey) {
    return keys.value(oldKey.toCaseFolded());
}

/// An element as the walk meets it. `key` is as the element's own record has it.
struct Element {
    QString key;
    bool isFolder = false;
    bool isFirst = false; ///< the element that the walk began with
};

/// Calls `visit(element)` for the element of that key, which counts as a folder, and for all below
/// it: a folder before its contents, the contents of one folder before the next of its siblings,
/// siblings in the order of key 1. `visit` answers whether to go on below. Needs no stack for deep
/// data and follows no circle.
template <class Visit>
void walkElements(const CMDArray& table, const QString& key, Visit&& visit) {
    walkFolders(
        Element{key, true, true}, [](const Element& element) { return element.key; },
        [&](const Element& element) {
            std::vector<Element> below;
            if (!visit(element) || !element.isFolder)
                return below;
            walkGroup(table, 1, KeyValues().text(element.key), [&](const MDRData* record) {
                if (!holdsText(record, orvo::field::parent, element.key))
                    return false;
                below.push_back({textOf(record, orvo::field::KeyLink), isFolderRecord(record)});
                return true;
            });
            return below;
        });
}

} // namespace orvo::menu

#endif
