// MenuPart.h: the menu editor of a client in a random run (RandomRun.h), and how it is compared.
//
// Its trees may differ from new ones in what TreeDifferences.h says, and besides:
//
//  - lost is also what went away with a row above it: a deleted folder, or a desktop folder that
//    moved among its siblings.
//  - stray: a desktop or folder stays below its old parent; an element moved below an unknown one
//    stands at the very top; one moved below itself stays.
//  - another's menu: while a placeholder or a new name is open, a move to another desktop saves and
//    leaves the menu that stands there; it is not compared until a menu is loaded again.
//  - aged resources: the editor keeps each resource as it was when it learnt of it, renamed or
//    deleted as it may be since. Elements show it so.
//  - early elements: one that was shown before its resource was known says nothing of it until it
//    is shown again.
#ifndef ORVO_TESTS_MENU_MENUPART_H
#define ORVO_TESTS_MENU_MENUPART_H

#include "tests/menu/MenuProbe.h"
#include "tests/menu/RandomRun.h"

#include "frame/CommonFunctions.h"
#include "frame/Records.h"

#include <QLineEdit>
#include <QSet>

namespace orvo::test {

using menu::DesckColumn;
using menu::MenuColumn;

/// The rows below the top row, by key.
inline TreeRows rowsOf(const QAbstractItemModel* model, int keyColumn, const QVector<int>& columns,
                       int isNewColumn, int folderColumn, QSet<QString>* unsaved) {
    TreeRows rows;
    const std::function<void(const QModelIndex&, const QString&, int)> walk =
        [&](const QModelIndex& parent, const QString& parentKey, int depth) {
            for (int i = 0; i < model->rowCount(parent); ++i) {
                const QModelIndex index = model->index(i, 0, parent);
                const QString key = index.siblingAtColumn(keyColumn).data().toString();
                const bool top = depth == 0 && i == 0 && parentKey.isNull();
                if (!top) {
                    QStringList values;
                    for (const int column : columns)
                        values << index.siblingAtColumn(column).data().toString();
                    rows[key] = {depth == 0 ? QStringLiteral("?") : parentKey, values.join('|'), i,
                                 QStringList{"true", QStringLiteral("папка")}.contains(
                                     index.siblingAtColumn(folderColumn).data().toString())};
                    if (index.siblingAtColumn(isNewColumn).data().toBool())
                        unsaved->insert(key);
                }
                walk(index, top || depth == 0 ? QStringLiteral("") : key, depth + 1);
            }
        };
    walk({}, QString(), 0);
    return rows;
}

/// The menu editor of one client.
class MenuPart {
public:
    /// `beforeStart` is called with the new editor, if there is one.
    void open(TestHost& host, const std::function<void(COrvoCliMod&)>& beforeStart = {}) {
        m_desckKnown.clear();
        m_menuKnown.clear();
        m_resources.clear();
        m_aged.clear();
        m_early.clear();
        m_staleFault.clear();
        m_editor = std::make_unique<MenuEditor>(host, "Menu");
        if (beforeStart)
            beforeStart(module());
        if (!m_editor->start())
            qFatal("an editor does not start");
        QObject::connect(probe().m_menuModel.get(), &QAbstractItemModel::rowsInserted,
                         probe().m_menuModel.get(), [this](const QModelIndex& parent) {
                             if (!parent.isValid() && probe().m_menuModel->rowCount() == 1)
                                 m_menuOf = probe().m_currentDesckKey;
                         });
        // A menu is loaded when its top row comes.
        QObject::connect(probe().m_menuModel.get(), &QAbstractItemModel::rowsAboutToBeRemoved,
                         probe().m_menuModel.get(), [this](const QModelIndex& parent, int first) {
                             if (!parent.isValid() && first == 0) {
                                 m_menuKnown.clear();
                                 m_early.clear();
                             }
                         });
    }
    void close() { m_editor.reset(); }

    MenuProbe& probe() { return *m_editor->module; }
    COrvoCliMod& module() { return probe(); }
    QTreeView* view(const char* name) { return m_editor->view(name); }
    /// The desktop whose menu is shown.
    QString openMenu() const { return m_menuOf; }
    bool isAtRest() { return probe().m_editMode == MenuProbe::NoEdit; }
    void cancel() {
        if (dropped)
            dropped(typedTexts());
        const MenuProbe& module = probe();
        if (module.m_editMode == MenuProbe::EditElement &&
            orvo::seekKey(module.m_tabMenu, module.m_currentMenuKey))
            m_menuKnown.typed.remove(module.m_currentMenuKey);
        if (module.m_editMode == MenuProbe::RenameDesck) {
            const QString desck = module.m_desckModel->getItemKeyLink(module.m_editDesckIndex);
            if (orvo::seekKey(module.m_tabFolder, desck))
                m_desckKnown.typed.remove(desck);
        }
        QMetaObject::invokeMethod(&probe(), "on_cancel_pressed");
    }
    /// All that stands in the open edit and in open cells.
    QString typedTexts() {
        QStringList texts;
        const auto addRow = [&](const QModelIndex& row) {
            for (int column = 0; row.isValid() && column < row.model()->columnCount(); ++column)
                texts << row.siblingAtColumn(column).data().toString();
        };
        const MenuProbe& module = probe();
        if (!isAtRest()) {
            addRow(module.m_editDesckIndex);
            addRow(module.m_editMenuIndex);
            if (!module.m_editMenuIndex.isValid() && !module.m_editMenuKey.isEmpty())
                addRow(module.m_menuModel->findIndexByKey(module.m_editMenuKey));
        }
        for (const QLineEdit* line : module.findChildren<QLineEdit*>())
            if (!line->isHidden()) // a cell that was closed is deleted later
                texts << line->text();
        return texts.join('\n');
    }
    std::function<void(const QString& texts)> dropped; ///< called before a cancel
    /// The text that is typed into a cell instead of a word.
    std::function<QString(const QString& cell, const QString& word)> typing;
    QString textFor(const QString& cell, const QString& word) {
        return typing ? typing(cell, word) : word;
    }

    /// From here on every row with a record shows what is stored.
    void expectStored() {
        m_desckKnown.typed.clear();
        m_menuKnown.typed.clear();
    }
    /// Something is to be typed into the passport of the current element.
    void typeElement() { m_menuKnown.typed.insert(probe().m_currentMenuKey); }
    /// Something is to be typed into the name of the current desktop.
    void typeDesck() { m_desckKnown.typed.insert(probe().m_currentDesckKey); }
    int comparedRows() const { return m_desckKnown.comparedRows + m_menuKnown.comparedRows; }
    int comparedFamilies() const {
        return m_desckKnown.comparedFamilies + m_menuKnown.comparedFamilies;
    }

    /// Key and parent of each record that the editor holds, the empty text for no parent.
    QMap<QString, QString> parents(const char* table) {
        QMap<QString, QString> found;
        for (const QStringList& fields : recordLines(probe(), table))
            found[fields[0]] = fieldText(fields[1]);
        return found;
    }

    void seen(const store::Change& change) {
        if (change.table == "MenuResource" && change.code != OrvoEventInsert)
            m_aged.insert(QString::fromStdString(change.key));
        // What a record says takes the place of what was typed, but for a row still edited.
        const QString key = QString::fromStdString(change.key);
        const bool edited = probe().m_editMode == MenuProbe::EditElement &&
                            orvo::sameText(probe().m_editMenuKey, key);
        if (change.table == "Menu" && !edited)
            m_menuKnown.typed.remove(key);
        const bool renamed =
            probe().m_editMode == MenuProbe::RenameDesck &&
            orvo::sameText(probe().m_desckModel->getItemKeyLink(probe().m_editDesckIndex), key);
        if (change.table == "MenuFolder" && !renamed)
            m_desckKnown.typed.remove(key);
    }

    void watch() {
        watchResources();
        QSet<QString> unsaved;
        const TreeRows descks = desckRows(probe(), &unsaved);
        m_desckKnown.watch(descks, parents("MenuFolder"), unsaved);
        unsaved.clear();
        const TreeRows elements = menuRows(probe(), &unsaved);
        // Over a folder no menu is shown, whatever the table still holds.
        if (probe().m_menuModel->rowCount() > 0)
            m_menuKnown.watch(elements, parents("Menu"), unsaved);
        for (auto row = elements.begin(); row != elements.end(); ++row)
            if (!m_resources.contains(resourceOf(row.key())))
                m_early.insert(row.key());
        fault = m_desckKnown.unlikeItsRecord(descks, storedDescks());
        if (fault.isEmpty())
            fault = m_menuKnown.unlikeItsRecord(elements, storedElements());
    }

    QString fault; ///< what watch() found wrong
    QString told;  ///< what boxes said that were put away since the last look

    /// The first difference to an editor opened now that is not required; empty if there is none.
    QString check(TestStore& store) {
        TestHost host(store);
        MenuEditor fresh(host, "Menu");
        if (!fresh.start())
            return "a fresh editor does not start";
        MenuProbe& other = *fresh.module;
        if (probe().tableText("MenuFolder") != other.tableText("MenuFolder"))
            return "MenuFolder:\n" + probe().tableText("MenuFolder") + "\nfresh:\n" +
                   other.tableText("MenuFolder");
        QString found = compareResources(other);
        if (!found.isEmpty())
            return found;
        QSet<QString> none;
        found = m_desckKnown.compare(desckRows(probe(), &none), desckRows(other, &none));
        if (!found.isEmpty())
            return "tvDesck: " + found;
        const QModelIndex desktop = other.m_desckModel->findIndexByKey(probe().m_currentDesckKey);
        const QModelIndex own = probe().m_desckModel->findIndexByKey(probe().m_currentDesckKey);
        if (!desktop.isValid() || !own.isValid() || probe().m_menuModel->rowCount() == 0 ||
            m_menuOf != probe().m_currentDesckKey)
            return {};
        fresh.view("tvDesck")->setCurrentIndex(desktop);
        if (other.m_menuModel->rowCount() == 0)
            return {};
        if (probe().tableText("Menu") != other.tableText("Menu"))
            return "Menu:\n" + probe().tableText("Menu") + "\nfresh:\n" + other.tableText("Menu");
        found = m_menuKnown.compare(menuRows(probe(), &none), menuRows(other, &none));
        if (found.isEmpty())
            found = compareCommands();
        return found.isEmpty() ? found : "tvMenu: " + found;
    }

    /// The resources of the elements that are shown.
    QStringList usedResources() {
        QStringList used;
        for (const QString& key : parents("Menu").keys())
            if (const QString resource = resourceOf(key); !resource.isEmpty())
                used << resource;
        return used;
    }

    int comparedCommands = 0; ///< elements compared with their resource
    int agedCommands = 0;     ///< those of them whose resource has changed since

private:
    static TreeRows desckRows(const MenuProbe& probe, QSet<QString>* unsaved) {
        return rowsOf(probe.m_desckModel.get(), DesckColumn::KeyLink,
                      {DesckColumn::Name, DesckColumn::IsFolder}, DesckColumn::IsNew,
                      DesckColumn::IsFolder, unsaved);
    }
    static TreeRows menuRows(const MenuProbe& probe, QSet<QString>* unsaved) {
        return rowsOf(probe.m_menuModel.get(), MenuColumn::KeyLink,
                      {MenuColumn::Caption, MenuColumn::FolderKey, MenuColumn::Icon,
                       MenuColumn::MenuResKey, MenuColumn::OneCopy, MenuColumn::Order,
                       MenuColumn::Params, MenuColumn::Separator},
                      MenuColumn::IsNew, MenuColumn::Type, unsaved);
    }
    QString resourceOf(const QString& element) {
        return probe()
            .m_menuModel->findIndexByKey(element)
            .siblingAtColumn(MenuColumn::MenuResKey)
            .data()
            .toString();
    }

    static QString flagText(const QString& field) { return field == "1" ? "true" : "false"; }
    /// Name and kind of each desktop and folder that the editor holds.
    QMap<QString, QString> storedDescks() {
        QMap<QString, QString> values;
        for (const QStringList& fields : recordLines(probe(), "MenuFolder"))
            values[fields[0]] = fieldText(fields[2]) + '|' + flagText(fields[4]);
        return values;
    }
    /// What the editor holds of each element.
    QMap<QString, QString> storedElements() {
        QMap<QString, QString> values;
        for (const QStringList& fields : recordLines(probe(), "Menu"))
            values[fields[0]] =
                QStringList{fieldText(fields[3]), fieldText(fields[2]), fieldText(fields[5]),
                            fieldText(fields[8]), flagText(fields[7]),  fields[4],
                            fieldText(fields[9]), flagText(fields[6])}
                    .join('|');
        return values;
    }

    static QMap<QString, QStringList> resourcesIn(const MenuProbe& probe) {
        QMap<QString, QStringList> found;
        for (const QStringList& fields : recordLines(probe, "MenuResource"))
            found[fields[0]] = fields;
        return found;
    }
    void watchResources() {
        const QMap<QString, QStringList> now = resourcesIn(probe());
        for (auto known = m_resources.begin(); known != m_resources.end(); ++known)
            if (now.value(known.key()) != *known)
                m_staleFault = "resource changed or gone: " + known->join('|');
        m_resources = now;
    }
    QString compareResources(const MenuProbe& fresh) {
        if (!m_staleFault.isEmpty())
            return m_staleFault;
        const QMap<QString, QStringList> stored = resourcesIn(fresh);
        for (auto one = stored.begin(); one != stored.end(); ++one) {
            if (!m_resources.contains(one.key()))
                return "resource not known: " + one->join('|');
            if (m_resources[one.key()] != *one && !m_aged.contains(one.key()))
                return "resource known as " + m_resources[one.key()].join('|') + ", not " +
                       one->join('|');
        }
        for (auto one = m_resources.begin(); one != m_resources.end(); ++one)
            if (!stored.contains(one.key()) && !m_aged.contains(one.key()))
                return "resource known for nothing: " + one->join('|');
        return {};
    }
    /// Each element says of its resource what the editor knows.
    QString compareCommands() {
        const auto text = [&](const QString& key, int column) {
            return probe()
                .m_menuModel->findIndexByKey(key)
                .siblingAtColumn(column)
                .data()
                .toString();
        };
        for (const QString& key : parents("Menu").keys()) {
            const QString resource = text(key, MenuColumn::MenuResKey);
            if (resource.isEmpty())
                continue;
            const QString shown =
                text(key, MenuColumn::Type) + ' ' + text(key, MenuColumn::Command);
            const QStringList fields = m_resources.value(resource);
            const QString known = fields.isEmpty() ? QStringLiteral(" ")
                                                   : convertMenuAttributes(fields[2].toInt()) +
                                                         ' ' + fieldText(fields[1]);
            ++comparedCommands;
            agedCommands += m_aged.contains(resource);
            if (shown != known && !(shown == " " && m_early.contains(key)))
                return key + " says \"" + shown + "\" of its resource, not \"" + known + '"';
        }
        return {};
    }

    QString m_menuOf; ///< the desktop whose menu was loaded last
    Differences m_desckKnown;
    Differences m_menuKnown;
    QMap<QString, QStringList> m_resources; ///< what the editor knows of each
    QSet<QString> m_aged;                   ///< resources that were changed or deleted since
    QSet<QString> m_early;                  ///< elements shown before their resource was known
    QString m_staleFault;
    std::unique_ptr<MenuEditor> m_editor;
};

} // namespace orvo::test

#endif
