// WorkingActs.h: what engineers do in the clients of WorkingClient.h besides their acts on menus
// and resources: questions, pickers and cells stand open for a random time, writes are refused,
// repeated and given up, and a client is left with an open edit.
#ifndef ORVO_TESTS_RESOURCES_WORKINGACTS_H
#define ORVO_TESTS_RESOURCES_WORKINGACTS_H

#include "platform/store/Schema.h"
#include "platform/store/WaitPolicy.h"
#include "tests/menu/EngineersStore.h"
#include "tests/menu/MenuRandomActs.h"
#include "tests/menu/WorkingClient.h"
#include "tests/resources/ResRandomActs.h"

#include <QApplication>

#include <map>

namespace orvo::test {

class WorkingActs {
public:
    using Client = WorkingClient<MenuPart, ResPart>;

    /// `anyClient`: either, of which one may do what the other is at.
    WorkingActs(Chances& chances, TestStore& store, EngineersKind& faults, TypedTexts& typed,
                MenuRandomActs& menus, ResRandomActs& resources, std::function<Client&()> anyClient)
        : m_chances(chances)
        , m_store(store)
        , m_faults(faults)
        , m_typed(typed)
        , m_menus(menus)
        , m_resources(resources)
        , m_anyClient(std::move(anyClient))
        , m_log(store.connect("answers")) {}

    std::map<QString, int> figures; ///< how often what was done
    QString fault;                  ///< the first act that did what it must not

    /// Lets every text that is typed in that client be followed.
    void follow(Client& client) {
        client.typed = &m_typed;
        client.each([&](auto& part) {
            part.dropped = [this](const QString& texts) { m_typed.drop(texts); };
            part.typing = [this, &client](const QString& cell, const QString& word) {
                return m_typed.typing(client.number(), cell, word, client.unwrittenTexts());
            };
        });
    }

    void ownAct(Client& client) {
        if (m_chances.chance(50))
            actIn(client, client.part<MenuPart>());
        else
            actIn(client, client.part<ResPart>());
    }

    /// Ends what has the attention, but for some open edits.
    void settle(Client& client) {
        client.each([&](auto& part) {
            client.act(part, [&] {
                COrvoCliMod& module = part.module();
                if (boxStands(module))
                    answer(client, part, m_chances.chance(50));
                if (auto* list = picker(module)) {
                    m_chances.say("close the picker");
                    list->findChild<QPushButton*>("btnCancel")->click();
                }
                if (QLineEdit* line = openCell(module))
                    closeCell(line);
            });
            part.watch();
        });
        if (m_chances.chance(30))
            workList(client);
    }

    /// Leaves nothing open and nothing unwritten; `gaveUp` counts what could not be written.
    void finish(Client& client) {
        client.each([&](auto& part) {
            client.act(part, [&] {
                if (!part.isAtRest())
                    part.cancel();
            });
        });
        client::UnwrittenList& list = client.unwritten();
        list.repeatAll();
        while (!list.isEmpty()) {
            const QString before = client.unwrittenTexts();
            ++figures["given up at the end"];
            list.giveUp(QString(list.entries().front().id));
            dropVanished(client, before);
        }
    }

private:
    // -----------------------------------------------------------------------------------------
    // What stands open

    static CPopObjectList* picker(COrvoCliMod& module) {
        auto* list = module.findChild<CPopObjectList*>();
        return list && list->isVisible() ? list : nullptr;
    }
    static QLineEdit* openCell(COrvoCliMod& module) {
        for (const char* name : {"tvProp", "tvDesck"})
            if (auto* view = module.findChild<QTreeView*>(name))
                for (QLineEdit* line : view->viewport()->findChildren<QLineEdit*>())
                    if (line->isVisible())
                        return line;
        return nullptr;
    }
    static void closeCell(QLineEdit* line) { QTest::keyClick(line, Qt::Key_Return); }

    /// The records that the answer deletes are among those that were asked about.
    template <class Part>
    void answer(Client& client, Part& part, bool yes) {
        CPopMessageBox& box = *part.module().m_popMessageBox;
        const bool question = box.isQuestion();
        const QString table = box.subjectTable();
        const QStringList asked = box.subjectKeys() + box.subjectBelow();
        const QString before = client.unwrittenTexts();
        client.host().writes().calls.clear();
        int64_t seen = 0;
        if (!m_log->logPosition(&seen).ok())
            qFatal("no change log");
        m_chances.say(
            QString("answer %1 to %2 %3")
                .arg(question ? (yes ? "yes" : "no") : "the notice", table, asked.join(' ')));
        ++figures[question ? "answers" : "notices"];
        if (!question)
            part.told += boxText(part.module());
        const QString wanted = yes && question ? "Да" : question ? "Нет" : "ОК";
        for (QPushButton* button : box.template findChildren<QPushButton*>())
            if (button->isVisible() && (button->text() == wanted || !question)) {
                button->click();
                break;
            }
        for (const WriteCall& call : client.host().writes().calls)
            for (const QString& record : call.records)
                if (call.table == table && record.startsWith('-') &&
                    !asked.contains(record.section(' ', 0, 0).mid(1), Qt::CaseInsensitive) &&
                    fault.isEmpty())
                    fault = "deleted unasked: " + record;
        expectNothingElseDeleted(seen, table, asked);
        if (yes && question)
            dropVanished(client, before);
    }

    /// What was deleted after that change was asked about, or lay in it.
    void expectNothingElseDeleted(int64_t seen, const QString& table, const QStringList& asked) {
        std::vector<store::Change> changes;
        if (!m_log->readLog(seen, 100000, &changes).ok())
            qFatal("no change log");
        for (const store::Change& change : changes) {
            const QString key = QString::fromStdString(change.key);
            if (change.code != OrvoEventDelete ||
                (change.table == table.toStdString() && asked.contains(key, Qt::CaseInsensitive)))
                continue;
            const QJsonObject before =
                QJsonDocument::fromJson(QByteArray::fromStdString(change.before)).object();
            // The elements of a menu, the content of a resource.
            const bool inside = change.table != table.toStdString() &&
                                std::any_of(before.begin(), before.end(), [&](const auto& value) {
                                    return asked.contains(value.toString(), Qt::CaseInsensitive);
                                });
            if (!inside && fault.isEmpty())
                fault = "deleted unasked: " + key + " of " + QString::fromStdString(change.table);
        }
    }

    /// Goes on with what stands open in the part, or leaves it so; false if nothing does.
    template <class Part>
    bool attend(Client& client, Part& part) {
        COrvoCliMod& module = part.module();
        if (boxStands(module)) {
            if (module.m_popMessageBox->isQuestion() && m_chances.chance(60))
                return true;
            const bool notice = !module.m_popMessageBox->isQuestion();
            answer(client, part, m_chances.chance(70));
            return !notice;
        }
        if (picker(module)) {
            if (m_chances.chance(40)) {
                dropChosenOver(part);
                choose(client, part);
                ++figures["choices"];
            }
            return true;
        }
        if (QLineEdit* line = openCell(module)) {
            if (m_chances.chance(40))
                typeInto(part, line);
            else if (m_chances.chance(40))
                closeCell(line);
            return m_chances.chance(50);
        }
        return false;
    }

    /// What was typed where the choice may go is given up with it.
    template <class Part>
    void dropChosenOver(Part& part) {
        for (const char* row : {"icon", "object"})
            m_typed.drop(part.probe().m_propModel->getRowValue(row).toString());
    }

    // -----------------------------------------------------------------------------------------
    // Choices

    /// Where a choice is to go.
    struct Place {
        QString row;     ///< the key of the row that was current
        QString folder;  ///< of new elements: in which they are to stand
        QString desktop; ///< and of which menu
    };
    static Place placeIn(MenuPart& part) {
        const MenuProbe& module = part.probe();
        QModelIndex row = part.view("tvMenu")->currentIndex().siblingAtColumn(0);
        const QString key = module.m_menuModel->getItemKeyLink(row);
        if (!module.m_menuModel->itemIsFolder(row))
            row = row.parent();
        const bool top = module.m_menuModel->getItemLevel(row) == 0;
        return {key, top ? QString() : module.m_menuModel->getItemKeyLink(row), part.openMenu()};
    }
    static Place placeIn(ResPart& part) {
        return {part.model().getItemKeyLink(part.view()->currentIndex()), {}, {}};
    }
    template <class Part>
    static QMap<QString, QString> rowTexts(Part& part) {
        QMap<QString, QString> texts;
        const auto& model = treeOf(part);
        const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
            for (int i = 0; i < model.rowCount(parent); ++i) {
                const QModelIndex row = model.index(i, 0, parent);
                QStringList values;
                for (int column = 0; column < model.columnCount(); ++column)
                    values << row.siblingAtColumn(column).data().toString();
                texts[model.getItemKeyLink(row)] = values.join('|');
                walk(row);
            }
        };
        walk({});
        return texts;
    }
    /// Chooses, and looks where the choice goes.
    template <class Part>
    void choose(Client& client, Part& part) {
        const Place& place = m_asked[&part.module()];
        CPopObjectList* list = picker(part.module());
        const QMap<QString, QString> before = rowTexts(part);
        client.host().writes().calls.clear();
        bool taken = false;
        const auto ok =
            QObject::connect(list, &CPopObjectList::btnOK_pressed, [&taken] { taken = true; });
        m_menus.choose(part.module());
        QObject::disconnect(ok);
        const QMap<QString, QString> after = rowTexts(part);
        for (auto row = after.begin(); row != after.end(); ++row)
            if (row.key() != place.row && before.value(row.key(), *row) != *row && fault.isEmpty())
                fault = "chosen for " + place.row + ", went to " + row.key();
        // An object of an element is shown by the passport and goes no further: so it is to be.
        const QString shown = part.probe().m_propModel->getRowValue("object").toString();
        if (!list->multipleChoice && taken && !boxStands(part.module()) && fault.isEmpty() &&
            (keyOf(part) != place.row ||
             (shown != list->chosenName && !after.value(place.row).contains(list->chosenName))))
            fault = "chosen for " + place.row + ", went nowhere: " + list->chosenName +
                    "; the row says " + after.value(place.row);
        for (const WriteCall& call : client.host().writes().calls)
            for (const QString& record : call.records)
                // What had still to be written above it is written with it.
                if (list->multipleChoice && record.startsWith('+') &&
                    !before.contains(record.section(' ', 0, 0).mid(1)) &&
                    ++figures[place.folder.isEmpty() ? "chosen at the top"
                                                     : "chosen for folders"] &&
                    fault.isEmpty() &&
                    (!record.contains(QString("parent='%1'").arg(place.folder)) ||
                     !record.contains(QString("FolderKey='%1'").arg(place.desktop))))
                    fault = "chosen for " + place.folder + " of " + place.desktop + ": " + record;
    }

    // -----------------------------------------------------------------------------------------
    // Cells

    static QString keyOf(MenuPart& part) { return part.probe().m_currentMenuKey; }
    static QString keyOf(ResPart& part) { return part.probe().m_currentKey; }
    static QString nameCell(MenuPart& part) { return part.probe().m_currentDesckKey; }
    static QString nameCell(ResPart& part) { return keyOf(part) + "/caption"; }
    static void noteTyping(MenuPart& part) {
        part.typeElement();
        part.typeDesck();
    }
    static void noteTyping(ResPart& part) { part.known.typed.insert(keyOf(part)); }
    QString cellName(MenuPart&) { return m_chances.chance(60) ? "name" : "params"; }
    QString cellName(ResPart&) {
        return m_chances.oneOf({"caption", "caption", "params", "object"});
    }

    template <class Part>
    void typeInto(Part& part, QLineEdit* line) {
        if (line->isReadOnly())
            return;
        noteTyping(part);
        const QVariant cell = line->property("cell"); // of a name in a tree there is none
        const QString text =
            part.textFor(cell.isValid() ? cell.toString() : nameCell(part), m_chances.word(60, 30));
        m_chances.say("types " + text);
        line->selectAll();
        typeText(line, text);
        ++figures["typed into cells"];
    }
    /// Makes the row current that is current in either client.
    template <class Part>
    void join(Part& part) {
        if (!part.isAtRest())
            return;
        const QString key = keyOf(m_anyClient().template part<Part>());
        const QModelIndex row = treeOf(part).findIndexByKey(key);
        if (row.isValid()) {
            m_chances.say("joins at " + key);
            viewOf(part)->setCurrentIndex(row);
        }
    }
    static MenuTreeModel& treeOf(MenuPart& part) { return *part.probe().m_menuModel; }
    static ResTreeModel& treeOf(ResPart& part) { return part.model(); }
    static QTreeView* viewOf(MenuPart& part) { return part.view("tvMenu"); }
    static QTreeView* viewOf(ResPart& part) { return part.view(); }

    template <class Part>
    void openCellOf(Part& part) {
        auto& module = part.probe();
        if (m_chances.chance(60))
            join(part);
        if constexpr (std::is_same_v<Part, ResPart>)
            if (ResPart::isProtected(keyOf(part)))
                return;
        const QString name = cellName(part);
        const QModelIndex cell = module.m_propModel->findIndexByKey(name).siblingAtColumn(1);
        if (!cell.isValid())
            return;
        auto* view = module.template findChild<QTreeView*>("tvProp");
        m_chances.say("cell " + keyOf(part) + '/' + name);
        QApplication::setActiveWindow(&module);
        view->setFocus();
        view->setCurrentIndex(cell);
        if (!view->indexWidget(cell))
            view->edit(cell);
        if (auto* line = qobject_cast<QLineEdit*>(view->indexWidget(cell))) {
            line->setProperty("cell", keyOf(part) + '/' + name);
            line->setFocus();
            ++figures["cells"];
            if (m_chances.chance(75))
                typeInto(part, line);
        }
    }

    // -----------------------------------------------------------------------------------------
    // Acts

    template <class Part>
    void actIn(Client& client, Part& part) {
        const QString before = client.unwrittenTexts();
        bool list = false;
        bool leave = false;
        client.act(part, [&] {
            if (attend(client, part))
                return;
            const int what = m_chances.below(100);
            if (what < 5)
                ask(part);
            else if (what < 12)
                open(part);
            else if (what < 30)
                openCellOf(part);
            else if (what < 38)
                saveRefused(part);
            else if (what < 41)
                saveDuplicate(part);
            else if (what < 49)
                list = true;
            else if (what < 51)
                leave = true;
            else if (what < 75 && !part.isAtRest())
                saveAsItIs(part);
            else
                ordinary(client, part);
        });
        if (m_chances.lastAct().contains("delete"))
            dropVanished(client, before);
        if (list)
            workList(client);
        if (leave)
            this->leave(client);
    }
    void ordinary(Client& client, MenuPart& part) {
        if (m_chances.chance(3))
            m_resources.removeResource(client.part<ResPart>(),
                                       m_chances.oneOf(part.usedResources()));
        else
            m_menus.ownAct(part);
    }
    void ordinary(Client&, ResPart& part) { m_resources.ownAct(part); }

    /// A question about the current row, or a folder that goes without one.
    void ask(MenuPart& part) {
        MenuProbe& module = part.probe();
        const bool desck = m_chances.chance(30);
        if (desck && module.m_desckModel->getItemLevel(
                         part.view("tvDesck")->currentIndex().siblingAtColumn(0)) < 2)
            return;
        m_chances.say(desck ? "ask to delete desktop " + module.m_currentDesckKey
                            : "ask to delete element " + module.m_currentMenuKey);
        if (desck && module.m_currentDesckKey.startsWith('d'))
            return; // on which the foreign hand counts
        if (!desck && (!part.isAtRest() ||
                       module.m_menuModel->getItemLevel(part.view("tvMenu")->currentIndex()) == 0))
            return;
        if (desck && !part.isAtRest())
            m_typed.drop(part.typedTexts());
        QMetaObject::invokeMethod(&module, desck ? "on_actDeleteFromtvDesck_triggered"
                                                 : "on_actDeleteElem_triggered");
        ++figures["questions"];
    }
    void ask(ResPart& part) {
        if (!m_resources.mayDelete(part))
            return;
        m_chances.say("ask to delete " + part.probe().m_currentKey);
        part.action("actDelete")->trigger();
        ++figures["questions"];
    }
    void open(MenuPart& part) {
        // In a menu with folders, as long as there is one.
        if (part.isAtRest() && m_chances.chance(80)) {
            const auto& desks = *part.probe().m_desckModel;
            part.view("tvDesck")->setCurrentIndex(
                desks.findIndexByKey(m_chances.oneOf({"d1", "d2"})));
            const QModelIndex row = m_chances.anyRow(treeOf(part));
            if (row.isValid())
                viewOf(part)->setCurrentIndex(row);
            m_chances.say("goes to " + keyOf(part));
        }
        m_asked[&part.module()] = placeIn(part);
        m_menus.openPicker(part);
        ++figures["pickers"];
    }
    void open(ResPart& part) {
        if (!part.probe().m_propModel->findIndexByKey("icon").isValid() ||
            ResPart::isProtected(keyOf(part)))
            return;
        m_chances.say("picker of " + keyOf(part));
        part.known.typed.insert(keyOf(part));
        m_asked[&part.module()] = placeIn(part);
        part.probe().on_passp_buttonpressed("icon");
        ++figures["pickers"];
    }

    // -----------------------------------------------------------------------------------------
    // Writes that fail

    static void save(MenuPart& part) {
        QMetaObject::invokeMethod(&part.probe(), "on_save_pressed");
    }
    static void save(ResPart& part) { part.probe().m_btnSave->click(); }

    template <class Part>
    void saveAsItIs(Part& part) {
        m_chances.say("save");
        save(part);
    }

    struct Impatient : store::WaitPolicy {
        bool keepWaiting() override { return ++waits < 3; }
        int waits = 0;
    };

    template <class Part>
    void saveRefused(Part& part) {
        if (part.isAtRest())
            return;
        // A locked file keeps its writer waiting for seconds.
        const bool file = m_faults.name() == "sqlite";
        const auto failing = m_chances.chance(file ? 3 : 20) ? EngineersKind::Locked
                             : m_chances.chance(40)          ? EngineersKind::NoRight
                             : m_chances.chance(50)          ? EngineersKind::RequestLost
                                                             : EngineersKind::AnswerLost;
        if (!m_faults.begin(failing))
            return;
        m_chances.say(QString("save, to fail by %1").arg(failing));
        static const char* const names[] = {"saves at a lock", "saves without right",
                                            "saves whose request is lost",
                                            "saves whose answer is lost"};
        ++figures[names[failing]];
        {
            // What is not locked ends by itself, at whatever pace.
            Impatient patience;
            const store::WaitPolicyScope scope(failing == EngineersKind::Locked ? &patience
                                                                                : nullptr);
            save(part);
        }
        m_faults.end();
    }
    /// Whether that key is to be taken now: an edit whose save was refused may be saved again.
    bool takes(const QString& key) {
        if (m_taken.contains(key))
            return false;
        m_taken.insert(key);
        return true;
    }
    void saveDuplicate(MenuPart& part) {
        const MenuProbe& module = part.probe();
        const QString desck = module.m_desckModel->getItemKeyLink(module.m_editDesckIndex);
        const bool isElement = module.m_editMode == MenuProbe::NewElement;
        const bool isDesck = module.m_editMode == MenuProbe::NewDesck && !desck.isEmpty();
        if ((!isElement && !isDesck) || !takes(isElement ? module.m_editMenuKey : desck))
            return;
        if (isElement)
            m_store.insert("Menu", {{"KeyLink", module.m_editMenuKey},
                                    {"FolderKey", QString("d1")},
                                    {"caption", QString("taken")},
                                    {"order_", 0}});
        else
            m_store.insert("MenuFolder", {{"KeyLink", desck},
                                          {"ParentKey", QString("p1")},
                                          {"caption", QString("taken")},
                                          {"order_", QString("2000")},
                                          {"isFolder", false}});
        m_chances.say("save under a key that is taken: " + module.m_editMenuKey + desck);
        ++figures["saves of duplicates"];
        save(part);
    }
    void saveDuplicate(ResPart& part) {
        WritingProbe& module = part.probe();
        if (module.m_editState != NewRow)
            return;
        const bool folder =
            part.model().itemIsFolder(part.model().findIndexByKey(module.m_editKey));
        if (folder || !takes(module.m_editKey))
            return;
        m_store.insert("MenuResource", {{"KeyLink", module.m_editKey},
                                        {"MenuResourceFolderKey", QString("trends")},
                                        {"type_", 1},
                                        {"name_", m_chances.word(100, 100000)},
                                        {"caption", QString("taken")}});
        m_chances.say("save under a key that is taken: " + module.m_editKey);
        ++figures["saves of duplicates"];
        save(part);
    }

    // -----------------------------------------------------------------------------------------
    // The list

    /// What is not in the list any more went with what its engineer deleted or gave up.
    void dropVanished(Client& client, const QString& before) {
        const QSet<int> left = TypedTexts::numbersIn(client.unwrittenTexts());
        QString gone;
        for (const int number : TypedTexts::numbersIn(before) - left)
            gone += QString("~%1~").arg(number);
        m_typed.drop(gone);
    }
    void workList(Client& client) {
        client::UnwrittenList& list = client.unwritten();
        if (list.isEmpty())
            return;
        const auto work = [&] {
            const client::UnwrittenEntry& entry =
                list.entries()[size_t(m_chances.below(int(list.entries().size())))];
            const QString id = entry.id;
            const QString before = client.unwrittenTexts();
            const int what = m_chances.below(10);
            const QString of = QString("%1 of %2 (%3)")
                                   .arg(list.entries().size())
                                   .arg(entry.words.what)
                                   .arg(entry.state);
            if (what < 5) {
                m_chances.say("repeat one of " + of);
                ++figures[list.repeat(id) ? "repeated" : "repeated in vain"];
            } else if (what < 6) {
                m_chances.say("repeat all of " + of);
                list.repeatAll();
                ++figures["repeated all"];
            } else if (what < 8) {
                m_chances.say("give up one of " + of);
                list.giveUp(id);
                dropVanished(client, before);
                ++figures["given up"];
            } else if (entry.state == client::UnwrittenEntry::Conflict) {
                m_chances.say("write another text in " + of);
                setMine(client, entry);
                ++figures[list.repeat(id) ? "conflicts solved" : "conflicts left"];
            }
        };
        if (m_chances.chance(50))
            client.act(client.part<MenuPart>(), work);
        else
            client.act(client.part<ResPart>(), work);
    }
    void setMine(Client& client, const client::UnwrittenEntry& entry) {
        const client::RecordWrite record = client::recordsOf(entry.request).front();
        const store::TableDef* table = store::findTable(entry.request.table);
        const QString id = entry.id;
        for (const auto& [field, value] : record.values) {
            if (!std::holds_alternative<std::string>(value) ||
                table->fields[size_t(field)].name != std::string("caption"))
                continue;
            const QString before = client.unwrittenTexts();
            client.unwritten().setMine(
                id, record.key, field,
                m_typed.typing(client.number(), QString::fromStdString(record.key) + "/caption",
                               "Свой", before));
            dropVanished(client, before);
        }
    }

    // -----------------------------------------------------------------------------------------
    // Leaving

    /// Opens the editors anew, or ends the client and starts it again, with the answer of the
    /// engineer to what he has not saved.
    void leave(Client& client) {
        const int answer = m_chances.below(3); // save, drop, stay
        bool stays = false;
        bool asked = false;
        client.each([&](auto& part) {
            COrvoCliMod& module = part.module();
            if (stays || module.ModEditText().isEmpty())
                return;
            asked = true;
            if (answer == 0) {
                const int failures = client.failures;
                client.act(part, [&] { stays = !module.ModEditSave(); });
                stays = stays || client.failures > failures;
            } else if (answer == 1) {
                m_typed.drop(part.typedTexts());
            } else {
                stays = true;
            }
        });
        static const char* const answers[] = {"left, edit saved", "left, edit dropped", "stayed"};
        ++figures[!asked ? "left without an edit" : stays ? "stayed" : answers[answer]];
        const bool restarts = m_chances.chance(50);
        m_chances.say(QString("leave: %1%2")
                          .arg(stays ? "stay" : answers[answer], restarts ? ", process" : ""));
        if (stays)
            return;
        if (restarts)
            client.restart();
        else
            client.open();
        follow(client);
    }

    Chances& m_chances;
    TestStore& m_store;
    EngineersKind& m_faults;
    TypedTexts& m_typed;
    MenuRandomActs& m_menus;
    ResRandomActs& m_resources;
    std::function<Client&()> m_anyClient;
    std::unique_ptr<store::Store> m_log;         ///< by which answers are looked at
    std::map<const COrvoCliMod*, Place> m_asked; ///< for what a picker was opened
    QSet<QString> m_taken;                       ///< keys under which a save was made to fail
};

} // namespace orvo::test

#endif
