#include "apps/client/WindowMemory.h"

#include <QCryptographicHash>
#include <QEvent>
#include <QHeaderView>
#include <QMainWindow>
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
constexpr int mostRowsLookedAt = 200'000;
constexpr int deepest = 1000;
constexpr int leastWidth = 16, greatestWidth = 4000;
constexpr int dockLayout = 1; ///< to be raised when the docks' names change

QString keyOf(const QModelIndex& row) {
    return row.data(keyRole).toString();
}

/// The trees that the user arranges, from left to right: what an earlier one shows as current may
/// fill a later one. Those that edit whatever becomes current show a single record.
std::vector<QTreeView*> treesOf(const QWidget& module) {
    std::vector<QTreeView*> trees;
    for (QTreeView* tree : module.findChildren<QTreeView*>())
        if (tree->model() && !tree->objectName().isEmpty())
            trees.push_back(tree);
    const auto left = [&](const QTreeView* tree) { return tree->mapTo(&module, QPoint()).x(); };
    std::stable_sort(trees.begin(), trees.end(), [&](const QTreeView* one, const QTreeView* other) {
        return left(one) < left(other);
    });
    return trees;
}

bool showsOneRecord(const QTreeView& tree) {
    return tree.editTriggers() & QAbstractItemView::CurrentChanged;
}

bool hasOwnWidth(const QHeaderView& header, int column) {
    const bool stretched =
        header.stretchLastSection() && header.visualIndex(column) == header.count() - 1;
    return !header.isSectionHidden(column) && !stretched &&
           header.sectionResizeMode(column) == QHeaderView::Interactive;
}

QStringList widthsOf(const QHeaderView& header) {
    QStringList widths;
    for (int column = 0; column < header.count(); ++column)
        widths << QString::number(hasOwnWidth(header, column) ? header.sectionSize(column) : 0);
    return widths;
}

void setWidths(QHeaderView& header, const QStringList& widths) {
    if (widths.size() != header.count())
        return; // of another version
    for (int column = 0; column < header.count(); ++column)
        if (const int width = widths[column].toInt(); width > 0 && hasOwnWidth(header, column))
            header.resizeSection(column, std::clamp(width, leastWidth, greatestWidth));
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

/// All columns with a title become visible at once: the widest give way.
void fitColumns(QTreeView& tree) {
    constexpr int least = 140;
    QHeaderView& header = *tree.header();
    if (header.isHidden() || header.count() == 0)
        return;
    for (int step = 0; step < header.count(); ++step) {
        int needed = 0, widest = -1;
        for (int column = 0; column < header.count(); ++column) {
            if (header.isSectionHidden(column))
                continue;
            const bool own = hasOwnWidth(header, column);
            needed += own ? header.sectionSize(column) : header.sectionSizeHint(column);
            if (own && (widest < 0 || header.sectionSize(column) > header.sectionSize(widest)))
                widest = column;
        }
        const int excess = needed - tree.viewport()->width();
        if (excess <= 0 || widest < 0 || header.sectionSize(widest) <= least)
            return;
        // The two widest share what is too much.
        header.resizeSection(widest, std::max(least, header.sectionSize(widest) -
                                                         (step == 0 ? (excess + 1) / 2 : excess)));
    }
}

/// Does so when the tree is first on the screen: its width is known then.
class FitWhenShown : public QObject {
public:
    explicit FitWhenShown(QTreeView* tree) : QObject(tree) { tree->installEventFilter(this); }

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

} // namespace

QSettings clientSettings() {
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvo"),
            QStringLiteral("orvo-client")};
}

WindowMemory::WindowMemory(const QString& store, const QString& login)
    : m_group(QLatin1String("window-") +
              QString::fromLatin1(QCryptographicHash::hash((store + QChar(0) + login).toUtf8(),
                                                           QCryptographicHash::Sha256)
                                      .toHex()
                                      .left(16))) {}

void WindowMemory::saveWindow(const QMainWindow& window, int tab) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    settings.setValue(QStringLiteral("geometry"), window.saveGeometry());
    settings.setValue(QStringLiteral("docks"), window.saveState(dockLayout));
    settings.setValue(QStringLiteral("tab"), tab);
}

int WindowMemory::restoreWindow(QMainWindow& window) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    window.restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    window.restoreState(settings.value(QStringLiteral("docks")).toByteArray(), dockLayout);
    return settings.value(QStringLiteral("tab")).toInt();
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
    for (const QSplitter* splitter : module.findChildren<QSplitter*>())
        settings.setValue(splitter->objectName(), splitter->saveState());
    for (const QTreeView* tree : treesOf(module)) {
        settings.beginGroup(tree->objectName());
        settings.setValue(QStringLiteral("columns"), widthsOf(*tree->header()));
        if (!showsOneRecord(*tree)) {
            settings.setValue(QStringLiteral("open"), openRows(*tree));
            settings.setValue(QStringLiteral("current"), currentPath(*tree));
        }
        settings.endGroup();
    }
}

void WindowMemory::restoreModule(const QString& name, QWidget& module) const {
    QSettings settings = clientSettings();
    settings.beginGroup(m_group);
    if (!settings.childGroups().contains(name)) {
        for (QTreeView* tree : treesOf(module)) {
            if (tree->isVisible())
                fitColumns(*tree);
            else
                new FitWhenShown(tree); // the tree's child
        }
        return;
    }
    settings.beginGroup(name);
    for (QSplitter* splitter : module.findChildren<QSplitter*>())
        splitter->restoreState(settings.value(splitter->objectName()).toByteArray());
    for (QTreeView* tree : treesOf(module)) {
        settings.beginGroup(tree->objectName());
        setWidths(*tree->header(), settings.value(QStringLiteral("columns")).toStringList());
        if (!showsOneRecord(*tree)) {
            open(*tree, settings.value(QStringLiteral("open")).toStringList().mid(0, mostOpenRows));
            choose(*tree, settings.value(QStringLiteral("current")).toStringList().mid(0, deepest));
        }
        settings.endGroup();
    }
}

} // namespace orvo::app
