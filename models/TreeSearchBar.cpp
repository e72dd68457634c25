#include "models/TreeSearchBar.h"

#include "frame/EscapeKey.h"
#include "frame/Keys.h"
#include "frame/WindowParts.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace orvo {

namespace {

QToolButton* addButton(QWidget* bar, const char* image, const QString& name, const QString& keys) {
    auto* button = new QToolButton(bar);
    button->setIcon(orvo::image(image));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleName(name);
    button->setToolTip(QStringLiteral("%1 (%2)").arg(name, keys));
    bar->layout()->addWidget(button);
    return button;
}

QString keysOf(const char* id) {
    return keys::shown(*keys::command(QLatin1String(id)));
}

} // namespace

TreeSearchBar::TreeSearchBar(QTreeView* view, const TreeModelCore<TabRec>& model, int keyColumn,
                             const std::vector<Column>& columns)
    : QWidget(view)
    , m_view(*view)
    , m_columns(columns)
    , m_hits(model, keyColumn)
    , m_text(new QLineEdit(this))
    , m_column(new QComboBox(this)) {
    setObjectName(QStringLiteral("treeSearch"));
    setAutoFillBackground(true);
    hide();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(2);
    row->addWidget(m_text, 1);
    m_text->setObjectName(QStringLiteral("treeSearchText"));
    m_text->setAccessibleName(tr("Поиск в дереве"));
    m_text->setPlaceholderText(tr("Поиск..."));
    m_text->addAction(orvo::image("search1"), QLineEdit::LeadingPosition)->setText(tr("Поиск"));
    m_down = addButton(this, "down2", tr("Следующее найденное"), keysOf(keys::nextHit));
    m_up = addButton(this, "up2", tr("Предыдущее найденное"), keysOf(keys::previousHit));
    m_column->setAccessibleName(tr("Искать по"));
    m_column->setToolTip(QStringLiteral("%1 (%2)").arg(tr("Искать по"), keysOf(keys::searchBy)));
    for (const Column& column : columns)
        m_column->addItem(column.title);
    m_column->setVisible(columns.size() > 1);
    row->addWidget(m_column);
    auto* close = addButton(this, "cancel1", tr("Закрыть поиск"), QStringLiteral("Esc"));
    connect(close, &QToolButton::clicked, this, &TreeSearchBar::dismiss);
    connect(m_down, &QToolButton::clicked, this, [this] { step(1); });
    connect(m_up, &QToolButton::clicked, this, [this] { step(-1); });
    connect(m_text, &QLineEdit::textChanged, this, &TreeSearchBar::find);
    connect(m_column, qOverload<int>(&QComboBox::currentIndexChanged), this, &TreeSearchBar::find);
    m_text->installEventFilter(this);
    for (QWidget* part : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_column)})
        new EscapeKey(part, [this] { dismiss(); }); // the part's child
    m_view.installEventFilter(this);
    m_view.viewport()->installEventFilter(this); // a scroll bar changes its size alone
    updateButtons();
}

void TreeSearchBar::open(const QString& text) {
    place();
    show();
    raise();
    m_text->setFocus(Qt::ShortcutFocusReason);
    if (text.isEmpty())
        m_text->selectAll();
    else
        m_text->setText(text);
}

void TreeSearchBar::searchByNext() {
    if (hasColumns())
        m_column->setCurrentIndex((m_column->currentIndex() + 1) % m_column->count());
    open();
}

void TreeSearchBar::dismiss() {
    const bool hadFocus = isAncestorOf(QApplication::focusWidget());
    hide();
    if (hadFocus)
        m_view.setFocus(Qt::OtherFocusReason);
}

void TreeSearchBar::step(int by) {
    if (m_text->text().isEmpty()) {
        open();
        return;
    }
    TreeSearch search(m_view, m_hits, m_position);
    if (!search.hasAny())
        find(); // the rows may be others since: another menu
    else if (search.mayStep(by))
        search.step(by);
    uncoverCurrent();
    updateButtons();
}

void TreeSearchBar::find() {
    m_position = 0;
    if (!m_text->text().isEmpty()) {
        const int wanted = std::max(0, m_column->currentIndex());
        bool found = findIn(wanted);
        // That the user has just chosen another column is no reason to leave it.
        const bool tries = m_triesAllColumns && sender() != m_column;
        for (int column = 0; tries && !found && column < m_column->count(); ++column)
            if (column != wanted &&
                !m_view.isColumnHidden(m_columns[static_cast<size_t>(column)].number))
                found = findIn(column);
        if (!found && tries)
            findIn(wanted);
        if (found)
            uncoverCurrent();
    }
    colour();
    updateButtons();
}

/// The column is then the one in use.
bool TreeSearchBar::findIn(int column) {
    {
        const QSignalBlocker blocked(m_column);
        m_column->setCurrentIndex(column);
    }
    m_position = 0;
    m_hits.find(m_columns[static_cast<size_t>(column)].number, m_text->text());
    return TreeSearch(m_view, m_hits, m_position).showFirst();
}

void TreeSearchBar::colour() {
    const bool found = m_text->text().isEmpty() || TreeSearch(m_view, m_hits, m_position).hasAny();
    m_text->setPalette(searchColours(palette(), found));
}

void TreeSearchBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colour();
}

void TreeSearchBar::updateButtons() {
    const TreeSearch search(m_view, m_hits, m_position);
    const bool any = !m_text->text().isEmpty();
    m_down->setEnabled(any && search.mayStep(1));
    m_up->setEnabled(any && search.mayStep(-1));
}

/// In the right corner of the rows, the upper one if nothing is against it.
void TreeSearchBar::place() {
    constexpr int most = 420;
    const QRect rows = m_view.viewport()->geometry();
    const int width = std::min(most, rows.width());
    const int height = sizeHint().height();
    setGeometry(rows.right() + 1 - width, m_isLow ? rows.bottom() + 1 - height : rows.top(), width,
                height);
}

bool TreeSearchBar::isOverCurrent() const {
    const QRect cell = m_view.visualRect(m_view.currentIndex());
    const int top = m_view.viewport()->y() + cell.top();
    return !cell.isEmpty() && top <= geometry().bottom() && top + cell.height() > y();
}

void TreeSearchBar::uncoverCurrent() {
    if (!isVisible() || !m_view.currentIndex().isValid())
        return;
    m_isLow = false;
    place();
    QScrollBar& scroll = *m_view.verticalScrollBar();
    while (isOverCurrent() && scroll.value() > scroll.minimum())
        scroll.setValue(scroll.value() - scroll.singleStep());
    if (!isOverCurrent())
        return;
    m_isLow = true;
    place();
}

/// What is typed and was not found means no row, whichever is still current.
void TreeSearchBar::choose() {
    if (!m_text->text().isEmpty() && !TreeSearch(m_view, m_hits, m_position).hasAny())
        find(); // the rows may be others since
    if (!m_text->text().isEmpty() && !TreeSearch(m_view, m_hits, m_position).hasAny())
        return;
    emit chosen();
    m_text->selectAll(); // the next word replaces it
}

bool TreeSearchBar::takeKey(int key, bool shift) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_returnChooses && !shift)
            choose();
        else
            step(shift ? -1 : 1);
        return true;
    case Qt::Key_Down:
    case Qt::Key_Up:
        step(key == Qt::Key_Down ? 1 : -1);
        return true;
    default:
        return false;
    }
}

bool TreeSearchBar::openOn(const QKeyEvent& key) {
    const QString text = key.text();
    if (text.size() != 1 || !text.at(0).isPrint() || text.at(0).isSpace() ||
        text == QLatin1String("*") || (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    open(text);
    return true;
}

bool TreeSearchBar::eventFilter(QObject* watched, QEvent* event) {
    const bool isText = watched == m_text;
    if (!isText && event->type() == QEvent::Resize && isVisible())
        place();
    if (!isText && watched != &m_view) // the viewport, which may be on its way out with the view
        return false;
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (isText)
        return takeKey(key.key(), key.modifiers() & Qt::ShiftModifier);
    if (m_opensOnTyping && openOn(key))
        return true;
    return QWidget::eventFilter(watched, event);
}

} // namespace orvo
