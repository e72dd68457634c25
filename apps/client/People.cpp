#include "apps/client/People.h"

#include "frame/OrvoClient.h"
#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/mdx/MdxBuild.h"

namespace orvo::app {

store::Status readPeople(store::Store& store, history::PersonNames* names) {
    CMDArray rows;
    store::Status status = store.fetch(table::Users, rows.array);
    const store::TableDef& users = *store::findTable(table::Users);
    for (uint32_t i = 0; status.ok() && i < mdx::postedCount(rows.array); ++i) {
        const history::Values values = history::valuesIn(rows.array, i);
        const auto valueOf = [&](const char* field) {
            const auto found = values.find(users.find(field));
            return found == values.end() ? store::Value() : found->second;
        };
        const auto text = [&](const char* field) {
            return QString::fromStdString(store::textOf(valueOf(field)));
        };
        const store::Value program = valueOf(field::program);
        const auto* flag = std::get_if<int64_t>(&program);
        const QString login = text(field::login_);
        (*names)[login.toStdString()] =
            userCaption(login, text(field::lastName), text(field::firstName), text(field::midlName),
                        flag && *flag != 0);
    }
    return status;
}

} // namespace orvo::app
