#include "JournalEvents.h"

#include <QHeaderView>
#include <QTreeWidget>

namespace {

constexpr int logError = 5;

QString wordFor(int code) {
    switch (code) {
    case 601:
        return QStringLiteral("добавлено");
    case 602:
        return QStringLiteral("изменено");
    default:
        return QStringLiteral("удалено");
    }
}

} // namespace

JournalEvents::JournalEvents(COrvoCliApp* app) : COrvoCliMod(app), m_rows(new QTreeWidget(this)) {
    m_rows->setObjectName(QStringLiteral("journalRows"));
    m_rows->setRootIsDecorated(false);
    m_rows->setUniformRowHeights(true);
    m_rows->setHeaderLabels({QStringLiteral("Время"), QStringLiteral("Кто"), QStringLiteral("Что"),
                             QStringLiteral("Таблица"), QStringLiteral("Запись"),
                             QStringLiteral("Значения")});
    m_rows->header()->setSectionResizeMode(QHeaderView::Interactive);
    setCentralWidget(m_rows);
    setFocusProxy(m_rows); // the keys of whoever opens it go there
}

void JournalEvents::SetParamMod(QString name, QString value) {
    if (name == QStringLiteral("Глубина"))
        m_days = qMax(0, value.toInt());
}

bool JournalEvents::ModuleStart() {
    SetModTitle(QStringLiteral("Журнал событий"), {});
    if (!read())
        return false;
    for (int column = 0; column < m_rows->columnCount() - 1; ++column)
        m_rows->resizeColumnToContents(column);
    return true;
}

void JournalEvents::MessageOn() {
    COrvoCliMod::MessageOn(); // the notifications themselves
    read();
}

bool JournalEvents::read() {
    orvo::LogRequest request;
    request.after = m_last;
    request.most = mostRows;
    doCall(orvo::callLog, &request);
    if (!request.refusal.isEmpty()) {
        LogFile(logError, QStringLiteral("JournalEvents"), request.refusal);
        return false;
    }
    for (const orvo::LogEntry& entry : request.entries)
        add(entry);
    m_last = request.last;
    m_rows->scrollToBottom();
    return true;
}

void JournalEvents::add(const orvo::LogEntry& entry) {
    if (m_days > 0 && entry.time.daysTo(QDateTime::currentDateTime()) > m_days)
        return;
    new QTreeWidgetItem(m_rows, // which owns it
                        {entry.time.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")), entry.login,
                         wordFor(entry.code), entry.table, entry.key, entry.values.left(500)});
    while (m_rows->topLevelItemCount() > mostRows)
        delete m_rows->takeTopLevelItem(0);
}
