// From the disk to the server's stores. A file goes up alone, a form as the group of files that
// share its name. The records behind them come back as notifications.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/ScratchTable.h"
#include "resources/Columns.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QTreeView>

#include <limits>
#include <optional>

using orvo::KeyValues;
using orvo::Kind;
using orvo::ScratchTable;

namespace {

/// A file of the disk, whole.
struct LocalFile {
    QString name; ///< without directories
    QByteArray bytes;
    double time = 0; ///< of the last change, as server time
};

/// Reads a file. Nothing, and the reason in `error`, if it cannot be opened or not be read to its
/// end: what would be left of it in the store is not what the user has chosen.
std::optional<LocalFile> readFile(const QString& path, QString& error) {
    // A pipe would keep the window waiting for whoever writes into it.
    if (!QFileInfo(path).isFile()) {
        error = OrvoResources::tr("это не файл");
        return {};
    }
    QFile file(path);
    // Without Qt's own buffer, which a file that is read in one go only passes through.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        error = file.errorString();
        return {};
    }
    const qint64 size = file.size();
    if (size >= std::numeric_limits<int>::max()) {
        error = OrvoResources::tr("файл слишком велик");
        return {};
    }
    const QDateTime time = file.fileTime(QFileDevice::FileModificationTime);
    LocalFile read{QFileInfo(path).fileName(), file.readAll(), DateTime_To_MdxTime(time)};
    if (file.error() != QFileDevice::NoError) {
        error = file.errorString();
        return {};
    }
    if (read.bytes.size() < size) {
        error = OrvoResources::tr("файл стал короче, пока читался");
        return {};
    }
    return read;
}

/// A text as a wildcard that matches it and nothing else.
QString asWildcard(const QString& text) {
    QString pattern;
    for (const QChar c : text) {
        const bool special = c == '*' || c == '?' || c == '[';
        pattern += special ? QLatin1Char('[') + QString(c) + QLatin1Char(']') : QString(c);
    }
    return pattern;
}

/// Uploads the chosen files one after the other while a bar shows how far it is.
template <class Upload>
void uploadAll(COrvoCliMod* module, const QString& title, const QStringList& files, Upload upload) {
    CPopProgressBar bar(module);
    bar.setText(title, QString());
    bar.setRange(0, files.size());
    bar.setColor(ProgressBarColorGreen);
    bar.show();
    bar.repaint(); // the first file may take its time
    for (int i = 0; i < files.size(); ++i) {
        upload(files.at(i));
        bar.setValue(i);
    }
    bar.close();
}

/// The name filter of the dialog that asks for forms.
QString formFilter(const CMDArray& extensions) {
    QString filter = OrvoResources::tr("Все файлы (");
    orvo::walkAll(extensions, 0, [&](const MDRData* record) {
        filter += QLatin1Char('*') + orvo::textOf(record, orvo::field::fileExt) + QLatin1Char(' ');
        return true;
    });
    return filter + QLatin1Char(')');
}

void logUnread(const COrvoCliMod& module, const char* place, const QString& file,
               const QString& reason) {
    module.m_app->m_logModule->LogFile(
        5, QString::fromLatin1(place),
        OrvoResources::tr("Файл «%1» не загружен: %2").arg(file, reason));
}

/// Asks the server to have the forms of those names in that folder. A form without a record yet
/// stands there already, where the upload put it.
void moveForms(COrvoCliSes& session, const CMDArray& resources, const QStringList& names,
               const QString& folderKey) {
    ScratchTable moved(session, orvo::table::MenuResource);
    if (!moved.fetch())
        return;
    for (const QString& name : names) {
        const MDRData* record =
            name.isEmpty() ? nullptr
                           : orvo::seek(resources, 2, KeyValues().integer(Kind::Form).text(name));
        // A name with letters that no record can hold was refused, and is sought with them
        // replaced: what is found then is another form.
        if (record && orvo::holdsText(record, orvo::field::name_, name) &&
            !orvo::holdsText(record, orvo::field::MenuResourceFolderKey, folderKey))
            moved.add(MDX_UPDATE)
                .copy(orvo::field::KeyLink, record)
                .text(orvo::field::MenuResourceFolderKey, folderKey);
    }
    moved.send();
}

} // namespace

void OrvoResources::on_actLoadFiles_triggered() {
    if (!m_resModel)
        return;
    QModelIndex folder = m_resModel->findIndexByKey(m_currentKey);
    if (folder.isValid() && !orvo::resources::isFolder(folder))
        folder = folder.parent();
    if (!folder.isValid())
        return;
    const int type = orvo::resources::kindOf(folder);
    if (type != Kind::Form && type != Kind::File) {
        refuse(tr("Здесь нет места загруженным файлам: %1.").arg(m_names.describe(folder)));
        return;
    }
    if (!finishEditOnPath(folder))
        return;
    // Taken now: the dialog runs the event loop, and the row may be gone afterwards.
    const bool isForm = type == Kind::Form;
    const QString path = isForm ? getFormPath(folder) : getFilePath(folder);
    const QString folderKey = m_resModel->getItemKeyLink(folder);

    QFileDialog dialog(this);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (isForm)
        dialog.setNameFilter(formFilter(m_tabFileExt));
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (isForm) {
        QStringList names;
        uploadAll(this, tr("Загрузка форм в БД"), dialog.selectedFiles(),
                  [&](const QString& file) { names.append(loadFormToDB(file, path)); });
        moveForms(*m_app->m_session, m_tabResource, names, folderKey);
    } else {
        uploadAll(this, tr("Загрузка файлов в БД"), dialog.selectedFiles(),
                  [&](const QString& file) { loadFileToDB(file, path); });
    }
    // No notification tells of contents.
    const QModelIndex current = m_ui->tvRes->currentIndex();
    if (current.isValid() && !orvo::resources::isFolder(current)) {
        m_propModel->clearRows();
        showPassport(current);
    }
}

void OrvoResources::loadFileToDB(const QString& file, const QString& path) {
    QString error;
    const std::optional<LocalFile> read = readFile(file, error);
    if (!read) {
        logUnread(*this, "OrvoResources::loadFileToDB", file, error);
        return;
    }
    CToolFilePut tool(this);
    tool.AddFile(path, read->name, read->bytes.constData(), read->bytes.size(), read->time);
    tool.Perform(false);
}

QString OrvoResources::loadFormToDB(const QString& file, const QString& path) {
    const char place[] = "OrvoResources::loadFormToDB";
    const QFileInfo chosen(file);
    QFile handle(file);
    if (!chosen.isFile() || !handle.open(QIODevice::ReadOnly)) {
        logUnread(*this, place, file, chosen.isFile() ? handle.errorString() : tr("это не файл"));
        return {};
    }
    handle.close();
    const QString name = chosen.fileName();
    QString stem = name;
    if (stem.endsWith(QLatin1Char('_')))
        stem.chop(1);

    std::vector<LocalFile> files; // the tool refers to their bytes
    const QFileInfoList group = chosen.absoluteDir().entryInfoList(
        {asWildcard(stem) + QLatin1Char('*')}, QDir::Files, QDir::Reversed);
    for (const QFileInfo& member : group) {
        QString error;
        if (std::optional<LocalFile> read = readFile(member.absoluteFilePath(), error))
            files.push_back(std::move(*read));
        else
            logUnread(*this, place, member.absoluteFilePath(), error);
    }
    CToolFormPut tool(this);
    tool.formPath = path;
    for (const LocalFile& read : files)
        tool.AddFile(read.name, read.bytes.constData(), read.bytes.size(), read.time);
    tool.Perform(false);
    return name;
}
