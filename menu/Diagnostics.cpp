// The local tables as text, for support and tests.
#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/TableText.h"
#include "frame/Vocabulary.h"

#include <array>

QString OrvoMenu::tableText(const QString& table) const {
    struct Shown {
        const char* name;
        const CMDArray* records;
        QStringList fields;
    };
    const std::array<Shown, 3> tables{
        Shown{orvo::table::MenuFolder, &m_tabFolder, m_desckFields.names()},
        Shown{orvo::table::Menu, &m_tabMenu, m_elementFields.names()},
        Shown{orvo::table::MenuResource,
              &m_tabResource,
              {orvo::field::KeyLink, orvo::field::name_, orvo::field::type_}}};
    for (const Shown& one : tables) {
        if (orvo::sameText(table, QString::fromLatin1(one.name)))
            return orvo::tableText(*one.records, one.fields);
    }
    return {};
}
