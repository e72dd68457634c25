#include "platform/client/WriteWords.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/ChangeRecord.h"

#include <QStringList>

#include <utility>

namespace orvo::client {

namespace {

using history::quoted;
using history::Values;
using store::Value;

WriteWords describeFiles(const WriteRequest& request) {
    WriteWords words;
    QStringList names;
    for (const WriteRequest::File& file : request.files)
        names << (file.path.isEmpty() ? file.name : file.path + QLatin1Char('/') + file.name);
    constexpr int most = 10;
    const int more = names.size() - most;
    QString list = QStringList(names.mid(0, most)).join(QStringLiteral(", "));
    if (more > 0)
        list += Text::tr(" и ещё %1").arg(more);
    switch (request.kind) {
    case WriteRequest::FormPut:
        words.what =
            Text::tr("Загрузка формы %1").arg(quoted(names.isEmpty() ? QString() : names.first()));
        words.place = request.formPath;
        break;
    case WriteRequest::FilePut:
        words.what = names.size() == 1 ? Text::tr("Загрузка файла ") + quoted(names.first())
                                       : Text::tr("Загрузка файлов: %1").arg(list);
        break;
    case WriteRequest::FormDelete:
        words.what = Text::tr("Удаление форм: %1").arg(list);
        break;
    default:
        words.what = Text::tr("Удаление файлов: %1").arg(list);
    }
    return words;
}

} // namespace

WriteWords describe(const WriteRequest& request, store::Store* store, const std::string& deleted) {
    if (request.kind != WriteRequest::Records)
        return describeFiles(request);
    WriteWords words;
    const store::TableDef* table = store::findTable(request.table);
    const std::vector<RecordWrite> records = recordsOf(request);
    if (!table || records.empty()) {
        words.what =
            Text::tr("Запись в таблицу %1").arg(quoted(QString::fromStdString(request.table)));
        return words;
    }
    history::StoredRecords source(store);
    // A paste or a deletion of thousands is told by its first record and the number.
    constexpr size_t mostDescribed = 20;
    bool first = true;
    size_t described = 0;
    for (const RecordWrite& record : records) {
        if (described++ == mostDescribed)
            break;
        // What is stored under the key of an insert is another record, the one in its way.
        const Values before =
            record.flag == MDX_INSERT ? Values() : source.valuesOf(*table, record.key);
        Values after =
            before.empty() && !deleted.empty() ? store::valuesFromJson(*table, deleted) : before;
        bool renamed = false;
        for (const auto& [number, value] : record.values) {
            const auto old = before.find(number);
            const bool known = !before.empty();
            const bool same =
                !before.empty() &&
                history::readAlike(old != before.end() ? old->second : Value(), value);
            after[number] = value;
            if (same ||
                (record.flag == MDX_INSERT && std::holds_alternative<std::monostate>(value)))
                continue;
            FieldWords field{record.key, number, history::fieldWord(*table, number), {}, {}, known};
            field.mine = history::valueWords(*table, number, value, &source);
            if (known)
                field.before = history::valueWords(
                    *table, number, old != before.end() ? old->second : Value(), &source);
            renamed = renamed || (known && number == table->find(field::caption));
            if (record.flag != MDX_DELETE)
                words.fields.push_back(std::move(field));
        }
        if (!std::exchange(first, false))
            continue;
        using history::Deed;
        const Deed deed = record.flag == MDX_INSERT   ? Deed::Created
                          : record.flag == MDX_DELETE ? Deed::Deleted
                          : renamed                   ? Deed::Renamed
                                                      : Deed::Changed;
        const QString name = history::nameOf(*table, after);
        words.what = history::deedWord(deed, history::nounOf(*table, after)) + QLatin1Char(' ') +
                     history::recordWords(*table, after, record.key);
        if (renamed && history::nameOf(*table, before) != name)
            words.what += Text::tr(": было ") + quoted(history::nameOf(*table, before));
        words.place = history::placeOf(*table, after, &source);
    }
    if (records.size() > 1)
        words.what += Text::tr(" и ещё %1").arg(records.size() - 1);
    return words;
}

} // namespace orvo::client
