// MenuClipboardTest.h: the clipboard as the tests of copying and pasting elements see it.
#ifndef ORVO_TESTS_MENU_MENUCLIPBOARDTEST_H
#define ORVO_TESTS_MENU_MENUCLIPBOARDTEST_H
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "menu/MenuPayload.h"
#include "platform/mdx/MdxBuild.h"

#include <QClipboard>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;

inline QByteArray payload() {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(menuMime) : QByteArray();
}

inline void putOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(menuMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

/// The same payload as another program's: the bytes, put anew.
inline void putAgain() {
    putOnClipboard(payload());
}

inline QString shownMenu(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_menuModel, -1);
}

inline QStringList keysInOrder(const MDArray* array, int key) {
    QStringList keys;
    for (int32_t i = 0; const MDRData* record = MDARec(array, key, i); ++i)
        keys << orvo::textOf(record, "KeyLink");
    return keys;
}

#endif
