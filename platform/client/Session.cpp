#include "platform/client/SessionPrivate.h"

#include "frame/StdText.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/client/Blocks.h"
#include "platform/mdx/MdxBuild.h"

#include <QDateTime>
#include <QGuiApplication>

#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

namespace orvo::client {

std::unique_ptr<COrvoCliSes> makeSession(std::unique_ptr<store::Store> store,
                                         store::Status* status) {
    if (!store) {
        *status = {store::BadArguments, StdText::tr("Хранилище не открыто.")};
        return nullptr;
    }
    auto core = std::make_shared<SessionCore>();
    core->store = std::move(store);
    *status = core->store->logEnd(&core->cursor);
    if (!status->ok())
        return nullptr;
    return std::make_unique<COrvoCliSes>(
        std::make_unique<COrvoCliSes::Private>(std::move(core), nullptr));
}

std::unique_ptr<COrvoCliSes> makeModuleSession(const COrvoCliSes& session, COrvoCliMod& module) {
    const auto& core = session.data()->core;
    // What is in the log by now will be in the tables that the module reads.
    int64_t seen = -1;
    if (core->store->logPosition(&seen).ok())
        module.setMessagesSeen(seen);
    return std::make_unique<COrvoCliSes>(std::make_unique<COrvoCliSes::Private>(core, &module));
}

void setUnwritten(COrvoCliSes& session, UnwrittenList* list) {
    session.data()->core->unwritten = list;
    if (list)
        QObject::connect(list, &UnwrittenList::written, &sessionEvents(session),
                         &SessionEvents::written);
}

store::Store& sessionStore(COrvoCliSes& session) {
    return *session.data()->store;
}

SessionEvents& sessionEvents(COrvoCliSes& session) {
    return session.data()->events;
}

const store::LogCursor& sessionCursor(const COrvoCliSes& session) {
    return session.data()->core->cursor;
}

bool sessionBusy(const COrvoCliSes& session) {
    return session.data()->core->busy > 0;
}

CallScope::CallScope(const COrvoCliSes::Private& session)
    : m_session(*session.core)
    , m_cursor(m_session.busy == 0 &&
               qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
    ++m_session.busy;
    if (m_cursor)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

CallScope::~CallScope() {
    --m_session.busy;
    if (m_cursor)
        QGuiApplication::restoreOverrideCursor();
}

QString onTable(const std::string& doing, std::string_view table) {
    return Text::tr("%1 «%2»").arg(
        QString::fromStdString(doing),
        QString::fromUtf8(table.data(), static_cast<int>(std::min<size_t>(table.size(), 80))));
}

} // namespace orvo::client

using namespace orvo;
using namespace orvo::client;

COrvoCliSes::Private::Private(std::shared_ptr<SessionCore> shared, COrvoCliMod* whose)
    : core(std::move(shared))
    , store(core->store.get())
    , events(core->events)
    , module(whose) {}

void COrvoCliSes::Private::report(const QString& operation, const store::Status& status) {
    if (!status.ok())
        emit events.failed({operation, status.code, QString::fromStdString(status.text)});
}

COrvoCliSes::COrvoCliSes(std::unique_ptr<Private> p) : d(std::move(p)) {}

COrvoCliSes::~COrvoCliSes() {
    for (const auto& [block, request] : d->pending)
        mdx::paramFree(block);
}

int COrvoCliSes::PacketExec(const char* name, const void* data, int length, MDXCliParam** prm) {
    if (!name || !prm || length < 0 || (!data && length > 0))
        return 0;
    MDXCliParam* block = makeReply();
    if (!block)
        return 0;
    Request request{name, {}};
    if (length > 0)
        request.data.assign(static_cast<const char*>(data), static_cast<size_t>(length));
    d->pending.emplace(block, std::move(request));
    *prm = block;
    return 1;
}

int COrvoCliSes::WaitResult(MDXCliParam** prm, int /*timeout*/) {
    if (!prm || !*prm)
        return 0;
    const auto found = d->pending.find(*prm);
    if (found == d->pending.end())
        return 0;
    const Request request = std::move(found->second);
    d->pending.erase(found);

    const CallScope scope(*d);
    MDXCliParam* reply = answer(*d, request);
    if (!reply)
        return 0; // the request's block stays the caller's
    mdx::paramFree(*prm);
    *prm = reply;
    return 1;
}

void COrvoCliSes::PrmFree(MDXCliParam* prm) {
    d->pending.erase(prm);
    mdx::paramFree(prm);
}

MDArray* COrvoCliSes::SqlRequest(const char* sql) {
    static constexpr std::string_view head = "select * from Menu where FolderKey = '";
    const QString operation = Text::tr("Выборка элементов меню");
    const std::string_view text(sql ? sql : "");
    if (text.size() <= head.size() || text.substr(0, head.size()) != head || text.back() != '\'') {
        d->report(operation, {store::Refused, StdText::tr("Такой запрос не поддерживается.")});
        return nullptr;
    }
    const std::string_view literal = text.substr(head.size(), text.size() - head.size() - 1);

    const CallScope scope(*d);
    CMDArray rows;
    store::Status status =
        d->store->fetchWhere(table::Menu, field::FolderKey, mdx::toUtf8(literal), rows.array);
    if (status.ok() && !ensureKeyLink(rows.array, MDX_KEY_UNIQUE))
        status = {store::NoMemory, StdText::tr("Недостаточно памяти.")};
    if (!status.ok()) // the editor keeps what it shows
        status.text += StdText::tr("; на экране прежнее меню");
    d->report(operation, status);
    return status.ok() ? std::exchange(rows.array, nullptr) : nullptr;
}

int COrvoCliSes::SqlUpdate(const char* table, MDArray* records, bool /*always*/,
                           MDXCliParam** prm) {
    const CallScope scope(*d);
    store::Status status{store::BadArguments, StdText::tr("Нет таблицы или записей для неё.")};
    if (table && records)
        status = d->write(WriteRequest::ofRecords(table, records));
    else
        d->report(onTable(StdText::tr("Запись в таблицу"), table ? table : ""), status);
    if (prm)
        *prm = makeReply(status);
    return status.ok() ? 1 : 0;
}

QDateTime COrvoCliSes::MdxTimeToSesTime(double time) const {
    // What a QDateTime can show and a JSON or database number can exceed.
    constexpr double limit = 253402300800.0; // the year 10000
    if (!std::isfinite(time) || std::fabs(time) >= limit)
        return {};
    return QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000.0));
}
