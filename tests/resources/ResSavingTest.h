// ResSavingTest.h: open edits to save or to leave, and what refuses them.
#ifndef ORVO_TESTS_RESOURCES_RESSAVINGTEST_H
#define ORVO_TESTS_RESOURCES_RESSAVINGTEST_H

#include "tests/menu/Outage.h"
#include "tests/resources/WritingProbe.h"

namespace orvo::test {

constexpr char emptyObject[] = "Ошибка\nСвойство Объект не может быть пустым. Данные не сохранены.";
constexpr char takenName[] = "Ошибка\nТакой ресурс уже существует. Данные не сохранены.";
constexpr char emptyFolder[] =
    "Ошибка\nСвойство \"Имя папки\" не может быть пустым. Данные не сохранены.";
constexpr char takenFolder[] =
    "Ошибка\nПапка с таким именем уже существует у данного родителя. Данные не сохранены.";

/// With a new row below a folder, made by one of the actions.
struct NewRowOpen : Writing {
    NewRowOpen(const char* action, const char* folder, Fill fill = nullptr) : Writing(fill) {
        makeCurrent(folder);
        editor.action(action)->trigger();
        key = currentKey();
        if (state() != NewRow)
            qFatal("%s made no row", action);
    }
    QString key;
};

/// With a changed value of an existing row.
struct EditOpen : Writing {
    EditOpen(const char* key, const char* row, const QString& value, Fill fill = nullptr)
        : Writing(fill) {
        makeCurrent(key);
        type(row, value);
        if (state() != EditRow)
            qFatal("no edit of %s", key);
    }
};

} // namespace orvo::test

#endif
