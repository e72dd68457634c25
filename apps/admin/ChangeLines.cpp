#include "apps/admin/ChangeLines.h"

#include "apps/admin/Output.h"
#include "frame/Vocabulary.h"

namespace orvo::admin {

std::string line(const QString& text) {
    return cell(text.toStdString());
}

void printFields(const std::vector<history::FieldWords>& fields, const std::string& indent) {
    for (const history::FieldWords& field : fields) {
        const QString values = field.before.isEmpty() ? field.after
                               : field.after.isEmpty()
                                   ? field.before
                                   : field.before + QStringLiteral(" -> ") + field.after;
        out(indent + line(field.name + QStringLiteral(": ") + values));
    }
}

void printChange(const store::Change& change, history::RecordSource& source,
                 const std::string& indent, const QString& more) {
    const history::ChangeWords words = history::describe(change, source);
    out(indent + line(words.what + more) +
        placeInBrackets(history::placeOf(change, source).toStdString()));
    if (change.code == OrvoEventUpdate)
        printFields(words.fields, indent + "    ");
}

} // namespace orvo::admin
