#include "apps/client/LogPane.h"

#include "apps/client/ColumnWidth.h"
#include "apps/client/Look.h"
#include "frame/Text.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTime>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::app {

LogPane::LogPane(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("logPane"));
    setAccessibleName(Text::tr("Журнал"));
    setHeaderLabels({Text::tr("Время"), Text::tr("Место"), Text::tr("Сообщение")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setItemDelegate(new ReadableDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setAlternatingRowColors(true);
    setSelectionMode(ExtendedSelection);
    header()->setStretchLastSection(true);
    header()->resizeSection(0, widthFor(*this, QStringLiteral("00:00:00"), 90));
    header()->resizeSection(1, 320);

    auto* copy = new QAction(Text::tr("Копировать"), this);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &LogPane::copySelected);
    auto* empty = new QAction(Text::tr("Очистить"), this);
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
    line->setHidden(!hasWords(*line));
    while (topLevelItemCount() > mostLines)
        delete takeTopLevelItem(0);
    if (atEnd)
        scrollToBottom();
}

void LogPane::showOnlyThoseWith(const QString& words) {
    m_words = alike(words).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i < topLevelItemCount(); ++i)
        topLevelItem(i)->setHidden(!hasWords(*topLevelItem(i)));
    if (currentItem())
        scrollToItem(currentItem());
    else
        scrollToBottom();
}

bool LogPane::hasWords(const QTreeWidgetItem& line) const {
    if (m_words.isEmpty())
        return true;
    const QString text =
        alike(line.text(0) + QLatin1Char('\n') + line.text(1) + QLatin1Char('\n') + line.text(2));
    return std::all_of(m_words.begin(), m_words.end(),
                       [&](const QString& word) { return text.contains(word); });
}

void LogPane::copySelected() const {
    QStringList lines;
    for (const QTreeWidgetItem* line : selectedItems())
        lines << line->text(0) + QLatin1Char('\t') + line->text(1) + QLatin1Char('\t') +
                     line->text(2);
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

LogSearch::LogSearch(LogPane* log) {
    auto* text = new QLineEdit(this);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(log);
    all->addWidget(text);
    setFocusProxy(log);
    text->setObjectName(QStringLiteral("logText"));
    text->setAccessibleName(Text::tr("Найти в журнале"));
    text->setPlaceholderText(Text::tr("Найти в журнале"));
    text->setToolTip(Text::tr("Слова из любого столбца, в любом порядке (Ctrl+F)"));
    text->setClearButtonEnabled(true);
    text->hide();
    connect(text, &QLineEdit::returnPressed, log,
            [log] { log->setFocus(Qt::ShortcutFocusReason); });
    connect(text, &QLineEdit::textChanged, log, &LogPane::showOnlyThoseWith);
}

} // namespace orvo::app
