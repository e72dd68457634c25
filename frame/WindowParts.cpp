#include "frame/WindowParts.h"

#include "frame/FirstRow.h"
#include "frame/Keys.h"
#include "frame/RowDelegate.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <vector>

namespace orvo {
namespace {

constexpr int imageSize = 16;

QtMessageHandler previousHandler = nullptr;

void passAllButUnmatchedSlots(QtMsgType type, const QMessageLogContext& context,
                              const QString& text) {
    if (text.startsWith(QLatin1String("QMetaObject::connectSlotsByName: No matching signal")))
        return;
    if (previousHandler)
        previousHandler(type, context, text);
}

/// Expands a row and all folders below it, with one layout at the end.
void expandBelow(QTreeView& view, const QModelIndex& top) {
    view.expandRecursively(top, 0);
    const QAbstractItemModel& model = *view.model();
    std::vector<QModelIndex> pending{top};
    while (!pending.empty()) {
        const QModelIndex parent = pending.back();
        pending.pop_back();
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex child = model.index(row, 0, parent);
            if (!model.hasChildren(child))
                continue;
            view.expand(child);
            pending.push_back(child);
        }
    }
}

/// The key "*" expands what has rows below it and nothing else. The view itself would keep in mind
/// that a row without any is expanded too: a persistent index for every row of the tree, all of
/// which are looked at with each row that comes or goes.
class ExpandAllKeyFilter : public QObject {
public:
    explicit ExpandAllKeyFilter(QTreeView* view) : QObject(view) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* view = qobject_cast<QTreeView*>(watched);
        if (!view || event->type() != QEvent::KeyPress ||
            static_cast<QKeyEvent*>(event)->key() != Qt::Key_Asterisk)
            return false;
        const QModelIndex current = view->currentIndex().siblingAtColumn(0);
        if (!current.isValid() || !view->itemsExpandable())
            return false;
        expandBelow(*view, current);
        return true;
    }
};

QAction* actionOf(const QMenu& menu, const char* command) {
    for (QAction* action : menu.actions())
        if (action->property(keys::commandProperty).toString() == QLatin1String(command))
            return action;
    return nullptr;
}

/// The action of the host for a record; null if there is none. The menu's.
QAction* recordAction(QMenu& menu, COrvoCliApp& app, const RecordName& record,
                      const char* command) {
    addRecordActions(app, menu, record);
    return actionOf(menu, command);
}

/// The values of a passport have what its captions leave. Its header is hidden, and does not learn
/// itself when it is resized.
class ValueColumn : public QObject {
public:
    explicit ValueColumn(QTreeView* view) : QObject(view), m_view(*view) {
        view->viewport()->installEventFilter(this);
        connect(view->header(), &QHeaderView::sectionResized, this, [this](int column) {
            if (column == 0)
                fit();
        });
        fit();
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Resize) // the view places its header after this
            QMetaObject::invokeMethod(
                this, [this] { fit(); }, Qt::QueuedConnection);
        return false;
    }

private:
    void fit() { m_view.setColumnWidth(1, m_view.viewport()->width() - m_view.columnWidth(0)); }

    QTreeView& m_view;
};

} // namespace

void setupForm(const std::function<void()>& setupUi) {
    const QtMessageHandler outer = previousHandler;
    previousHandler = qInstallMessageHandler(passAllButUnmatchedSlots);
    setupUi();
    qInstallMessageHandler(previousHandler);
    previousHandler = outer;
}

QIcon image(const char* name) {
    return QIcon(QStringLiteral(":/res/%1.png").arg(QLatin1String(name)));
}

void arrangeToolBar(QToolBar* bar) {
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setIconSize(QSize(imageSize, imageSize));
    bar->setAccessibleName(Text::tr("Панель инструментов"));
}

QToolButton* makeToolButton(QWidget* owner, const char* imageName, const QString& text) {
    auto* button = new QToolButton(owner);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setIcon(image(imageName));
    button->setText(text);
    return button;
}

QMenu* addInstantMenu(QToolButton* button, const QList<QAction*>& actions) {
    auto* menu = new QMenu(button);
    for (QAction* action : actions)
        menu->addAction(action);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMenu(menu);
    return menu;
}

const QString& treeStyleSheet() {
    static const QString sheet = QStringLiteral(
        "QTreeView::branch:has-children:!has-siblings:closed{border-image: none;"
        "image:url(:/res/node_branch_close1.png);}"
        "QTreeView::branch:closed:has-children:has-siblings{border-image: none;"
        "image:url(:/res/node_branch_close.png);}"
        "QTreeView::branch:open:has-children:!has-siblings{border-image: none; "
        "image:url(:/res/node_branch_open1.png);}"
        "QTreeView::branch:open:has-children:has-siblings{border-image: none; "
        "image:url(:/res/node_branch_open.png);}"
        "QTreeView::branch:has-siblings:adjoins-item{border-image:url(:/res/branch_more.png)}"
        "QTreeView::branch:!has-children:!has-siblings:adjoins-item{"
        "border-image:url(:/res/branch_end.png)}"
        "QTreeView::branch:has-siblings:!adjoins-item{border-image:url(:/res/vline.png)}");
    return sheet;
}

void arrangeTree(QTreeView* view, bool styled) {
    if (styled)
        view->setStyleSheet(treeStyleSheet());
    view->setTextElideMode(Qt::ElideNone);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setUniformRowHeights(true);
    view->setIconSize(QSize(imageSize, imageSize));
    // The branch images are drawn for this width: a wider step would blur their lines.
    view->setIndentation(imageSize);
    view->installEventFilter(new ExpandAllKeyFilter(view)); // the view's child
    view->setItemDelegate(new RowDelegate(view));           // likewise
    new FirstRow(view, FirstRow::KeysAlone);                // likewise
}

void showMarks(QTreeView* view, const COrvoCliMod& module, RowDelegate::RecordOf recordOf) {
    if (auto* delegate = qobject_cast<RowDelegate*>(view->itemDelegate()))
        delegate->showMarks(module, std::move(recordOf));
}

std::function<QString(const QModelIndex&)> spokenMarks(const QTreeView& view) {
    const QPointer<const RowDelegate> delegate(qobject_cast<RowDelegate*>(view.itemDelegate()));
    return [delegate](const QModelIndex& row) {
        return delegate ? delegate->spokenMark(row) : QString();
    };
}

void keepFromWriting(QTreeView* view) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setDragEnabled(false);
    view->setAcceptDrops(false);
}

void keepOff(const QList<QAction*>& actions) {
    for (QAction* action : actions) {
        action->setEnabled(false);
        QObject::connect(action, &QAction::changed, action, [action] {
            if (action->isEnabled())
                action->setEnabled(false);
        });
    }
}

void hideColumns(QTreeView* view, int first, int last) {
    for (int column = first; column <= last; ++column)
        view->setColumnHidden(column, true);
}

QStringList passportColumns() {
    return {QStringLiteral("caption"),  QStringLiteral("value"), QStringLiteral("editor"),
            QStringLiteral("readonly"), QStringLiteral("name"),  QStringLiteral("iseditrow")};
}

void arrangePassport(QTreeView* view) {
    constexpr int captionWidth = 200;
    view->setEditTriggers(QAbstractItemView::AllEditTriggers);
    view->setHeaderHidden(true);
    view->header()->setStretchLastSection(false); // before it counts what is hidden
    hideColumns(view, 2, 5);
    view->setColumnWidth(0, captionWidth);
    new ValueColumn(view); // the view's child
}

void addRecordActions(COrvoCliApp& app, QMenu& menu, const RecordName& record) {
    if (record.key.isEmpty())
        return;
    app.addRecordActions(&menu, record.table, record.key);
    // The host knows no kinds.
    if (QAction* versions = actionOf(menu, keys::versions))
        versions->setEnabled(record.hasContents);
}

bool offersForRecord(COrvoCliApp& app, const RecordName& record, const char* command) {
    QMenu menu;
    const QAction* action = recordAction(menu, app, record, command);
    return action && action->isEnabled();
}

void runForRecord(COrvoCliApp& app, const RecordName& record, const char* command) {
    QMenu menu;
    if (QAction* action = recordAction(menu, app, record, command))
        action->trigger();
}

QString iconsPath(const COrvoCliMod& module) {
    return module.m_paths->workDir + QLatin1String(mirrorPath) + QLatin1String(iconFolder) +
           QLatin1Char('/');
}

QString nameLines(const QStringList& names, int count) {
    constexpr int shownAtMost = 10;
    constexpr int longest = 300;
    QStringList lines;
    for (const QString& name : names.mid(0, shownAtMost)) {
        const QString line = name.simplified();
        // Two of the same path differ at the end, two of the same kind at the beginning.
        lines << (line.size() > longest
                      ? line.left(longest / 2 - 1) + QChar(0x2026) + line.right(longest / 2)
                      : line);
    }
    if (const int all = std::max<int>(names.size(), count); all > lines.size())
        lines << Text::tr("и ещё %1").arg(all - lines.size());
    return lines.join(QLatin1Char('\n'));
}

} // namespace orvo
