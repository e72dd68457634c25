// The picker as a palette: a window beside the editor, with a selector of what it lists.
#include "picker/PopObjectList.h"

#include "frame/Keys.h"
#include "frame/Kinds.h"
#include "frame/Text.h"
#include "models/TreeSearchBar.h"
#include "picker/AddButton.h"
#include "ui_PopObjectList.h"

#include <QApplication>
#include <QComboBox>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

#include <cassert>
#include <functional>

void CPopObjectList::becomePalette() {
    assert(m_shown.isEmpty() && !isVisible());
    m_isPalette = true;
    setProperty("orvoPalette", true);
    m_addButton->setShown(true);
    m_ui->btnCancel->setText(tr("Закрыть")); // what was chosen is written already
    // The shortcuts of a window work in its tools.
    setWindowFlags((windowFlags() & ~Qt::WindowType_Mask) | Qt::Tool);
    makeKinds();
}

void CPopObjectList::giveWay(bool on) {
    assert(m_isPalette && m_coverings >= 0);
    if (on) {
        if (m_coverings++ > 0)
            return;
        m_hadKeys = isActiveWindow();
        hide();
        if (m_hadKeys)
            parentWidget()->activateWindow();
        return;
    }
    if (m_coverings == 0 || --m_coverings > 0)
        return;
    const QPoint place = pos();
    setAttribute(Qt::WA_ShowWithoutActivating, !m_hadKeys);
    m_comesBack = true;
    show();
    m_comesBack = false;
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    move(place);
    if (m_hadKeys)
        activateWindow();
}

/// On a small screen it leaves the menu in sight, and its own buttons.
void CPopObjectList::placePalette() {
    constexpr int titleBar = 40;
    const QWidget* owner = parentWidget();
    if (!owner)
        return;
    const QPoint corner = owner->mapToGlobal(owner->rect().topRight());
    const QRect screen = owner->window()->screen()->availableGeometry();
    const QSize most(owner->width() / 2, screen.bottom() - corner.y() - titleBar);
    if (!m_wholeSize.isValid())
        m_wholeSize = size();
    resize(m_wholeSize.boundedTo(most));
    move(corner.x() - width(), corner.y());
}

void CPopObjectList::makeKinds() {
    m_kinds = new QComboBox(this);
    m_kinds->setObjectName(QStringLiteral("paletteKind"));
    m_kinds->setAccessibleName(tr("Что предложить"));
    const auto add = [this](const QString& text, const char* command, int32_t kind) {
        const auto& keys = *orvo::keys::command(QLatin1String(command));
        m_kinds->addItem(QStringLiteral("%1 (%2)").arg(text, orvo::keys::shown(keys)), kind);
    };
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.palette)
            add(orvo::Text::tr(kind.palette), orvo::keys::newOf(kind.number), kind.number);
    connect(m_kinds, qOverload<int>(&QComboBox::activated), this,
            [this](int item) { showKind(m_kinds->itemData(item).toInt()); });
    m_ui->verticalLayout->insertWidget(0, m_kinds);
}

void CPopObjectList::addPaletteKeys() {
    const auto add = [this](const char* command, const std::function<void()>& act) {
        for (const QKeySequence& keys :
             orvo::keys::sequences(*orvo::keys::command(QLatin1String(command)))) {
            auto* shortcut = new QShortcut(keys, this); // the pop-up's child
            shortcut->setContext(Qt::WidgetWithChildrenShortcut);
            connect(shortcut, &QShortcut::activated, this, [this, act] {
                if (m_isPalette)
                    act();
            });
        }
    };
    add(orvo::keys::palette, [this] { hide(); });
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.palette)
            add(orvo::keys::newOf(kind.number), [this, number = kind.number] { showKind(number); });
}

void CPopObjectList::showKind(int32_t kind) {
    rememberOpen();
    objectType = kind;
    chosenName = QString();
    m_search->dismiss();
    load();
    m_ui->tvObj->setFocus(Qt::ShortcutFocusReason);
}

void CPopObjectList::changeEvent(QEvent* event) {
    CPopTemplate::changeEvent(event);
    // A tool counts as active with its window.
    if (event->type() != QEvent::ActivationChange || !m_isPalette ||
        QApplication::activeWindow() != this || m_shown.isEmpty())
        return;
    const QString current = treeModel->getItemKeyLink(m_ui->tvObj->currentIndex());
    QScrollBar& scroll = *m_ui->tvObj->verticalScrollBar();
    const int place = scroll.value(); // a click on a row may be what brings the user here
    rememberOpen();
    load();
    const QModelIndex row = treeModel->findIndexByKey(current);
    if (row.isValid())
        m_ui->tvObj->setCurrentIndex(row);
    m_ui->tvObj->doItemsLayout();
    scroll.setValue(place);
}
