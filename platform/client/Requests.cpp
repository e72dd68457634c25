// The named requests: "TableRecords", "TableStructure", "UserProp".
#include "frame/StdText.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/client/Blocks.h"
#include "platform/client/SessionPrivate.h"
#include "platform/mdx/MdxBuild.h"

namespace orvo::client {

namespace {

MDXCliParam* tableRecords(COrvoCliSes::Private& session, const std::string& table) {
    CMDArray rows;
    store::Status status = session.store->fetch(table, rows.array);
    if (status.ok() && !ensureKeyLink(rows.array, MDX_KEY_UNIQUE))
        status = {store::NoMemory, StdText::tr("Недостаточно памяти.")};
    session.report(onTable(StdText::tr("Чтение таблицы"), table), status);
    return status.ok() ? makeReply(rows.array) : makeReply(status);
}

MDXCliParam* tableStructure(COrvoCliSes::Private& session, const std::string& table) {
    CMDArray structure;
    const store::TableDef* definition = store::findTable(table);
    store::Status status;
    // An unknown table is an array without fields, not an error: the reader has words for that.
    if (!definition)
        session.report(onTable(StdText::tr("Чтение структуры таблицы"), table),
                       {store::UnknownName, StdText::tr("Нет такой таблицы.")});
    // Several records for one key may stand in a table of changes, so its key takes them all.
    else if (store::makeStructure(*definition, structure.array) != MDX_OK ||
             !ensureKeyLink(structure.array, MDX_KEY_MULTI))
        status = {store::NoMemory, StdText::tr("Недостаточно памяти.")};
    session.report(onTable(StdText::tr("Чтение структуры таблицы"), table), status);
    return status.ok() ? makeReply(structure.array) : makeReply(status);
}

std::string textOf(const CMDArray& table, MDRData* record, const char* field) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByName(table.array, field), record, &length, &text) != MDX_OK)
        return {};
    return {text, length};
}

/// The name of a user as a heading: family name, given name, patronymic; the login without these.
std::string userCaption(const CMDArray& users, MDRData* user, const std::string& login) {
    std::string caption;
    for (const char* field : {field::lastName, field::firstName, field::midlName}) {
        const std::string part = textOf(users, user, field);
        if (!part.empty())
            caption += (caption.empty() ? "" : " ") + part;
    }
    return caption.empty() ? login : caption;
}

MDXCliParam* userProp(COrvoCliSes::Private& session) {
    CMDArray users;
    const std::string login = session.store->login();
    const store::Status status =
        session.store->fetchWhere(table::Users, field::login_, login, users.array);
    session.report(Text::tr("Чтение сведений о пользователе"), status);
    if (!status.ok())
        return makeReply(status);

    // A login without a row in Users is allowed to work; its key is then empty.
    MDRData* user = mdx::postedRecord(users.array, 0);
    const std::string login1251 = mdx::toCp1251(login);
    const std::string key = textOf(users, user, field::KeyLink);
    const std::string caption = userCaption(users, user, login1251);

    CMDArray properties;
    for (const char* field : {field::KeyLink, field::caption, "login"})
        mdx::addField(properties.array, field, MDX_TEXT);
    mdx::RecordWriter writer(properties.array);
    writer.begin();
    writer.text1251(0, key.data(), key.size());
    writer.text1251(1, caption.data(), caption.size());
    writer.text1251(2, login1251.data(), login1251.size());
    writer.end();
    if (writer.finish() != MDX_OK || !ensureKeyLink(properties.array, MDX_KEY_UNIQUE))
        return makeReply({store::NoMemory, StdText::tr("Недостаточно памяти.")});
    return makeReply(properties.array);
}

} // namespace

MDXCliParam* answer(COrvoCliSes::Private& session, const Request& request) {
    if (request.name == request::TableRecords)
        return tableRecords(session, request.data);
    if (request.name == request::TableStructure)
        return tableStructure(session, request.data);
    if (request.name == request::UserProp)
        return userProp(session);
    const store::Status unknown{store::UnknownName, StdText::tr("Неизвестный запрос.")};
    session.report(Text::tr("Запрос «%1»").arg(QString::fromStdString(request.name)), unknown);
    return makeReply(unknown);
}

} // namespace orvo::client
