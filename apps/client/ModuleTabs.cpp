#include "apps/client/ModuleTabs.h"

#include "apps/client/Look.h"
#include "frame/OrvoClient.h"
#include "frame/Text.h"

#include <QStyle>
#include <QTabBar>
#include <QToolButton>

#include <algorithm>

namespace orvo::app {

namespace {

constexpr char changedProperty[] = "changedSinceOpened"; // of a page: why it is marked

} // namespace

ModuleTabs::ModuleTabs(QWidget* parent) : QTabWidget(parent) {
    setObjectName(QStringLiteral("modules"));
    setDocumentMode(true);
    setTabsClosable(true);
    tabBar()->setSelectionBehaviorOnRemove(QTabBar::SelectPreviousTab);
    connect(this, &QTabWidget::tabCloseRequested, this,
            [this](int index) { emit pageCloseRequested(widget(index)); });
}

void ModuleTabs::addModule(COrvoCliMod* module, const QString& name) {
    if (!m_moduleNames.contains(name))
        m_moduleNames << name;
    insertModule(count(), module, name);
    setTitle(module, module->windowTitle().isEmpty() ? name : module->windowTitle());
}

void ModuleTabs::insertModule(int index, QWidget* module, const QString& name) {
    insertTab(index, module, QString());
    tabBar()->setTabData(index, name);
    for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide})
        tabBar()->setTabButton(index, side, nullptr); // an editor stays
}

void ModuleTabs::addPage(QWidget* page, const QString& title) {
    const int index = addTab(page, QString());
    if (m_isTouchable)
        addCloseButton(page, index);
    setTitle(page, title);
}

/// In place of the style's own, which a finger does not hit.
void ModuleTabs::addCloseButton(QWidget* page, int index) {
    auto* button = new QToolButton(tabBar());
    button->setObjectName(QStringLiteral("closePage"));
    button->setAccessibleName(Text::tr("Закрыть"));
    button->setToolTip(Text::tr("Закрыть (Ctrl+W)"));
    button->setIcon(style()->standardIcon(QStyle::SP_DockWidgetCloseButton));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(fingerSize, fingerSize);
    connect(button, &QToolButton::clicked, page, [this, page] { emit pageCloseRequested(page); });
    for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide}) {
        QWidget* own = tabBar()->tabButton(index, side);
        tabBar()->setTabButton(index, side, nullptr); // which hides it
        delete own;
    }
    tabBar()->setTabButton(index, QTabBar::RightSide, button); // which owns it
}

void ModuleTabs::markPage(QWidget* page, const QString& why) {
    page->setProperty(changedProperty, why);
    setTitle(page, page->windowTitle());
}

bool ModuleTabs::setTitle(QWidget* page, const QString& title) {
    page->setWindowTitle(title);
    page->setAccessibleName(title);
    const int index = indexOf(page);
    if (index < 0)
        return false;
    setTabText(index, titleOf(page).replace(QLatin1Char('&'), QLatin1String("&&")));
    setTabToolTip(index, plainToolTip(page->property(changedProperty).toString()));
    return true;
}

QString ModuleTabs::titleOf(const QWidget* page) {
    return oneLine(page->windowTitle()) + (page->property(changedProperty).toString().isEmpty()
                                               ? QString()
                                               : QStringLiteral(" ●"));
}

bool ModuleTabs::isModule(QWidget* page) const {
    const int index = indexOf(page);
    return index >= 0 && tab(index).isModule;
}

void ModuleTabs::becomeTouchable() {
    m_isTouchable = true;
    tabBar()->setStyleSheet(QStringLiteral("QTabBar::tab{min-height:%1px}").arg(fingerSize));
}

ModuleTabs::Order::Tab ModuleTabs::tab(int index) const {
    const QString module = tabBar()->tabData(index).toString();
    return {widget(index), module.isNull() ? widget(index)->windowTitle() : module,
            !module.isNull()};
}

ModuleTabs::Order ModuleTabs::order() const {
    Order order;
    order.current = currentIndex();
    for (int i = 0; i < count(); ++i)
        order.tabs.push_back(tab(i));
    return order;
}

QWidget* ModuleTabs::find(const QString& name, bool isModule) const {
    for (int i = 0; i < count(); ++i)
        if (const Order::Tab one = tab(i); one.isModule == isModule && one.name == name)
            return one.page;
    return nullptr;
}

ModuleTabs::Order::Tab ModuleTabs::takePage(QWidget* page) {
    const int index = indexOf(page);
    Order::Tab taken = tab(index);
    removeTab(index);
    return taken;
}

void ModuleTabs::putPage(const Order::Tab& page) {
    if (!page.isModule)
        return addPage(page.page, page.page->windowTitle());
    int index = 0;
    while (index < count() && tab(index).isModule &&
           m_moduleNames.indexOf(tab(index).name) < m_moduleNames.indexOf(page.name))
        ++index;
    insertModule(index, page.page, page.name);
    setTitle(page.page, page.page->windowTitle());
}

void ModuleTabs::arrange(const Order& as) {
    const auto isNew = [&as](const QWidget* page) {
        return std::none_of(as.tabs.begin(), as.tabs.end(),
                            [page](const Order::Tab& was) { return was.page == page; });
    };
    int place = 0;
    QWidget* current = nullptr;
    for (size_t i = 0; i < as.tabs.size(); ++i) {
        const Order::Tab& was = as.tabs[i];
        int found = was.page ? indexOf(was.page) : -1;
        for (int at = place; found < 0 && at < count(); ++at) {
            const Order::Tab now = tab(at);
            if (now.name == was.name && now.isModule == was.isModule && isNew(now.page))
                found = at;
        }
        if (found < place)
            continue; // it did not come back
        tabBar()->moveTab(found, place);
        if (static_cast<int>(i) == as.current)
            current = widget(place);
        ++place;
    }
    if (current)
        setCurrentWidget(current);
}

} // namespace orvo::app
