// The local tables as text, for support and tests.
#include "resources/OrvoResources.h"

#include "frame/Records.h"
#include "frame/TableText.h"

QString OrvoResources::tableText(const QString& table) const {
    using namespace orvo::field;
    if (orvo::sameText(table, QString::fromLatin1(orvo::table::MenuResource)))
        return orvo::tableText(m_tabResource, {KeyLink, MenuResourceFolderKey, type_, name_,
                                               orvo::field::caption, params, ico, UsersKey});
    if (orvo::sameText(table, QString::fromLatin1(orvo::table::MenuResourceFolder)))
        return orvo::tableText(m_tabResFolder, {KeyLink, ParentKey, type_, orvo::field::caption});
    return {};
}
