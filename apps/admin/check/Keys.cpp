#include "apps/admin/check/Rules.h"

namespace orvo::admin {

void checkFixedKeys(const Catalogue& catalogue, Findings& findings) {
    const struct {
        const Table& table;
        std::vector<const char*> keys;
    } trees[] = {
        {catalogue.desktops, {rowkey::desktops}},
        {catalogue.elements, {rowkey::elements}},
        {catalogue.folders, {rowkey::resources, rowkey::files, rowkey::orphans}},
        {catalogue.resources, {rowkey::resources, rowkey::files, rowkey::orphans}},
    };
    for (const auto& tree : trees)
        for (const char* key : tree.keys)
            if (const Row row = tree.table.byKey(key))
                findings.error(tree.table, row,
                               "такой ключ у строки дерева, за которой нет записи; редактор "
                               "принимает одну за другую");
}

} // namespace orvo::admin
