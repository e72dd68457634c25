#include "apps/client/find/UsesPane.h"

#include "apps/client/Look.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::app {

UsesPane::UsesPane(UsesFeed& feed, const QString& iconsPath, QWidget* parent)
    : QWidget(parent)
    , m_feed(feed)
    , m_model(iconsPath)
    , m_note(new QLabel(this))
    , m_view(new QTreeView(this))
    , m_show(new QPushButton(Text::tr("Показать"), this)) {
    setObjectName(QStringLiteral("usesPane"));
    m_note->setObjectName(QStringLiteral("usesNote"));
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    m_note->setText(Text::tr("Выберите «Где используется» в контекстном меню ресурса, формы, "
                             "файла или элемента меню."));
    m_view->setObjectName(QStringLiteral("usesList"));
    m_view->setAccessibleName(Text::tr("Где используется"));
    m_view->setModel(&m_model);
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->header()->resizeSection(FindModel::Name, 260);
    m_view->header()->resizeSection(FindModel::Object, 150);
    m_view->header()->resizeSection(FindModel::Noun, 130);
    m_show->setObjectName(QStringLiteral("usesShow"));
    m_show->setToolTip(Text::tr("Открыть редактор на этой строке (Enter)"));
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(m_view, 1);
    QHBoxLayout* row = addPaneRow(*all);
    row->addWidget(m_show);
    row->addWidget(m_note, 1);
    setFocusProxy(m_view);
    connect(m_show, &QPushButton::clicked, this, &UsesPane::showCurrent);
    connect(m_view, &QTreeView::activated, this, &UsesPane::showCurrent);
    connect(m_view, &QTreeView::customContextMenuRequested, this, &UsesPane::showContextMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &UsesPane::updateActions);
    updateActions();
}

UsesPane::~UsesPane() {
    delete m_view; // before the model that it shows
}

void UsesPane::showUses(const catalogue::Subject& subject) {
    m_subjects = {subject};
    m_what.clear();
    m_model.setFound({});
    m_note->setText(Text::tr("Записи читаются…"));
    updateActions();
    if (isVisible())
        watch();
}

void UsesPane::watch() {
    if (!m_subjects.empty())
        m_feed.watch(this, m_subjects, mostShown,
                     [this](const catalogue::Uses& uses) { take(uses); });
}

void UsesPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    watch();
}

void UsesPane::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_feed.forget(this);
}

/// The row that is current stays so while it is listed.
void UsesPane::take(const catalogue::Uses& uses) {
    const bool first = m_model.rowCount() == 0;
    const int before = m_view->currentIndex().row();
    const catalogue::Found* current = m_model.at(before);
    const QString table = current ? current->table : QString();
    const QString key = current ? current->key : QString();
    m_model.setFound(uses.places);
    const int row = first ? 0 : m_model.rowOf(table, key);
    m_view->setCurrentIndex(m_model.index(row, 0));
    note(uses);
    updateActions();
    // Of the element that was asked about others may make something else.
    if (const catalogue::Subject meant = uses.meant; m_subjects.front() != meant) {
        m_subjects = {meant};
        watch();
    }
}

void UsesPane::note(const catalogue::Uses& uses) {
    if (!uses.what.isEmpty())
        m_what = uses.what;
    QString text = oneLine(m_what.isEmpty() ? Text::tr("запись") : m_what);
    text[0] = text[0].toUpper();
    if (!uses.exists)
        text += Text::tr(" — записи больше нет");
    text += QStringLiteral(": ") + catalogue::usesWords(uses);
    if (uses.count > uses.places.size())
        text += Text::tr("; показаны первые %1").arg(uses.places.size());
    m_note->setText(text + QLatin1Char('.'));
}

void UsesPane::updateActions() {
    m_show->setEnabled(m_model.at(m_view->currentIndex().row()) != nullptr);
}

void UsesPane::showCurrent() {
    if (const catalogue::Found* found = m_model.at(m_view->currentIndex().row()))
        emit showRequested(found->table, found->key, {});
}

void UsesPane::showContextMenu(const QPoint& point) {
    if (!m_show->isEnabled())
        return;
    QMenu menu;
    QAction* show = menu.addAction(m_show->text());
    show->setShortcut(QKeySequence(Qt::Key_Enter));
    // Queued: the menu is closed before anything else comes up.
    connect(show, &QAction::triggered, this, &UsesPane::showCurrent, Qt::QueuedConnection);
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

} // namespace orvo::app
