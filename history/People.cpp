#include "history/People.h"

#include "frame/Text.h"
#include "frame/UserCaption.h"
#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/mdx/MdxBuild.h"

#include <QDateTime>

#include <cmath>

namespace orvo::history {

store::Status readPeople(store::Store& store, PersonNames* names) {
    CMDArray rows;
    store::Status status = store.fetch(table::Users, rows.array);
    const store::TableDef& users = *store::findTable(table::Users);
    for (uint32_t i = 0; status.ok() && i < mdx::postedCount(rows.array); ++i) {
        const Values values = valuesIn(rows.array, i);
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

QString personName(const std::string& login, const PersonNames& names) {
    if (login.empty())
        return Text::tr("(вручную)");
    const auto person = names.find(login);
    return person == names.end() ? QString::fromStdString(login) : person->second;
}

QString whoAndWhen(const std::string& login, double time, const PersonNames& names) {
    const QString who = login.empty() ? Text::tr("вручную") : personName(login, names);
    return time > 0 ? who + QStringLiteral(", ") +
                          QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000.0))
                              .toString(Text::tr("dd.MM.yyyy HH:mm"))
                    : who;
}

} // namespace orvo::history
