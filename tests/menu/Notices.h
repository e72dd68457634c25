// Notices.h: notification blocks made by hand, for what no store would send: other widths, other
// tables, records that are cut or lie.
#ifndef ORVO_TESTS_MENU_NOTICES_H
#define ORVO_TESTS_MENU_NOTICES_H

#include "tests/menu/ModuleFixture.h"

#include <QByteArray>

namespace orvo::test {

/// The raw record of a notification in which these fields are marked.
QByteArray rawRecordOf(const char* table, Fields fields);

/// One block; the defaults are those of a well-formed one without fields.
struct Notice {
    int code = 602;
    QByteArray table = "Menu";
    QByteArray key;
    QByteArray raw;
    int fieldCount = 10;
    QByteArray source = QByteArray(); ///< null: made from the table

    /// The caller's.
    MDXCliParam* make() const;
};

/// Hands the module a block as the host does, through its queue.
void notify(COrvoCliMod& module, const Notice& notice);

} // namespace orvo::test

#endif
