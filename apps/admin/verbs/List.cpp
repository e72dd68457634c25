#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QDateTime>

#include <algorithm>

namespace orvo::admin {

namespace {

void listOptions(OptionList& options) {
    options.append(
        {QStringLiteral("path"), Text::tr("Только эта папка и всё, что в ней."), Text::tr("ПУТЬ")});
    jsonOption(options);
}

/// Whether a path is the wanted one or below it.
bool isBelow(const std::string& path, const std::string& wanted) {
    const std::string a = folded(path), b = folded(wanted);
    return b.empty() || a == b || (a.size() > b.size() && a.rfind(b, 0) == 0 && a[b.size()] == '/');
}

std::string join(const std::string& path, const std::string& name) {
    return path.empty() ? name : path + "/" + name;
}

/// A line for people, and the same for programs.
struct Line {
    std::string text;
    QJsonObject object;
};

void outSorted(std::vector<Line>& lines, bool json) {
    std::sort(lines.begin(), lines.end(),
              [](const Line& a, const Line& b) { return a.text < b.text; });
    for (const Line& line : lines)
        json ? outJson(line.object) : out(line.text);
}

std::string shownTime(const std::optional<double>& time) {
    if (!time || !(*time > -6e10 && *time < 2.5e11))
        return {};
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(*time * 1000.0), Qt::UTC)
        .toString(Qt::ISODate)
        .toStdString();
}

int listForms(const Invocation& call) {
    const std::string wanted = call.value("path");
    const auto store = call.open();
    const Folders folders(*store);
    folders.need(Form, wanted);
    const Table resources(*store, table::MenuResource);
    const Table users(*store, table::Users);
    std::vector<Line> lines;
    for (int i = 0; i < resources.count(); ++i) {
        const Row row = resources.at(i);
        if (row.integer(field::type_) != Form)
            continue;
        const std::string folderKey = row.text(field::MenuResourceFolderKey);
        const auto path = folderKey.empty() ? std::nullopt : folders.pathOf(folderKey);
        if (path ? !isBelow(*path, wanted) : !wanted.empty())
            continue;
        const std::string place = path ? join(*path, row.text(field::name_))
                                       : "?/" + row.text(field::name_); // no folder of that key
        const std::string holder = users.byKey(row.text(field::UsersKey)).text(field::login_);
        const std::string caption = row.text(field::caption);
        QJsonObject object{{"path", path ? jsonText(*path) : QJsonValue()},
                           {"name", jsonText(row.text(field::name_))},
                           {field::caption, jsonText(caption)},
                           {"lockedBy", holder.empty() ? QJsonValue() : jsonText(holder)}};
        lines.push_back(
            {cell(place) + "\t" + cell(caption) + "\t" + cell(holder), std::move(object)});
    }
    outSorted(lines, call.has("json"));
    return Done;
}

int listFiles(const Invocation& call) {
    const std::string wanted = call.value("path");
    const auto store = call.open();
    Folders(*store).need(File, wanted);
    std::vector<Line> lines;
    require(store->fileArea([&](const std::string& path, const store::StoredFile& file) {
        if (isBelow(path, wanted))
            lines.push_back({cell(join(path, file.name)) + "\t" + std::to_string(file.size) + "\t" +
                                 shownTime(file.time),
                             {{"path", jsonText(path)},
                              {"name", jsonText(file.name)},
                              {field::size, static_cast<double>(file.size)},
                              {field::time, file.time ? QJsonValue(*file.time) : QJsonValue()}}});
    }),
            StdText::tr("файлы не перечислены"));
    outSorted(lines, call.has("json"));
    return Done;
}

} // namespace

const Verb listFormsVerb = {
    "list forms",
    QT_TRANSLATE_NOOP("orvo", "[--path ПУТЬ] [--json]"),
    QT_TRANSLATE_NOOP("orvo", "Перечислить формы"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "На каждой строке через табуляцию: путь и имя формы, название, кто держит блокировку.\n"
        "Форма, папки которой нет, стоит под «?/»."),
    0,
    0,
    listOptions,
    listForms,
};

const Verb listFilesVerb = {
    "list files",
    QT_TRANSLATE_NOOP("orvo", "[--path ПУТЬ] [--json]"),
    QT_TRANSLATE_NOOP("orvo", "Перечислить файлы файловых ресурсов"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "На каждой строке через табуляцию: путь и имя файла, размер в байтах, время (UTC)."),
    0,
    0,
    listOptions,
    listFiles,
};

} // namespace orvo::admin
