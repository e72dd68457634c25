#include "apps/client/history/VersionsDialog.h"

#include "apps/client/ColumnWidth.h"
#include "apps/client/FormViewer.h"
#include "apps/client/LogPane.h"
#include "apps/client/Look.h"
#include "apps/formview/Channel.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "history/ReturnVersion.h"
#include "platform/store/Names.h"

#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace orvo::app {

namespace {

enum VersionColumn { Name, Time, Size, Until, Who };

QString sizeText(uint64_t size) {
    if (size < 1024) // the library's own words are no Russian ones
        return QStringLiteral("%1 %2").arg(size).arg(
            history::numeralForm(size, Text::tr("байт"), Text::tr("байта"), Text::tr("байт")));
    double shown = static_cast<double>(size);
    QString unit;
    for (const QString& next : {Text::tr("КиБ"), Text::tr("МиБ"), Text::tr("ГиБ")})
        if (unit.isEmpty() || shown >= 1024) {
            shown /= 1024;
            unit = next;
        }
    return QStringLiteral("%1 %2").arg(textLocale().toString(shown, 'f', 2), unit);
}

QString fullTime(double time) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000.0))
        .toString(Text::tr("dd.MM.yyyy HH:mm:ss"));
}

} // namespace

VersionsDialog::VersionsDialog(StoreThread& thread, const QString& resource, bool mayWrite,
                               QWidget* parent)
    : QDialog(parent)
    , m_thread(thread)
    , m_resource(resource)
    , m_mayWrite(mayWrite)
    , m_list(new QTreeWidget(this))
    , m_note(new QLabel(Text::tr("Читается…"), this)) {
    setObjectName(QStringLiteral("versionsDialog"));
    setWindowTitle(Text::tr("Прежние версии"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_list->setObjectName(QStringLiteral("versionsList"));
    m_list->setAccessibleName(Text::tr("Прежние версии"));
    m_list->setRootIsDecorated(false);
    m_list->setAlternatingRowColors(true);
    m_list->setHeaderLabels({Text::tr("Файл"), Text::tr("Дата файла"), Text::tr("Размер"),
                             Text::tr("Заменена или удалена"), Text::tr("Кем")});
    m_list->header()->resizeSection(Name, 260);
    const QString moment = QStringLiteral("00.00.0000 00:00:00");
    m_list->header()->resizeSection(Time, widthFor(*m_list, moment, 150));
    m_list->header()->resizeSection(Until, widthFor(*m_list, moment, 170));
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(this);
    m_open = buttons->addButton(Text::tr("Открыть"), QDialogButtonBox::ActionRole);
    m_extract = buttons->addButton(Text::tr("Извлечь…"), QDialogButtonBox::ActionRole);
    m_return =
        buttons->addButton(Text::tr("Вернуть", "прежнее содержимое"), QDialogButtonBox::ActionRole);
    QPushButton* close = buttons->addButton(Text::tr("Закрыть"), QDialogButtonBox::RejectRole);
    m_open->setObjectName(QStringLiteral("versionOpen"));
    m_extract->setObjectName(QStringLiteral("versionExtract"));
    m_return->setObjectName(QStringLiteral("versionReturn"));
    close->setDefault(true);
    auto* all = new QVBoxLayout(this);
    all->addWidget(m_list);
    all->addWidget(m_note);
    all->addWidget(buttons);
    resize(820, 360);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_open, &QPushButton::clicked, this, &VersionsDialog::openVersion);
    connect(m_extract, &QPushButton::clicked, this, &VersionsDialog::extract);
    connect(m_return, &QPushButton::clicked, this, &VersionsDialog::putBack);
    load();
}

void VersionsDialog::note(const QString& text) {
    m_note->setText(clipped(text));
}

void VersionsDialog::load(const QString& said) {
    struct Read {
        std::vector<store::KeptVersion> versions;
        history::PersonNames names;
        QString of; ///< whose they are
        int64_t seen = 0;
    };
    auto read = std::make_shared<Read>();
    m_thread.run(
        this,
        [read, key = m_resource.toStdString()](store::MaintainedStore& store) {
            store::VersionQuery query;
            query.resource = key;
            store::Status status = store.logPosition(&read->seen);
            if (status.ok())
                status = store.versions(query, &read->versions);
            history::LoggedRecords source(store);
            const store::TableDef& table = *store::findTable(table::MenuResource);
            if (const history::Values values = source.valuesOf(table, key); !values.empty())
                read->of = history::recordWords(table, values, key);
            return status.ok() ? history::readPeople(store, &read->names) : status;
        },
        [this, read, said](const store::Status& status) {
            if (!status.ok()) {
                note(QString::fromStdString(status.text));
                return;
            }
            m_seen = read->seen;
            if (!read->of.isEmpty())
                setWindowTitle(Text::tr("Прежние версии: %1").arg(read->of));
            m_names = read->names;
            showVersions(read->versions);
            if (!said.isEmpty())
                note(said);
        });
}

void VersionsDialog::showVersions(const std::vector<store::KeptVersion>& versions) {
    const store::KeptVersion* chosen = current();
    const int64_t chosenId = chosen ? chosen->id : 0;
    m_versions = versions;
    m_list->clear();
    for (const store::KeptVersion& version : versions) {
        auto* row = new QTreeWidgetItem(m_list);
        row->setText(Name, oneLine(QString::fromStdString(version.name)));
        row->setText(Time, version.fileTime ? fullTime(*version.fileTime) : QString());
        row->setText(Size, sizeText(version.size));
        row->setText(Until, fullTime(version.time));
        row->setText(Who, oneLine(history::personName(version.login, m_names)));
    }
    const auto same = std::find_if(versions.begin(), versions.end(),
                                   [&](const auto& version) { return version.id == chosenId; });
    const auto row = same == versions.end() ? 0 : same - versions.begin();
    m_list->setCurrentItem(m_list->topLevelItem(static_cast<int>(row)));
    note(versions.empty() ? Text::tr("Прежних версий нет.") : QString());
    for (QPushButton* button : {m_open, m_extract})
        button->setEnabled(!versions.empty());
    m_return->setEnabled(!versions.empty() && m_mayWrite);
}

const store::KeptVersion* VersionsDialog::current() const {
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    return row < 0 ? nullptr : &m_versions[static_cast<size_t>(row)];
}

void VersionsDialog::openVersion() {
    const store::KeptVersion* version = current();
    if (!version)
        return;
    if (version->size > formview::largestFile) {
        note(
            Text::tr("Не открыто: больше %1, можно извлечь.").arg(sizeText(formview::largestFile)));
        return;
    }
    auto bytes = std::make_shared<std::string>();
    m_thread.run(
        this,
        [bytes, id = version->id](store::MaintainedStore& store) {
            return store.versionBytes(id, [&](std::string_view piece) -> store::Status {
                *bytes += piece;
                return {};
            });
        },
        [this, bytes, version = *version](const store::Status& status) {
            if (!status.ok()) {
                note(QString::fromStdString(status.text));
                return;
            }
            const store::StoredFile file{version.name, version.fileTime, version.size, *bytes};
            auto* window =
                new FormWindow(installation::formViewProgram(),
                               QString::fromStdString(version.name), {file}, {}, {}, this);
            window->setAttribute(Qt::WA_DeleteOnClose);
            connect(window, &FormWindow::problem, this, &VersionsDialog::note);
            window->show();
        });
}

void VersionsDialog::extract() {
    const store::KeptVersion* version = current();
    const QString folder =
        version
            ? QFileDialog::getExistingDirectory(this, Text::tr("Куда извлечь"), QDir::homePath())
            : QString();
    if (!folder.isEmpty())
        extractInto(folder);
}

void VersionsDialog::extractInto(const QString& folder) {
    const store::KeptVersion* version = current();
    if (!version)
        return;
    if (!store::isPlainFileName(version->name)) { // written by hand: it may lead anywhere
        note(Text::tr("Не извлечено: «%1» не может быть именем файла.")
                 .arg(QString::fromStdString(version->name)));
        return;
    }
    const QString file = QDir(folder).filePath(QString::fromStdString(version->name));
    if (QFile::exists(file)) {
        note(Text::tr("Не извлечено: %1 уже есть.").arg(file));
        return;
    }
    m_thread.run(
        this,
        [file, id = version->id](store::MaintainedStore& store) -> store::Status {
            QSaveFile out(file);
            const auto failed = [&]() -> store::Status {
                return {store::Failed,
                        (file + QStringLiteral(": ") + out.errorString()).toStdString()};
            };
            if (!out.open(QIODevice::WriteOnly))
                return failed();
            const store::Status read =
                store.versionBytes(id, [&](std::string_view piece) -> store::Status {
                    const auto size = static_cast<qint64>(piece.size());
                    return out.write(piece.data(), size) == size ? store::Status() : failed();
                });
            if (!read.ok())
                return read; // nothing of it stays
            return out.flush() && out.commit() ? store::Status() : failed();
        },
        [this, file](const store::Status& status) {
            note(status.ok()
                     ? Text::tr("Извлечено: %1").arg(file)
                     : Text::tr("Не извлечено: %1").arg(QString::fromStdString(status.text)));
        });
}

void VersionsDialog::putBack() {
    const store::KeptVersion* version = current();
    if (!version)
        return;
    const QString what = (version->fileTime ? Text::tr("Версия файла «%1» от %2")
                                            : Text::tr("Версия файла «%1», заменённая %2,"))
                             .arg(QString::fromStdString(version->name),
                                  fullTime(version->fileTime ? *version->fileTime : version->time));
    m_thread.run(
        this,
        [id = version->id, seen = m_seen, names = m_names](store::MaintainedStore& store) {
            return history::returnVersion(store, id, seen, names);
        },
        [this, what](const store::Status& status) {
            const QString text = QString::fromStdString(status.text);
            if (status.code == store::Outdated) // the next click is about what shows then
                load(text);
            else if (!status.ok())
                note(text);
            if (!status.ok())
                return;
            emit told(LogInformation, what + Text::tr(" возвращена."));
            emit returned();
            load(); // what was replaced is a version now
        });
}

} // namespace orvo::app
