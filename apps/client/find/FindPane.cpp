#include "apps/client/find/FindPane.h"

#include "apps/client/HostApp.h"
#include "apps/client/Look.h"
#include "frame/ContextMenuKey.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

namespace orvo::app {

namespace {

constexpr int againDelayMs = 300; ///< after a change of records

/// Where the focus is to go back to: a field in a row of a view goes when it loses the focus.
QWidget* lasting(QWidget* focus) {
    QWidget* viewport = focus ? focus->parentWidget() : nullptr;
    auto* view = viewport ? qobject_cast<QAbstractItemView*>(viewport->parentWidget()) : nullptr;
    return view && view->viewport() == viewport ? view : focus;
}

} // namespace

FindPane::FindPane(catalogue::LiveCatalogue& live, std::shared_ptr<catalogue::Search> search,
                   const QString& iconsPath, QWidget* window)
    : QFrame(window)
    , m_live(live)
    , m_search(std::move(search))
    , m_model(iconsPath)
    , m_text(new QLineEdit(this))
    , m_view(new QTreeView(this))
    , m_note(new QLabel(this)) {
    setObjectName(QStringLiteral("findPane"));
    setAccessibleName(Text::tr("Найти всё"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    hide();
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setAccessibleName(Text::tr("Что найти"));
    m_text->setPlaceholderText(Text::tr("Слова из названия, объекта, параметров, ключа или пути"));
    m_view->setObjectName(QStringLiteral("findList"));
    m_view->setAccessibleName(Text::tr("Найденное"));
    m_view->setModel(&m_model);
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->header()->setStretchLastSection(true);
    connect(m_view->header(), &QHeaderView::sectionResized, this,
            [this](int column, int, int width) { takeWidth(column, width); });
    m_note->setObjectName(QStringLiteral("findNote"));
    m_note->setTextFormat(Qt::PlainText);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(6, 6, 6, 6);
    all->addWidget(m_text);
    all->addWidget(m_view, 1);
    all->addWidget(m_note);
    m_againSoon.setSingleShot(true);
    m_againSoon.setInterval(againDelayMs);
    connect(&m_againSoon, &QTimer::timeout, this, &FindPane::search);
    connect(m_text, &QLineEdit::textChanged, this, [this] {
        m_isWhole = false;
        m_choosesWhenFound = false;
        this->search(); // not the parameter
    });
    // By a single click the second of a double one would meet what is below the pane.
    connect(m_view, &QTreeView::doubleClicked, this, &FindPane::choose);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_view, &QTreeView::customContextMenuRequested, this, &FindPane::showContextMenu);
    connect(&m_live, &catalogue::LiveCatalogue::loaded, this, &FindPane::outdate);
    connect(&m_live, &catalogue::LiveCatalogue::failed, this, [this](const QString& text) {
        m_note->setText(Text::tr("Записи не прочитаны: %1").arg(clipped(text)));
    });
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focusMoved(now); });
    m_text->installEventFilter(this);
    m_view->installEventFilter(this);
    window->installEventFilter(this);
}

FindPane::~FindPane() {
    if (m_stop)
        *m_stop = true;
    disconnect(qApp, nullptr, this, nullptr); // the focus goes with what has it
    delete m_view;                            // before the model that it shows
}

void FindPane::open() {
    m_live.start();
    if (!isVisible()) {
        m_cameFrom = lasting(QApplication::focusWidget());
        m_below = lasting(window()->focusWidget());
        m_isWhole = false; // of last time
        m_view->setCurrentIndex({});
        place();
        m_palettes.cover(*window());
        show();
        search();
    }
    raise();
    window()->raise(); // the key may come from another window
    activateWindow();
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FindPane::dismiss() {
    if (!isVisible())
        return;
    const QPointer<QWidget> back = m_cameFrom;
    const bool hadFocus = isAncestorOf(QApplication::focusWidget());
    m_againSoon.stop();
    m_choosesWhenFound = false;
    if (m_stop)
        *m_stop = true;
    hide();
    if (hadFocus && m_below && m_below->isVisible())
        m_below->setFocus(Qt::OtherFocusReason);
    m_palettes.uncover();
    if (hadFocus && back && back->isVisible()) {
        back->window()->raise();
        back->activateWindow();
        back->setFocus(Qt::OtherFocusReason);
    }
}

void FindPane::outdate() {
    if (isVisible() && !m_againSoon.isActive())
        m_againSoon.start();
}

void FindPane::place() {
    constexpr int most = 1400, margin = 24, top = 40;
    const QSize room = parentWidget()->size();
    const int width = std::min(most, room.width() - 2 * margin);
    const int height = std::min(460, room.height() - 2 * top);
    setGeometry((room.width() - width) / 2, top, width, height);
    if (std::exchange(m_placedWidth, width) != width)
        placeColumns(width);
}

/// The path, by which namesakes are told apart, has what the columns before it leave, and never
/// nothing.
void FindPane::placeColumns(int width) {
    constexpr int leastPath = 160;
    const int room = m_isDrawn ? width - leastPath : width * 60 / 100;
    const int wanted = std::accumulate(m_widths.begin(), m_widths.end(), 0);
    m_isPlacing = true;
    for (int column = 0; column < FindModel::Path; ++column)
        m_view->header()->resizeSection(column, wanted > room ? m_widths[column] * room / wanted
                                                              : m_widths[column]);
    m_isPlacing = false;
}

void FindPane::takeWidth(int column, int width) {
    if (m_isPlacing || column >= FindModel::Path)
        return;
    m_widths[column] = width;
    m_isDrawn = true;
}

// ---------------------------------------------------------------------------------------------
// Searching

void FindPane::search() {
    if (!isVisible())
        return;
    m_againSoon.stop();
    if (m_stop)
        *m_stop = true; // the one before
    m_stop = std::make_shared<std::atomic<bool>>(false);
    if (!m_live.isLoaded())
        m_note->setText(Text::tr("Записи читаются…"));
    const auto findings = std::make_shared<catalogue::Findings>();
    const QPointer<QObject> context(this);
    m_live.run(
        this,
        [this, search = m_search, findings, context, live = &m_live, stop = m_stop,
         text = m_text->text()](const catalogue::Catalogue& records) {
            if (*stop)
                return;
            const auto progress = [&](const catalogue::Findings& sofar) {
                live->post(context, [this, stop, sofar] {
                    if (!*stop)
                        take(sofar);
                });
            };
            *findings = search->find(records, text, mostShown, *stop, progress);
        },
        [this, findings, stop = m_stop] {
            if (!*stop)
                take(*findings);
        });
}

/// While one types the best is the current one, until another is chosen. After that the row that is
/// current stays it, whatever others do; if it is no longer found, none is, so that Enter opens
/// nothing that was not chosen.
void FindPane::take(const catalogue::Findings& findings) {
    const bool typed = !m_isWhole;
    if (!typed && !findings.whole)
        return; // what is shown is better than a part of it
    const int before = m_view->currentIndex().row();
    const catalogue::Found* current = m_model.at(before);
    const bool hadRows = m_model.rowCount() > 0;
    const QString table = current ? current->table : QString();
    const QString key = current ? current->key : QString();
    m_model.setFound(findings.best);
    int row = current && (!typed || before > 0) ? m_model.rowOf(table, key) : -1;
    const bool lost = current && !typed && row < 0;
    if (row < 0 && (typed || !hadRows))
        row = 0;
    m_view->setCurrentIndex(m_model.index(row, 0));
    note(findings, lost);
    m_isWhole = findings.whole;
    if (m_choosesWhenFound && m_isWhole) {
        m_choosesWhenFound = false;
        choose();
    }
}

void FindPane::note(const catalogue::Findings& findings, bool lost) {
    const QLocale locale = textLocale();
    const QString count = locale.toString(findings.count);
    if (m_text->text().trimmed().isEmpty())
        m_note->setText(Text::tr("Рабочие столы, элементы меню, ресурсы, файлы и люди. Слова "
                                 "в любом порядке."));
    else if (lost)
        m_note->setText(
            Text::tr("Выбранной строки среди найденного больше нет. Найдено %1.").arg(count));
    else if (!findings.whole)
        m_note->setText(Text::tr("Найдено %1, поиск идёт…").arg(count));
    else if (findings.count == 0)
        m_note->setText(Text::tr("Ничего не найдено."));
    else if (findings.count > findings.best.size())
        m_note->setText(Text::tr("Найдено %1, показаны первые %2: уточните слова.")
                            .arg(count, locale.toString(findings.best.size())));
    else
        m_note->setText(Text::tr("Найдено %1.").arg(count));
    if (findings.unread > 0)
        m_note->setText(m_note->text() +
                        Text::tr(" Искались первые %1 слов.").arg(catalogue::Search::mostWords));
}

void FindPane::choose() {
    const catalogue::Found* found = m_model.at(m_view->currentIndex().row());
    if (!found)
        return;
    const catalogue::Found copy = *found;
    dismiss();
    emit chosen(copy);
}

void FindPane::askForUses() {
    const catalogue::Found* found = m_model.at(m_view->currentIndex().row());
    if (!found || usesEntry(found->table).isEmpty())
        return;
    const catalogue::Found copy = *found;
    dismiss();
    emit usesRequested(copy);
}

void FindPane::showContextMenu(const QPoint& point) {
    const catalogue::Found* found = m_model.at(m_view->indexAt(point).row());
    if (!found)
        return;
    m_view->setCurrentIndex(m_view->indexAt(point));
    QMenu menu;
    const auto add = [&](const QString& text, const QKeySequence& key, void (FindPane::*run)()) {
        QAction* action = menu.addAction(text);
        action->setShortcut(key);
        // Queued: the menu is closed before anything else comes up.
        connect(action, &QAction::triggered, this, run, Qt::QueuedConnection);
    };
    add(Text::tr("Открыть"), QKeySequence(Qt::Key_Enter), &FindPane::choose);
    if (const QString uses = usesEntry(found->table); !uses.isEmpty())
        add(uses, keys::sequences(*keys::command(QLatin1String(keys::uses))).first(),
            &FindPane::askForUses);
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

// ---------------------------------------------------------------------------------------------
// Keys and focus

bool FindPane::takeKey(const QKeyEvent& event) {
    if (asksForContextMenu(event)) {
        openContextMenu(*m_view);
        return true;
    }
    if (keys::matches(event, *keys::command(QLatin1String(keys::uses)))) {
        askForUses();
        return true;
    }
    switch (event.key()) {
    case Qt::Key_Escape:
        dismiss();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Whoever types faster than the answer comes means that answer.
        if (m_isWhole)
            choose();
        else
            m_choosesWhenFound = !m_text->text().trimmed().isEmpty();
        return true;
    default:
        return false;
    }
}

bool FindPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget()) {
        if (event->type() == QEvent::Resize && isVisible())
            place();
        return false;
    }
    // The platform asks before the key comes, and the field has a menu of its own.
    if (event->type() == QEvent::ContextMenu && asksForContextMenu(*event)) {
        openContextMenu(*m_view);
        return true;
    }
    if (event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    auto* press = static_cast<QKeyEvent*>(event);
    if (takeKey(*press))
        return true;
    const bool moves = press->key() == Qt::Key_Up || press->key() == Qt::Key_Down ||
                       press->key() == Qt::Key_PageUp || press->key() == Qt::Key_PageDown;
    if (watched == m_text && moves) {
        QApplication::sendEvent(m_view, event);
        return true;
    }
    return QFrame::eventFilter(watched, event);
}

/// What is used besides it takes it away; another window does not.
void FindPane::focusMoved(QWidget* now) {
    if (isVisible() && now && now->window() == window() && now != this && !isAncestorOf(now)) {
        m_cameFrom = now;
        dismiss();
    }
}

} // namespace orvo::app
