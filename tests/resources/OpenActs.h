// OpenActs.h: questions, pickers and cells of the clients at work: they are opened, stand for a
// random time, and are answered, chosen in and typed into. Looks that an answer deletes what was
// asked about, and that a choice goes where it was made for.
#ifndef ORVO_TESTS_RESOURCES_OPENACTS_H
#define ORVO_TESTS_RESOURCES_OPENACTS_H

#include "tests/resources/WorkingScene.h"

#include <QApplication>

namespace orvo::test {

class OpenActs {
public:
    using Client = TwoEditorsClient;

    explicit OpenActs(WorkingScene& scene)
        : m_scene(scene)
        , m_log(scene.store.connect("answers")) {}

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
        m_scene.chances.say(
            QString("answer %1 to %2 %3")
                .arg(question ? (yes ? "yes" : "no") : "the notice", table, asked.join(' ')));
        ++m_scene.figures[question ? "answers" : "notices"];
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
                    m_scene.fault.isEmpty())
                    m_scene.fault = "deleted unasked: " + record;
        expectNothingElseDeleted(seen, table, asked);
        if (yes && question)
            m_scene.dropVanished(client, before);
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
            if (!inside && m_scene.fault.isEmpty())
                m_scene.fault =
                    "deleted unasked: " + key + " of " + QString::fromStdString(change.table);
        }
    }

    /// Goes on with what stands open in the part, or leaves it so; false if nothing does.
    template <class Part>
    bool attend(Client& client, Part& part) {
        COrvoCliMod& module = part.module();
        if (boxStands(module)) {
            if (module.m_popMessageBox->isQuestion() && m_scene.chances.chance(60))
                return true;
            const bool notice = !module.m_popMessageBox->isQuestion();
            answer(client, part, m_scene.chances.chance(70));
            return !notice;
        }
        if (picker(module)) {
            if (m_scene.chances.chance(40)) {
                dropChosenOver(part);
                choose(client, part);
                ++m_scene.figures["choices"];
            }
            return true;
        }
        if (QLineEdit* line = openCell(module)) {
            if (m_scene.chances.chance(40))
                typeInto(part, line);
            else if (m_scene.chances.chance(40))
                closeCell(line);
            return m_scene.chances.chance(50);
        }
        return false;
    }

    /// What was typed where the choice may go is given up with it.
    template <class Part>
    void dropChosenOver(Part& part) {
        for (const char* row : {"icon", "object"})
            m_scene.typed.drop(part.probe().m_propModel->getRowValue(row).toString());
    }

    /// A question about the current row, or a folder that goes without one.
    void ask(MenuPart& part) {
        MenuProbe& module = part.probe();
        const bool desck = m_scene.chances.chance(30);
        if (desck && module.m_desckModel->getItemLevel(
                         part.view("tvDesck")->currentIndex().siblingAtColumn(0)) < 2)
            return;
        m_scene.chances.say(desck ? "ask to delete desktop " + module.m_currentDesckKey
                                  : "ask to delete element " + module.m_currentMenuKey);
        if (desck && module.m_currentDesckKey.startsWith('d'))
            return; // on which the foreign hand counts
        if (!desck && (!part.isAtRest() ||
                       module.m_menuModel->getItemLevel(part.view("tvMenu")->currentIndex()) == 0))
            return;
        if (desck && !part.isAtRest())
            m_scene.typed.drop(part.typedTexts());
        QMetaObject::invokeMethod(&module, desck ? "on_actDeleteFromtvDesck_triggered"
                                                 : "on_actDeleteElem_triggered");
        ++m_scene.figures["questions"];
    }
    void ask(ResPart& part) {
        if (!m_scene.resources.mayDelete(part))
            return;
        m_scene.chances.say("ask to delete " + part.probe().m_currentKey);
        part.action("actDelete")->trigger();
        ++m_scene.figures["questions"];
    }
    void open(MenuPart& part) {
        // In a menu with folders, as long as there is one.
        if (part.isAtRest() && m_scene.chances.chance(80)) {
            const auto& desks = *part.probe().m_desckModel;
            part.view("tvDesck")->setCurrentIndex(
                desks.findIndexByKey(m_scene.chances.oneOf({"d1", "d2"})));
            const QModelIndex row = m_scene.chances.anyRow(treeOf(part));
            if (row.isValid())
                viewOf(part)->setCurrentIndex(row);
            m_scene.chances.say("goes to " + keyOf(part));
        }
        m_asked[&part.module()] = placeIn(part);
        m_scene.menus.openPicker(part);
        ++m_scene.figures["pickers"];
    }
    void open(ResPart& part) {
        if (!part.probe().m_propModel->findIndexByKey("icon").isValid() ||
            ResPart::isProtected(keyOf(part)))
            return;
        m_scene.chances.say("picker of " + keyOf(part));
        part.known.typed.insert(keyOf(part));
        m_asked[&part.module()] = placeIn(part);
        part.probe().on_passp_buttonpressed("icon");
        ++m_scene.figures["pickers"];
    }

    template <class Part>
    void openCellOf(Part& part) {
        auto& module = part.probe();
        if (m_scene.chances.chance(60))
            join(part);
        if constexpr (std::is_same_v<Part, ResPart>)
            if (ResPart::isProtected(keyOf(part)))
                return;
        const QString name = cellName(part);
        const QModelIndex cell = module.m_propModel->findIndexByKey(name).siblingAtColumn(1);
        if (!cell.isValid())
            return;
        auto* view = module.template findChild<QTreeView*>("tvProp");
        m_scene.chances.say("cell " + keyOf(part) + '/' + name);
        QApplication::setActiveWindow(&module);
        view->setFocus();
        view->setCurrentIndex(cell);
        if (!view->indexWidget(cell))
            view->edit(cell);
        if (auto* line = qobject_cast<QLineEdit*>(view->indexWidget(cell))) {
            line->setProperty("cell", keyOf(part) + '/' + name);
            line->setFocus();
            ++m_scene.figures["cells"];
            if (m_scene.chances.chance(75))
                typeInto(part, line);
        }
    }

private:
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
        m_scene.menus.choose(part.module());
        QObject::disconnect(ok);
        const QMap<QString, QString> after = rowTexts(part);
        for (auto row = after.begin(); row != after.end(); ++row)
            if (row.key() != place.row && before.value(row.key(), *row) != *row &&
                m_scene.fault.isEmpty())
                m_scene.fault = "chosen for " + place.row + ", went to " + row.key();
        // An object of an element is shown by the passport and goes no further: so it is to be.
        const QString shown = part.probe().m_propModel->getRowValue("object").toString();
        if (!list->multipleChoice && taken && !boxStands(part.module()) &&
            m_scene.fault.isEmpty() &&
            (keyOf(part) != place.row ||
             (shown != list->chosenName && !after.value(place.row).contains(list->chosenName))))
            m_scene.fault = "chosen for " + place.row + ", went nowhere: " + list->chosenName +
                            "; the row says " + after.value(place.row);
        for (const WriteCall& call : client.host().writes().calls)
            for (const QString& record : call.records)
                // What had still to be written above it is written with it.
                if (list->multipleChoice && record.startsWith('+') &&
                    !before.contains(record.section(' ', 0, 0).mid(1)) &&
                    ++m_scene.figures[place.folder.isEmpty() ? "chosen at the top"
                                                             : "chosen for folders"] &&
                    m_scene.fault.isEmpty() &&
                    (!record.contains(QString("parent='%1'").arg(place.folder)) ||
                     !record.contains(QString("FolderKey='%1'").arg(place.desktop))))
                    m_scene.fault =
                        "chosen for " + place.folder + " of " + place.desktop + ": " + record;
    }

    // -----------------------------------------------------------------------------------------
    // Cells

    static QString nameCell(MenuPart& part) { return part.probe().m_currentDesckKey; }
    static QString nameCell(ResPart& part) { return keyOf(part) + "/caption"; }
    static void noteTyping(MenuPart& part) {
        part.typeElement();
        part.typeDesck();
    }
    static void noteTyping(ResPart& part) { part.known.typed.insert(keyOf(part)); }
    QString cellName(MenuPart&) { return m_scene.chances.chance(60) ? "name" : "params"; }
    QString cellName(ResPart&) {
        return m_scene.chances.oneOf({"caption", "caption", "params", "object"});
    }

    template <class Part>
    void typeInto(Part& part, QLineEdit* line) {
        if (line->isReadOnly())
            return;
        noteTyping(part);
        const QVariant cell = line->property("cell"); // of a name in a tree there is none
        const QString text = part.textFor(cell.isValid() ? cell.toString() : nameCell(part),
                                          m_scene.chances.word(60, 30));
        m_scene.chances.say("types " + text);
        line->selectAll();
        typeText(line, text);
        ++m_scene.figures["typed into cells"];
    }
    /// Makes the row current that is current in either client.
    template <class Part>
    void join(Part& part) {
        if (!part.isAtRest())
            return;
        const QString key = keyOf(m_scene.anyClient().template part<Part>());
        const QModelIndex row = treeOf(part).findIndexByKey(key);
        if (row.isValid()) {
            m_scene.chances.say("joins at " + key);
            viewOf(part)->setCurrentIndex(row);
        }
    }

    WorkingScene& m_scene;
    std::unique_ptr<store::Store> m_log;         ///< by which answers are looked at
    std::map<const COrvoCliMod*, Place> m_asked; ///< for what a picker was opened
};

} // namespace orvo::test

#endif
