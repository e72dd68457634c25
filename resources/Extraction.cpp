// From the server's stores to the disk: extraction, and opening a form in the host.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Records.h"
#include "resources/Columns.h"

#include <QFileDialog>
#include <QItemSelectionModel>
#include <QSaveFile>
#include <QTreeView>

#include <algorithm>
#include <array>

using orvo::resources::FileField;
using orvo::resources::kindOf;
using orvo::resources::nameOf;
using orvo::resources::ResColumn;

namespace {

constexpr int callRun = 64;

/// Whether the name means a file in the directory it is put behind, and nothing else.
bool isPlainFileName(const QString& name) {
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           std::none_of(name.begin(), name.end(), [](QChar c) {
               return c == QLatin1Char('/') || c == QLatin1Char('\\') ||
                      c.category() == QChar::Other_Control;
           });
}

/// Tells the log of a file that is in the store and not on the disk.
void logUnwritten(const COrvoCliMod& module, const QString& file, const QString& reason) {
    module.m_app->m_logModule->LogFile(
        5, QStringLiteral("OrvoResources::on_actExtractFiles_triggered"),
        OrvoResources::tr("Файл «%1» не извлечён: %2").arg(file, reason));
}

/// Writes all of it into a file without a buffer. What is left after a disk is full is tried again:
/// only that tells the reason, which the commit would lose.
bool writeWhole(QSaveFile& file, const char* content, qint64 length) {
    while (length > 0) {
        const qint64 written = file.write(content, length);
        if (written <= 0)
            return false;
        content += written;
        length -= written;
    }
    return true;
}

/// Writes the files of a tool's reply into a directory. An existing file is replaced at once and
/// only when all of the new one is on the disk; one that cannot be written stays as it was, and the
/// log names it.
void writeFiles(const COrvoCliMod& module, const CMDArray& files, const QString& directory) {
    orvo::walkAll(files, 0, [&](const MDRData* record) {
        const QString name = orvo::textOf(record, FileField::Name);
        if (orvo::integerOf(record, FileField::Size) == 0) {
            logUnwritten(module, name, OrvoResources::tr("файл пуст"));
            return true;
        }
        if (!isPlainFileName(name)) {
            logUnwritten(module, name, OrvoResources::tr("недопустимое имя"));
            return true;
        }
        uint32_t length = 0;
        const char* content = nullptr;
        if (MDRGetTextRef(orvo::fieldOf(record, FileField::Content), record, &length, &content) !=
            MDX_OK) {
            logUnwritten(module, name, OrvoResources::tr("содержимое не получено"));
            return true;
        }
        QSaveFile file(directory + name);
        // A file may be writable where its directory is not.
        file.setDirectWriteFallback(true);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
            !writeWhole(file, content, length) || !file.commit())
            logUnwritten(module, file.fileName(), file.errorString());
        return true;
    });
}

} // namespace

void OrvoResources::on_actExtractFiles_triggered() {
    QItemSelectionModel* selection = m_ui->tvRes->selectionModel();
    if (!selection || selection->selectedRows().isEmpty())
        return;
    const QModelIndex first = selection->selectedRows().first();
    if (orvo::resources::isFolder(first) || !finishEditOnPath(first))
        return;
    const int type = kindOf(first);
    const bool isForm = type == orvo::Kind::Form;
    QFileDialog dialog(this);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    if ((isForm || type == orvo::Kind::File) && dialog.exec() == QDialog::Accepted &&
        !dialog.selectedFiles().isEmpty()) {
        const QString directory = dialog.selectedFiles().first() + QLatin1Char('/');
        for (const QModelIndex& row : selection->selectedRows()) {
            if (kindOf(row) != type)
                continue;
            if (isForm) {
                CToolFormGet tool(this);
                tool.formName = nameOf(row);
                tool.withData = true;
                tool.Perform(false);
                writeFiles(*this, tool.result, directory);
            } else {
                CToolFileGet tool(this);
                tool.name = nameOf(row);
                tool.path = getFilePath(row);
                tool.Perform(false);
                writeFiles(*this, tool.result, directory);
            }
        }
    }
    m_ui->tvRes->clearSelection();
}

void OrvoResources::on_actOpenScheme_triggered() {
    const MDRData* record = orvo::seekKey(m_tabResource, m_currentKey);
    if (!record || orvo::isNull(record, orvo::field::name_))
        return;
    QString text = orvo::textOf(record, orvo::field::name_);
    if (!orvo::isNull(record, orvo::field::params))
        text += QLatin1Char(';') + orvo::textOf(record, orvo::field::params);
    const QByteArray bytes = orvo::toRecord(text);
    // The host reads three machine words: a reserved one, the command, its argument.
    std::array<const void*, 3> block{nullptr, orvo::runFileCommand, bytes.constData()};
    doCall(callRun, block.data());
}
