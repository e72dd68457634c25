// MenuNotificationsTest.h: what the tests of notifications have in common.
#ifndef ORVO_TESTS_MENU_MENUNOTIFICATIONSTEST_H
#define ORVO_TESTS_MENU_MENUNOTIFICATIONSTEST_H
#include "tests/menu/LiveProbe.h"

#include <QSignalSpy>

#include <functional>
#include <random>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

inline QString inTable(const CMDArray& table, const char* key, const char* field) {
    const MDRData* record = orvo::seekKey(table, QString::fromLatin1(key));
    return record ? orvo::textOf(record, field) : QStringLiteral("no record");
}

/// Two more desktops in the folder "ceh", so that there are places to move to.
inline void moreDesktops(TestStore& store) {
    addDesck(store, "armb", "ceh", "Б стол", false);
    addDesck(store, "armv", "ceh", "В стол", false);
}

#endif
