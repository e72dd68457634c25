#include "apps/admin/check/Rules.h"

#include <set>

namespace orvo::admin {

void checkPeople(const Catalogue& catalogue, Findings& findings) {
    std::set<std::string> logins;
    for (int i = 0; i < catalogue.users.count(); ++i) {
        const Row user = catalogue.users.at(i);
        const std::string login = user.text(field::login_);
        if (login.empty())
            findings.error(catalogue.users, user, "пустое имя входа");
        else if (!logins.insert(folded(login)).second)
            findings.error(catalogue.users, user, "имя входа уже есть у другого пользователя");
    }
    std::set<std::string> extensions;
    for (int i = 0; i < catalogue.extensions.count(); ++i) {
        const Row row = catalogue.extensions.at(i);
        const std::string extension = row.text(field::fileExt);
        if (extension.empty())
            findings.error(catalogue.extensions, row, "пустое расширение");
        else if (!extensions.insert(folded(extension)).second)
            findings.warning(catalogue.extensions, row, "расширение повторяется");
    }
}

} // namespace orvo::admin
