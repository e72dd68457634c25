#include "apps/admin/check/Rules.h"

namespace orvo::admin {

void checkDesktops(const Catalogue& catalogue, Findings& findings) {
    const Table& table = catalogue.desktops;
    for (int i = 0; i < table.count(); ++i) {
        const Row row = table.at(i);
        if (row.text("caption").empty())
            findings.error(table, row, "пустое название");

        const std::string order = row.text("order_");
        const bool isFolder = row.integer("isFolder") != 0;
        if (order != "1000" && order != "2000")
            findings.error(table, row, "order_ не \"1000\" и не \"2000\":", "\"" + order + "\"");
        else if ((order == "1000") != isFolder)
            findings.error(table, row,
                           "order_ не соответствует isFolder (папка - \"1000\", рабочий стол - "
                           "\"2000\"):",
                           "\"" + order + "\"");

        const std::string parentKey = row.text("ParentKey");
        const Row parent = table.byKey(parentKey);
        if (!parentKey.empty() && !parent)
            findings.error(table, row, "нет родителя", parentKey);
        else if (parent && !parent.integer("isFolder"))
            findings.error(table, row, "родитель - рабочий стол, а не папка:", shownName(parent));
    }
    checkCycles(table, "ParentKey", findings);
}

} // namespace orvo::admin
