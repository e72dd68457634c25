// Scheme.h: light or dark, as the user or his desktop wants it, also while the program runs.
//
// A desktop with a style of its own (QApplication has one then that is not Qt's plain one) colours
// the program itself, and is left to. Everywhere else the style is Fusion and the palette one of
// our two. Which, the user says in the settings («Вид» → «Цвета»); where he leaves it to the
// desktop, that is asked by the portal for settings on the session bus, whose later changes are
// followed; with no answer the palette that Qt found at the start decides.
#ifndef ORVO_APPS_CLIENT_SCHEME_H
#define ORVO_APPS_CLIENT_SCHEME_H

#include <QObject>
#include <QPalette>

#include <optional>

class QDBusVariant;
class QMenu;

namespace orvo::app {

enum class Scheme { Desktop, Light, Dark };

QPalette lightPalette();
QPalette darkPalette();

class SchemeKeeper : public QObject {
    Q_OBJECT
public:
    /// Sets style and palette of the application, at once by what is known, and asks the desktop.
    explicit SchemeKeeper(QObject* parent = nullptr);

    Scheme scheme() const { return m_scheme; }
    /// The user's choice; kept in the settings.
    void choose(Scheme scheme);
    /// «Цвета», with the three schemes; nothing is added where the desktop's style colours us. The
    /// keeper outlives the menu.
    void addMenu(QMenu* view);

private slots:
    /// Signal of the portal.
    void settingChanged(const QString& group, const QString& name, const QDBusVariant& value);

private:
    void ask();
    void desktopWants(uint value);
    void apply();

    bool m_isOurs = true;         ///< the palette is ours to set
    bool m_wasDark = false;       ///< what Qt found at the start
    std::optional<bool> m_isDark; ///< what the desktop has said
    Scheme m_scheme = Scheme::Desktop;
};

} // namespace orvo::app

#endif
