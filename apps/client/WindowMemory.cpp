#include "apps/client/WindowMemory.h"

#include <QChildEvent>
#include <QCryptographicHash>
#include <QDockWidget>
#include <QHeaderView>
#include <QMainWindow>
#include <QScrollBar>
#include <QSet>
#include <QSettings>
#include <QSplitter>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <functional>
#include <vector>

namespace orvo::app {

namespace {

/// The role by which every tree of the editors tells the key of a row.
constexpr int keyRole = Qt::AccessibleDescriptionRole;
/// More is not written, or not believed.
constexpr int mostOpenRows = 2000;
constexpr int mostRowsLookedAt = 200000;
constexpr int deepest = 1000;
constexpr int leastWidth = 16, greatestWidth = 4000;
constexpr char focusKey[] = "focus"; // of a module: its tree that had the focus there
constexpr int dockLayout = 1;        ///< to be raised when the docks' names change

QString keyOf(const QModelIndex& row) {
    return row.data(keyRole).toString();
}

/// The trees that the user arranges, from left to right: what an earlier one shows as current may
/// fill a later one. Those that edit whatever becomes current show a single record.
std::vector<QTreeView*> treesOf(const QWidget& module) {
    std::vector<QTreeView*> trees;
    for (QTreeView* tree : module.findChildren<QTreeView*>())
        if (tree->model() && !tree->objectName().isEmpty() && tree->window() == module.window())
            trees.push_back(tree);
    const auto left = [&](const QTreeView* tree) { return tree->mapTo(&module, QPoint()).x(); };
    std::stable_sort(trees.begin(), trees.end(), [&](const QTreeView* one, const QTreeView* other) {
        return left(one) < left(other);
    });
    return trees;
}

/// Those in pop-ups of the module.
std::vector<const QTreeView*> popupTreesOf(const QWidget& module) {
    std::vector<const QTreeView*> trees;
    for (const QTreeView* tree : module.findChildren<QTreeView*>())
        if (tree->model() && !tree->objectName().isEmpty() && tree->window() != module.window())
            trees.push_back(tree);
    return trees;
}

bool showsOneRecord(const QTreeView& tree) {
    return tree.editTriggers() & QAbstractItemView::CurrentChanged;
}

/// The last one that is seen has what the others leave, if the header has it so.
bool isStretched(const QHeaderView& header, int column) {
    if (!header.stretchLastSection())
        return false;
    for (int place = header.visualIndex(column) + 1; place < header.count(); ++place)
        if (!header.isSectionHidden(header.logicalIndex(place)))
            return false;
    return true;
}

bool hasOwnWidth(const QHeaderView& header, int column) {
    return !header.isSectionHidden(column) && !isStretched(header, column) &&
           header.sectionResizeMode(column) == QHeaderView::Interactive;
}

/// A column that is hidden has its width when it is shown.
void setWidths(QHeaderView& header, const QStringList& widths) {
    if (widths.size() != header.count())
        return; // of another version
    for (int column = 0; column < header.count(); ++column)
        if (const int width = widths[column].toInt();
            width > 0 && (hasOwnWidth(header, column) || header.isSectionHidden(column)))
            header.resizeSection(column, std::clamp(width, leastWidth, greatestWidth));
}

// The widths of a tree are in the group of its name. A column that is hidden, or has what others
// leave, keeps the one it had: a list may show fewer columns of one kind than of another.

void saveColumns(QSettings& settings, const QTreeView& tree) {
    const QHeaderView& header = *tree.header();
    const QString name = tree.objectName() + QLatin1String("/columns");
    const QStringList before = settings.value(name).toStringList();
    QStringList widths;
    for (int column = 0; column < header.count(); ++column)
        widths << (hasOwnWidth(header, column)       ? QString::number(header.sectionSize(column))
                   : before.size() == header.count() ? before[column]
                                                     : QString::number(0));
    settings.setValue(name, widths);
}

/// False if none are known.
bool restoreColumns(const QSettings& settings, const QTreeView& tree) {
    const QString name = tree.objectName() + QLatin1String("/columns");
    setWidths(*tree.header(), settings.value(name).toStringList());
    return settings.contains(name);
}

/// Visits the rows that stand open below each other; `open` tells whether a row does.
void walkOpen(const QAbstractItemModel& model,
              const std::function<bool(const QModelIndex&)>& open) {
    int looked = 0;
    const std::function<void(const QModelIndex&, int)> walk = [&](const QModelIndex& parent,
                                                                  int depth) {
        const int rows = model.rowCount(parent);
        for (int row = 0; row < rows && looked < mostRowsLookedAt && depth < deepest; ++row) {
            ++looked;
            const QModelIndex index = model.index(row, 0, parent);
            if (model.hasChildren(index) && open(index))
                walk(index, depth + 1);
        }
    };
    walk({}, 0);
}

QStringList openRows(const QTreeView& tree) {
    QStringList keys;
    walkOpen(*tree.model(), [&](const QModelIndex& row) {
        const QString key = keyOf(row);
        const bool kept = tree.isExpanded(row) && !key.isEmpty() && keys.size() < mostOpenRows;
        if (kept)
            keys << key;
        return kept;
    });
    return keys;
}

void open(QTreeView& tree, const QStringList& keys) {
    const QSet<QString> wanted(keys.begin(), keys.end());
    walkOpen(*tree.model(), [&](const QModelIndex& row) {
        const bool expand = wanted.contains(keyOf(row));
        if (expand)
            tree.expand(row);
        return expand;
    });
}

/// Keys from the top down to the current row; empty if there is none, or it has no key yet.
QStringList currentPath(const QTreeView& tree) {
    QStringList path;
    for (QModelIndex row = tree.currentIndex().siblingAtColumn(0); row.isValid();
         row = row.parent()) {
        if (keyOf(row).isEmpty())
            return {};
        path.prepend(keyOf(row));
    }
    return path;
}

void choose(QTreeView& tree, const QStringList& path) {
    QModelIndex found;
    for (const QString& key : path) {
        const QAbstractItemModel& model = *tree.model();
        const int rows = std::min(model.rowCount(found), mostRowsLookedAt);
        int row = 0;
        while (row < rows && keyOf(model.index(row, 0, found)) != key)
            ++row;
        if (row == rows)
            break;
        found = model.index(row, 0, found);
    }
    if (!found.isValid())
        return;
    tree.setCurrentIndex(found);
    tree.scrollTo(found);
}

/// All columns with a title become visible at once: the widest give way. In a narrow view the names
/// stay readable rather, and the last columns are beyond its edge.
void fitColumns(QTreeView& tree) {
    QHeaderView& header = *tree.header();
    const auto leastOf = [&header](int column) {
        constexpr int name = 220, other = 140;
        return header.visualIndex(column) == 0 ? name : other;
    };
    if (header.count() == 0)
        return;
    // The bar for scrolling comes with the first folders that are opened.
    const int bar =
        tree.verticalScrollBar()->isVisible() ? 0 : tree.verticalScrollBar()->sizeHint().width();
    // As wide as it is wanted, not as wide as there was room.
    const bool stretches = header.stretchLastSection();
    header.setStretchLastSection(false);
    for (int step = 0; step < header.count(); ++step) {
        int needed = 0, widest = -1;
        for (int column = 0; column < header.count(); ++column) {
            if (header.isSectionHidden(column))
                continue;
            const bool own = hasOwnWidth(header, column);
            needed += own ? header.sectionSize(column) : header.sectionSizeHint(column);
            if (own && header.sectionSize(column) > leastOf(column) &&
                (widest < 0 || header.sectionSize(column) > header.sectionSize(widest)))
                widest = column;
        }
        const int excess = needed + bar - tree.viewport()->width();
        if (excess <= 0 || widest < 0)
            break;
        // The two widest share what is too much.
        header.resizeSection(
            widest, std::max(leastOf(widest),
                             header.sectionSize(widest) - (step == 0 ? (excess + 1) / 2 : excess)));
    }
    header.setStretchLastSection(stretches);
}

/// The captions of a passport leave half of its width to the values, however narrow it becomes.
class NarrowCaptions : public QObject {
public:
    explicit NarrowCaptions(QTreeView* passport)
        : QObject(passport)
        , m_passport(*passport)
        , m_wanted(passport->columnWidth(0)) {
        passport->viewport()->installEventFilter(this);
        fit();
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Resize)
            fit();
        return false;
    }

private:
    void fit() {
        m_passport.setColumnWidth(0, std::min(m_wanted, m_passport.viewport()->width() / 2));
    }

    QTreeView& m_passport;
    const int m_wanted;
};

/// A tree that has not been on the screen since it was made. It is fitted to its width when it is:
/// until then that is not known, and its widths are nobody's wish.
class FitWhenShown : public QObject {
public:
    /// It is the tree's child, for as long as the tree waits.
    explicit FitWhenShown(QTreeView* tree) : QObject(tree) { tree->installEventFilter(this); }

    static bool waits(const QTreeView& tree) {
        const QObjectList& children = tree.children();
        return std::any_of(children.begin(), children.end(), [](const QObject* child) {
            return dynamic_cast<const FitWhenShown*>(child) != nullptr;
        });
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, [this, watched] {
                fitColumns(*static_cast<QTreeView*>(watched));
                deleteLater();
            });
        }
        return false;
    }
};

void arrangeTree(QTreeView& tree, bool areWidthsKnown) {
    if (tree.isHeaderHidden()) { // nobody can draw its columns
        if (showsOneRecord(tree))
            new NarrowCaptions(&tree); // the tree's child
    } else if (!areWidthsKnown) {
        if (tree.isVisible())
            fitColumns(tree);
        else
            new FitWhenShown(&tree); // the tree's child
    }
}

/// Gives the columns of a pop-up their widths when that is first shown, since it is made when it is
/// needed, and keeps them whenever it is hidden: the next time it may show others.
class PopupColumns : public QObject {
public:
    PopupColumns(QWidget* module, QString group) : QObject(module), m_group(std::move(group)) {
        module->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != parent()) {
            if (event->type() == QEvent::Hide)
                save(*qobject_cast<QWidget*>(watched));
            return false;
        }
        if (event->type() != QEvent::ChildPolished)
            return false;
        auto* popup = qobject_cast<QWidget*>(static_cast<const QChildEvent*>(event)->child());
        if (!popup || !popup->isWindow())
            return false;
        QSettings settings = clientSettings();
        settings.beginGroup(m_group);
        for (const QTreeView* tree : popup->findChildren<QTreeView*>())
            restoreColumns(settings, *tree);
        popup->installEventFilter(this);
        return false;
    }

private:
    void save(const QWidget& popup) const {
        QSettings settings = clientSettings();
        settings.beginGroup(m_group);
        for (const QTreeView* tree : popup.findChildren<QTreeView*>())
            if (tree->model() && !tree->objectName().isEmpty())
                saveColumns(settings, *tree);
    }

    const QString m_group;
};

QString paneGroup(const QString& window, const QWidget& pane) {
    return window + QLatin1String("/pane-") + pane.objectName();
}

} // namespace

QSettings clientSettings() {
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvo"),
            QStringLiteral("orvo-client")};
}

void arrangeAsAtFirst(QWidget& module) {
    for (QTreeView* tree : treesOf(module))
        arrangeTree(*tree, false);
}

WindowMemory::WindowMemory(const QString& store, const QString& login)
    : m_group(QLatin1String("window-") +
              QString::fromLatin1(QCryptographicHash::hash((store + QChar(0) + login).toUtf8(),
                                                           QCryptographicHash::Sha256)
                                      .toHex()
                                      .left(16))) {}

void WindowMemory::saveWindow(const QMainWindow& window, int tab,
                              const QStringList& editorsOut) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.setValue(QStringLiteral("geometry"), window.saveGeometry());
    settings.setValue(QStringLiteral("docks"), window.saveState(dockLayout));
    settings.setValue(QStringLiteral("tab"), tab);
    settings.setValue(QStringLiteral("editorsOut"), editorsOut);
    for (const QDockWidget* pane : window.findChildren<QDockWidget*>())
        savePane(*pane);
}

int WindowMemory::restoreWindow(QMainWindow& window) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    window.restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    window.restoreState(settings.value(QStringLiteral("docks")).toByteArray(), dockLayout);
    for (const QDockWidget* pane : window.findChildren<QDockWidget*>())
        restorePane(*pane);
    return settings.value(QStringLiteral("tab")).toInt();
}

QStringList WindowMemory::editorsOut() const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    return settings.value(QStringLiteral("editorsOut")).toStringList();
}

void WindowMemory::savePane(const QWidget& pane) const {
    QSettings settings = clientSettings();
    settings.beginGroup(paneGroup(m_group, pane));
    for (const QTreeView* tree : pane.findChildren<QTreeView*>())
        saveColumns(settings, *tree);
}

void WindowMemory::restorePane(const QWidget& pane) const {
    QSettings settings = clientSettings();
    settings.beginGroup(paneGroup(m_group, pane));
    for (const QTreeView* tree : pane.findChildren<QTreeView*>())
        restoreColumns(settings, *tree);
}

void WindowMemory::saveDesktop(const QString& key) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.setValue(QStringLiteral("desktop"), key);
}

QString WindowMemory::desktop() const {
    constexpr int longest = 256;
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    return settings.value(QStringLiteral("desktop")).toString().left(longest);
}

void WindowMemory::savePaneWidth(const QString& pane, int width) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.setValue(QStringLiteral("width-") + pane, width);
}

int WindowMemory::paneWidth(const QString& pane) const {
    constexpr int leastPane = 160;
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    const int width = settings.value(QStringLiteral("width-") + pane).toInt();
    return width <= 0 ? 0 : std::clamp(width, leastPane, greatestWidth);
}

void WindowMemory::saveModule(const QString& name, const QWidget& module) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.beginGroup(name);
    for (const QTreeView* tree : treesOf(module))
        if (const QWidget* focus = module.focusWidget();
            focus == tree || (focus && tree->isAncestorOf(focus)))
            settings.setValue(QLatin1String(focusKey), tree->objectName());
    for (const QSplitter* splitter : module.findChildren<QSplitter*>())
        settings.setValue(splitter->objectName(), splitter->saveState());
    for (const QTreeView* tree : treesOf(module)) {
        if (!tree->isHeaderHidden() && !FitWhenShown::waits(*tree))
            saveColumns(settings, *tree);
        if (!showsOneRecord(*tree)) {
            settings.beginGroup(tree->objectName());
            settings.setValue(QStringLiteral("open"), openRows(*tree));
            settings.setValue(QStringLiteral("current"), currentPath(*tree));
            settings.endGroup();
        }
    }
    for (const QTreeView* tree : popupTreesOf(module))
        saveColumns(settings, *tree);
}

void WindowMemory::restoreModule(const QString& name, QWidget& module) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.beginGroup(name);
    new PopupColumns(&module, settings.group()); // the module's child
    for (QSplitter* splitter : module.findChildren<QSplitter*>())
        splitter->restoreState(settings.value(splitter->objectName()).toByteArray());
    for (QTreeView* tree : treesOf(module)) {
        arrangeTree(*tree, !tree->isHeaderHidden() && restoreColumns(settings, *tree));
        if (!showsOneRecord(*tree)) {
            settings.beginGroup(tree->objectName());
            open(*tree, settings.value(QStringLiteral("open")).toStringList().mid(0, mostOpenRows));
            choose(*tree, settings.value(QStringLiteral("current")).toStringList().mid(0, deepest));
            settings.endGroup();
        }
        if (settings.value(QLatin1String(focusKey)).toString() == tree->objectName())
            tree->setFocus(Qt::OtherFocusReason);
    }
}

} // namespace orvo::app
