// The local tables as text, for support and tests.
#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/TableText.h"

#include <array>

QString OrvoMenu::tableText(const QString& table) const {
    struct Shown {
        const char* name;
        const CMDArray* records;
        QStringList fields;
    };
    const std::array<Shown, 3> tables{
        Shown{"MenuFolder", &m_tabFolder, m_desckFields.names()},
        Shown{"Menu", &m_tabMenu, m_elementFields.names()},
        Shown{"MenuResource", &m_tabResource, {"KeyLink", "name_", "type_"}}};
    for (const Shown& one : tables) {
        if (orvo::sameText(table, QString::fromLatin1(one.name)))
            return orvo::tableText(*one.records, one.fields);
    }
    return {};
}
