#include "tests/menu/WriteWatch.h"

#include "platform/mdx/MdxBuild.h"

#include <QRegularExpression>

namespace orvo::test {

namespace {

QString text(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
}

QString shown(const MDRVar& value) {
    if (value.null != 0 || value.type == MDX_NONE)
        return QStringLiteral("NULL");
    switch (value.type) {
    case MDX_BOOLEAN:
        return value.value.boolean ? QStringLiteral("true") : QStringLiteral("false");
    case MDX_INTEGER:
        return QString::number(value.value.integer);
    case MDX_TEXT:
        return '\'' +
               QString::fromStdString(mdx::toUtf8(
                   std::string_view(value.value.text.pointer, value.value.text.length))) +
               '\'';
    default:
        return QStringLiteral("?");
    }
}

QString shown(const MDArray* records, const MDRData* record) {
    const uint32_t flag = mdx::recordFlags(record);
    QString line = flag == MDX_INSERT   ? QStringLiteral("+")
                   : flag == MDX_UPDATE ? QStringLiteral("~")
                   : flag == MDX_DELETE ? QStringLiteral("-")
                                        : QStringLiteral("?");
    for (int i = 0; i < records->fieldCount; ++i) {
        const MDRField field = MDRFldByNum(records, i);
        uint8_t user = 0;
        MDRVar value{};
        if (MDRIsUser(field, record, &user) != MDX_OK || !user ||
            MDRGetVal(field, record, &value) != MDX_OK)
            continue;
        if (i == 0)
            line += shown(value).remove('\'');
        else
            line += ' ' + QString::fromLatin1(mdx::fieldName(field)) + '=' + shown(value);
    }
    return line;
}

} // namespace

WriteWatch::WriteWatch(std::unique_ptr<store::Store> store) : m_store(std::move(store)) {}

store::Status WriteWatch::update(std::string_view table, const MDArray* records,
                                 store::UpdateGuard* guard) {
    WriteCall call{text(table), {}};
    for (uint32_t i = 0; i < mdx::postedCount(records); ++i)
        call.records.append(shown(records, mdx::postedRecord(records, i)));
    const bool refused = call.table == refusedTable;
    calls.append(std::move(call));
    if (refused)
        return {store::Refused, "refused by the test"};
    return m_store->update(table, records, guard);
}

QString WriteWatch::take() {
    QString text;
    for (const WriteCall& call : calls) {
        text += call.table + '\n';
        for (const QString& record : call.records)
            text += "  " + record + '\n';
    }
    calls.clear();
    static const QRegularExpression made("\\b[0-9A-Fa-f]{32}\\b");
    QStringList keys;
    for (QRegularExpressionMatch match = made.match(text); match.hasMatch();
         match = made.match(text)) {
        keys.append(match.captured());
        text.replace(match.captured(), '#' + QString::number(keys.size()));
    }
    return text;
}

std::string WriteWatch::displayName() const {
    return m_store->displayName();
}
std::string WriteWatch::login() const {
    return m_store->login();
}
store::Status WriteWatch::identity(std::string* identity) {
    return m_store->identity(identity);
}
store::Status WriteWatch::fetch(std::string_view table, MDArray* into) {
    return m_store->fetch(table, into);
}
store::Status WriteWatch::fetchWhere(std::string_view table, std::string_view field,
                                     std::string_view value, MDArray* into) {
    return m_store->fetchWhere(table, field, value, into);
}
store::Status WriteWatch::fetchLinked(std::string_view table, std::string_view field,
                                      std::string_view key, MDArray* into) {
    jobs << QStringLiteral("look up ") + text(table) + ' ' + text(field) + ' ' + text(key);
    return m_store->fetchLinked(table, field, key, into);
}
store::Status WriteWatch::fetchKeys(std::string_view table, const std::vector<std::string>& keys,
                                    MDArray* into) {
    jobs << QStringLiteral("look up ") + text(table) + ' ' + QString::number(keys.size());
    return m_store->fetchKeys(table, keys, into);
}
store::Status WriteWatch::logPosition(int64_t* id) {
    return m_store->logPosition(id);
}
store::Status WriteWatch::logEnd(store::LogCursor* cursor) {
    return m_store->logEnd(cursor);
}
store::Status WriteWatch::readLog(const store::LogCursor& cursor, int limit,
                                  std::vector<store::Change>* changes) {
    return m_store->readLog(cursor, limit, changes);
}
const store::Written& WriteWatch::lastWritten() const {
    return m_store->lastWritten();
}
store::Status WriteWatch::outcomeOf(const store::Written& written, store::Outcome* outcome) {
    return m_store->outcomeOf(written, outcome);
}
store::Status WriteWatch::pruneLog(int64_t id) {
    return m_store->pruneLog(id);
}
int WriteWatch::wakeFd() const {
    return m_store->wakeFd();
}
void WriteWatch::takeWake() {
    m_store->takeWake();
}
bool WriteWatch::changed() {
    return m_store->changed();
}
store::Status WriteWatch::formGet(std::string_view form, bool withBytes,
                                  std::vector<store::StoredFile>* files) {
    return m_store->formGet(form, withBytes, files);
}
store::Status WriteWatch::formPut(std::string_view path,
                                  const std::vector<store::FileToPut>& files) {
    return m_store->formPut(path, files);
}
store::Status WriteWatch::formDelete(const std::vector<std::string>& forms) {
    QString job = QStringLiteral("delete forms");
    for (const std::string& form : forms)
        job += ' ' + text(form);
    jobs << job;
    return m_store->formDelete(forms);
}
store::Status WriteWatch::fileGet(std::string_view path, std::string_view name, bool withBytes,
                                  std::vector<store::StoredFile>* files) {
    return m_store->fileGet(path, name, withBytes, files);
}
store::Status WriteWatch::filePut(const std::vector<store::FileToPut>& files) {
    return m_store->filePut(files);
}
store::Status
WriteWatch::fileDelete(const std::vector<std::pair<std::string, std::string>>& files) {
    QString job = QStringLiteral("delete files");
    for (const auto& [path, name] : files)
        job += ' ' + text(path) + '/' + text(name);
    jobs << job;
    return m_store->fileDelete(files);
}
store::Status WriteWatch::fileArea(
    const std::function<void(const std::string& path, const store::StoredFile& file)>& each) {
    return m_store->fileArea(each);
}
store::Status WriteWatch::userAdd(const store::User& user) {
    return m_store->userAdd(user);
}
store::Status WriteWatch::integrity(std::vector<std::string>* damages) {
    return m_store->integrity(damages);
}

} // namespace orvo::test
