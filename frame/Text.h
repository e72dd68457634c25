#pragma once

#include <QCoreApplication>
#include <QLocale>

namespace orvo {

/// What users read: `Text::tr("Удалено: %1")` gives the text in the language of the program, the
/// Russian one as it stands here if no translation is installed. Names and values of records are
/// data and never go through it.
///
/// A table of texts marks each of them by QT_TRANSLATE_NOOP("orvo", ...) and translates where it is
/// read, since a table is filled before a language is chosen. Any thread.
class Text {
    Q_DECLARE_TR_FUNCTIONS(orvo)
};

/// For numbers that stand in such a text.
inline QLocale textLocale() {
    return QLocale().language() == QLocale::English ? QLocale() : QLocale(QLocale::Russian);
}

} // namespace orvo
