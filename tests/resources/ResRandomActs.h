// ResRandomActs.h: what an engineer and a foreign hand do to resources in a random run
// (RandomRun.h).
#ifndef ORVO_TESTS_RESOURCES_RESRANDOMACTS_H
#define ORVO_TESTS_RESOURCES_RESRANDOMACTS_H

#include "tests/resources/ResPart.h"

#include "models/Passport.h"

#include <QAbstractItemView>
#include <QMimeData>

namespace orvo::test {

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
