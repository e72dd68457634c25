// MenuDesktopOpsTest.h: what the tests of the operations on desktops have in common.
#ifndef ORVO_TESTS_MENU_MENUDESKTOPOPSTEST_H
#define ORVO_TESTS_MENU_MENUDESKTOPOPSTEST_H
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::desckMime;

inline QString shownDescks(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_desckModel, -1);
}

inline QVariantList rowValues(const QModelIndex& row) {
    QVariantList values;
    for (int column = 0; column < DesckColumn::Count; ++column)
        values << row.sibling(row.row(), column).data();
    return values;
}

inline void putDesckOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(desckMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

inline QByteArray desckOnClipboard() {
    return QGuiApplication::clipboard()->mimeData()->data(desckMime);
}

#endif
