// Thousands of changes in random order, by two resource editors and a foreign hand on one store of
// each kind. At every quiet point each editor shows what an editor opened at that moment would
// show, but for the differences that are required (TreeDifferences.h), and those of its own:
//
//  - lost: another editor's folder gets no row, and with it nothing below it; a file that others
//  put
//    at the top of the file area gets none either.
//  - stray: what was moved below an unknown folder stands at the very top; a folder made or pasted
//    below a row without a record stands there until the next start; a row whose kind is not its
//    folder's.
//  - the top of the menu area: a changed folder is placed among those of its kind alone, so its
//    order is not compared.
//  - orphans: their folder is as it was at the start, in no order, and shows no icon and no lock.
//  - old locks: who held a lock is still told when it is gone.
//
// The seed is printed; ORVO_SEED sets it, ORVO_STEPS the number of steps, ORVO_STORE_KIND the
// store.
#include "platform/client/Blocks.h"
#include "platform/client/Session.h"
#include "tests/menu/TreeDifferences.h"
#include "tests/resources/WritingProbe.h"
#include "tests/store/StoreKinds.h"

#include "models/Passport.h"

#include <QLineEdit>
#include <QMimeData>

#include <deque>
#include <functional>
#include <random>

using namespace orvo::test;

namespace {

const char* const fixedRows[] = {"MenuResources", "FileResources"};
const char orphans[] = "WrongFolder";

bool isFixed(const QString& key) {
    return key == fixedRows[0] || key == fixedRows[1] || key == orphans;
}
/// What must stay: an editor opened without one of these shows nothing.
bool isProtected(const QString& key) {
    return isFixed(key) || key == "mod" || key == "fun" || key == "frm";
}

void collectOrphans(const ResTreeModel& model, QSet<QString>* keys) {
    const QModelIndex folder = model.findIndexByKey(orphans);
    for (int i = 0; i < model.rowCount(folder); ++i)
        keys->insert(model.getItemKeyLink(model.index(i, 0, folder)));
}

/// The rows of a tree. Of `asOrphans` only what such rows show.
TreeRows rowsOf(const ResTreeModel& model, const QSet<QString>& asOrphans) {
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

struct Record {
    QString link;
    int type;
};

/// Link and kind of each record that an editor holds, by key.
QMap<QString, Record> recordsIn(const OrvoResources& module, const char* table) {
    QMap<QString, Record> records;
    const QStringList lines = module.tableText(table).split('\n', Qt::SkipEmptyParts);
    for (const QString& line : lines.mid(1)) {
        const QStringList fields = line.split('\t');
        records[fields[0]] = {fields[1] == "\\N" ? QString() : fields[1], fields[2].toInt()};
    }
    return records;
}

/// Where loading would place each record; "none": nowhere.
QMap<QString, QString> parentsIn(const OrvoResources& module) {
    const QString none = QStringLiteral("none");
    QMap<QString, QString> parents;
    const QMap<QString, Record> folders = recordsIn(module, "MenuResourceFolder");
    const auto below = [&](const Record& record) {
        const auto folder = folders.find(record.link);
        return folder != folders.end() && folder->type == record.type ? record.link : none;
    };
    for (auto folder = folders.begin(); folder != folders.end(); ++folder) {
        const bool top = folder->link.isEmpty() && folder->type >= 1 && folder->type <= 4;
        parents[folder.key()] =
            top ? QString(fixedRows[folder->type == 4 ? 1 : 0]) : below(*folder);
    }
    const QMap<QString, Record> items = recordsIn(module, "MenuResource");
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

/// One engineer: an editor that takes its notifications one by one.
class Engineer {
public:
    explicit Engineer(TestStore& store) : m_store(store) { open(); }

    void open() {
        m_editor.reset();
        m_host = std::make_unique<TestHost>(m_store);
        m_cursor = orvo::client::sessionCursor(*m_host->m_session);
        if (!m_reader)
            m_reader = m_store.connect("reader");
        m_waiting.clear();
        known.clear();
        m_editor = std::make_unique<EditorUnderTest<WritingProbe>>(*m_host, "Resources");
        if (!m_editor->start())
            qFatal("an editor does not start");
        watch();
    }

    WritingProbe& probe() { return *m_editor->module; }
    ResTreeModel& model() { return *probe().m_resModel; }
    QTreeView* view() { return m_editor->view("tvRes"); }
    QAction* action(const char* name) { return m_editor->action(name); }

    /// Delivers the next notifications, at most `most`; false if none waits.
    bool step(int most = 1) {
        if (m_waiting.empty()) {
            std::vector<orvo::store::Change> changes;
            if (!m_reader->readLog(m_cursor, 1000, &changes).ok())
                qFatal("no change log");
            for (orvo::store::Change& change : changes) {
                m_cursor = change.id;
                m_waiting.push_back(std::move(change));
            }
        }
        if (m_waiting.empty())
            return false;
        for (; most > 0 && !m_waiting.empty(); --most) {
            // What a record says takes the place of what was typed.
            known.typed.remove(QString::fromStdString(m_waiting.front().key));
            probe().messagePut(m_maker.make(m_waiting.front()));
            m_waiting.pop_front();
        }
        probe().MessageOn();
        watch();
        return true;
    }

    void watch() {
        QMap<QString, QString> parents = parentsIn(probe());
        const TreeRows rows = rowsOf(model(), {});
        if (rows.contains(orphans))
            parents[orphans] = fixedRows[0];
        QSet<QString> unsaved;
        for (auto row = rows.begin(); row != rows.end(); ++row)
            if (!parents.contains(row.key()))
                unsaved.insert(row.key());
        known.watch(rows, parents, unsaved);
        known.blurred << fixedRows[0] << orphans;
    }

    /// The first difference to an editor opened now that is not required; empty if there is none.
    QString check() {
        TestHost host(m_store);
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

    bool isAtRest() { return probe().m_editState == Idle; }

    Differences known;

private:
    TestStore& m_store;
    std::unique_ptr<TestHost> m_host;
    std::unique_ptr<orvo::store::Store> m_reader;
    orvo::client::NotificationMaker m_maker;
    std::deque<orvo::store::Change> m_waiting;
    int64_t m_cursor = 0;
    std::unique_ptr<EditorUnderTest<WritingProbe>> m_editor;
};

} // namespace

class TestResRandom : public QObject {
    Q_OBJECT
    std::mt19937 m_random;
    std::vector<std::unique_ptr<orvo::store::test::StoreKind>> m_kinds;
    std::unique_ptr<TestStore> m_store;
    std::unique_ptr<orvo::store::Store> m_files; ///< through which files come from elsewhere
    std::unique_ptr<Engineer> m_engineers[2];
    QStringList m_done; ///< the last acts, for messages
    int m_made = 0;

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool chance(int percent) { return below(100) < percent; }
    void say(const QString& act) {
        m_done << act;
        if (m_done.size() > 40)
            m_done.removeFirst();
    }
    QModelIndex anyRow(const ResTreeModel& model) {
        QModelIndexList all;
        const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
            for (int i = 0; i < model.rowCount(parent); ++i) {
                all << model.index(i, 0, parent);
                walk(all.last());
            }
        };
        walk({});
        return all[below(all.size())];
    }
    QString anyKey(const char* table) {
        const QStringList keys = recordsIn(m_engineers[below(2)]->probe(), table).keys();
        return keys.isEmpty() ? QString() : keys[below(keys.size())];
    }
    QString word() {
        static const QStringList words{"Насос", "арматура", "Ёлка", "1 насос",
                                       "Z",     "Печь",     "котёл"};
        return words[below(words.size())] + (chance(60) ? QString::number(below(30)) : QString());
    }
    int kindOf(const QString& folder) {
        return recordsIn(m_engineers[0]->probe(), "MenuResourceFolder").value(folder, {{}, 4}).type;
    }
    QString anyFolderLink() {
        return chance(8)    ? QString()
               : chance(95) ? anyKey("MenuResourceFolder")
                            : QStringLiteral("nowhere");
    }

    // A foreign hand ---------------------------------------------------------------------------

    void foreignAct() {
        const QString item = anyKey("MenuResource");
        const QString folder = anyKey("MenuResourceFolder");
        const bool mayMove = !isProtected(folder);
        switch (below(14)) {
        case 0:
        case 1: {
            const QString made = QString("f%1").arg(++m_made);
            const QString link = anyFolderLink();
            say("foreign resource " + made + " in " + link);
            m_store->insert("MenuResource",
                            {{"KeyLink", made},
                             {"MenuResourceFolderKey", link},
                             {"type_", chance(95) ? kindOf(link) : 1 + below(4)},
                             {"name_", word()},
                             {"caption", word()},
                             {"ico", chance(20) ? QString("pump.png") : QString()}});
            break;
        }
        case 2: {
            const QString made = QString("g%1").arg(++m_made);
            const QString link = anyFolderLink();
            say("foreign folder " + made + " in " + link);
            m_store->insert("MenuResourceFolder", {{"KeyLink", made},
                                                   {"ParentKey", link},
                                                   {"type_", kindOf(link)},
                                                   {"caption", word()}});
            break;
        }
        case 3:
            say("foreign caption " + item);
            m_store->update("MenuResource", {{"KeyLink", item}, {"caption", word()}});
            break;
        case 4:
        case 5:
            say("foreign name " + item);
            m_store->update("MenuResource", {{"KeyLink", item}, {"name_", word()}});
            break;
        case 6: {
            static const QStringList users{"ueng", "uother", "nobody", QString()};
            say("foreign lock " + item);
            m_store->update("MenuResource",
                            {{"KeyLink", item}, {"UsersKey", users[below(users.size())]}});
            break;
        }
        case 7: {
            const QString link = anyFolderLink();
            say("foreign move of " + item + " to " + link);
            m_store->update("MenuResource", {{"KeyLink", item}, {"MenuResourceFolderKey", link}});
            break;
        }
        case 8:
            say("foreign delete " + item);
            m_store->remove("MenuResource", item.toUtf8().constData());
            break;
        case 9:
            say("foreign caption of folder " + folder);
            if (mayMove)
                m_store->update("MenuResourceFolder", {{"KeyLink", folder}, {"caption", word()}});
            break;
        case 10: {
            const QString link = anyFolderLink();
            if (!mayMove)
                break;
            say("foreign move of folder " + folder + " to " + link);
            m_store->update("MenuResourceFolder", {{"KeyLink", folder}, {"ParentKey", link}});
            break;
        }
        case 11:
            if (!mayMove || chance(50))
                break;
            say("foreign delete of folder " + folder);
            m_store->remove("MenuResourceFolder", folder.toUtf8().constData());
            break;
        case 12:
            if (chance(75))
                break;
            say("foreign kind of " + item);
            m_store->update("MenuResource", {{"KeyLink", item}, {"type_", 1 + below(4)}});
            break;
        default: {
            const std::string name = word().toStdString();
            say("foreign upload " + QString::fromStdString(name));
            if (chance(50))
                m_files->filePut({{chance(50) ? "docs" : "", name, "bytes", {}}});
            else
                m_files->formPut(chance(50) ? "Котлы" : "", {{"", name, "bytes", {}}});
        }
        }
    }

    // An engineer ------------------------------------------------------------------------------

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
    QString anyRowName(Engineer& engineer) {
        static const QStringList names{"caption", "caption", "object", "params", "icon"};
        const QString name = names[below(names.size())];
        const QModelIndex row = engineer.probe().m_propModel->findIndexByKey(name);
        return row.isValid() && !row.siblingAtColumn(3).data().toBool() ? name : QString();
    }
    bool selectionIsFree(Engineer& engineer) {
        const QModelIndexList rows = engineer.view()->selectionModel()->selectedRows();
        return std::none_of(rows.begin(), rows.end(), [&](const QModelIndex& row) {
            return isProtected(engineer.model().getItemKeyLink(row));
        });
    }

    void ownAct(Engineer& engineer) {
        WritingProbe& module = engineer.probe();
        ResTreeModel& model = engineer.model();
        switch (below(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4: {
            const QModelIndex row = anyRow(model);
            const QString key = model.getItemKeyLink(row);
            // A saved row that is still marked as new would take the place of the one that is not
            // yet saved.
            if (!engineer.isAtRest() && row != module.m_newItemIndex &&
                row.siblingAtColumn(ResColumn::IsNew).data().toBool())
                break;
            say("row " + key);
            if (chance(80))
                engineer.view()->setCurrentIndex(row);
            else
                engineer.view()->selectionModel()->setCurrentIndex(
                    row, QItemSelectionModel::Select | QItemSelectionModel::Rows);
            break;
        }
        case 5:
        case 6:
        case 7: {
            static const QStringList actions{"actAddModule", "actAddFunction", "actAddFolder"};
            const QString action = actions[below(actions.size())];
            say(action);
            engineer.action(qPrintable(action))->trigger();
            break;
        }
        case 8:
        case 9:
        case 10: {
            const QString name = anyRowName(engineer);
            if (name.isEmpty() || isProtected(module.m_currentKey))
                break;
            say("passport " + name + " of " + module.m_currentKey);
            engineer.known.typed.insert(module.m_currentKey);
            orvo::editPassportValue(*module.m_propModel, name, word());
            break;
        }
        case 11:
        case 12:
            say("save");
            module.m_btnSave->click();
            break;
        case 13:
            say("cancel");
            cancel(engineer);
            break;
        case 14:
            if (isProtected(module.m_currentKey) || !selectionIsFree(engineer))
                break;
            say("delete " + module.m_currentKey);
            engineer.action("actDelete")->trigger();
            break;
        case 15:
            if (!selectionIsFree(engineer))
                break;
            say("cut");
            engineer.action("actCut")->trigger();
            break;
        case 16:
            say("paste in " + module.m_currentKey);
            engineer.action("actPaste")->trigger();
            break;
        case 17:
        case 18: {
            const QModelIndex source = anyRow(model);
            const QModelIndex target = anyRow(model);
            if (isProtected(model.getItemKeyLink(source)))
                break;
            const std::unique_ptr<QMimeData> data(model.mimeData({source}));
            const int row = chance(60) ? -1 : below(model.rowCount(target) + 1);
            if (!data || !model.canDropMimeData(data.get(), Qt::MoveAction, row, 0, target))
                break;
            say("drop " + model.getItemKeyLink(source) + " on " + model.getItemKeyLink(target));
            model.dropMimeData(data.get(), Qt::MoveAction, row, 0, target);
            break;
        }
        default: {
            // Steps through what is found, as far as it is no other unsaved row.
            if (!engineer.isAtRest())
                break;
            say("search");
            auto* line = module.findChild<QLineEdit*>();
            line->setText(word().left(1 + below(3)));
            QMetaObject::invokeMethod(&module, chance(70) ? "on_search_down_pressed"
                                                          : "on_search_up_pressed");
        }
        }
        if (boxStands(module))
            closeBox(module, chance(80));
        engineer.watch();
    }
    static void cancel(Engineer& engineer) {
        WritingProbe& module = engineer.probe();
        if (module.m_editState == EditRow && module.m_btnCancel->isEnabled() &&
            module.row(qPrintable(module.m_editKey)).isValid() &&
            (orvo::seekKey(module.m_tabResource, module.m_editKey) ||
             orvo::seekKey(module.m_tabResFolder, module.m_editKey)))
            engineer.known.typed.remove(module.m_editKey);
        module.m_btnCancel->click();
    }

    void fillStore() {
        m_store = std::make_unique<TestStore>();
        fillCatalogue(*m_store);
        for (int i = 0; i < 12; ++i) {
            static const char* const folders[] = {"trends", "alarms", "calc", "old", "docs"};
            static const int kinds[] = {1, 1, 2, 3, 4};
            addItem(*m_store, qPrintable(QString("e%1").arg(i)), kinds[i % 5], folders[i % 5],
                    qPrintable(word()), qPrintable(word()));
        }
        m_files = m_store->connect("files");
        for (auto& engineer : m_engineers)
            engineer = std::make_unique<Engineer>(*m_store);
    }

private slots:
    void initTestCase() { m_kinds = orvo::store::test::storeKinds(); }
    void editorsShowWhatIsStoredAfterAnyChanges_data() {
        QTest::addColumn<int>("kind");
        for (size_t i = 0; i < m_kinds.size(); ++i)
            QTest::newRow(m_kinds[i]->name().constData()) << static_cast<int>(i);
    }
    void editorsShowWhatIsStoredAfterAnyChanges() {
        QFETCH(int, kind);
        QVERIFY(m_kinds[static_cast<size_t>(kind)]->renew());
        qputenv("ORVO_TEST_STORE",
                QByteArray::fromStdString(m_kinds[static_cast<size_t>(kind)]->url()));
        bool given = false;
        unsigned seed = static_cast<unsigned>(qEnvironmentVariableIntValue("ORVO_SEED", &given));
        if (!given)
            seed = std::random_device{}();
        const int steps = qEnvironmentVariableIsSet("ORVO_STEPS")
                              ? qEnvironmentVariableIntValue("ORVO_STEPS")
                              : 1200;
        qInfo("ORVO_SEED=%d ORVO_STEPS=%d", static_cast<int>(seed), steps);
        m_random.seed(seed);
        m_done.clear();
        m_made = 0;
        fillStore();

        int quietPoints = 0;
        for (int step = 0; step < steps; ++step) {
            if (chance(35))
                foreignAct();
            else
                ownAct(*m_engineers[below(2)]);
            // Notifications come late, to each at his own pace, alone and in bursts.
            for (int i = below(4); i > 0; --i)
                m_engineers[below(2)]->step(1 + below(3));
            if (!chance(8))
                continue;
            ++quietPoints;
            for (auto& engineer : m_engineers)
                if (!engineer->isAtRest() && chance(60)) {
                    say("cancel");
                    cancel(*engineer);
                    engineer->watch();
                }
            for (bool any = true; any;) {
                any = false;
                for (auto& engineer : m_engineers)
                    any = engineer->step() || any;
            }
            for (auto& engineer : m_engineers) {
                if (!engineer->isAtRest())
                    continue; // an open edit shows what is not stored
                const QString found = engineer->check();
                QVERIFY2(found.isEmpty(),
                         qPrintable(QString("ORVO_SEED=%1, step %2: %3\nlast acts:\n%4")
                                        .arg(static_cast<int>(seed))
                                        .arg(step)
                                        .arg(found, m_done.join('\n'))));
            }
            // What a tree has lost comes back when the editor is opened again.
            if (chance(25))
                m_engineers[below(2)]->open();
        }
        int rows = 0;
        int families = 0;
        for (const auto& engineer : m_engineers) {
            rows += engineer->known.comparedRows;
            families += engineer->known.comparedFamilies;
        }
        qInfo("%d quiet points, %d rows and the order of %d families compared", quietPoints, rows,
              families);
        QVERIFY(rows > steps / 2);
        QVERIFY(families > steps / 20);
    }
    void cleanup() {
        // The buttons in the search line fade, and Qt frees a fade only at its end.
        QTest::qWait(300);
        for (auto& engineer : m_engineers)
            engineer.reset();
        m_files.reset();
        m_store.reset();
        qunsetenv("ORVO_TEST_STORE");
    }
};

QTEST_MAIN(TestResRandom)
#include "tst_res_random.moc"
