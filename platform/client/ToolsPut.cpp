// The tools that bring files into the stores.
#include "platform/client/ToolSupport.h"

#include <cmath>

using namespace orvo;
using namespace orvo::client;

namespace {

/// Makes the store's view of one file. Refused if the caller's size or buffer cannot be right, or
/// if it could not be read back.
store::Status toPut(const QString& path, const QString& name, const void* data, qint64 size,
                    double time, store::FileToPut* file) {
    if (size < 0 || (size > 0 && !data))
        return {store::BadArguments, "Неверный размер или содержимое файла."};
    file->path = path.toStdString();
    file->name = name.toStdString();
    file->bytes = {static_cast<const char*>(data), static_cast<size_t>(size)};
    if (std::isfinite(time))
        file->time = time;
    return checkCarried(file->name, file->bytes.size());
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
    std::vector<store::FileToPut> files(m_items.size());
    store::Status status;
    for (size_t i = 0; status.ok() && i < m_items.size(); ++i) {
        const Item& item = m_items[i];
        status = toPut(formPath, item.name, item.data, item.size, item.time, &files[i]);
    }
    if (status.ok())
        status = session.data()->store->formPut(formPath.toStdString(), files);
    finishWrite(session, QStringLiteral("Загрузка формы «%1»").arg(m_items.front().name), status);
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
    std::vector<store::FileToPut> files(m_items.size());
    store::Status status;
    for (size_t i = 0; status.ok() && i < m_items.size(); ++i) {
        const Item& item = m_items[i];
        status = toPut(item.path, item.name, item.data, item.size, item.time, &files[i]);
    }
    if (status.ok())
        status = session.data()->store->filePut(files);
    finishWrite(session,
                QStringLiteral("Загрузка файла «%1»")
                    .arg(storedPath(m_items.front().path, m_items.front().name)),
                status);
}
