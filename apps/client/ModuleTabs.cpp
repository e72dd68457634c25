#include "apps/client/ModuleTabs.h"

#include "apps/client/Look.h"
#include "frame/OrvoClient.h"

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
    connect(this, &QTabWidget::tabCloseRequested, this,
            [this](int index) { emit pageCloseRequested(widget(index)); });
}

void ModuleTabs::addModule(COrvoCliMod* module, const QString& name) {
    const int index = addTab(module, QString());
    tabBar()->setTabData(index, name);
    for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide})
        tabBar()->setTabButton(index, side, nullptr); // an editor stays
    setTitle(module, module->windowTitle().isEmpty() ? name : module->windowTitle());
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
    button->setAccessibleName(QStringLiteral("Закрыть"));
    button->setToolTip(QStringLiteral("Закрыть (Ctrl+W)"));
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
    const int index = indexOf(page);
    if (index < 0)
        return false;
    const QString changed = page->property(changedProperty).toString();
    page->setWindowTitle(title);
    page->setAccessibleName(title);
    setTabText(index, oneLine(title).replace(QLatin1Char('&'), QLatin1String("&&")) +
                          (changed.isEmpty() ? QString() : QStringLiteral(" ●")));
    setTabToolTip(index, plainToolTip(changed));
    return true;
}

void ModuleTabs::closeCurrent() {
    if (currentIndex() >= 0 && !tab(currentIndex()).isModule)
        emit pageCloseRequested(currentWidget());
}

void ModuleTabs::becomeTouchable() {
    m_isTouchable = true;
    tabBar()->setStyleSheet(QStringLiteral("QTabBar::tab{min-height:%1px}").arg(fingerSize));
}

ModuleTabs::Order::Tab ModuleTabs::tab(int index) const {
    const QVariant module = tabBar()->tabData(index);
    return {widget(index), module.isNull() ? widget(index)->windowTitle() : module.toString(),
            !module.isNull()};
}

ModuleTabs::Order ModuleTabs::order() const {
    Order order;
    order.current = currentIndex();
    for (int i = 0; i < count(); ++i)
        order.tabs.push_back(tab(i));
    return order;
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

void ModuleTabs::setCurrentModule(const QString& name) {
    for (int i = 0; i < count(); ++i)
        if (tab(i).isModule && tab(i).name == name)
            setCurrentIndex(i);
}

} // namespace orvo::app
