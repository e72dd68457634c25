#include "frame/CommonFunctions.h"

#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Text.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <functional>
#include <utility>

namespace {

class ScopeGuard {
public:
    explicit ScopeGuard(std::function<void()> atExit) : m_atExit(std::move(atExit)) {}
    ~ScopeGuard() { m_atExit(); }
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;

private:
    std::function<void()> m_atExit;
};

const char* const noResult = QT_TRANSLATE_NOOP("orvo", "Операция на сервере не вернула результат.");

int32_t resultCode(const MDXCliParam* reply) {
    return orvo::integerOf(reply->record, 0);
}

const char* packedTable(const MDXCliParam* reply) {
    const char* block = nullptr;
    MDRGetTextPtr(MDRFldByNum(reply->array, 2), reply->record, &block);
    return block;
}

QString codeText(int32_t code) {
    return orvo::Text::tr("Ошибка -> %1").arg(getServerErrorText(code));
}

/// What the server adds to a failure, in UTF-8; empty if it says nothing.
QString furtherText(const MDXCliParam* reply) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByNum(reply->array, 2), reply->record, &length, &text) != 0)
        return QString();
    return orvo::Text::tr(" Доп. инф: %1").arg(QString(text));
}

enum class Wanted { Records, Structure };

int fetchTable(COrvoCliSes* session, const std::string& tableName, CMDArray& table, QString* error,
               Wanted wanted) {
    MDXCliParam* prm = nullptr;
    const ScopeGuard guard([&] {
        if (prm)
            session->PrmFree(prm);
    });
    error->clear();
    const char* request =
        wanted == Wanted::Records ? orvo::request::TableRecords : orvo::request::TableStructure;
    const int length = static_cast<int>(tableName.size());
    if (session->PacketExec(request, tableName.data(), length, &prm) == 0) {
        error->append(orvo::Text::tr(noResult));
        return 0;
    }
    const int waited = session->WaitResult(&prm, -1);
    if (waited == 0 || !prm) {
        error->append(orvo::Text::tr(noResult));
        return 0;
    }
    const int32_t code = resultCode(prm);
    if (code != 0) {
        error->append(codeText(code));
        error->append(furtherText(prm));
        return 0;
    }
    table.status = MDXArrayUnPack(table.array, packedTable(prm), 1);
    // The request itself has succeeded, but an empty table must not pass for what the server holds.
    if (wanted == Wanted::Records && table.status != MDX_OK)
        error->append(orvo::Text::tr("Ответ сервера не читается."));
    if (wanted == Wanted::Structure && (!table.array || table.array->fieldCount == 0)) {
        error->append(orvo::Text::tr("Отсутствуют поля."));
        return 0;
    }
    return waited;
}

/// By the code that each word stands for: a menu folder's, then the kinds'.
/// A null string for a code that no element of a menu has.
QString attributeWord(int code) {
    if (code == orvo::Kind::None)
        return orvo::Text::tr("папка");
    const orvo::ResourceKind* kind = orvo::resourceKind(code);
    return kind && kind->attribute ? orvo::Text::tr(kind->attribute) : QString();
}

} // namespace

int GetTableRecords(COrvoCliSes* session, const std::string& tableName, CMDArray& table,
                    QString* error) {
    return fetchTable(session, tableName, table, error, Wanted::Records);
}

int GetTableStructure(COrvoCliSes* session, const std::string& tableName, CMDArray& table,
                      QString* error) {
    return fetchTable(session, tableName, table, error, Wanted::Structure);
}

int getUserInfo(COrvoCliSes* session, CMDArray& table, QString& error) {
    MDXCliParam* prm = nullptr;
    const ScopeGuard guard([&] {
        if (prm)
            session->PrmFree(prm);
    });
    if (session->PacketExec(orvo::request::UserProp, nullptr, 0, &prm) == 0) {
        error = orvo::Text::tr(noResult);
        return 0;
    }
    const int waited = session->WaitResult(&prm, -1);
    if (waited == 0 || !prm) {
        error = orvo::Text::tr(noResult);
        return 0;
    }
    const int32_t code = resultCode(prm);
    if (code != 0) {
        error = codeText(code);
        error.append(furtherText(prm));
        return 0;
    }
    table.status = MDXArrayUnPack(table.array, packedTable(prm), 1);
    error.clear();
    if (!table.array || table.array->fieldCount == 0) {
        error = orvo::Text::tr("Отсутствуют поля");
        return 0;
    }
    return waited;
}

QString getServerErrorText(int32_t code) {
    switch (code) {
    case -4:
        return orvo::Text::tr("Нарушение структуры данных");
    case -3:
        return orvo::Text::tr("Ошибка операции с сокетом");
    case -2:
        return orvo::Text::tr("Неверные параметры");
    case -1:
        return orvo::Text::tr("Недостаточно ОП");
    case 1:
        return orvo::Text::tr("Модуль не инициализирован");
    case 2:
        return orvo::Text::tr("Сессия не активна");
    case 3:
        return orvo::Text::tr("Подключение к серверу не удалось");
    case 4:
        return orvo::Text::tr("Пользователь не найден или неправильный пароль");
    case 5:
        return orvo::Text::tr("Имя не найдено");
    case 6:
        return orvo::Text::tr("Нарушен порядок блочных операций");
    case 7:
        return orvo::Text::tr("Истек таймаут");
    case 9:
        return orvo::Text::tr("Превышено количество неверных попыток ввода пароля");
    case 10:
        return orvo::Text::tr("Подключение с недопустимого IP-адреса");
    default:
        return orvo::Text::tr("Описание ошибки отсутствует");
    }
}

QString convertMenuAttributes(int code) {
    return attributeWord(code);
}

int getMenuAttributes(const QString& word) {
    if (orvo::sameText(word, attributeWord(orvo::Kind::None)))
        return orvo::Kind::None;
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.attribute && orvo::sameText(word, orvo::Text::tr(kind.attribute)))
            return kind.number;
    return -1;
}

QString getUserCaption(MDRData* record, const CMDArray* users) {
    if (!record || !users)
        return QString();
    const auto text = [&](const char* field) {
        return orvo::textOf(record, MDRFldByName(users->array, field));
    };
    return userCaption(text(orvo::field::login_), text(orvo::field::lastName),
                       text(orvo::field::firstName), text(orvo::field::midlName),
                       orvo::flagOf(record, MDRFldByName(users->array, orvo::field::program)));
}

bool checkFileExists(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && info.isFile();
}
