#include "picker/PopObjectList.h"

#include "frame/ContextMenuKey.h"
#include "frame/FirstRow.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "models/TreeSearchBar.h"
#include "picker/AddButton.h"
#include "ui_PopObjectList.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDrag>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QShowEvent>
#include <QWindow>

#include <functional>

using orvo::Kind;
using orvo::PickColumn;

namespace {

const QStringList& columnTitles() {
    static const QStringList titles{orvo::Text::tr("Имя"),
                                    orvo::Text::tr("Описание"),
                                    QStringLiteral("UserBlock"),
                                    QStringLiteral("DateBlock"),
                                    QString::fromLatin1(orvo::field::KeyLink),
                                    QStringLiteral("IsFolder"),
                                    QStringLiteral("Blocked")};
    return titles;
}

QString filesPath(const QObject* owner) {
    const auto* module = qobject_cast<const COrvoCliMod*>(owner);
    return module ? module->m_paths->workDir + QString::fromLatin1(orvo::mirrorPath) : QString();
}

} // namespace

CPopObjectList::CPopObjectList(QMainWindow* parent)
    : CPopTemplate(parent, -1)
    , m_ui(new Ui_CPopObjectList)
    , codec(nullptr)
    , treeModel(nullptr) {
    orvo::setupForm([this] { m_ui->setupUi(this); });
    codec = orvo::recordCodec();
    m_ui->tvObj->setStyleSheet(orvo::treeStyleSheet());
    m_ui->tvObj->setTextElideMode(Qt::ElideNone);
    m_ui->tvObj->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_ui->tvObj->setAccessibleName(tr("Список ресурсов"));
    m_ui->tvObj->setUniformRowHeights(true);
    m_addButton = new orvo::AddButton(m_ui->tvObj);
    m_ui->tvObj->setItemDelegate(m_addButton);
    m_model = std::make_unique<PopTreeModel>(columnTitles(), filesPath(parent), this);
    treeModel = m_model.get();
    m_ui->tvObj->setModel(treeModel);
    m_ui->tvObj->setColumnWidth(PickColumn::Name, 300);
    for (QObject* watched :
         {static_cast<QObject*>(m_ui->tvObj), static_cast<QObject*>(m_ui->tvObj->viewport()),
          static_cast<QObject*>(m_ui->btnOK), static_cast<QObject*>(m_ui->btnCancel)})
        watched->installEventFilter(this);
    const auto& titles = columnTitles();
    m_search = new orvo::TreeSearchBar(m_ui->tvObj, *m_model, PickColumn::KeyLink,
                                       {{PickColumn::Name, titles[PickColumn::Name]},
                                        {PickColumn::Caption, titles[PickColumn::Caption]}});
    m_search->setOpensOnTyping(true);
    m_search->setReturnChooses(true);
    m_search->setTriesAllColumns(true);
    connect(m_search, &orvo::TreeSearchBar::chosen, this, &CPopObjectList::chooseCurrent);
    m_ui->tvObj->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_ui->tvObj, &QTreeView::customContextMenuRequested, this,
            &CPopObjectList::showContextMenu);
    new orvo::ContextMenuKey(m_ui->tvObj); // these: the view's children
    new orvo::FirstRow(m_ui->tvObj);
    orvo::onSearchKeys(*this, *m_search);
    addPaletteKeys();
}

CPopObjectList::~CPopObjectList() {
    // The view must not outlive what it shows.
    m_ui->tvObj->setModel(nullptr);
}

QTreeView* CPopObjectList::tvObj() const {
    return m_ui->tvObj;
}

void CPopObjectList::reloadAndShow() {
    hide();
    show();
    raise();
    activateWindow();
}

void CPopObjectList::showEvent(QShowEvent* event) {
    if (m_comesBack)
        return QWidget::showEvent(event);
    CPopTemplate::showEvent(event);
    // A window that the desktop brings back keeps what it shows.
    if (event->spontaneous())
        return;
    giveWayToThis(true);
    m_isTouched = false;
    m_search->dismiss();
    m_ui->btnCancel->setFocus(Qt::OtherFocusReason);
    load();
    if (m_isPalette)
        placePalette();
}

void CPopObjectList::hideEvent(QHideEvent* event) {
    if (!event->spontaneous()) {
        rememberOpen();
        giveWayToThis(false);
    }
    CPopTemplate::hideEvent(event);
}

/// The palette beside a picker, which is for one answer.
void CPopObjectList::giveWayToThis(bool on) {
    if (m_isPalette || !parentWidget() || on == m_covers)
        return;
    m_covers = on;
    for (CPopObjectList* other :
         parentWidget()->findChildren<CPopObjectList*>(QString(), Qt::FindDirectChildrenOnly))
        if (other->isPalette() && (on ? other->isVisible() : other->m_coverings > 0))
            other->giveWay(on);
}

void CPopObjectList::showTitle() {
    const bool icons = orvo::sameText(sourceName, QString::fromLatin1(orvo::iconFolder));
    const orvo::ResourceKind* kind = orvo::resourceKind(objectType);
    const QString title = kind && kind->choice ? orvo::Text::tr(kind->choice)
                          : icons              ? tr("Выбор иконок АРМ")
                                               : tr("Выбор файлов");
    setAccessibleName(title);
    if (QWindow* window = windowHandle())
        window->setTitle(title);
}

QString CPopObjectList::listName() const {
    return QString::number(objectType) + QLatin1Char('/') + sourceName.toLower();
}

void CPopObjectList::rememberOpen() {
    if (m_shown.isEmpty())
        return;
    QSet<QString>& keys = m_open[m_shown];
    keys.clear();
    for (QModelIndex row = treeModel->index(0, 0); row.isValid();
         row = m_ui->tvObj->indexBelow(row))
        if (m_ui->tvObj->isExpanded(row))
            keys << treeModel->getItemKeyLink(row);
}

void CPopObjectList::openRemembered() {
    constexpr int few = 100; // rows that a list may have to be shown whole at first
    m_shown = listName();
    const auto known = m_open.constFind(m_shown);
    if (known == m_open.constEnd()) {
        int rows = 0;
        const std::function<void(const QModelIndex&)> count = [&](const QModelIndex& parent) {
            for (int row = 0; row < treeModel->rowCount(parent) && rows <= few; ++row, ++rows)
                count(treeModel->index(row, 0, parent));
        };
        count({});
        if (rows > few)
            return;
        m_ui->tvObj->expandAll();
    } else {
        for (QModelIndex row = treeModel->index(0, 0); row.isValid();
             row = m_ui->tvObj->indexBelow(row))
            if (known->contains(treeModel->getItemKeyLink(row)))
                m_ui->tvObj->expand(row);
    }
    // What was selected stays in sight.
    const QModelIndexList selected = m_ui->tvObj->selectionModel()->selectedRows();
    if (!selected.isEmpty())
        m_ui->tvObj->scrollTo(selected.first(), QAbstractItemView::PositionAtCenter);
}

/// The resource of a row; without a key for a folder.
orvo::RecordName CPopObjectList::recordOf(const QModelIndex& row) const {
    return {QString::fromLatin1(orvo::table::MenuResource),
            row.isValid() && !m_model->itemIsFolder(row) ? m_model->getItemKeyLink(row) : QString(),
            orvo::hasContents(objectType)};
}

void CPopObjectList::showContextMenu(const QPoint& point) {
    const auto* owner = qobject_cast<COrvoCliMod*>(parentWidget());
    const orvo::RecordName record = recordOf(m_ui->tvObj->indexAt(point));
    QMenu menu;
    if (owner)
        orvo::addRecordActions(*owner->m_app, menu, record);
    if (!menu.isEmpty())
        menu.exec(m_ui->tvObj->viewport()->mapToGlobal(point));
}

/// What the context menu shows with keys is done by these.
bool CPopObjectList::runRecordKey(const QKeyEvent& key) {
    // The window system makes a call for the menu of the other key itself.
    if (key.key() != Qt::Key_Menu &&
        orvo::keys::matches(key, *orvo::keys::command(QLatin1String(orvo::keys::contextMenu)))) {
        const QModelIndex row = m_ui->tvObj->currentIndex();
        m_ui->tvObj->scrollTo(row);
        showContextMenu(m_ui->tvObj->visualRect(row).center());
        return true;
    }
    const auto* owner = qobject_cast<COrvoCliMod*>(parentWidget());
    for (const char* id : orvo::keys::recordCommands)
        if (owner && orvo::keys::matches(key, *orvo::keys::command(QLatin1String(id)))) {
            orvo::runForRecord(*owner->m_app, recordOf(m_ui->tvObj->currentIndex()), id);
            return true;
        }
    return false;
}

bool CPopObjectList::choose(const QModelIndex& row) {
    if (!row.isValid() || treeModel->itemIsFolder(row))
        return false;
    if (!m_ui->tvObj->selectionModel()->isSelected(row))
        m_ui->tvObj->selectionModel()->select(row, QItemSelectionModel::ClearAndSelect |
                                                       QItemSelectionModel::Rows);
    on_btnOK_clicked();
    return true;
}

bool CPopObjectList::treeMouse(QEvent* event) {
    const auto* mouse = static_cast<QMouseEvent*>(event);
    const QModelIndex row = m_ui->tvObj->indexAt(mouse->pos()).siblingAtColumn(PickColumn::Name);
    switch (event->type()) {
    case QEvent::MouseButtonDblClick:
        m_mayDrag = false;
        // The first click on the button has added it.
        return mouse->button() == Qt::LeftButton &&
               (m_addButton->placeOn(row).contains(mouse->pos()) || choose(row));
    case QEvent::MouseButtonPress:
        m_mayDrag = mouse->button() == Qt::LeftButton && mouse->modifiers() == Qt::NoModifier &&
                    row.isValid() && !treeModel->itemIsFolder(row) && objectType != Kind::File;
        m_pressed = mouse->pos();
        if (m_mayDrag && m_addButton->placeOn(row).contains(mouse->pos())) {
            m_mayDrag = false;
            m_ui->tvObj->setCurrentIndex(row); // alone, whatever else was selected
            return choose(row);
        }
        // What is selected already is dragged together.
        return m_mayDrag && m_ui->tvObj->selectionModel()->isSelected(row) &&
               m_ui->tvObj->selectionModel()->selectedRows().size() > 1;
    case QEvent::MouseMove:
        if (!m_mayDrag || !(mouse->buttons() & Qt::LeftButton))
            return false;
        if ((mouse->pos() - m_pressed).manhattanLength() >= QApplication::startDragDistance()) {
            m_mayDrag = false;
            startDrag();
        }
        return true;
    default:
        return false;
    }
}

void CPopObjectList::startDrag() {
    QByteArray keys;
    for (const QModelIndex& row : m_ui->tvObj->selectionModel()->selectedRows(PickColumn::Name))
        if (!treeModel->itemIsFolder(row))
            keys += treeModel->getItemKeyLink(row).toUtf8() + ';';
    if (keys.isEmpty())
        return;
    auto* dragged = new QMimeData; // the drag's
    dragged->setData(QLatin1String(pickedMime), keys);
    auto* drag = new QDrag(m_ui->tvObj); // deletes itself
    drag->setMimeData(dragged);
    drag->exec(Qt::CopyAction);
}

bool CPopObjectList::treeKey(const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)
        return false;
    chooseCurrent();
    return true;
}

void CPopObjectList::chooseCurrent() {
    QTreeView* tree = m_ui->tvObj;
    const QModelIndexList selected = tree->selectionModel()->selectedRows();
    const QModelIndex row =
        selected.contains(tree->currentIndex().siblingAtColumn(0)) || selected.isEmpty()
            ? tree->currentIndex().siblingAtColumn(0)
            : selected.first();
    if (row.isValid() && !choose(row))
        tree->setExpanded(row, !tree->isExpanded(row));
}

bool CPopObjectList::eventFilter(QObject* watched, QEvent* event) {
    QTreeView* tree = m_ui->tvObj;
    if (watched == tree->viewport())
        switch (event->type()) {
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonPress:
        case QEvent::MouseMove:
            return treeMouse(event);
        default:
            return false;
        }
    if (event->type() != QEvent::KeyPress)
        return CPopTemplate::eventFilter(watched, event);
    auto& key = *static_cast<QKeyEvent*>(event);
    if (runRecordKey(key))
        return true;
    if (watched == tree)
        return treeKey(key);
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // On a button that the user went to it is that button; at first Cancel merely has the
        // focus.
        if (m_isTouched || watched == m_ui->btnOK) {
            static_cast<QAbstractButton*>(watched)->click();
            return true;
        }
        return treeKey(key);
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        m_isTouched = true;
        return false;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End: {
        const bool isFirst =
            !tree->currentIndex().isValid(); // it takes its first row with the focus
        tree->setFocus(Qt::ShortcutFocusReason);
        if (!isFirst)
            QCoreApplication::sendEvent(tree, event);
        return true;
    }
    default:
        return m_search->openOn(key);
    }
}

void CPopObjectList::on_btnOK_clicked() {
    const QModelIndexList chosen = m_ui->tvObj->selectionModel()->selectedIndexes();
    if (chosen.isEmpty()) {
        hide();
        return;
    }
    const QModelIndex first = chosen.first();
    chosenKey = first.sibling(first.row(), PickColumn::KeyLink).data().toString();
    chosenName = first.sibling(first.row(), PickColumn::Name).data().toString();
    emit btnOK_pressed();
    if (!m_isPalette)
        hide();
}

void CPopObjectList::on_btnCancel_clicked() {
    hide();
}
