// The local tables as text, for support and tests.
#include "resources/OrvoResources.h"

#include "frame/Records.h"
#include "frame/TableText.h"

QString OrvoResources::tableText(const QString& table) const {
    if (orvo::sameText(table, QStringLiteral("MenuResource")))
        return orvo::tableText(m_tabResource, {"KeyLink", "MenuResourceFolderKey", "type_", "name_",
                                               "caption", "params", "ico", "UsersKey"});
    if (orvo::sameText(table, QStringLiteral("MenuResourceFolder")))
        return orvo::tableText(m_tabResFolder, {"KeyLink", "ParentKey", "type_", "caption"});
    return {};
}
