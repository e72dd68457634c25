#include "apps/client/LogPane.h"

#include "apps/client/Look.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTime>

namespace orvo::app {

LogPane::LogPane(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("logPane"));
    setAccessibleName(QStringLiteral("Журнал"));
    setHeaderLabels(
        {QStringLiteral("Время"), QStringLiteral("Место"), QStringLiteral("Сообщение")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setItemDelegate(new ReadableDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setAlternatingRowColors(true);
    setSelectionMode(ExtendedSelection);
    header()->setStretchLastSection(true);
    header()->resizeSection(0, 90);
    header()->resizeSection(1, 320);

    auto* copy = new QAction(QStringLiteral("Копировать"), this);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &LogPane::copySelected);
    auto* empty = new QAction(QStringLiteral("Очистить"), this);
    connect(empty, &QAction::triggered, this, &QTreeWidget::clear);
    addActions({copy, empty});
    setContextMenuPolicy(Qt::ActionsContextMenu);
}

void LogPane::add(int level, const QString& place, const QString& text) {
    const bool atEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    auto* line = new QTreeWidgetItem({QTime::currentTime().toString(QStringLiteral("HH:mm:ss")),
                                      oneLine(place), clipped(text.simplified())});
    line->setToolTip(2, plainToolTip(text));
    if (level >= LogError)
        line->setForeground(2, QColor(0xb3, 0x2d, 0x23));
    else if (level >= LogWarning)
        line->setForeground(2, QColor(0x8a, 0x5a, 0x00));
    addTopLevelItem(line);
    while (topLevelItemCount() > mostLines)
        delete takeTopLevelItem(0);
    if (atEnd)
        scrollToBottom();
}

void LogPane::copySelected() const {
    QStringList lines;
    for (const QTreeWidgetItem* line : selectedItems())
        lines << line->text(0) + QLatin1Char('\t') + line->text(1) + QLatin1Char('\t') +
                     line->text(2);
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

} // namespace orvo::app
