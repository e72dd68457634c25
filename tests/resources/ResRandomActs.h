// ResRandomActs.h: the resource editor of a random run (RandomRun.h): how it is compared, and what
// an engineer and a foreign hand do to resources.
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
#ifndef ORVO_TESTS_RESOURCES_RESRANDOMACTS_H
#define ORVO_TESTS_RESOURCES_RESRANDOMACTS_H

#include "tests/menu/RandomRun.h"
#include "tests/resources/WritingProbe.h"

#include "models/Passport.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QMimeData>

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

/// What is done to resources at random.
class ResRandomActs {
public:
    /// `anyPart`: the editor of either client.
    ResRandomActs(Chances& chances, TestStore& store, std::function<ResPart&()> anyPart)
        : m_chances(chances)
        , m_store(store)
        , m_files(store.connect("files"))
        , m_anyPart(std::move(anyPart)) {}

    /// The catalogue, and more resources in its folders.
    static void fill(TestStore& store, Chances& chances) {
        fillCatalogue(store);
        for (int i = 0; i < 12; ++i) {
            static const char* const folders[] = {"trends", "alarms", "calc", "old", "docs"};
            static const int kinds[] = {1, 1, 2, 3, 4};
            addItem(store, qPrintable(QString("e%1").arg(i)), kinds[i % 5], folders[i % 5],
                    qPrintable(chances.word(60, 30)), qPrintable(chances.word(60, 30)));
        }
    }

    int toldOfMenus = 0; ///< how often a deletion met a menu that refers to the resource

    void foreignAct() {
        const QString item = anyKey("MenuResource");
        const QString folder = anyKey("MenuResourceFolder");
        const bool mayMove = !ResPart::isProtected(folder);
        switch (m_chances.below(14)) {
        case 0:
        case 1: {
            const QString made = m_chances.newKey('f');
            const QString link = anyFolderLink();
            m_chances.say("foreign resource " + made + " in " + link);
            m_store.insert("MenuResource",
                           {{"KeyLink", made},
                            {"MenuResourceFolderKey", link},
                            {"type_", m_chances.chance(95) ? kindOf(link) : 1 + m_chances.below(4)},
                            {"name_", word()},
                            {"caption", word()},
                            {"ico", m_chances.chance(20) ? QString("pump.png") : QString()}});
            break;
        }
        case 2: {
            const QString made = m_chances.newKey('g');
            const QString link = anyFolderLink();
            m_chances.say("foreign folder " + made + " in " + link);
            m_store.insert("MenuResourceFolder", {{"KeyLink", made},
                                                  {"ParentKey", link},
                                                  {"type_", kindOf(link)},
                                                  {"caption", word()}});
            break;
        }
        case 3:
            m_chances.say("foreign caption " + item);
            m_store.update("MenuResource", {{"KeyLink", item}, {"caption", word()}});
            break;
        case 4:
        case 5:
            m_chances.say("foreign name " + item);
            m_store.update("MenuResource", {{"KeyLink", item}, {"name_", word()}});
            break;
        case 6: {
            static const QStringList users{"ueng", "uother", "nobody", QString()};
            m_chances.say("foreign lock " + item);
            m_store.update("MenuResource",
                           {{"KeyLink", item}, {"UsersKey", users[m_chances.below(users.size())]}});
            break;
        }
        case 7: {
            const QString link = anyFolderLink();
            m_chances.say("foreign move of " + item + " to " + link);
            m_store.update("MenuResource", {{"KeyLink", item}, {"MenuResourceFolderKey", link}});
            break;
        }
        case 8:
            m_chances.say("foreign delete " + item);
            m_store.remove("MenuResource", item.toUtf8().constData());
            break;
        case 9:
            m_chances.say("foreign caption of folder " + folder);
            if (mayMove)
                m_store.update("MenuResourceFolder", {{"KeyLink", folder}, {"caption", word()}});
            break;
        case 10: {
            const QString link = anyFolderLink();
            if (!mayMove)
                break;
            m_chances.say("foreign move of folder " + folder + " to " + link);
            m_store.moveBelow("MenuResourceFolder", "ParentKey", folder, link);
            break;
        }
        case 11:
            if (!mayMove || m_chances.chance(50))
                break;
            m_chances.say("foreign delete of folder " + folder);
            m_store.remove("MenuResourceFolder", folder.toUtf8().constData());
            break;
        case 12:
            if (m_chances.chance(75))
                break;
            m_chances.say("foreign kind of " + item);
            m_store.update("MenuResource", {{"KeyLink", item}, {"type_", 1 + m_chances.below(4)}});
            break;
        default: {
            const std::string name = word().toStdString();
            m_chances.say("foreign upload " + QString::fromStdString(name));
            // Into folders that an earlier act may have renamed or removed.
            store::Status put;
            if (m_chances.chance(50))
                put = m_files->filePut({{m_chances.chance(50) ? "docs" : "", name, "bytes", {}}});
            else
                put = m_files->formPut(m_chances.chance(50) ? "Котлы" : "",
                                       {{"", name, "bytes", {}}});
            if (!put.ok())
                m_chances.say("refused: " + QString::fromStdString(put.text));
        }
        }
    }

    void ownAct(ResPart& part) {
        WritingProbe& module = part.probe();
        ResTreeModel& model = part.model();
        switch (m_chances.below(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4: {
            if (makeCurrent(part, m_chances.anyRow(model), m_chances.chance(20)))
                m_chances.say("row " + module.m_currentKey);
            break;
        }
        case 5:
        case 6:
        case 7: {
            static const QStringList actions{"actAddModule", "actAddFunction", "actAddFolder"};
            const QString action = actions[m_chances.below(actions.size())];
            m_chances.say(action);
            part.action(qPrintable(action))->trigger();
            break;
        }
        case 8:
        case 9:
        case 10: {
            const QString name = anyRowName(part);
            if (name.isEmpty() || ResPart::isProtected(module.m_currentKey))
                break;
            const QString text = part.textFor(module.m_currentKey + '/' + name, word());
            m_chances.say("passport " + name + " of " + module.m_currentKey + ": " + text);
            part.known.typed.insert(module.m_currentKey);
            orvo::editPassportValue(*module.m_propModel, name, text);
            break;
        }
        case 11:
        case 12:
            m_chances.say("save");
            module.m_btnSave->click();
            break;
        case 13:
            m_chances.say("cancel");
            part.cancel();
            break;
        case 14:
            remove(part);
            break;
        case 15:
            if (!selectionIsFree(part))
                break;
            m_chances.say("cut");
            part.action("actCut")->trigger();
            break;
        case 16:
            m_chances.say("paste in " + module.m_currentKey);
            part.action("actPaste")->trigger();
            break;
        case 17:
        case 18: {
            const QModelIndex source = m_chances.anyRow(model);
            const QModelIndex target = m_chances.anyRow(model);
            if (ResPart::isProtected(model.getItemKeyLink(source)))
                break;
            const std::unique_ptr<QMimeData> data(model.mimeData({source}));
            const int row = m_chances.chance(60) ? -1 : m_chances.below(model.rowCount(target) + 1);
            if (!data || !model.canDropMimeData(data.get(), Qt::MoveAction, row, 0, target))
                break;
            m_chances.say("drop " + model.getItemKeyLink(source) + " on " +
                          model.getItemKeyLink(target));
            model.dropMimeData(data.get(), Qt::MoveAction, row, 0, target);
            break;
        }
        default: {
            // Steps through what is found, as far as it is no other unsaved row.
            if (!part.isAtRest())
                break;
            m_chances.say("search");
            searchLine(module).setText(word().left(1 + m_chances.below(3)));
            QMetaObject::invokeMethod(&module, m_chances.chance(70) ? "on_search_down_pressed"
                                                                    : "on_search_up_pressed");
        }
        }
        closeBoxes(part);
    }

    /// Whether nothing goes with the selection that an editor cannot do without.
    bool mayDelete(ResPart& part) {
        return !ResPart::isProtected(part.probe().m_currentKey) && selectionIsFree(part);
    }
    /// Deletes the resource, if it has a row.
    void removeResource(ResPart& part, const QString& key) {
        if (key.isEmpty() || !makeCurrent(part, part.model().findIndexByKey(key), false))
            return;
        remove(part);
        closeBoxes(part);
    }

private:
    /// The field for searching, and no cell that is open.
    static QLineEdit& searchLine(const COrvoCliMod& module) {
        for (QLineEdit* line : module.findChildren<QLineEdit*>())
            if (!qobject_cast<QAbstractItemView*>(line->parentWidget()->parentWidget()))
                return *line;
        qFatal("no field for searching");
    }
    QString anyKey(const char* table) { return m_chances.oneOf(m_anyPart().records(table).keys()); }
    QString word() { return m_chances.word(60, 30); }
    int kindOf(const QString& folder) {
        return m_anyPart().records("MenuResourceFolder").value(folder, {{}, 4}).type;
    }
    QString anyFolderLink() {
        return m_chances.chance(8)    ? QString()
               : m_chances.chance(95) ? anyKey("MenuResourceFolder")
                                      : QStringLiteral("nowhere");
    }
    /// Makes a row current, or one more of the selection, if it may be so now.
    static bool makeCurrent(ResPart& part, const QModelIndex& row, bool oneMore) {
        if (!row.isValid())
            return false;
        if (oneMore)
            part.view()->selectionModel()->setCurrentIndex(row, QItemSelectionModel::Select |
                                                                    QItemSelectionModel::Rows);
        else
            part.view()->setCurrentIndex(row);
        return true;
    }
    void remove(ResPart& part) {
        if (!mayDelete(part))
            return;
        m_chances.say("delete " + part.probe().m_currentKey);
        part.action("actDelete")->trigger();
    }
    /// Answers the question that stands, and puts away the error that may follow.
    void closeBoxes(ResPart& part) {
        for (int i = 0; i < 2 && boxStands(part.probe()); ++i) {
            toldOfMenus += boxText(part.probe()).contains("ссылки из меню");
            part.told += boxText(part.probe());
            closeBox(part.probe(), m_chances.chance(80));
        }
    }
    static void closeBox(WritingProbe& module, bool yes) {
        const QString wanted = yes ? QStringLiteral("Да") : QStringLiteral("Нет");
        for (QPushButton* button : module.m_popMessageBox->findChildren<QPushButton*>()) {
            if (button->isVisible() &&
                (button->text() == wanted || button->text() == "ОК" || button->text() == "OK")) {
                button->click();
                return;
            }
        }
    }
    QString anyRowName(ResPart& part) {
        static const QStringList names{"caption", "caption", "object", "params", "icon"};
        const QString name = names[m_chances.below(names.size())];
        const QModelIndex row = part.probe().m_propModel->findIndexByKey(name);
        return row.isValid() && !row.siblingAtColumn(3).data().toBool() ? name : QString();
    }
    bool selectionIsFree(ResPart& part) {
        const QModelIndexList rows = part.view()->selectionModel()->selectedRows();
        return std::none_of(rows.begin(), rows.end(), [&](const QModelIndex& row) {
            return ResPart::isProtected(part.model().getItemKeyLink(row));
        });
    }

    Chances& m_chances;
    TestStore& m_store;
    std::unique_ptr<store::Store> m_files; ///< through which files come from elsewhere
    std::function<ResPart&()> m_anyPart;
};

} // namespace orvo::test

#endif
