#include "tests/client/HostFixture.h"

#include "platform/mdx/MdxBuild.h"

#include <QCloseEvent>

namespace orvo::test {

void App::log(int level, const QString& place, const QString& text) {
    logs << QStringLiteral("%1|%2|%3").arg(level).arg(place, text);
}

void App::moduleTitle(COrvoCliMod*, const QString& title, const QString& second) {
    titles << title + QLatin1Char('|') + second;
}

void App::moduleCall(COrvoCliMod*, int code, void* data) {
    calls.push_back({code, data});
}

bool Module::ModuleStart() {
    life << QStringLiteral("start");
    return startResult;
}

void Module::ModuleStop() {
    life << QStringLiteral("stop");
}

void Module::closeEvent(QCloseEvent* event) {
    life << QStringLiteral("close");
    COrvoCliMod::closeEvent(event);
}

void Module::boxClicked(QAbstractButton* button) {
    roles.push_back(m_popMessageBox->ButtonRole(button));
    m_popMessageBox->hide();
}

bool Module::MessageData(MDXCliParam* prm) {
    Message message;
    message.fieldCount = prm->array->fieldCount;
    const auto text = [&](int field) {
        const char* pointer = nullptr;
        MDRGetTextPtr(MDRFldByNum(prm->array, field), prm->record, &pointer);
        return QString::fromStdString(mdx::toUtf8(pointer ? pointer : ""));
    };
    MDRGetAsInt32(MDRFldByNum(prm->array, 1), prm->record, &message.code);
    message.key = text(4);
    message.source = text(5);
    message.table = message.source.mid(4, message.source.indexOf(QLatin1Char(',')) - 4);

    const char* raw = nullptr;
    MDRType type;
    MDRData record;
    MDRTypInit(&type);
    MDRRecInit(&record);
    if (message.code != 603 && MDRGetTextRef(MDRFldByNum(prm->array, 7), prm->record,
                                             &message.rawLength, &raw) == MDX_OK) {
        if (MDRRecCheck(raw, message.rawLength) != MDX_OK || MDRRecSet(&record, raw) != MDX_OK ||
            MDRTypGen(&type, "NCI", &record) != MDX_OK)
            qFatal("the raw record of a notification does not hold");
    }
    for (int i = 0; i < type.fieldCount; ++i) {
        const MDRField field = MDRFldByNum(&type, i);
        uint8_t user = 0;
        MDRIsUser(field, &record, &user);
        if (!user)
            continue;
        MDRVar value{};
        MDRGetVal(field, &record, &value);
        QVariant shown;
        if (value.type == MDX_TEXT)
            shown = QString::fromStdString(
                mdx::toUtf8({value.value.text.pointer, value.value.text.length}));
        else if (value.type == MDX_INTEGER)
            shown = value.value.integer;
        else if (value.type == MDX_BOOLEAN)
            shown = value.value.boolean != 0;
        else if (value.type == MDX_DATE)
            shown = value.value.date;
        message.marked[QString::fromLatin1(mdx::fieldName(field))] = shown;
    }
    MDRTypFree(&type);
    messages.push_back(message);
    if (onMessage)
        onMessage(message);
    return true;
}

QStringList Module::keys() const {
    QStringList all;
    for (const Message& message : messages)
        all << message.key;
    return all;
}

namespace {

std::unique_ptr<store::test::StoreKind> renewedKind() {
    auto kind = store::test::storeKind();
    if (!kind->renew())
        qFatal("no store");
    return kind;
}

} // namespace

Host::Host(const std::string& login) : kind(renewedKind()), url(kind->url()) {
    store::Status status;
    auto opened = store::open(url, {login, false}, &status);
    if (!opened)
        qFatal("no store: %s", status.text.c_str());
    session = client::makeSession(std::move(opened), &status);
    if (!session)
        qFatal("no session: %s", status.text.c_str());
    app.m_session = session.get();
    app.m_workDir = dir.path() + "/workdir/";
    QObject::connect(&client::sessionEvents(*session), &client::SessionEvents::failed,
                     &client::sessionEvents(*session), [this](const client::Failure& failure) {
                         failures << QStringLiteral("%1|%2|%3")
                                         .arg(failure.operation)
                                         .arg(failure.code)
                                         .arg(failure.text);
                     });
}

Host::~Host() = default;

std::unique_ptr<store::Store> Host::connectAgain(const std::string& login) const {
    store::Status status;
    auto opened = store::open(url, {login, false}, &status);
    if (!opened)
        qFatal("no second connection: %s", status.text.c_str());
    return opened;
}

int Host::write(const char* table, uint32_t flag, const Fields& fields) {
    CMDArray array;
    store::makeStructure(*store::findTable(table), array.array);
    array.KeyAdd("KeyLink", MDX_KEY_MULTI);
    addRecord(array, flag, fields);
    return session->SqlUpdate(table, array.array, true, nullptr);
}

bool Host::byHand(const QString& sql) const {
    QByteArray words;
    const bool done = kind->byHand(sql.toUtf8() + ';', &words);
    if (!done)
        qWarning("by hand: %s", words.constData());
    return done;
}

QString textOf(const MDArray* array, const MDRData* record, const char* field) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByName(array, field), record, &length, &text) != MDX_OK)
        return {};
    return QString::fromStdString(mdx::toUtf8({text, length}));
}

MDRVar textValue(const std::string& bytes) {
    MDRVar value{};
    value.type = MDX_TEXT;
    value.value.text.length = static_cast<uint32_t>(bytes.size());
    value.value.text.pointer = bytes.c_str();
    return value;
}

void addRecord(CMDArray& array, uint32_t flag, const Fields& fields) {
    MDRData* record = MDARecNew(array.array);
    MDRSetFlags(record, flag);
    for (const auto& [name, text] : fields) {
        const std::string bytes = mdx::toCp1251(text);
        MDRVar value = textValue(bytes);
        const MdxType type = mdx::fieldType(MDRFldByName(array.array, name.c_str()));
        if (type == MDX_INTEGER) {
            value = {};
            value.type = MDX_INTEGER;
            value.value.integer = std::stoi(text);
        } else if (type == MDX_BOOLEAN) {
            value = {};
            value.type = MDX_BOOLEAN;
            value.value.boolean = text == "1";
        }
        array.SetValF(record, name.c_str(), value);
    }
    array.RecPost(record);
}

} // namespace orvo::test
