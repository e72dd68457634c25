// The tools that bring files into the stores.
#include "frame/StdText.h"
#include "platform/client/FileTools.h"
#include "platform/client/WriteWords.h"

#include <cmath>

using namespace orvo;
using namespace orvo::client;

namespace {

/// Adds one file to a request; its bytes stay the caller's. Refused if the caller's size or buffer
/// cannot be right, or if it could not be read back.
store::Status addFile(WriteRequest& request, const QString& path, const QString& name,
                      const void* data, qint64 size, double time) {
    if (size < 0 || (size > 0 && !data))
        return {store::BadArguments, StdText::tr("Неверный размер или содержимое файла.")};
    const store::Status status = checkCarried(name.toStdString(), static_cast<uint64_t>(size));
    WriteRequest::File file{path, name, {}, {}};
    if (status.ok())
        file.bytes =
            QByteArray::fromRawData(static_cast<const char*>(data), static_cast<int>(size));
    if (std::isfinite(time))
        file.time = time;
    request.files.push_back(std::move(file));
    return status;
}

/// Sends what could be added; the first failure leaves nothing to send.
void finish(COrvoCliSes& session, WriteRequest request, store::Status status) {
    if (status.ok())
        static_cast<void>(session.data()->write(std::move(request))); // told where it is met
    else // nothing that could be repeated
        session.data()->report(describe(request, nullptr).what, status);
}

} // namespace

struct CToolFormPut::Item {
    QString name;
    const void* data; ///< the caller's
    qint64 size;
    double time;
};

CToolFormPut::CToolFormPut(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FormPut"));
}

CToolFormPut::~CToolFormPut() = default;

void CToolFormPut::AddFile(const QString& name, const void* data, qint64 size, double time) {
    m_items.push_back({name, data, size, time});
}

void CToolFormPut::run(COrvoCliSes& session) {
    if (m_items.empty())
        return;
    WriteRequest request;
    request.kind = WriteRequest::FormPut;
    request.formPath = formPath;
    store::Status status;
    for (const Item& item : m_items)
        if (status.ok())
            status = addFile(request, {}, item.name, item.data, item.size, item.time);
    finish(session, std::move(request), std::move(status));
}

struct CToolFilePut::Item {
    QString path;
    QString name;
    const void* data; ///< the caller's
    qint64 size;
    double time;
};

CToolFilePut::CToolFilePut(COrvoCliMod* module) : COrvoToolObject(module) {
    setObjectName(QStringLiteral("FilePut"));
}

CToolFilePut::~CToolFilePut() = default;

void CToolFilePut::AddFile(const QString& path, const QString& name, const void* data, qint64 size,
                           double time) {
    m_items.push_back({path, name, data, size, time});
}

void CToolFilePut::run(COrvoCliSes& session) {
    if (m_items.empty())
        return;
    WriteRequest request;
    request.kind = WriteRequest::FilePut;
    store::Status status;
    for (const Item& item : m_items)
        if (status.ok())
            status = addFile(request, item.path, item.name, item.data, item.size, item.time);
    finish(session, std::move(request), std::move(status));
}
