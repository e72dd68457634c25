// ResPart.h: the resource editor of a client in a random run (RandomRun.h), and how it is compared.
//
// Its tree may differ from a new one in what TreeDifferences.h says, and besides:
//
//  - lost: another editor's folder gets no row, and with it nothing below it; a file that others
//    put at the top of the file area gets none either.
//  - stray: what was moved below an unknown folder stands at the very top; a folder made or pasted
//    below a row without a record stands there until the next start; a row whose kind is not its
//    folder's.
//  - the top of the menu area: a changed folder is placed among those of its kind alone, so its
//    order is not compared.
//  - orphans: their folder is as it was at the start, in no order, and shows no icon and no lock.
//  - old locks: who held a lock is still told when it is gone.
#ifndef ORVO_TESTS_RESOURCES_RESPART_H
#define ORVO_TESTS_RESOURCES_RESPART_H

#include "tests/menu/RandomRun.h"
#include "tests/resources/WritingProbe.h"

#include <QLineEdit>

namespace orvo::test {

/// The resource editor of one client.
class ResPart {
public:
    struct Record {
        QString link;
        int type;
    };

    /// `beforeStart` is called with the new editor, if there is one.
    void open(TestHost& host, const std::function<void(COrvoCliMod&)>& beforeStart = {}) {
        known.clear();
        m_editor = std::make_unique<EditorUnderTest<WritingProbe>>(host, "Resources");
        if (beforeStart)
            beforeStart(module());
        if (!m_editor->start())
            qFatal("an editor does not start");
    }
    void close() { m_editor.reset(); }

    WritingProbe& probe() { return *m_editor->module; }
    COrvoCliMod& module() { return probe(); }
    ResTreeModel& model() { return *probe().m_resModel; }
    QTreeView* view() { return m_editor->view("tvRes"); }
    QAction* action(const char* name) { return m_editor->action(name); }
    bool isAtRest() { return probe().m_editState == Idle; }
    int comparedRows() const { return known.comparedRows; }
    int comparedFamilies() const { return known.comparedFamilies; }
    void cancel() {
        if (dropped)
            dropped(typedTexts());
        WritingProbe& module = probe();
        if (module.m_editState == EditRow && module.m_btnCancel->isEnabled() &&
            module.row(qPrintable(module.m_editKey)).isValid() &&
            (orvo::seekKey(module.m_tabResource, module.m_editKey) ||
             orvo::seekKey(module.m_tabResFolder, module.m_editKey)))
            known.typed.remove(module.m_editKey);
        module.m_btnCancel->click();
    }
    /// All that stands in the open edit and in open cells.
    QString typedTexts() {
        QStringList texts;
        const QModelIndex row =
            isAtRest() ? QModelIndex() : model().findIndexByKey(probe().m_editKey);
        for (int column = 0; row.isValid() && column < model().columnCount(); ++column)
            texts << row.siblingAtColumn(column).data().toString();
        for (const QLineEdit* line : probe().findChildren<QLineEdit*>())
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
    void expectStored() { known.typed.clear(); }
    /// What must stay: an editor opened without one of these shows nothing.
    static bool isProtected(const QString& key) {
        return isFixed(key) || key == "mod" || key == "fun" || key == "frm";
    }
    /// Link and kind of each record that the editor holds, by key.
    QMap<QString, Record> records(const char* table) {
        QMap<QString, Record> found;
        for (const QStringList& fields : recordLines(probe(), table))
            found[fields[0]] = {fieldText(fields[1]), fields[2].toInt()};
        return found;
    }

    void seen(const store::Change& change) {
        // What a record says takes the place of what was typed, but for a row still edited.
        const QString key = QString::fromStdString(change.key);
        const bool edited = !isAtRest() && orvo::sameText(probe().m_editKey, key);
        if (!edited && (change.table == "MenuResource" || change.table == "MenuResourceFolder"))
            known.typed.remove(key);
    }

    void watch() {
        QMap<QString, QString> parents = loadedParents();
        const TreeRows rows = rowsOf(model(), {});
        if (rows.contains(orphans))
            parents[orphans] = fixedRows[0];
        QSet<QString> unsaved;
        for (auto row = rows.begin(); row != rows.end(); ++row)
            if (!parents.contains(row.key()))
                unsaved.insert(row.key());
        known.watch(rows, parents, unsaved);
        known.blurred << fixedRows[0] << orphans;
        fault = known.unlikeItsRecord(rows, storedValues());
    }

    QString fault; ///< what watch() found wrong
    QString told;  ///< what boxes said that were put away since the last look

    /// The first difference to an editor opened now that is not required; empty if there is none.
    QString check(TestStore& store) {
        TestHost host(store);
        EditorUnderTest<WritingProbe> fresh(host, "Resources");
        if (!fresh.start())
            return "a fresh editor does not start";
        for (const char* table : {"MenuResource", "MenuResourceFolder"})
            if (probe().tableText(table) != fresh->tableText(table))
                return QString(table) + ":\n" + probe().tableText(table) + "\nfresh:\n" +
                       fresh->tableText(table);
        QSet<QString> asOrphans;
        collectOrphans(model(), &asOrphans);
        collectOrphans(*fresh->m_resModel, &asOrphans);
        const TreeRows rows = rowsOf(model(), asOrphans);
        const TreeRows loaded = rowsOf(*fresh->m_resModel, asOrphans);
        if (!rows.contains(orphans))
            known.lost.insert(orphans);
        if (!loaded.contains(orphans))
            known.unsaved.insert(orphans);
        return known.compare(rows, loaded);
    }

    Differences known;

private:
    static constexpr const char* fixedRows[] = {"MenuResources", "FileResources"};
    static constexpr char orphans[] = "WrongFolder";

    static bool isFixed(const QString& key) {
        return key == fixedRows[0] || key == fixedRows[1] || key == orphans;
    }

    static void collectOrphans(const ResTreeModel& model, QSet<QString>* keys) {
        const QModelIndex folder = model.findIndexByKey(orphans);
        for (int i = 0; i < model.rowCount(folder); ++i)
            keys->insert(model.getItemKeyLink(model.index(i, 0, folder)));
    }

    /// The rows of a tree. Of `asOrphans` only what such rows show.
    static TreeRows rowsOf(const ResTreeModel& model, const QSet<QString>& asOrphans) {
        TreeRows rows;
        const std::function<void(const QModelIndex&, const QString&)> walk =
            [&](const QModelIndex& parent, const QString& parentKey) {
                for (int i = 0; i < model.rowCount(parent); ++i) {
                    const QModelIndex index = model.index(i, 0, parent);
                    const QString key = model.getItemKeyLink(index);
                    const auto text = [&](int column) {
                        return index.siblingAtColumn(column).data().toString();
                    };
                    QStringList values{text(ResColumn::Caption), text(ResColumn::Name),
                                       text(ResColumn::Type), text(ResColumn::Params),
                                       text(ResColumn::FolderKey)};
                    if (!asOrphans.contains(key)) {
                        const bool locked = text(ResColumn::Blocked).toInt() > 0;
                        values << text(ResColumn::Icon) << QString::number(locked)
                               << (locked ? text(ResColumn::Blocked) + text(ResColumn::Lock)
                                          : QString());
                    }
                    const bool top = !parent.isValid() && !isFixed(key);
                    rows[key] = {top ? QStringLiteral("?") : parentKey, values.join('|'), i,
                                 model.itemIsFolder(index)};
                    walk(index, key);
                }
            };
        walk({}, QStringLiteral(""));
        return rows;
    }

    /// Caption, name, kind, parameters and folder of each record that the editor holds.
    QMap<QString, QString> storedValues() {
        QMap<QString, QString> values;
        for (const QStringList& fields : recordLines(probe(), "MenuResource"))
            values[fields[0]] = QStringList{fieldText(fields[4]), fieldText(fields[3]), fields[2],
                                            fieldText(fields[5]), fieldText(fields[1])}
                                    .join('|');
        for (const QStringList& fields : recordLines(probe(), "MenuResourceFolder"))
            values[fields[0]] =
                QStringList{fieldText(fields[3]), "", fields[2], "", fieldText(fields[1])}.join(
                    '|');
        return values;
    }

    /// Where loading would place each record; "none": nowhere.
    QMap<QString, QString> loadedParents() {
        const QString none = QStringLiteral("none");
        QMap<QString, QString> parents;
        const QMap<QString, Record> folders = records("MenuResourceFolder");
        const auto below = [&](const Record& record) {
            const auto folder = folders.find(record.link);
            return folder != folders.end() && folder->type == record.type ? record.link : none;
        };
        for (auto folder = folders.begin(); folder != folders.end(); ++folder) {
            const bool top = folder->link.isEmpty() && folder->type >= 1 && folder->type <= 4;
            parents[folder.key()] =
                top ? QString(fixedRows[folder->type == 4 ? 1 : 0]) : below(*folder);
        }
        const QMap<QString, Record> items = records("MenuResource");
        for (auto item = items.begin(); item != items.end(); ++item) {
            const bool orphan =
                item->type == 3 && !item->link.isEmpty() && !folders.contains(item->link);
            parents[item.key()] = orphan                  ? QString(orphans)
                                  : !item->link.isEmpty() ? below(*item)
                                  : item->type == 4       ? QString(fixedRows[1])
                                                          : none;
        }
        for (const char* key : fixedRows)
            parents[key] = QStringLiteral("");
        return parents;
    }

    std::unique_ptr<EditorUnderTest<WritingProbe>> m_editor;
};

} // namespace orvo::test

#endif
