// The local tables as text, for support and tests.
#include "menu/OrvoMenu.h"

#include "frame/Records.h"

#include <array>

namespace {

/// One value on one line: what would break the columns is written as in a C string.
QString shown(const MDRData* record, MDRField field) {
    const MDRVar value = orvo::valueOf(record, field);
    if (value.null)
        return QStringLiteral("\\N");
    switch (value.type) {
    case MDX_BOOLEAN:
        return QString::number(orvo::flagOf(record, field) ? 1 : 0);
    case MDX_INTEGER:
        return QString::number(orvo::integerOf(record, field));
    case MDX_TEXT: {
        QString text = orvo::textOf(record, field);
        return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
            .replace(QLatin1Char('\t'), QLatin1String("\\t"))
            .replace(QLatin1Char('\n'), QLatin1String("\\n"));
    }
    default:
        return QStringLiteral("\\?");
    }
}

} // namespace

QString OrvoMenu::tableText(const QString& table) const {
    struct Shown {
        const char* name;
        const CMDArray* records;
        QStringList fields;
    };
    const std::array<Shown, 3> tables{
        Shown{
            "MenuFolder", &m_tabFolder, {"KeyLink", "ParentKey", "caption", "order_", "isFolder"}},
        Shown{"Menu",
              &m_tabMenu,
              {"KeyLink", "parent", "FolderKey", "caption", "order_", "ico", "separator", "oneCopy",
               "MenuResourceKey", "params"}},
        Shown{"MenuResource", &m_tabResource, {"KeyLink", "name_", "type_"}}};
    for (const Shown& one : tables) {
        if (!orvo::sameText(table, QString::fromLatin1(one.name)))
            continue;
        QString text = one.fields.join(QLatin1Char('\t')) + QLatin1Char('\n');
        orvo::walkAll(*one.records, 0, [&](const MDRData* record) {
            QStringList values;
            for (const QString& field : one.fields)
                values << shown(record, orvo::fieldOf(record, field.toLatin1().constData()));
            text += values.join(QLatin1Char('\t')) + QLatin1Char('\n');
            return true;
        });
        return text;
    }
    return {};
}
