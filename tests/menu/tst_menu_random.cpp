// Thousands of changes in random order, by two editors and a foreign hand on one store. At every
// quiet point each editor shows what an editor opened at that moment would show, but for the
// differences that are required (TreeDifferences.h), and those of its own:
//
//  - lost is also what went away with a row above it: a deleted folder, or a desktop folder that
//    moved among its siblings.
//  - stray: a desktop or folder stays below its old parent; an element moved below an unknown one
//    stands at the very top; one moved below itself stays.
//  - another's menu: while a placeholder or a new name is open, a move to another desktop saves and
//    leaves the menu that stands there; it is not compared until a menu is loaded again.
//
// The seed is printed; ORVO_SEED sets it, ORVO_STEPS the number of steps.
#include "platform/client/Blocks.h"
#include "platform/client/Session.h"
#include "tests/menu/MenuProbe.h"
#include "tests/menu/TreeDifferences.h"

#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <deque>
#include <functional>
#include <random>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

namespace {

/// The rows below the top row, by key.
TreeRows rowsOf(const QAbstractItemModel* model, int keyColumn, const QVector<int>& columns,
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

const QVector<int> desckColumns{DesckColumn::Name, DesckColumn::IsFolder};
const QVector<int> menuColumns{MenuColumn::Caption,    MenuColumn::FolderKey, MenuColumn::Icon,
                               MenuColumn::MenuResKey, MenuColumn::OneCopy,   MenuColumn::Order,
                               MenuColumn::Params,     MenuColumn::Separator};

/// Key and parent of each record that a module holds, the empty text for no parent.
QMap<QString, QString> parentsIn(const OrvoMenu& module, const char* table) {
    QMap<QString, QString> parents;
    const QStringList lines = module.tableText(table).split('\n', Qt::SkipEmptyParts);
    for (const QString& line : lines.mid(1)) {
        const QStringList fields = line.split('\t');
        parents[fields[0]] = fields[1] == "\\N" ? QStringLiteral("") : fields[1];
    }
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
        m_desckKnown.clear();
        m_menuKnown.clear();
        m_editor = std::make_unique<MenuEditor>(*m_host, "Menu");
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
                             if (!parent.isValid() && first == 0)
                                 m_menuKnown.clear();
                         });
    }

    MenuProbe& probe() { return *m_editor->module; }
    QTreeView* view(const char* name) { return m_editor->view(name); }

    /// Delivers the next notification; false if none waits.
    bool step() {
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
        probe().messagePut(m_maker.make(m_waiting.front()));
        m_waiting.pop_front();
        probe().MessageOn();
        watch();
        return true;
    }

    void watch() {
        QSet<QString> unsaved;
        const TreeRows descks = desckRows(&unsaved);
        m_desckKnown.watch(descks, parentsIn(probe(), "MenuFolder"), unsaved);
        unsaved.clear();
        const TreeRows elements = menuRows(&unsaved);
        // Over a folder no menu is shown, whatever the table still holds.
        if (probe().m_menuModel->rowCount() > 0)
            m_menuKnown.watch(elements, parentsIn(probe(), "Menu"), unsaved);
    }

    TreeRows desckRows(QSet<QString>* unsaved) {
        return rowsOf(probe().m_desckModel.get(), DesckColumn::KeyLink, desckColumns,
                      DesckColumn::IsNew, DesckColumn::IsFolder, unsaved);
    }
    TreeRows menuRows(QSet<QString>* unsaved) {
        return rowsOf(probe().m_menuModel.get(), MenuColumn::KeyLink, menuColumns,
                      MenuColumn::IsNew, MenuColumn::Type, unsaved);
    }

    /// The first difference to an editor opened now that is not required; empty if there is none.
    QString check() {
        TestHost host(m_store);
        MenuEditor fresh(host, "Menu");
        if (!fresh.start())
            return "a fresh editor does not start";
        MenuProbe& other = *fresh.module;
        if (probe().tableText("MenuFolder") != other.tableText("MenuFolder"))
            return "MenuFolder:\n" + probe().tableText("MenuFolder") + "\nfresh:\n" +
                   other.tableText("MenuFolder");
        if (probe().tableText("MenuResource") != other.tableText("MenuResource"))
            return "MenuResource differs";
        QSet<QString> none;
        QSet<QString> unsaved;
        QString found = m_desckKnown.compare(desckRows(&unsaved),
                                             rowsOf(other.m_desckModel.get(), DesckColumn::KeyLink,
                                                    desckColumns, DesckColumn::IsNew,
                                                    DesckColumn::IsFolder, &none));
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
        found = m_menuKnown.compare(
            menuRows(&unsaved), rowsOf(other.m_menuModel.get(), MenuColumn::KeyLink, menuColumns,
                                       MenuColumn::IsNew, MenuColumn::Type, &none));
        return found.isEmpty() ? found : "tvMenu: " + found;
    }

    int comparedRows() const { return m_desckKnown.comparedRows + m_menuKnown.comparedRows; }
    int comparedFamilies() const {
        return m_desckKnown.comparedFamilies + m_menuKnown.comparedFamilies;
    }
    bool isAtRest() { return probe().m_editMode == MenuProbe::NoEdit; }
    QStringList failures() const { return m_host->failures; }

private:
    TestStore& m_store;
    std::unique_ptr<TestHost> m_host;
    std::unique_ptr<orvo::store::Store> m_reader;
    orvo::client::NotificationMaker m_maker;
    std::deque<orvo::store::Change> m_waiting;
    int64_t m_cursor = 0;
    QString m_menuOf; ///< the desktop whose menu was loaded last
    Differences m_desckKnown;
    Differences m_menuKnown;
    std::unique_ptr<MenuEditor> m_editor;
};

} // namespace

class TestMenuRandom : public QObject {
    Q_OBJECT
    std::mt19937 m_random;
    std::unique_ptr<TestStore> m_store;
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

    /// A random row of a model, the top row too; invalid in an empty one.
    QModelIndex anyRow(const QAbstractItemModel& model) {
        QModelIndexList all;
        const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
            for (int i = 0; i < model.rowCount(parent); ++i) {
                all << model.index(i, 0, parent);
                walk(all.last());
            }
        };
        walk({});
        return all.isEmpty() ? QModelIndex() : all[below(all.size())];
    }
    QString anyKey(const char* table) {
        const QStringList keys = parentsIn(m_engineers[below(2)]->probe(), table).keys();
        return keys.isEmpty() ? QString() : keys[below(keys.size())];
    }
    QString anyDesktop() {
        static const QStringList desktops{"d1", "d2", "d3"};
        return desktops[below(desktops.size())];
    }
    QString caption() {
        static const QStringList words{"Насос", "арматура", "Ёлка", "1 насос",
                                       "Z",     "Печь",     "котёл"};
        return words[below(words.size())] + (chance(50) ? QString::number(below(9)) : QString());
    }
    static void call(MenuProbe& module, const char* slot) {
        if (!QMetaObject::invokeMethod(&module, slot))
            qFatal("no slot %s", slot);
    }
    static void answer(MenuProbe& module, bool yes) {
        const QString text = yes ? QStringLiteral("Да") : QStringLiteral("Нет");
        for (QPushButton* button : module.findChildren<QPushButton*>())
            if (button->isVisible() && button->text() == text) {
                button->click();
                return;
            }
    }

    void foreignAct() {
        const QString key = anyKey("Menu");
        const QByteArray id = key.toUtf8();
        switch (below(10)) {
        case 0:
        case 1: {
            const QString made = QString("f%1").arg(++m_made);
            say("foreign element " + made);
            m_store->insert("Menu", {{"KeyLink", made},
                                     {"FolderKey", anyDesktop()},
                                     {"parent", chance(40)   ? QString()
                                                : chance(90) ? key
                                                             : QString("nowhere")},
                                     {"caption", caption()},
                                     {"order_", below(12) * 500},
                                     {"MenuResourceKey", chance(60) ? QString("r1") : QString()}});
            break;
        }
        case 2:
            say("foreign caption " + key);
            m_store->update("Menu", {{"KeyLink", key}, {"caption", caption()}});
            break;
        case 3:
        case 4:
            say("foreign order " + key);
            m_store->update("Menu", {{"KeyLink", key}, {"order_", below(12) * 500}});
            break;
        case 5: {
            const QString parent = chance(40) ? QString() : anyKey("Menu");
            say("foreign move " + key + " below " + parent);
            m_store->update("Menu", {{"KeyLink", key}, {"parent", parent}});
            break;
        }
        case 6:
            if (chance(60)) {
                say("foreign delete " + key);
                m_store->remove("Menu", id.constData());
            }
            break;
        case 7: {
            const QString desck = anyKey("MenuFolder");
            if (desck.startsWith('d'))
                break;
            say("foreign desktop caption " + desck);
            m_store->update("MenuFolder", {{"KeyLink", desck}, {"caption", caption()}});
            break;
        }
        case 8: {
            const QString made = QString("g%1").arg(++m_made);
            const bool folder = chance(30);
            say("foreign desktop " + made);
            m_store->insert("MenuFolder", {{"KeyLink", made},
                                           {"ParentKey", chance(10) ? QString() : QString("p1")},
                                           {"caption", caption()},
                                           {"order_", QString(folder ? "1000" : "2000")},
                                           {"isFolder", folder}});
            break;
        }
        default: {
            const QString desck = anyKey("MenuFolder");
            if (!desck.startsWith('g'))
                break;
            say("foreign delete of desktop " + desck);
            m_store->remove("MenuFolder", desck.toUtf8().constData());
        }
        }
    }

    void ownAct(Engineer& engineer) {
        MenuProbe& module = engineer.probe();
        QTreeView* menu = engineer.view("tvMenu");
        QTreeView* desck = engineer.view("tvDesck");
        const QModelIndex current = menu->currentIndex();
        const bool onElement = module.m_menuModel->getItemLevel(current) > 0;
        const bool onFolder = module.m_menuModel->itemIsFolder(current);
        switch (below(16)) {
        case 0: {
            const QModelIndex row = chance(70) ? module.m_desckModel->findIndexByKey(anyDesktop())
                                               : anyRow(*module.m_desckModel);
            say("desktop " + module.m_desckModel->getItemKeyLink(row));
            desck->setCurrentIndex(row);
            break;
        }
        case 1:
        case 2:
        case 3: {
            const QModelIndex row = anyRow(*module.m_menuModel);
            say("element " + module.m_menuModel->getItemKeyLink(row));
            if (row.isValid())
                menu->setCurrentIndex(row);
            break;
        }
        case 4:
            if (onElement && !module.m_menuModel->itemIsFirstSibling(current)) {
                say("up");
                call(module, "on_actMoveUp_triggered");
            }
            break;
        case 5:
            if (onElement && !module.m_menuModel->itemIsLastSibling(current)) {
                say("down");
                call(module, "on_actMoveDown_triggered");
            }
            break;
        case 6:
            if (onFolder && engineer.isAtRest()) {
                say("new folder");
                call(module, "on_actNewElemFolder_triggered");
            }
            break;
        case 7:
        case 8: {
            const QModelIndex value =
                module.m_propModel->findIndexByKey(chance(60) ? "name" : "icon");
            if (value.isValid()) {
                say("passport");
                module.m_propModel->setData(value.siblingAtColumn(1), caption(), Qt::EditRole);
            }
            break;
        }
        case 9:
        case 10:
            say("save");
            call(module, "on_save_pressed");
            break;
        case 11:
            say("cancel");
            call(module, "on_cancel_pressed");
            break;
        case 12: {
            const QModelIndex source = anyRow(*module.m_menuModel);
            const QModelIndex target = anyRow(*module.m_menuModel);
            if (!source.isValid() || module.m_menuModel->getItemLevel(source) == 0)
                break;
            const std::unique_ptr<QMimeData> data(module.m_menuModel->mimeData({source}));
            const int row = chance(50) ? -1 : below(module.m_menuModel->rowCount(target) + 1);
            if (!module.m_menuModel->canDropMimeData(data.get(), Qt::MoveAction, row, 0, target))
                break;
            say(QString("drop %1 on %2 at %3")
                    .arg(module.m_menuModel->getItemKeyLink(source),
                         module.m_menuModel->getItemKeyLink(target))
                    .arg(row));
            module.m_menuModel->dropMimeData(data.get(), Qt::MoveAction, row, 0, target);
            break;
        }
        case 13:
            if (onElement && engineer.isAtRest()) {
                say("copy");
                call(module, "on_actCopyMenuElement_triggered");
            }
            if (onFolder && engineer.isAtRest() && module.tableText("Menu").count('\n') < 60) {
                say("paste");
                call(module, "on_actPasteMenuElement_triggered");
            }
            break;
        case 14:
            if (onElement && engineer.isAtRest()) {
                say("delete");
                call(module, "on_actDeleteElem_triggered");
                answer(module, chance(80));
            }
            break;
        default: {
            const QModelIndex place = desck->currentIndex();
            if (!engineer.isAtRest() || module.m_desckModel->getItemLevel(place) < 2)
                break;
            if (chance(50)) {
                say("new desktop");
                call(module, "on_actAddDescktop_triggered");
            } else {
                say("rename");
                call(module, "on_actChangeDescktopOrFolder_triggered");
                // As by the keyboard: each letter comes from the row's editor.
                if (auto* editor = desck->viewport()->findChild<QLineEdit*>())
                    editor->setText(caption());
            }
        }
        }
        engineer.watch();
    }

private slots:
    void editorsShowWhatIsStoredAfterAnyChanges() {
        bool given = false;
        unsigned seed = static_cast<unsigned>(qEnvironmentVariableIntValue("ORVO_SEED", &given));
        if (!given)
            seed = std::random_device{}();
        const int steps = qEnvironmentVariableIsSet("ORVO_STEPS")
                              ? qEnvironmentVariableIntValue("ORVO_STEPS")
                              : 1200;
        qInfo("ORVO_SEED=%d ORVO_STEPS=%d", static_cast<int>(seed), steps);
        m_random.seed(seed);

        m_store = std::make_unique<TestStore>();
        addDesck(*m_store, "p1", "", "Цех", true);
        addDesck(*m_store, "p2", "p1", "Участок", true);
        addDesck(*m_store, "d1", "p1", "Первый", false);
        addDesck(*m_store, "d2", "p1", "Второй", false);
        addDesck(*m_store, "d3", "p2", "Третий", false);
        addResource(*m_store, "r1", 1, "Trend");
        for (int i = 0; i < 12; ++i) {
            const QByteArray key = "e" + QByteArray::number(i);
            const QByteArray parent = i < 6 ? QByteArray() : "e" + QByteArray::number(i % 3);
            addElement(*m_store, i % 3 == 2 ? "d2" : "d1", key.constData(), parent.constData(),
                       "Начало", i * 500, i < 3 ? nullptr : "r1");
        }
        for (auto& engineer : m_engineers)
            engineer = std::make_unique<Engineer>(*m_store);

        int quietPoints = 0;
        for (int step = 0; step < steps; ++step) {
            if (chance(35))
                foreignAct();
            else
                ownAct(*m_engineers[below(2)]);
            // Notifications come late, and to each at his own pace.
            for (int i = below(4); i > 0; --i)
                m_engineers[below(2)]->step();
            if (!chance(8))
                continue;
            ++quietPoints;
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
            // What a tree of desktops has lost comes back when the editor is opened again.
            if (chance(15))
                m_engineers[below(2)]->open();
        }
        int comparedRows = 0;
        int comparedFamilies = 0;
        for (const auto& engineer : m_engineers) {
            comparedRows += engineer->comparedRows();
            comparedFamilies += engineer->comparedFamilies();
        }
        qInfo("%d quiet points, %d rows and the order of %d families compared", quietPoints,
              comparedRows, comparedFamilies);
        QVERIFY(comparedRows > steps / 2);
        QVERIFY(comparedFamilies > steps / 20);
        for (auto& engineer : m_engineers)
            engineer.reset();
    }
};

QTEST_MAIN(TestMenuRandom)
#include "tst_menu_random.moc"
