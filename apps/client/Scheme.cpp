#include "apps/client/Scheme.h"

#include "apps/client/WindowMemory.h"
#include "frame/Contrast.h"
#include "frame/Text.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QMenu>
#include <QProxyStyle>
#include <QSettings>
#include <QStyleOptionButton>

namespace orvo::app {

namespace {

constexpr char settingsKey[] = "look/scheme";
constexpr char service[] = "org.freedesktop.portal.Desktop";
constexpr char object[] = "/org/freedesktop/portal/desktop";
constexpr char interface[] = "org.freedesktop.portal.Settings";
constexpr char portalGroup[] = "org.freedesktop.appearance";
constexpr char portalName[] = "color-scheme";

struct Choice {
    Scheme scheme;
    const char* word; ///< in the settings
    const char* title;
};
constexpr Choice choices[] = {
    {Scheme::Desktop, "desktop", QT_TRANSLATE_NOOP("orvo", "&Как на рабочем столе")},
    {Scheme::Light, "light", QT_TRANSLATE_NOOP("orvo", "&Светлые")},
    {Scheme::Dark, "dark", QT_TRANSLATE_NOOP("orvo", "&Тёмные")}};

/// A scheme in colours. Highlight is one with and without the focus: the branches of a styled tree
/// know only the first, and a row of two colours looks broken.
struct Colours {
    QRgb window, button, base, alternate, text, faint, disabled, highlight, mid, tip, tipText, link;
};

QPalette paletteOf(const Colours& colours) {
    QPalette palette(QColor(colours.button), QColor(colours.window));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText}) {
        palette.setColor(role, QColor(colours.text));
        if (role != QPalette::HighlightedText)
            palette.setColor(QPalette::Disabled, role, QColor(colours.disabled));
    }
    palette.setColor(QPalette::Base, QColor(colours.base));
    palette.setColor(QPalette::AlternateBase, QColor(colours.alternate));
    // The style draws a shadow of this colour below entries that are disabled.
    palette.setColor(QPalette::Disabled, QPalette::Light, QColor(colours.base));
    palette.setColor(QPalette::Highlight, QColor(colours.highlight));
    palette.setColor(QPalette::Mid, QColor(colours.mid));
    palette.setColor(QPalette::ToolTipBase, QColor(colours.tip));
    palette.setColor(QPalette::ToolTipText, QColor(colours.tipText));
    palette.setColor(QPalette::PlaceholderText, QColor(colours.faint));
    palette.setColor(QPalette::Link, QColor(colours.link));
    return palette;
}

/// Fusion draws the outline of a check box a little darker than the window, which on a dark window
/// is not seen.
class OutlinedStyle : public QProxyStyle {
public:
    OutlinedStyle() : QProxyStyle(QStringLiteral("Fusion")) {
        setObjectName(QStringLiteral("fusion")); // others ask for it by that name
    }
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        if (!button || (element != PE_IndicatorCheckBox && element != PE_IndicatorRadioButton)) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        QStyleOptionButton seen = *button;
        constexpr double rounding = 0.3;
        const QColor outline =
            readable(seen.palette.color(QPalette::Window), seen.palette.color(QPalette::Base),
                     leastShapeContrast + rounding);
        // What Fusion makes of the window's colour, in percent.
        const int darkened = element == PE_IndicatorCheckBox ? 140 * 100 / 110 : 150;
        seen.palette.setColor(QPalette::Window, outline.lighter(darkened));
        QProxyStyle::drawPrimitive(element, &seen, painter, widget);
    }
    /// A menu that is higher than the screen scrolls; in a second column its keys would be beyond
    /// the edge.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* more) const override {
        return hint == SH_Menu_Scrollable ? 1 : QProxyStyle::styleHint(hint, option, widget, more);
    }
};

} // namespace

QPalette lightPalette() {
    return paletteOf({0xf4f6f8, 0xeef1f4, 0xffffff, 0xf7f9fb, 0x1f2933, 0x66707a, 0x8a949e,
                      0xcbdff4, 0xc3cad2, 0x2b343e, 0xffffff, 0x1c5ea8});
}

QPalette darkPalette() {
    return paletteOf({0x262b31, 0x30363d, 0x1c2025, 0x22272c, 0xe6eaee, 0xa2abb4, 0x7b858f,
                      0x2f4d6c, 0x4a535d, 0x39424c, 0xffffff, 0x7db4ee});
}

SchemeKeeper::SchemeKeeper(QObject* parent) : QObject(parent), m_wasDark(isDark(qApp->palette())) {
    // Qt's own: "fusion" on any X display, "windows" where there is none.
    const QString style = QApplication::style()->objectName();
    m_isOurs = style == QLatin1String("fusion") || style == QLatin1String("windows");
    const QString word = clientSettings().value(QLatin1String(settingsKey)).toString();
    for (const Choice& choice : choices)
        if (word == QLatin1String(choice.word))
            m_scheme = choice.scheme;
    if (!m_isOurs)
        return;
    // Else a widget with a style sheet keeps the palette that it had when it was polished.
    QCoreApplication::setAttribute(Qt::AA_UseStyleSheetPropagationInWidgetStyles);
    QApplication::setStyle(new OutlinedStyle); // the application's
    apply();
    ask();
}

void SchemeKeeper::ask() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    qRegisterMetaType<QDBusVariant>(); // else Qt 6 finds no such slot
    bus.connect(QLatin1String(service), QLatin1String(object), QLatin1String(interface),
                QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage read =
        QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(object),
                                       QLatin1String(interface), QStringLiteral("Read"));
    read << QLatin1String(portalGroup) << QLatin1String(portalName);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (!reply.isValid())
            return;
        // The answer is a variant in a variant.
        const QVariant outer = reply.value().variant();
        desktopWants(outer.canConvert<QDBusVariant>()
                         ? outer.value<QDBusVariant>().variant().toUInt()
                         : outer.toUInt());
    });
}

void SchemeKeeper::settingChanged(const QString& of, const QString& what,
                                  const QDBusVariant& value) {
    if (of == QLatin1String(portalGroup) && what == QLatin1String(portalName))
        desktopWants(value.variant().toUInt());
}

/// 1 dark, 2 light, anything else no wish.
void SchemeKeeper::desktopWants(uint value) {
    m_isDark = value == 1 ? std::optional(true) : value == 2 ? std::optional(false) : std::nullopt;
    apply();
}

void SchemeKeeper::choose(Scheme scheme) {
    m_scheme = scheme;
    for (const Choice& choice : choices)
        if (choice.scheme == scheme)
            clientSettings().setValue(QLatin1String(settingsKey), QLatin1String(choice.word));
    apply();
}

void SchemeKeeper::apply() {
    if (!m_isOurs)
        return;
    const bool dark =
        m_scheme == Scheme::Dark || (m_scheme == Scheme::Desktop && m_isDark.value_or(m_wasDark));
    QApplication::setPalette(dark ? darkPalette() : lightPalette());
}

void SchemeKeeper::addMenu(QMenu* view) {
    if (!m_isOurs)
        return;
    QMenu* menu = view->addMenu(Text::tr("&Цвета"));
    auto* schemes = new QActionGroup(menu); // exclusive
    for (const Choice& choice : choices) {
        QAction* action = menu->addAction(Text::tr(choice.title));
        action->setObjectName(QStringLiteral("actScheme-") + QLatin1String(choice.word));
        action->setCheckable(true);
        action->setChecked(choice.scheme == m_scheme);
        schemes->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, scheme = choice.scheme] { choose(scheme); });
    }
}

} // namespace orvo::app
