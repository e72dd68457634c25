// The base of the tools, and those that read or delete.
#include "platform/client/SessionPrivate.h"

#include "frame/StdText.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/client/FileTools.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Schema.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

using namespace orvo;
using namespace orvo::client;

COrvoToolObject::COrvoToolObject(COrvoCliMod* module) : m_module(module) {}
COrvoToolObject::~COrvoToolObject() = default;

void COrvoToolObject::Perform(bool /*background*/) {
    COrvoCliSes* session = m_module && m_module->m_app ? m_module->m_app->m_session : nullptr;
    if (!session)
        return; // a host without a session has nobody to tell either
    const CallScope scope(*session->data());
    try {
        run(*session);
    } catch (const std::exception& failure) {
        session->data()->report(objectName(), {store::NoMemory, failure.what()});
    }
}

// ---------------------------------------------------------------------------------------------

namespace {

const store::Status noMemory{store::NoMemory, StdText::tr("Недостаточно памяти.")};

/// Rows of stored files as the editors read them. A fifth field keeps the order of the reply. The
/// files' bytes are gone then: large ones should not be in memory more often than they must.
store::Status fillFiles(CMDArray& result, std::vector<store::StoredFile>& files) {
    for (const store::StoredFile& file : files)
        if (const store::Status status = checkCarried(file.name, file.bytes.size()); !status.ok())
            return status;
    CMDArray rows;
    mdx::addField(rows.array, "name", MDX_TEXT);
    mdx::addField(rows.array, field::time, MDX_DATE);
    mdx::addField(rows.array, field::size, MDX_INTEGER);
    mdx::addField(rows.array, "data", MDX_BLOCK);
    mdx::addField(rows.array, "order", MDX_INTEGER);
    mdx::RecordWriter writer(rows.array);
    int order = 0;
    for (store::StoredFile& file : files) {
        writer.begin();
        writer.textUtf8(0, file.name.data(), file.name.size());
        if (file.time)
            writer.date(1, *file.time);
        writer.integer(2, static_cast<int32_t>(
                              std::min<uint64_t>(file.size, std::numeric_limits<int32_t>::max())));
        if (!file.bytes.empty())
            writer.block(3, file.bytes.data(), file.bytes.size());
        std::string().swap(file.bytes); // an assignment would keep the memory
        writer.integer(4, order++);
        writer.end();
    }
    if (writer.finish() != MDX_OK)
        return noMemory;
    rows.KeyAdd("order", MDX_KEY_UNIQUE);
    if (rows.status != MDX_OK)
        return noMemory;
    result.Attach(std::exchange(rows.array, nullptr));
    return {};
}

/// Empties a result of an earlier run.
void clear(CMDArray& result) {
    CMDArray empty;
    result.Attach(std::exchange(empty.array, nullptr));
}

void finishFiles(COrvoCliSes& session, const QString& operation, store::Status status,
                 std::vector<store::StoredFile>& files, CMDArray& result) {
    if (status.ok())
        status = fillFiles(result, files);
    session.data()->report(operation, status);
}

/// Content that is asked for by its name and is not there is a failure: a list may be empty.
store::Status wanted(store::Status status, const std::vector<store::StoredFile>& files,
                     const std::string& what) {
    if (status.ok() && files.empty())
        return {store::UnknownName, what};
    return status;
}

/// The server's keys of a table, for the tool that seeks by key number.
const char* serverKey(const std::string& name, int32_t number) {
    struct Keys {
        const char* table;
        std::vector<const char*> behindKeyLink;
    };
    static const Keys all[] = {
        {table::Menu, {keylist::Menu.begin()[0], field::MenuResourceKey, field::FolderKey}},
        {table::MenuFolder, {keylist::MenuFolder.begin()[2]}},
        {table::MenuResource, keylist::MenuResource},
        {table::MenuResourceFolder, keylist::MenuResourceFolder},
        {table::Users, keylist::Users},
        {table::MenuFileExt, {}},
    };
    for (const Keys& entry : all) {
        if (name != entry.table || number < 0)
            continue;
        const auto place = static_cast<size_t>(number);
        if (place == 0)
            return field::KeyLink;
        if (place <= entry.behindKeyLink.size())
            return entry.behindKeyLink[place - 1];
    }
    return nullptr;
}

/// The bytes of a text value; a caller's length without a pointer counts for nothing.
std::string_view textOf(const MDRVar& value) {
    return value.value.text.pointer
               ? std::string_view(value.value.text.pointer, value.value.text.length)
               : std::string_view();
}

/// Whether the field has that value as keys compare; NULL asks for NULL.
bool equals(MDRField field, const MDRData* record, const MDRVar& wanted) {
    MDRVar value{};
    MDRGetVal(field, record, &value);
    const bool wantsNull = wanted.null || wanted.type == MDX_NONE;
    if (wantsNull || value.null)
        return wantsNull && value.null;
    if (wanted.type != value.type)
        return false;
    switch (value.type) {
    case MDX_BOOLEAN:
        return (value.value.boolean != 0) == (wanted.value.boolean != 0);
    case MDX_INTEGER:
        return value.value.integer == wanted.value.integer;
    case MDX_DATE:
        return !(value.value.date < wanted.value.date) && !(wanted.value.date < value.value.date);
    default:
        return mdx::compareText(textOf(value), textOf(wanted)) == 0;
    }
}

/// The number of a given key field by which the store can seek; -1 if there is none.
int seekField(const std::string& table, const QList<QByteArray>& fields, int given,
              const QVector<MDRVar>& values, const QBitArray& bits) {
    const store::TableDef* def = store::findTable(table);
    for (int i = 0; def && i < given; ++i) {
        const int number = def->find(fields[i].toStdString());
        if (number >= 0 && store::isKeyOrLink(*def, def->fields[static_cast<size_t>(number)]) &&
            bits.testBit(i) && values[i].type == MDX_TEXT && !values[i].null)
            return i;
    }
    return -1;
}

} // namespace

CToolRecByKey::CToolRecByKey(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("RecByKey"));
}

CToolRecByKey::~CToolRecByKey() = default;

void CToolRecByKey::run(COrvoCliSes& session) {
    clear(result);
    const QString operation = onTable(StdText::tr("Поиск записей в таблице"), tableName);
    const char* key = serverKey(tableName, keyNumber);
    if (!key) {
        session.data()->report(operation,
                               {store::UnknownName, StdText::tr("Нет такой таблицы или ключа.")});
        return;
    }
    const QList<QByteArray> fields = QByteArray(key).split(';');
    const auto most = static_cast<int>(std::min({fields.size(), keyValues.size(), keyBits.size()}));
    // The store seeks by one key or link; the other values are compared here.
    const int seek = seekField(tableName, fields, most, keyValues, keyBits);
    CMDArray rows;
    const store::Status status =
        seek >= 0
            ? session.data()->store->fetchLinked(tableName, fields[seek].constData(),
                                                 mdx::toUtf8(textOf(keyValues[seek])), rows.array)
            : session.data()->store->fetch(tableName, rows.array);
    if (status.ok()) {
        std::vector<MDRData*> others;
        for (uint32_t i = 0; i < mdx::postedCount(rows.array); ++i) {
            MDRData* record = mdx::postedRecord(rows.array, i);
            for (int k = 0; k < most; ++k)
                if (keyBits.testBit(k) && k != seek &&
                    !equals(MDRFldByName(rows.array, fields[k].constData()), record,
                            keyValues[k])) {
                    others.push_back(record);
                    break;
                }
        }
        for (MDRData* record : others)
            MDARecDel(record);
        if (rows.array->keyCount == 0)
            rows.KeyAdd(field::KeyLink, MDX_KEY_UNIQUE);
        result.Attach(std::exchange(rows.array, nullptr));
    }
    session.data()->report(operation, status);
}

CToolRecByKeys::CToolRecByKeys(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("RecByKeys"));
}

CToolRecByKeys::~CToolRecByKeys() = default;

void CToolRecByKeys::run(COrvoCliSes& session) {
    clear(result);
    std::vector<std::string> wanted;
    for (const QString& key : keys)
        wanted.push_back(key.toStdString());
    CMDArray rows;
    const store::Status status = session.data()->store->fetchKeys(tableName, wanted, rows.array);
    if (status.ok())
        result.Attach(std::exchange(rows.array, nullptr));
    session.data()->report(onTable(StdText::tr("Поиск записей в таблице"), tableName), status);
}

CToolFormGet::CToolFormGet(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FormGet"));
}

CToolFormGet::~CToolFormGet() = default;

void CToolFormGet::run(COrvoCliSes& session) {
    clear(result);
    std::vector<store::StoredFile> files;
    store::Status status = session.data()->store->formGet(formName.toStdString(), withData, &files);
    if (withData)
        status =
            wanted(std::move(status), files, StdText::tr("В хранилище нет файлов этой формы."));
    finishFiles(session, Text::tr("Чтение формы «%1»").arg(formName), status, files, result);
}

CToolFileList::CToolFileList(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FileList"));
}

CToolFileList::~CToolFileList() = default;

void CToolFileList::run(COrvoCliSes& session) {
    clear(result);
    std::vector<store::StoredFile> files;
    store::Store& store = *session.data()->store;
    store::Status status;
    if (!name.isEmpty()) {
        status = store.fileGet(path.toStdString(), name.toStdString(), false, &files);
    } else {
        const std::string folder = path.toStdString();
        status = store.fileArea([&](const std::string& at, const store::StoredFile& file) {
            if (at == folder)
                files.push_back(file);
        });
        std::sort(files.begin(), files.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
    }
    finishFiles(session, Text::tr("Список файлов папки «%1»").arg(path), status, files, result);
}

CToolFileGet::CToolFileGet(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FileGet"));
}

CToolFileGet::~CToolFileGet() = default;

void CToolFileGet::run(COrvoCliSes& session) {
    clear(result);
    std::vector<store::StoredFile> files;
    store::Status status =
        session.data()->store->fileGet(path.toStdString(), name.toStdString(), true, &files);
    finishFiles(session, Text::tr("Чтение файла «%1»").arg(storedPath(path, name)),
                wanted(std::move(status), files, StdText::tr("В хранилище нет этого файла.")),
                files, result);
}

CToolFormDel::CToolFormDel(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FormDel"));
}

CToolFormDel::~CToolFormDel() = default;

void CToolFormDel::run(COrvoCliSes& session) {
    WriteRequest request;
    request.kind = WriteRequest::FormDelete;
    for (const QString& form : names)
        request.files.push_back({{}, form, {}, {}});
    // A failure is told, and kept for another try, where it is met.
    static_cast<void>(session.data()->write(std::move(request)));
}

CToolFileDel::CToolFileDel(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FileDel"));
}

CToolFileDel::~CToolFileDel() = default;

void CToolFileDel::run(COrvoCliSes& session) {
    WriteRequest request;
    request.kind = WriteRequest::FileDelete;
    for (const auto& [path, name] : files)
        request.files.push_back({path, name, {}, {}});
    // A failure is told, and kept for another try, where it is met.
    static_cast<void>(session.data()->write(std::move(request)));
}
