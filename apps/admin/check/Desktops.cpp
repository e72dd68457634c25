#include "apps/admin/check/Rules.h"

namespace orvo::admin {

void checkDesktops(const Catalogue& catalogue, Findings& findings) {
    const Table& table = catalogue.desktops;
    for (int i = 0; i < table.count(); ++i) {
        const Row row = table.at(i);
        if (row.text(field::caption).empty())
            findings.error(table, row, "пустое название");

        const std::string order = row.text(field::order_);
        const bool isFolder = row.integer(field::isFolder) != 0;
        if (order != sortclass::folder && order != sortclass::desktop)
            findings.error(table, row, "order_ не \"1000\" и не \"2000\":", "\"" + order + "\"");
        else if ((order == sortclass::folder) != isFolder)
            findings.error(table, row,
                           "order_ не соответствует isFolder (папка - \"1000\", рабочий стол - "
                           "\"2000\"):",
                           "\"" + order + "\"");

        const std::string parentKey = row.text(field::ParentKey);
        const Row parent = table.byKey(parentKey);
        if (!parentKey.empty() && !parent)
            findings.error(table, row, "нет родителя", parentKey);
        else if (parent && !parent.integer(field::isFolder))
            findings.error(table, row, "родитель - рабочий стол, а не папка:", shownName(parent));
    }
    checkCycles(table, field::ParentKey, findings);
}

} // namespace orvo::admin
