#include "apps/client/Handbook.h"

#include "apps/client/Installation.h"
#include "apps/client/KnownModules.h"
#include "frame/Keys.h"
#include "frame/Text.h"

#include <QAction>
#include <QFileInfo>
#include <QTextBrowser>
#include <QToolBar>
#include <QVBoxLayout>

namespace orvo::app {

const std::vector<PaneChapter>& paneChapters() {
    static const std::vector<PaneChapter> all = [] {
        std::vector<PaneChapter> panes = {
            {"", "treeSearch", "search"},
            {"", "findPane", "find"},
            {"", "usesPane", "uses"},
            {"OrvoMenu", "CPopObjectList", "desktop"},
            {"OrvoMenu", "tvDesck", "desktop"},
            {"OrvoMenu", "tvMenu", "order"},
            {"OrvoMenu", "tvProp", "passport"},
            {"OrvoResources", "tvRes", "resources"},
            {"OrvoResources", "tvProp", "modules"},
            {"OrvoResources", "toolBar", "search"},
            {"", "formWindow", "forms"},
            {"", "unwrittenPane", "unwritten"},
            {"", "historyPane", "history"},
            {"", "problemsPane", "problems"},
            {"", "logPane", "trouble"},
        };
        for (const KnownModule& module : knownModules()) // behind their panes
            panes.push_back({"", module.window, module.chapter});
        return panes;
    }();
    return all;
}

QString chapterOf(const QWidget* widget) {
    const auto isInside = [](const QWidget* inner, const char* name) {
        for (; inner; inner = inner->parentWidget())
            if (inner->objectName() == QLatin1String(name))
                return true;
        return false;
    };
    for (const PaneChapter& one : paneChapters())
        if ((!*one.module || isInside(widget, one.module)) && isInside(widget, one.pane))
            return QString::fromUtf8(one.chapter);
    return QStringLiteral("main");
}

Handbook::Handbook(QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_browser(new QTextBrowser(this)) {
    setObjectName(QStringLiteral("handbook"));
    setWindowTitle(Text::tr("Руководство"));
    m_browser->setObjectName(QStringLiteral("handbookText"));
    m_browser->setAccessibleName(Text::tr("Текст руководства"));
    auto* bar = new QToolBar(this);
    QAction* back = bar->addAction(Text::tr("Назад"), m_browser, &QTextBrowser::backward);
    QAction* forward = bar->addAction(Text::tr("Вперёд"), m_browser, &QTextBrowser::forward);
    back->setShortcut(QKeySequence::Back);
    forward->setShortcut(QKeySequence::Forward);
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    for (const auto& [page, title] :
         {std::pair(handbookpage::operators, QT_TRANSLATE_NOOP("orvo", "Оператору")),
          std::pair(handbookpage::engineers, QT_TRANSLATE_NOOP("orvo", "Инженеру")),
          std::pair(handbookpage::administrators, QT_TRANSLATE_NOOP("orvo", "Администратору")),
          std::pair(handbookpage::authors, QT_TRANSLATE_NOOP("orvo", "Автору модулей"))})
        bar->addAction(Text::tr(title), this, [this, name = QString::fromLatin1(page)] {
            QString ignored;
            open(name, {}, &ignored);
        });
    m_browser->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(m_browser);
    resize(900, 760);
}

/// Keys are taken at the text, which has the focus.
bool Handbook::eventFilter(QObject* watched, QEvent* event) {
    const bool isOverride = event->type() == QEvent::ShortcutOverride;
    if (isOverride || event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key.key() == Qt::Key_Escape ||
            keys::matches(key, *keys::command(QLatin1String(keys::closeTab)))) {
            event->accept();
            if (!isOverride) {
                close();
                parentWidget()->activateWindow();
            }
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool Handbook::open(const QString& page, const QString& chapter, QString* error) {
    static const QStringList pages{
        QLatin1String(handbookpage::operators), QLatin1String(handbookpage::engineers),
        QLatin1String(handbookpage::administrators), QLatin1String(handbookpage::authors)};
    const QString name = page.isEmpty() ? pages.first() : page;
    if (!pages.contains(name)) {
        *error = Text::tr("В руководстве нет страницы «%1».").arg(name);
        return false;
    }
    const QString file = installation::handbookPage(name + QStringLiteral(".html"));
    if (!QFileInfo(file).isReadable()) {
        *error = Text::tr("Руководство не установлено: файла %1 нет.").arg(file);
        return false;
    }
    show(); // before the place is looked for: it depends on the width
    QUrl url = QUrl::fromLocalFile(file);
    url.setFragment(chapter);
    m_browser->setSource(url);
    raise();
    activateWindow();
    return true;
}

} // namespace orvo::app
